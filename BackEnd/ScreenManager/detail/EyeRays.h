#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/LayoutToChannelMap.h"

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

class CollimatedTargetLocator;
class IScreenConfig;
class KelvoProjector;
class ProjectorConfig;
class TargetLocator;
struct Frustum;

namespace Veltrani::ScreenManagerDetail {

// Rays to the surface that the target locator of a channel knows: many of them at once, and those of its picture, seen
// from the eye.

/// Casts many rays of a locator at once. The results are, to the last bit, those that its
/// `intersectWithTargetLocationSurface` returns one by one, on the screen that is current when this object is made.
class RaysAtOnce {
public:
    explicit RaysAtOnce(const TargetLocator& locator);

    /// Returns true where no caller can notice that the locator was not called. False for locators with rays of their
    /// own (`LocatorKind`), for screens that must be called ray by ray (`ScreenGeometry::raysAtOnce`), and without a
    /// screen.
    [[nodiscard]] bool isPossible() const { return m_screen != nullptr; }

    /// May be called only where `isPossible` is true. Points are those of the surface; normals, sides and t are those
    /// of the rays as they reach the screen, which are not the ones given where a mirror turns them.
    /// @param hits as long as `rays`
    void cast(std::span<const Ray> rays, std::span<SurfaceHit> hits);

private:
    void castReflected(std::span<const Ray> rays, std::span<SurfaceHit> hits);

    std::shared_ptr<const ScreenGeometry> m_screen;  ///< empty when it is not possible
    const CollimatedTargetLocator* m_mirror;         ///< null when rays reach the screen directly
    std::vector<Ray> m_reflected;
    std::vector<SurfaceHit> m_reflectedHits;
    std::vector<std::size_t> m_places;  ///< places of the reflected rays among the given ones
};

/// Returns the eye point (world frame) of a display that is seen from one; the origin without a configuration or a
/// screen.
[[nodiscard]] Point<double, 3> eyePointOf(const XMLConfigManager* config);

/// Returns the target locator of each channel, from the `TargetLocatorManager`; empty handles where it has none.
[[nodiscard]] std::vector<std::shared_ptr<const TargetLocator>> targetLocators(
    const XMLConfigManager* config, const std::vector<ProjectorConfig*>& projectors);

/// The way from the picture of one channel to the layout on displays that are seen from an eye point: the ray from the
/// eye through the frustum of the channel, and where it meets the channel's target-location surface.
///
/// Refers to what it was made from. Made for one call: the frustum is fetched anew for each point that is mapped by
/// itself, and where it may change.
class EyeRays {
public:
    /// @param locator null where the channel has none: nothing is met
    EyeRays(const KelvoProjector& projector, const TargetLocator* locator, const Point<double, 3>& eyePoint);

    [[nodiscard]] const Frustum& frustum() const;

    /// The point of the surface that a picture point is seen at. No limits are set to the picture point.
    /// @param layout passed to the locator as it is; untouched on a miss
    bool mapToLayout(const Point<double, 2>& channel, Point<double, 3>& layout) const;

    /// Maps many points; the results are the same to the last bit.
    /// @param layout as long as `channel`
    /// @return false, and nothing done, where a caller could notice that they were not mapped one by one
    bool mapToLayoutAtOnce(std::span<const Point<double, 2>> channel, std::span<LayoutPoint> layout) const;

private:
    /// Returns a point on the ray of a picture point, one step from the eye.
    [[nodiscard]] Point<double, 3> pointOnRay(const Frustum& frustum, const Point<double, 2>& channel) const;

    const KelvoProjector& m_projector;
    const TargetLocator* m_locator;
    const Point<double, 3>& m_eyePoint;
};

}  // namespace Veltrani::ScreenManagerDetail
