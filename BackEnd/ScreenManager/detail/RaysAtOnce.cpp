#include "ScreenManager/detail/RaysAtOnce.h"

#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"

namespace {

/// The locator as one whose rays are reflected first; null for others.
const CollimatedTargetLocator* mirrorOf(const TargetLocator& locator, LocatorKind::Rays rays) {
    // Only this class has such rays, and no class derived from it.
    return rays == LocatorKind::Rays::REFLECTED ? static_cast<const CollimatedTargetLocator*>(&locator) : nullptr;
}

}  // namespace

RaysAtOnce::RaysAtOnce(const TargetLocator& locator) : m_mirror(nullptr) {
    const LocatorKind::Rays rays = LocatorKind::of(locator).rays;
    if (rays != LocatorKind::Rays::OWN) {
        const std::shared_ptr<const ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
        m_screen = screen && screen->raysAtOnce() > 0 ? screen : nullptr;
        m_mirror = mirrorOf(locator, rays);
    }
}

void RaysAtOnce::cast(std::span<const Ray> rays, std::span<SurfaceHit> hits) {
    if (m_mirror != nullptr) {
        castReflected(rays, hits);
    } else {
        m_screen->intersectRays(rays, hits);
    }
}

void RaysAtOnce::castReflected(std::span<const Ray> rays, std::span<SurfaceHit> hits) {
    m_reflected.clear();
    m_places.clear();
    for (std::size_t i = 0; i < rays.size(); ++i) {
        hits[i] = SurfaceHit{};
        Ray reflected;
        if (m_mirror->reflect(rays[i], reflected)) {
            m_reflected.push_back(reflected);
            m_places.push_back(i);
        }
    }
    m_reflectedHits.resize(m_reflected.size());
    m_screen->intersectRays(m_reflected, m_reflectedHits);
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        hits[m_places[i]] = m_reflectedHits[i];
    }
}
