#pragma once

#include "Common/Point.h"
#include "DisplayLight/EyeGrid.h"
#include "DisplayReport/channels/ChannelChoice.h"

#include <cstdint>
#include <memory>
#include <vector>

class ScreenGeometry;
class XMLConfigManager;

namespace Veltrani::DisplayExport {
class ChannelSight;
}

namespace Veltrani::DisplayLight {

/// A place that one channel lights.
struct FoundPlace {
    Point<double, 2> picture;  ///< in the picture of the channel, (0, 0) bottom left; zero without `isLit`
    std::int8_t side = 0;      ///< that the light arrives from, as `SurfaceHit::side`; 0 where it is not known
    bool isLit = false;
};

/// Which side of a sheet the light is seen from.
enum class SeenSide {
    LIT,     ///< the one that it arrives at
    BEHIND,  ///< the other one: a screen for rear projection
};

/// Finds where the places that an eye sees lie in the picture of one channel, for those that its light reaches.
///
/// Where the way back is known in closed form, place by place; else through a grid over the picture, which is drawn
/// into the picture of the eye, and from there by Newton's method.
class PictureFinder {
public:
    virtual ~PictureFinder();
    PictureFinder(const PictureFinder&) = delete;
    PictureFinder& operator=(const PictureFinder&) = delete;

    /// Throws `VeltraniException`, naming the channel, for one without a locator.
    /// @param sight of the channel, must outlive the finder
    /// @param surface not null; the current screen
    [[nodiscard]] static std::unique_ptr<const PictureFinder> of(const XMLConfigManager& config,
                                                                 const DisplayExport::ChannelSight& sight,
                                                                 const std::shared_ptr<const ScreenGeometry>& surface);

    /// @param found receives as many as the grid has places; one vector for all channels spares the system the work of
    /// handing out its memory each time
    virtual void find(const EyeGrid& grid, SeenSide side, std::vector<FoundPlace>& found) const = 0;

    /// The edge of the picture included; false for NaN.
    [[nodiscard]] static bool isInPicture(const Point<double, 2>& picture) {
        return picture[0] >= 0 && picture[0] <= 1 && picture[1] >= 0 && picture[1] <= 1;
    }

protected:
    PictureFinder() = default;
};

}  // namespace Veltrani::DisplayLight
