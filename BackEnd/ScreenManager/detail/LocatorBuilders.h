#pragma once

#include "Configuration/ProjectorConfig.h"
#include "ScreenManager/SphereTargetLocator.h"
#include "ScreenManager/TargetLocatorManager.h"

#include <functional>
#include <new>

namespace Veltrani::ScreenManagerDetail {

/// How the target locators of the display kinds are built, for their table: each reads its record from the
/// configuration in a fixed order and has the manager keep a locator that fits it.
struct LocatorBuilders {
    static bool planar(TargetLocatorManager& manager, const XMLConfigManager* config,
                       const ProjectorConfig* projector) {
        return manager.checkOrCreatePlanarTargetLocator(config, projector);
    }
    static bool sphere(TargetLocatorManager& manager, const XMLConfigManager* config,
                       const ProjectorConfig* projector) {
        return manager.checkOrCreateSphereTargetLocator(config, projector);
    }
    static bool collimated(TargetLocatorManager& manager, const XMLConfigManager* config,
                           const ProjectorConfig* projector) {
        return manager.checkOrCreateCollimatedTargetLocator(config, projector);
    }
    static bool customPlanar(TargetLocatorManager& manager, const XMLConfigManager* config,
                             const ProjectorConfig* projector) {
        return manager.checkOrCreateCustomPlanarTargetLocator(config, projector);
    }
    static bool customProjection(TargetLocatorManager& manager, const XMLConfigManager* config,
                                 const ProjectorConfig* projector) {
        return manager.checkOrCreateCustomProjectionTargetLocator(config, projector);
    }

    /// Reads what every kind that looks through a frustum takes from a projector, in the order of its entry; programs
    /// that compare call traces rely on this order.
    static void readFrustum(const ProjectorConfig& projector, SphereTargetLocatorParams& params) {
        params.eyepoint = projector.getPosition();
        params.angleTop = projector.getFrustumTop();
        params.angleBottom = projector.getFrustumBottom();
        params.angleLeft = projector.getFrustumLeft();
        params.angleRight = projector.getFrustumRight();
        params.rotationZ = projector.getOrientationZ();
        params.rotationX = projector.getOrientationX();
        params.rotationY = projector.getOrientationY();
    }

    /// Keeps a locator for a record, under the identity of the projector: the last step of the builder of every kind.
    template <class Locator, class Params>
    static bool keep(TargetLocatorManager& manager, const ProjectorConfig& projector, const Params& params) {
        return manager.checkOrCreateTargetLocator(projector.getIdentity(), params, factoryOf<Locator>(params));
    }

    /// The factory of a kind of locator; null where there is no memory for it. Refers to the record, which must outlive
    /// it.
    template <class Locator, class Params>
    static std::function<TargetLocator*()> factoryOf(const Params& params) {
        return [&params]() -> TargetLocator* { return new (std::nothrow) Locator(params); };
    }
};

}  // namespace Veltrani::ScreenManagerDetail
