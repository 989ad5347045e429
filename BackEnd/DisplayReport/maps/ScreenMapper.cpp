#include "DisplayReport/maps/ScreenMapper.h"

#include "Common/Finite.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/GeometryText.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "DisplayReport/coverage/ChannelLight.h"
#include "DisplayReport/coverage/SearchedLight.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocator.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// A part of the size of the screen: a millimetre of ten metres, as places of few digits are rounded.
constexpr double NEAR = 1e-4;
/// A part of the picture: what rounding adds to a place on its edge.
constexpr double EDGE_TOLERANCE = 1e-6;
/// The same of a place on the edge of the screen, where the light of the picture point itself may pass by.
constexpr double ROUNDING = 1e-9;

/// True where the light goes through the 2D coordinates of the screen, which a place in space does not state.
bool goesThroughParameters(const TargetLocator& locator) {
    const LocatorKind::Path path = LocatorKind::of(locator).path;
    return path == LocatorKind::Path::SCREEN_AREA || path == LocatorKind::Path::MAP_FILE;
}

std::unique_ptr<ChannelLight> searching(const ChannelLight& light, const ScreenGeometry& surface) {
    const auto arrival = [&light](const P2& picture) {
        const ChannelLight::Landing landing = light.landingOf(picture);
        return landing.hits ? std::optional(landing.on.place) : std::nullopt;
    };
    return std::make_unique<SearchedLight>(arrival, surface);
}

/// The edges belong to the picture, rounded or not.
std::optional<P2> inPicture(const P2& picture) {
    P2 inside;
    for (std::size_t i = 0; i < P2::size(); ++i) {
        if (!(picture[i] >= -EDGE_TOLERANCE && picture[i] <= 1 + EDGE_TOLERANCE)) {
            return std::nullopt;
        }
        inside[i] = std::clamp(picture[i], 0.0, 1.0);
    }
    return inside;
}

}  // namespace

ScreenMapper::ScreenMapper(const XMLConfigManager& config, const ChannelChoice& channel)
    : m_surface(ScreenManager::getInstance()->getScreenGeometry()) {
    if (!m_surface) {
        channel.refuse("there is no screen on which its light could arrive");
    }
    const auto [locator, missing] = ChannelLocator::of(config, *channel.projector);
    if (!locator) {
        channel.refuse(missing);
    }
    if (LocatorKind::of(*locator).path == LocatorKind::Path::UNKNOWN) {
        channel.refuse("nothing is known about its kind of target locator: where its light arrives");
    }
    const std::string lacking = goesThroughParameters(*locator) ? missingParameters(*m_surface) : std::string();
    if (!lacking.empty()) {
        channel.refuse(lacking);
    }
    m_light = ChannelLight::of(locator, m_surface);
    if (goesThroughParameters(*locator)) {
        m_back = searching(*m_light, *m_surface);
    }
    m_near = NEAR * norm(extentOf(*m_surface).size());
}

ScreenMapper::~ScreenMapper() = default;

void ScreenMapper::toLayout(std::span<const P2> picture, std::span<LayoutPoint> layout) {
    std::vector<ChannelLight::Landing> landings(picture.size());
    m_light->land(picture, landings);
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const P3& place = landings[i].on.place;
        // Outside of the picture there is no light, though its rays could be followed.
        layout[i].isMapped = landings[i].hits && inPicture(picture[i]) && isFinite(place);
        layout[i].point = layout[i].isMapped ? place : P3();
    }
}

bool ScreenMapper::toPicture(const P3& layout, P2& picture) {
    if (!isFinite(layout)) {
        return false;
    }
    const P3 place = onScreen(layout);
    P2 found;
    if (!(m_back ? *m_back : *m_light).findPicture({place, {}, false}, found)) {
        return false;
    }
    const std::optional<P2> inside = inPicture(found);
    if (!inside || !arrives(*inside, place)) {
        return false;
    }
    picture = *inside;
    return true;
}

P3 ScreenMapper::onScreen(const P3& place) const {
    const P3 normal = m_surface->getScreenNormal(place);
    std::optional<P3> nearest;
    for (const double way : {1.0, -1.0}) {
        // From well off the surface, so that a place right on it is not missed.
        const IntersectionSet hits = m_surface->intersect(place + normal * (way * m_near), place);
        if (!hits.empty() && norm(hits.first().point - place) <= m_near &&
            (!nearest || norm(hits.first().point - place) < norm(*nearest - place))) {
            nearest = hits.first().point;
        }
    }
    return nearest.value_or(place);
}

bool ScreenMapper::arrives(const P2& picture, const P3& place) const {
    const P2 inwards = (P2{0.5, 0.5} - picture) * ROUNDING;
    for (const P2& close : {picture, picture + inwards}) {
        const ChannelLight::Landing landing = m_light->landingOf(close);
        if (landing.hits && norm(landing.on.place - place) <= m_near) {
            return true;
        }
    }
    return false;
}

}  // namespace Veltrani::DisplayReport
