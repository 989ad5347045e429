#include "DisplayReport/ChannelLight.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/AreaLight.h"
#include "DisplayReport/FrustumLight.h"
#include "DisplayReport/LensLight.h"
#include "DisplayReport/MapFileLight.h"
#include "DisplayReport/SearchedLight.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/CustomProjectionTargetLocator.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "ScreenManager/SphereTargetLocator.h"

namespace Veltrani::DisplayReport {

namespace {

/// The record of a locator whose kind is known.
template <class Record>
const Record& recordOf(const TargetLocator& locator) {
    return static_cast<const Record&>(locator.getTargetLocatorParams());
}

template <class Locator>
bool isKind(const TargetLocator& locator) {
    return dynamic_cast<const Locator*>(&locator) != nullptr;
}

/// Neither a mirror nor a table of headings can be gone through backwards in closed form.
std::unique_ptr<ChannelLight> lightOfCamera(const std::shared_ptr<const TargetLocator>& locator,
                                            const std::shared_ptr<const ScreenGeometry>& surface) {
    const auto& record = recordOf<SphereTargetLocatorParams>(*locator);
    const bool isStraight = record.pitchTable.empty() && record.yawTable.empty();
    if (isStraight && !isKind<CollimatedTargetLocator>(*locator)) {
        return std::make_unique<FrustumLight>(record, surface);
    }
    return std::make_unique<SearchedLight>(std::static_pointer_cast<const SphereTargetLocator>(locator), *surface);
}

}  // namespace

ChannelLight::~ChannelLight() = default;

ChannelLight::Landing ChannelLight::landingOf(const Point<double, 2>& picture) const {
    Landing landing;
    land({&picture, 1}, {&landing, 1});
    return landing;
}

bool ChannelLight::isInPicture(const Point<double, 2>& picture) {
    return picture[0] >= 0.0 && picture[0] <= 1.0 && picture[1] >= 0.0 && picture[1] <= 1.0;
}

std::unique_ptr<ChannelLight> ChannelLight::of(const std::shared_ptr<const TargetLocator>& locator,
                                               const std::shared_ptr<const ScreenGeometry>& surface) {
    if (isKind<SphereTargetLocator>(*locator)) {
        return lightOfCamera(locator, surface);
    }
    if (isKind<PlanarTargetLocator>(*locator)) {
        return std::make_unique<AreaLight>(recordOf<PlanarTargetLocatorParams>(*locator), surface);
    }
    if (isKind<CustomPlanarTargetLocator>(*locator)) {
        return std::make_unique<MapFileLight>(recordOf<CustomPlanarTargetLocatorParams>(*locator), surface);
    }
    if (isKind<CustomProjectionTargetLocator>(*locator)) {
        return std::make_unique<LensLight>(recordOf<CustomProjectionTargetLocatorParams>(*locator).projectionModel,
                                           surface);
    }
    throw VeltraniException(__FILE__, __LINE__, L"No light is known for this kind of target locator");
}

}  // namespace Veltrani::DisplayReport
