#pragma once

#include "DisplayLight/LitPicture.h"
#include "DisplayLight/LitSurface.h"
#include "DisplayReport/basics/Progress.h"
#include "ExportFiles/ExportedDisplay.h"

#include <cstddef>
#include <memory>

class XMLConfigManager;

namespace Veltrani::DisplayLight {

/// What of the light is calculated.
struct LightRequest {
    std::size_t width = 0;               ///< of the picture, pixels
    std::size_t height = 0;              ///< of the picture, pixels
    bool hasErrors = false;              ///< whether the content is compared with the one that belongs to each place
    bool isSharp = false;                ///< places show the light at their middle, and not its mean over their pixel
    DisplayReport::Progress progress{};  ///< counts channels
};

/// Adds up the light that an export puts on the screen of a display: the geometry is that of the configuration, on the
/// current screen of the `ScreenManager`, and the light that of the pictures of the export alone.
///
///     const LightSum sum(config, ExportedDisplay::read("player"));
///     sum.picture({.width = 1600, .height = 1000}).shown().write(out);
class LightSum {
public:
    /// Throws `VeltraniException`, naming channel and file with the remedy, for a channel of the display that the
    /// export does not have, for one of the export that the display does not have, and for pictures of other sizes.
    /// @param config must outlive this
    LightSum(const XMLConfigManager& config, ExportFiles::ExportedDisplay exported);
    ~LightSum();
    LightSum(const LightSum&) = delete;
    LightSum& operator=(const LightSum&) = delete;

    /// Throws what reading the files throws, and `VeltraniException` when the eye sees nothing of what is lit.
    [[nodiscard]] LitPicture picture(const LightRequest& request) const;

    /// The light of the whole surface, wherever it is seen from; the eye determines only whether the screen is one for
    /// rear projection. The light of a display with a mirror is that on the screen behind it. Errors are always
    /// calculated. Throws as `picture`.
    /// @param mostPlaces of each side of the surface
    [[nodiscard]] LitSurface surface(std::size_t mostPlaces, const DisplayReport::Progress& progress = {}) const;

private:
    struct Parts;
    struct Lamps;
    std::unique_ptr<const Parts> m_parts;
};

}  // namespace Veltrani::DisplayLight
