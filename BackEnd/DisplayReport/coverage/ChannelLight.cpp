#include "DisplayReport/coverage/ChannelLight.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/coverage/ParameterLight.h"
#include "DisplayReport/coverage/RayLight.h"
#include "DisplayReport/coverage/SearchedLight.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/CustomProjectionTargetLocator.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/FrustumRays.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "ScreenManager/SphereTargetLocator.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

/// The record of a locator; its class follows from the kind, which goes by the exact class of the locator.
template <class Record>
const Record& recordOf(const TargetLocator& locator) {
    return static_cast<const Record&>(locator.getTargetLocatorParams());
}

[[noreturn]] void refuse() {
    throw VeltraniException(__FILE__, __LINE__, L"No light is known for this kind of target locator");
}

/// Neither a mirror nor a table of headings can be gone through backwards in closed form.
std::unique_ptr<ChannelLight> searched(const std::shared_ptr<const TargetLocator>& locator,
                                       const ScreenGeometry& surface) {
    // The paths that come here are those of this family. A class from elsewhere may have a record of its own.
    auto family = std::static_pointer_cast<const SphereTargetLocator>(locator);
    const auto* const record = dynamic_cast<const SphereTargetLocatorParams*>(&family->getTargetLocatorParams());
    if (record == nullptr) {
        refuse();
    }
    const auto follow = [family = std::move(family), rays = FrustumRays(*record)](const Point<double, 2>& picture) {
        Point<double, 3> place;
        return family->locate(rays.directionOf(picture), place).first ? std::optional(place) : std::nullopt;
    };
    return std::make_unique<SearchedLight>(follow, surface);
}

std::unique_ptr<ChannelLight> throughFrustum(const std::shared_ptr<const TargetLocator>& locator,
                                             const std::shared_ptr<const ScreenGeometry>& surface) {
    const auto& record = recordOf<SphereTargetLocatorParams>(*locator);
    if (record.pitchTable.empty() && record.yawTable.empty()) {
        return std::make_unique<FrustumLight>(record, surface);
    }
    return searched(locator, *surface);
}

constexpr std::size_t COLUMNS = 128;
constexpr std::size_t ROWS = 80;

using Landings = std::vector<ChannelLight::Landing>;

/// The way from one landing to the next; nothing where one of them misses.
double wayBetween(const ChannelLight::Landing& from, const ChannelLight::Landing& to) {
    return from.hits && to.hits ? norm(to.on.place - from.on.place) : 0.0;
}

void landRow(const ChannelLight& light, std::size_t row, std::vector<Point<double, 2>>& picture, Landings& landings) {
    for (std::size_t column = 0; column <= COLUMNS; ++column) {
        picture[column] = {static_cast<double>(column) / COLUMNS, static_cast<double>(row) / ROWS};
    }
    light.land(picture, landings);
}

}  // namespace

ChannelLight::~ChannelLight() = default;

ChannelLight::Landing ChannelLight::landingOf(const Point<double, 2>& picture) const {
    Landing landing;
    land({&picture, 1}, {&landing, 1});
    return landing;
}

void ChannelLight::reach(std::span<const SurfacePoint> points, std::span<Reach> reaches) const {
    for (std::size_t i = 0; i < points.size(); ++i) {
        reaches[i] = {};
        reaches[i].hasPicture = findPicture(points[i], reaches[i].picture);
        reaches[i].inSight = reaches[i].hasPicture && isNearPicture(reaches[i].picture) && isReached(points[i]);
    }
}

bool ChannelLight::isReached(const SurfacePoint& /*point*/) const {
    return true;
}

bool ChannelLight::isNearPicture(const Point<double, 2>& picture) {
    return picture[0] >= -NEAR_PICTURE && picture[0] <= 1.0 + NEAR_PICTURE && picture[1] >= -NEAR_PICTURE &&
           picture[1] <= 1.0 + NEAR_PICTURE;
}

bool ChannelLight::isInPicture(const Point<double, 2>& picture) {
    return picture[0] >= 0.0 && picture[0] <= 1.0 && picture[1] >= 0.0 && picture[1] <= 1.0;
}

std::unique_ptr<ChannelLight> ChannelLight::of(const std::shared_ptr<const TargetLocator>& locator,
                                               const std::shared_ptr<const ScreenGeometry>& surface) {
    using Path = LocatorKind::Path;
    switch (LocatorKind::of(*locator).path) {
        case Path::SCREEN_AREA:
            return std::make_unique<AreaLight>(recordOf<PlanarTargetLocatorParams>(*locator), surface);
        case Path::MAP_FILE:
            return std::make_unique<MapFileLight>(recordOf<CustomPlanarTargetLocatorParams>(*locator), surface);
        case Path::LENS:
            return std::make_unique<LensLight>(recordOf<CustomProjectionTargetLocatorParams>(*locator).projectionModel,
                                               surface);
        case Path::FRUSTUM:
            return throughFrustum(locator, surface);
        case Path::MIRROR:
        case Path::FOLLOWED:
            return searched(locator, *surface);
        case Path::UNKNOWN:
            break;
    }
    refuse();
}

LandingExtent LandingExtent::of(const ChannelLight& light) {
    LandingExtent extent;
    std::vector<Point<double, 2>> picture(COLUMNS + 1);
    Landings below(COLUMNS + 1);
    Landings here(COLUMNS + 1);
    std::vector<double> heights(COLUMNS + 1);
    double width = 0;
    for (std::size_t row = 0; row <= ROWS; ++row) {
        landRow(light, row, picture, here);
        double widthOfRow = 0;
        for (std::size_t column = 0; column <= COLUMNS; ++column) {
            widthOfRow += column > 0 ? wayBetween(here[column - 1], here[column]) : 0.0;
            heights[column] += row > 0 ? wayBetween(below[column], here[column]) : 0.0;
            if (here[column].hits) {
                extent.box.add(here[column].on.place);
            }
        }
        width = std::max(width, widthOfRow);
        below.swap(here);
    }
    extent.narrow = std::min(width, *std::max_element(heights.begin(), heights.end()));
    return extent;
}

}  // namespace Veltrani::DisplayReport
