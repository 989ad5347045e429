#pragma once

#include "Common/Point.h"
#include "DisplayReport/channels/ChannelChoice.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

class CollimatedTargetLocator;
class ScreenGeometry;
class XMLConfigManager;

namespace Veltrani::DisplayLight {

/// A place of the screen that an eye sees.
struct EyePlace {
    Point<double, 3> point;  ///< world frame, native units; zero without `isSeen`
    std::int8_t side = 0;    ///< of the surface, as `SurfaceHit::side`; 0 in a mirror
    bool isSeen = false;
};

/// What an eye sees in any direction: the screen itself, or what a mirror shows of it.
class EyePlaces {
public:
    /// @param surface not null; the current screen
    /// @param channel whose mirror is looked into, where its display has one
    EyePlaces(const XMLConfigManager& config, const DisplayReport::ChannelChoice& channel,
              std::shared_ptr<const ScreenGeometry> surface, const Point<double, 3>& eye);
    ~EyePlaces();

    /// @param directions world axes; of length zero for none, which meets nothing
    /// @param places as long as `directions`
    void see(std::span<const Point<double, 3>> directions, std::span<EyePlace> places) const;

private:
    std::shared_ptr<const ScreenGeometry> m_surface;
    std::shared_ptr<const CollimatedTargetLocator> m_mirror;  ///< null without one
    Point<double, 3> m_eye;                                   ///< with a mirror beside it, in its frame
};

}  // namespace Veltrani::DisplayLight
