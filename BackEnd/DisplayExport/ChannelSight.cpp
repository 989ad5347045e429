#include "DisplayExport/ChannelSight.h"

#include "Common/Finite.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayExport/PictureWay.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocator.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace Veltrani::DisplayExport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// A part of the distance of the eye from the origin: what rounding makes of one eye that is stated twice.
constexpr double SAME_EYE = 1e-9;
/// Between two pulses: enough for rays to be cast together.
constexpr std::size_t PLACES_AT_ONCE = 8192;

std::unique_ptr<const PictureWay> wayOf(const XMLConfigManager& config, const DisplayReport::ChannelChoice& channel) {
    const std::shared_ptr<const ScreenGeometry> surface = ScreenManager::getInstance()->getScreenGeometry();
    if (!surface) {
        channel.refuse("the display has no screen to see it on: add a Screen element, or check its file");
    }
    const auto found = DisplayReport::ChannelLocator::of(config, *channel.projector);
    if (!found.locator) {
        channel.refuse(found.fault);
    }
    auto way = PictureWay::of(found.locator, surface);
    if (!way) {
        channel.refuse("nothing is known of the way of its light");
    }
    if (way->goesThroughScreenCoordinates() && !surface->isParameterised()) {
        channel.refuse(
            "its picture is placed by the 2D coordinates of the screen, and this one has none: export the "
            "mesh with a texture coordinate at every corner");
    }
    return way;
}

std::string textOf(const P3& point) {
    return DisplayReport::exactText(point[0]) + "," + DisplayReport::exactText(point[1]) + "," +
           DisplayReport::exactText(point[2]);
}

P3 eyeOf(const XMLConfigManager& config, const DisplayReport::ChannelChoice& channel, const PictureWay& way,
         const std::optional<P3>& eye) {
    if (eye && !isFinite(*eye)) {
        channel.refuse("the eye is not finite: state three numbers");
    }
    if (const std::optional<P3> own = way.eyeOfMirror()) {
        if (eye && !(norm(*eye - *own) <= SAME_EYE * (1 + norm(*own)))) {
            channel.refuse("it is seen in a mirror from " + textOf(*own) + " alone, and not from " + textOf(*eye) +
                           ": leave the eye out");
        }
        return *own;
    }
    const IScreenConfig* const screen = config.getScreenConfig();
    return eye.value_or(screen != nullptr ? screen->getEyePoint() : P3());
}

}  // namespace

ChannelSight::ChannelSight(const XMLConfigManager& config, const DisplayReport::ChannelChoice& channel,
                           const std::optional<P3>& eye, std::function<void()> pulse)
    : m_channel(channel),
      m_pulse(std::move(pulse)),
      m_way(wayOf(config, channel)),
      m_eye(eyeOf(config, channel, *m_way, eye)),
      m_isInMirror(m_way->eyeOfMirror().has_value()),
      m_hasScreenCoordinates(m_way->goesThroughScreenCoordinates()) {}

ChannelSight::~ChannelSight() = default;
ChannelSight::ChannelSight(ChannelSight&&) noexcept = default;

// Written in place: a place that is made by itself and copied then costs more than what is calculated of it.
void ChannelSight::seeAs(const Arrival& arrival, SeenPlace& seen) const {
    seen.isSeen = arrival.arrives && isFinite(arrival.point);
    seen.hasScreen = seen.isSeen && m_hasScreenCoordinates;
    if (seen.isSeen) {
        seen.point = arrival.point;
        seen.direction = m_isInMirror ? m_way->directionInMirror(arrival) : arrival.point - m_eye;
        seen.screen = arrival.screen;
    } else {
        seen.point = {};
        seen.direction = {};
        seen.screen = {};
    }
}

void ChannelSight::see(std::span<const P2> picture, std::span<SeenPlace> seen) const {
    for (std::size_t first = 0; first < picture.size(); first += PLACES_AT_ONCE) {
        if (m_pulse) {
            m_pulse();
        }
        const auto some = picture.subspan(first, std::min(PLACES_AT_ONCE, picture.size() - first));
        // Every arrival is written anew.
        m_arrivals.resize(some.size());
        m_way->follow(some, m_arrivals);
        for (std::size_t i = 0; i < some.size(); ++i) {
            seeAs(m_arrivals[i], seen[first + i]);
        }
    }
}

SeenPlace ChannelSight::continued(const P2& picture) const {
    if (m_pulse) {
        m_pulse();
    }
    SeenPlace seen;
    seeAs(m_way->continued(picture), seen);
    return seen;
}

std::optional<P3> ChannelSight::meanDirection() const {
    constexpr int COLUMNS = 129;
    constexpr int ROWS = 81;
    std::vector<P2> picture;
    for (int row = 0; row < ROWS; ++row) {
        for (int column = 0; column < COLUMNS; ++column) {
            picture.emplace_back(static_cast<double>(column) / (COLUMNS - 1), static_cast<double>(row) / (ROWS - 1));
        }
    }
    std::vector<SeenPlace> places(picture.size());
    see(picture, places);
    P3 sum;
    for (const SeenPlace& place : places) {
        const double length = norm(place.direction);
        sum += length > 0 ? place.direction * (1 / length) : P3();
    }
    const double length = norm(sum);
    // Below that, directions all around cancel out but for rounding and the steps of the lattice.
    constexpr double LEAST = 1e-3;
    return length > LEAST * static_cast<double>(places.size()) ? std::optional(sum * (1 / length)) : std::nullopt;
}

}  // namespace Veltrani::DisplayExport
