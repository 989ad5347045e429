#include "DisplayReport/check/ChannelFacts.h"

#include "Common/Matrix.h"
#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/Fault.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "KelvoControl/ProjectionModel.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/CustomProjectionTargetLocator.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/TargetLocator.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Veltrani::DisplayReport {

namespace {

/// Lines of sight over a picture, in the middles of as many equal parts: enough to know a part of it to a few percent.
constexpr std::size_t COLUMNS = 25;
constexpr std::size_t ROWS = 17;

constexpr Point<double, 2> MIDDLE{0.5, 0.5};

/// Steeper, the azimuth of an axis is a matter of rounding, and so is its roll.
constexpr double STEEP = 0.9999;

std::vector<Point<double, 2>> lattice() {
    std::vector<Point<double, 2>> picture;
    for (std::size_t row = 0; row < ROWS; ++row) {
        for (std::size_t column = 0; column < COLUMNS; ++column) {
            picture.push_back({(static_cast<double>(column) + 0.5) / COLUMNS, (static_cast<double>(row) + 0.5) / ROWS});
        }
    }
    return picture;
}

double angleBetween(const Point<double, 3>& a, const Point<double, 3>& b) {
    return std::atan2(norm(cross(a, b)), dot(a, b));
}

/// How far the right side of a picture hangs below the horizon.
double rollOf(const Matrix<double, 3>& world_from_projector, double y) {
    const Point<double, 3> forward = world_from_projector * Point<double, 3>{0, 1, 0};
    if (std::abs(forward[2]) > STEEP) {
        return y;
    }
    const Point<double, 3> right = world_from_projector * Point<double, 3>{1, 0, 0};
    const Point<double, 3> level = cross(forward, Point<double, 3>{0, 0, 1});
    return std::atan2(-dot(right, cross(level, forward)), dot(right, level));
}

/// Where the rays of a channel start.
Point<double, 3> originOf(const DisplayKind& kind, const XMLConfigManager& config, const ProjectorConfig& projector) {
    const TargetLocatorConfig* const targets = config.getTargetLocatorConfig();
    return kind.addressedBy == DisplayKind::Addressing::EYE && targets != nullptr ? targets->getTargetPosition()
                                                                                  : projector.getPosition();
}

}  // namespace

Heading Heading::of(const Point<double, 3>& direction) {
    return {std::atan2(direction[0], direction[1]), std::atan2(direction[2], std::hypot(direction[0], direction[1]))};
}

double Heading::rightOf(const Heading& other) const {
    return std::remainder(azimuth - other.azimuth, 2 * std::numbers::pi);
}

ChannelFacts::ChannelFacts(const XMLConfigManager& config, const DisplayKind* kind, const ProjectorConfig& projector)
    : m_projector(&projector),
      m_name(toUtf8(projector.getName())),
      m_allowed(toUtf8(projector.getAllowed())),
      m_locator(kind == nullptr ? nullptr : ChannelLocator::of(config, projector).locator) {
    // What is wrong with a source is a fault of its own; nothing is concluded from its numbers.
    if (kind != nullptr && m_locator && locatorSourceOf(config, projector).faults.empty()) {
        look(*kind, config);
    } else {
        m_locator.reset();
    }
}

void ChannelFacts::look(const DisplayKind& kind, const XMLConfigManager& config) {
    if (kind.addressedBy == DisplayKind::Addressing::SCREEN_PARAMETERS) {
        return;
    }
    const ProjectorConfig& projector = *m_projector;
    const Matrix<double, 3> world_from_projector =
        rotationZXY(projector.getOrientationZ(), projector.getOrientationX(), projector.getOrientationY());
    const ProjectionModel* const lens = this->lens();
    m_hasView = true;
    m_statesProjector = kind.addressedBy == DisplayKind::Addressing::PROJECTOR;
    m_view.from = originOf(kind, config, projector);
    m_view.hasLens = lens != nullptr;
    m_view.axis = world_from_projector * Point<double, 3>{0, 1, 0};
    m_view.heading = Heading::of(m_view.axis);
    m_view.roll = rollOf(world_from_projector, projector.getOrientationY());
    m_view.middle = rayOf(lens, MIDDLE);
    if (lens == nullptr) {
        m_view.wide = std::abs(projector.getFrustumRight() - projector.getFrustumLeft());
        m_view.high = std::abs(projector.getFrustumTop() - projector.getFrustumBottom());
    } else {
        m_view.wide = reachOf(*lens, {0.0, 0.5}) + reachOf(*lens, {1.0, 0.5});
        m_view.high = reachOf(*lens, {0.5, 0.0}) + reachOf(*lens, {0.5, 1.0});
    }
}

Point<double, 3> ChannelFacts::rayOf(const ProjectionModel* lens, const Point<double, 2>& picture) const {
    const Matrix<double, 3> world_from_projector =
        rotationZXY(m_projector->getOrientationZ(), m_projector->getOrientationX(), m_projector->getOrientationY());
    Point<double, 3> ray = world_from_projector * Point<double, 3>{0, 1, 0};
    if (lens != nullptr) {
        lens->unproject(picture, ray);
    } else {
        const auto between = [](double from, double to, double part) {
            return std::tan(from) + (std::tan(to) - std::tan(from)) * part;
        };
        ray = world_from_projector *
              Point<double, 3>{between(m_projector->getFrustumLeft(), m_projector->getFrustumRight(), picture[0]), 1.0,
                               between(m_projector->getFrustumBottom(), m_projector->getFrustumTop(), picture[1])};
    }
    return ray * (1.0 / norm(ray));
}

double ChannelFacts::reachOf(const ProjectionModel& lens, const Point<double, 2>& edge) const {
    // The circle of a lens may end before its picture does.
    constexpr int STEPS = 64;
    for (int step = STEPS; step > 0; --step) {
        Point<double, 3> ray;
        if (lens.unproject(MIDDLE + (edge - MIDDLE) * (static_cast<double>(step) / STEPS), ray)) {
            return angleBetween(ray, m_view.middle);
        }
    }
    return 0.0;
}

const ProjectionModel* ChannelFacts::lens() const {
    if (!m_locator || LocatorKind::of(*m_locator).path != LocatorKind::Path::LENS) {
        return nullptr;
    }
    return static_cast<const CustomProjectionTargetLocatorParams&>(m_locator->getTargetLocatorParams())
        .projectionModel.get();
}

std::optional<Point<double, 2>> ChannelFacts::axisInPicture() const {
    const ProjectionModel* const lens = this->lens();
    Point<double, 2> place;
    const bool isKnown = lens != nullptr && lens->projectNormalised(lens->viewport().position + m_view.axis, place);
    return isKnown ? std::optional(place) : std::nullopt;
}

void ChannelFacts::measure(const std::shared_ptr<const ScreenGeometry>& surface) {
    if (!m_locator) {
        return;
    }
    const std::vector<Point<double, 2>> picture = lattice();
    std::vector<ChannelLight::Landing> landings(picture.size());
    try {
        std::shared_ptr<const ChannelLight> light = ChannelLight::of(m_locator, surface);
        light->land(picture, landings);
        m_light = std::move(light);
    } catch (...) {
        // A surface without 2D coordinates, which is a fault of the screen.
        static_cast<void>(faultOf({}, std::current_exception()));
        return;
    }
    for (const ChannelLight::Landing& landing : landings) {
        if (landing.hits) {
            m_landings.push_back(landing.on.place);
        }
    }
    m_landed = static_cast<double>(m_landings.size()) / static_cast<double>(picture.size());
    const ChannelLight::Landing middle = m_light->landingOf(MIDDLE);
    if (m_statesProjector && middle.hits) {
        m_throw = norm(middle.on.place - m_view.from);
    }
}

Point<double, 3> ChannelFacts::middleOfLight() const {
    Point<double, 3> sum;
    for (const Point<double, 3>& landing : m_landings) {
        sum += landing;
    }
    return sum * (1.0 / static_cast<double>(std::max<std::size_t>(m_landings.size(), 1)));
}

double ChannelFacts::spreadOfLight() const {
    const Point<double, 3> middle = middleOfLight();
    double sum = 0;
    for (const Point<double, 3>& landing : m_landings) {
        const Point<double, 3> away = landing - middle;
        sum += dot(away, away);
    }
    return std::sqrt(sum / static_cast<double>(std::max<std::size_t>(m_landings.size(), 1)));
}

}  // namespace Veltrani::DisplayReport
