#include "DisplayExport/PictureWay.h"

#include "DisplayExport/RayWay.h"
#include "DisplayExport/ScreenCoordinateWay.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/CustomProjectionTargetLocator.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/PlanarTargetLocator.h"

namespace Veltrani::DisplayExport {

PictureWay::~PictureWay() = default;

std::unique_ptr<const PictureWay> PictureWay::of(const std::shared_ptr<const TargetLocator>& locator,
                                                 const std::shared_ptr<const ScreenGeometry>& surface) {
    using Path = LocatorKind::Path;
    switch (LocatorKind::of(*locator).path) {
        case Path::SCREEN_AREA:
            return std::make_unique<AreaWay>(
                static_cast<const PlanarTargetLocatorParams&>(locator->getTargetLocatorParams()), surface);
        case Path::MAP_FILE:
            return std::make_unique<MapFileWay>(std::static_pointer_cast<const CustomPlanarTargetLocator>(locator),
                                                surface);
        case Path::LENS:
            return std::make_unique<LensWay>(
                static_cast<const CustomProjectionTargetLocatorParams&>(locator->getTargetLocatorParams())
                    .projectionModel,
                surface);
        case Path::FRUSTUM:
            return std::make_unique<FrustumWay>(std::static_pointer_cast<const SphereTargetLocator>(locator), surface);
        case Path::MIRROR:
            return std::make_unique<MirrorWay>(std::static_pointer_cast<const CollimatedTargetLocator>(locator),
                                               surface);
        case Path::FOLLOWED:
            return std::make_unique<FollowedWay>(std::static_pointer_cast<const SphereTargetLocator>(locator));
        case Path::UNKNOWN:
            break;
    }
    return nullptr;
}

}  // namespace Veltrani::DisplayExport
