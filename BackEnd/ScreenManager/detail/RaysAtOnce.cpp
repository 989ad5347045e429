#include "ScreenManager/detail/RaysAtOnce.h"

#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/OBJScreen.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/SphericalScreen.h"
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

}  // namespace

bool answersInAnyOrder(const ScreenGeometry& screen) {
    const std::type_info& kind = typeid(screen);
    return kind == typeid(OBJScreen) || kind == typeid(MeshScreen) || kind == typeid(SphericalScreen) ||
           kind == typeid(CylinderScreen) || kind == typeid(RuledSurfaceScreen) || kind == typeid(FlatScreen);
}

std::shared_ptr<const ScreenGeometry> screenForRaysOf(const TargetLocator& locator) {
    if (!asksTheScreenDirectly(locator)) {
        return nullptr;
    }
    std::shared_ptr<const ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
    return screen && answersInAnyOrder(*screen) ? screen : nullptr;
}
