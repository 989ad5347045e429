#include "DisplayLight/ReachFinder.h"

#include "DisplayExport/ChannelSight.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "DisplayReport/coverage/SearchedLight.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/DisplayKinds.h"

#include <cstddef>
#include <optional>
#include <utility>

namespace Veltrani::DisplayLight {

namespace {

using DisplayReport::ChannelLight;
using DisplayReport::SurfacePoint;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Of the box around what a lattice over the picture lands on: what lies between its nodes reaches no further.
constexpr double MARGIN = 1.0 / 16;

/// Light that is laid out in screen coordinates, of places whose coordinates are not known: they are searched.
std::unique_ptr<const ChannelLight> withoutParameters(std::shared_ptr<const ChannelLight> light,
                                                      const ScreenGeometry& surface) {
    const auto follow = [light = std::move(light)](const P2& picture) {
        const ChannelLight::Landing landing = light->landingOf(picture);
        return landing.hits ? std::optional(landing.on.place) : std::nullopt;
    };
    return std::make_unique<DisplayReport::SearchedLight>(follow, surface);
}

}  // namespace

ReachFinder::ReachFinder(std::unique_ptr<const ChannelLight> light)
    : m_light(std::move(light)), m_box(DisplayReport::LandingExtent::of(*m_light).box) {
    const double margin = MARGIN * norm(m_box.size());
    m_lower = m_box.minimum() - P3{margin, margin, margin};
    m_upper = m_box.maximum() + P3{margin, margin, margin};
}

std::unique_ptr<const ReachFinder> ReachFinder::forPlaces(const XMLConfigManager& config,
                                                          const DisplayExport::ChannelSight& sight,
                                                          const std::shared_ptr<const ScreenGeometry>& surface,
                                                          bool hasParameters) {
    const auto found = DisplayReport::ChannelLocator::of(config, *sight.channel().projector);
    if (!found.locator) {
        sight.channel().refuse(found.fault);
    }
    std::unique_ptr<const ChannelLight> light = ChannelLight::of(found.locator, surface);
    const LocatorKind::Path path = LocatorKind::of(*found.locator).path;
    const bool isLaidOut = path == LocatorKind::Path::SCREEN_AREA || path == LocatorKind::Path::MAP_FILE;
    if (isLaidOut && !hasParameters) {
        light = withoutParameters(std::move(light), *surface);
    }
    return std::make_unique<const ReachFinder>(std::move(light));
}

void ReachFinder::findPlaces(const PlaceGrid& grid, SeenSide side, std::vector<FoundPlace>& found) const {
    found.assign(grid.places.size(), FoundPlace());
    std::vector<SurfacePoint> points;
    std::vector<std::size_t> numbers;
    std::vector<ChannelLight::Reach> reaches;
    const bool hasParameters = !grid.parameters.empty();
    for (std::size_t first = 0; first < found.size(); first += grid.width) {
        points.clear();
        numbers.clear();
        for (std::size_t i = first; i < first + grid.width; ++i) {
            if (grid.places[i].isSeen && mayBeLit(grid.places[i].point)) {
                points.push_back({grid.places[i].point, hasParameters ? grid.parameters[i] : P2(), hasParameters});
                numbers.push_back(i);
            }
        }
        reaches.resize(points.size());
        m_light->reach(points, reaches);
        for (std::size_t k = 0; k < numbers.size(); ++k) {
            const int product = reaches[k].side * grid.places[numbers[k]].side;
            const bool isOnSide = side == SeenSide::LIT ? product >= 0 : product <= 0;
            if (reaches[k].inSight && isOnSide && isInPicture(reaches[k].picture)) {
                found[numbers[k]] = {reaches[k].picture, static_cast<std::int8_t>(reaches[k].side), true};
            }
        }
    }
}

bool ReachFinder::mayBeLit(const P3& place) const {
    return m_box.empty() || (place[0] >= m_lower[0] && place[0] <= m_upper[0] && place[1] >= m_lower[1] &&
                             place[1] <= m_upper[1] && place[2] >= m_lower[2] && place[2] <= m_upper[2]);
}

}  // namespace Veltrani::DisplayLight
