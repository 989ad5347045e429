#include "DisplayLight/PictureFinder.h"

#include "DisplayExport/ChannelSight.h"
#include "DisplayLight/LatticeFinder.h"
#include "DisplayLight/ReachFinder.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "DisplayReport/coverage/ChannelLight.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/SphereTargetLocator.h"

namespace Veltrani::DisplayLight {

namespace {

bool isStraight(const TargetLocator& locator) {
    const LocatorKind::Path path = LocatorKind::of(locator).path;
    if (path == LocatorKind::Path::FRUSTUM) {
        const auto& camera = static_cast<const SphereTargetLocatorParams&>(locator.getTargetLocatorParams());
        return camera.pitchTable.empty() && camera.yawTable.empty();
    }
    return path == LocatorKind::Path::LENS;
}

}  // namespace

PictureFinder::~PictureFinder() = default;

std::unique_ptr<const PictureFinder> PictureFinder::of(const XMLConfigManager& config,
                                                       const DisplayExport::ChannelSight& sight,
                                                       const std::shared_ptr<const ScreenGeometry>& surface) {
    const auto found = DisplayReport::ChannelLocator::of(config, *sight.channel().projector);
    if (!found.locator) {
        sight.channel().refuse(found.fault);
    }
    if (isStraight(*found.locator)) {
        return std::make_unique<ReachFinder>(DisplayReport::ChannelLight::of(found.locator, surface));
    }
    return std::make_unique<LatticeFinder>(sight);
}

}  // namespace Veltrani::DisplayLight
