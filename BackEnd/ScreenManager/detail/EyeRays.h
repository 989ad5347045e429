#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/LayoutToChannelMap.h"

#include <memory>
#include <span>
#include <vector>

class IScreenConfig;
class KelvoProjector;
class ProjectorConfig;
class TargetLocator;
struct Frustum;

namespace Veltrani {

/// The eye point (world frame) of a display that is seen from one; the origin without a configuration or a screen.
[[nodiscard]] Point<double, 3> eyePointOf(const XMLConfigManager* config);

/// The target locator of each channel, from the `TargetLocatorManager`; empty handles where it has none.
[[nodiscard]] std::vector<std::shared_ptr<const TargetLocator>> targetLocators(
    const XMLConfigManager* config, const std::vector<ProjectorConfig*>& projectors);

/// The way from the picture of one channel to the layout on displays that are seen from an eye point: the ray from the
/// eye through the frustum of the channel, and where it meets the channel's target-location surface.
///
/// Refers to what it was made from. Made for a call and forgotten: the frustum is asked for anew with each point.
class EyeRays {
public:
    /// @param locator null where the channel has none: nothing is met
    EyeRays(const KelvoProjector& projector, const TargetLocator* locator, const Point<double, 3>& eyePoint);

    [[nodiscard]] const Frustum& frustum() const;

    /// The point of the surface that a picture point is seen at. No limits are set to the picture point.
    /// @param layout handed to the locator as it is; untouched on a miss
    bool mapToLayout(const Point<double, 2>& channel, Point<double, 3>& layout) const;

    /// The same for many points, to the last bit.
    /// @param layout as long as `channel`
    /// @return false, and nothing done, where somebody could tell that they were not mapped one by one
    bool mapToLayoutAtOnce(std::span<const Point<double, 2>> channel, std::span<LayoutPoint> layout) const;

private:
    /// A point on the ray of a picture point, one step from the eye.
    [[nodiscard]] Point<double, 3> pointOnRay(const Point<double, 2>& channel) const;

    const KelvoProjector& m_projector;
    const TargetLocator* m_locator;
    const Point<double, 3>& m_eyePoint;
};

}  // namespace Veltrani
