#include "ScreenManager/detail/RaysAtOnce.h"

#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/OBJScreen.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/SphericalScreen.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/CustomProjectionTargetLocator.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/SphereTargetLocator.h"

#include <typeinfo>

namespace {

/// True for the kinds that leave the ray query as it is; classes derived from them may replace it.
bool asksTheScreenDirectly(const TargetLocator& locator) {
    const std::type_info& kind = typeid(locator);
    return kind == typeid(SphereTargetLocator) || kind == typeid(PlanarTargetLocator) ||
           kind == typeid(CustomPlanarTargetLocator) || kind == typeid(CustomProjectionTargetLocator);
}

/// The locator as one whose rays are reflected first; null for others, and for classes derived from that one.
const CollimatedTargetLocator* mirrorOf(const TargetLocator& locator) {
    const bool isMirror = typeid(locator) == typeid(CollimatedTargetLocator);
    return isMirror ? static_cast<const CollimatedTargetLocator*>(&locator) : nullptr;
}

}  // namespace

bool answersInAnyOrder(const ScreenGeometry& screen) {
    const std::type_info& kind = typeid(screen);
    return kind == typeid(OBJScreen) || kind == typeid(MeshScreen) || kind == typeid(SphericalScreen) ||
           kind == typeid(CylinderScreen) || kind == typeid(RuledSurfaceScreen) || kind == typeid(FlatScreen);
}

RaysAtOnce::RaysAtOnce(const TargetLocator& locator) : m_mirror(mirrorOf(locator)) {
    if (m_mirror != nullptr || asksTheScreenDirectly(locator)) {
        const std::shared_ptr<const ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
        m_screen = screen && answersInAnyOrder(*screen) ? screen : nullptr;
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
