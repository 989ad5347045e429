#pragma once

#include "KelvoScreen/ScreenGeometry.h"

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

class CollimatedTargetLocator;
class TargetLocator;

/// Casts many rays of a locator at once: its answers, to the last bit, as its `intersectWithTargetLocationSurface`
/// gives them one by one, on the screen that is current when this is made.
class RaysAtOnce {
public:
    explicit RaysAtOnce(const TargetLocator& locator);

    /// True where nobody can tell that the locator was not asked. False for locators with rays of their own
    /// (`LocatorKind`), for screens that must be asked ray by ray (`ScreenGeometry::raysAtOnce`), and without a screen.
    [[nodiscard]] bool isPossible() const { return m_screen != nullptr; }

    /// Only where it is possible. Points are those of the surface; normals, sides and t are those of the rays as they
    /// reach the screen, which are not the ones given where a mirror turns them.
    /// @param hits as long as `rays`
    void cast(std::span<const Ray> rays, std::span<SurfaceHit> hits);

private:
    void castReflected(std::span<const Ray> rays, std::span<SurfaceHit> hits);

    std::shared_ptr<const ScreenGeometry> m_screen;  ///< empty when it is not possible
    const CollimatedTargetLocator* m_mirror;         ///< null when rays reach the screen directly
    std::vector<Ray> m_reflected;
    std::vector<SurfaceHit> m_reflectedHits;
    std::vector<std::size_t> m_places;  ///< of the reflected rays among those given
};
