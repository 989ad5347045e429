#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/Extent.h"
#include "DisplayReport/check/ChannelFacts.h"

#include <memory>
#include <string>
#include <vector>

class IScreenConfig;
class ScreenGeometry;
class XMLConfigManager;
struct DisplayKind;

namespace Veltrani::DisplayReport {

/// What the rules need to know of a display, calculated once.
struct DisplayFacts {
    /// The screens are those that the `ScreenManager` holds.
    /// @param quick leaves the light unmeasured
    [[nodiscard]] static DisplayFacts of(const XMLConfigManager& config, bool quick);

    const XMLConfigManager* config = nullptr;  ///< not owned, never null
    const IScreenConfig* screen = nullptr;     ///< null when none is described
    const DisplayKind* kind = nullptr;         ///< null without target data, and for an unknown type
    std::string unit;                          ///< native, as lengths are shown
    double metres = 0;                         ///< per native unit; 0 where that has no length of its own
    Point<double, 3> eye;                      ///< what the display is seen from, world frame
    bool isEyeStated = false;  ///< false for an eye that was left at the origin, as one that is not given is
    std::string allowed;       ///< the rules that the screen's element allows
    std::shared_ptr<const ScreenGeometry> surface;   ///< what targets are placed on; null when it is not built or valid
    std::shared_ptr<const ScreenGeometry> content;   ///< null when there is none
    std::shared_ptr<const ScreenGeometry> measured;  ///< null when there is none
    Extent box;                                      ///< around the surface
    double size = 0;                                 ///< the box's largest extent, native units
    std::vector<ChannelFacts> channels;
    bool isMeasured = false;  ///< whether the channels know their light

    /// The middle of the box.
    [[nodiscard]] Point<double, 3> middle() const { return (box.minimum() + box.maximum()) * 0.5; }
};

}  // namespace Veltrani::DisplayReport
