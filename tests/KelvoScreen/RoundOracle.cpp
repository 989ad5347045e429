#include "KelvoScreen/RoundOracle.h"

#include "Configuration/BaseConfig.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <sstream>
#include <utility>

namespace oracle {

namespace {

constexpr long double PI = std::numbers::pi_v<long double>;
/// The promised accuracy, in units of the largest length involved.
constexpr long double ACCURACY = 1e-12L;

Exact aboutX(long double angle, const Exact& v) {
    const long double c = std::cos(angle);
    const long double s = std::sin(angle);
    return {v[0], c * v[1] - s * v[2], s * v[1] + c * v[2]};
}

Exact aboutY(long double angle, const Exact& v) {
    const long double c = std::cos(angle);
    const long double s = std::sin(angle);
    return {c * v[0] + s * v[2], v[1], c * v[2] - s * v[0]};
}

Exact aboutZ(long double angle, const Exact& v) {
    const long double c = std::cos(angle);
    const long double s = std::sin(angle);
    return {c * v[0] - s * v[1], s * v[0] + c * v[1], v[2]};
}

/// A line in the own frame of the shape, its direction of length 1.
struct OwnLine {
    Exact start, direction;
};

}  // namespace

Exact exact(const Point<double, 3>& p) {
    return {static_cast<long double>(p[0]), static_cast<long double>(p[1]), static_cast<long double>(p[2])};
}

Exact turned(const Point<double, 3>& angles, Exact v) {
    return aboutZ(-angles[0], aboutX(angles[1], aboutY(angles[2], v)));
}

Exact turnedBack(const Point<double, 3>& angles, Exact v) {
    return aboutY(-angles[2], aboutX(-angles[1], aboutZ(angles[0], v)));
}

long double lineDistance(const Point<double, 3>& from, const Point<double, 3>& to, const Point<double, 3>& point) {
    const Exact direction = exact(to) - exact(from);
    return norm(cross(exact(point) - exact(from), direction)) / norm(direction);
}

RoundOracle::RoundOracle(ScreenConfigDouble config) : m_config(std::move(config)) {}

bool RoundOracle::isSphere() const {
    return m_config.shape == BaseConfig::SHAPE_SPHERE;
}

Exact RoundOracle::own(const Point<double, 3>& point) const {
    return turnedBack(m_config.orientation, exact(point) - exact(m_config.centre));
}

Exact RoundOracle::mapped(long double s, long double t) const {
    const long double azimuth = m_config.azimuthMin + s * (m_config.azimuthMax - m_config.azimuthMin);
    const long double radius = m_config.radius;
    Exact v{radius * std::sin(azimuth), radius * std::cos(azimuth), (t - 0.5L) * m_config.height};
    if (isSphere()) {
        const long double elevation = m_config.elevationMin + t * (m_config.elevationMax - m_config.elevationMin);
        v = {v[0] * std::cos(elevation), v[1] * std::cos(elevation), radius * std::sin(elevation)};
    }
    return exact(m_config.centre) + turned(m_config.orientation, v);
}

long double RoundOracle::distanceFromWholeSurface(const Point<double, 3>& point) const {
    Exact v = own(point);
    v[2] = isSphere() ? v[2] : 0;
    return norm(v) - m_config.radius;
}

long double RoundOracle::limitSlack(const Point<double, 3>& point) const {
    return slackOf(own(point));
}

long double RoundOracle::slackOf(const Exact& v) const {
    const long double fromAxis = std::hypot(v[0], v[1]);
    const long double middle = (m_config.azimuthMin + m_config.azimuthMax) / 2;
    const long double halfSpan = (m_config.azimuthMax - m_config.azimuthMin) / 2;
    const long double turn = std::remainder(std::atan2(v[0], v[1]) - middle, 2 * PI);
    const long double beyond = std::abs(turn) - halfSpan;
    const bool isWholeTurn = halfSpan >= PI - 1e-9L;
    long double slack = isWholeTurn ? m_config.radius : -fromAxis * std::sin(std::clamp(beyond, -PI / 2, PI / 2));
    if (isSphere()) {
        const long double elevation = std::atan2(v[2], fromAxis);
        if (m_config.elevationMin > -PI / 2 + 1e-9L) {
            slack = std::min(slack, m_config.radius * (elevation - m_config.elevationMin));
        }
        if (m_config.elevationMax < PI / 2 - 1e-9L) {
            slack = std::min(slack, m_config.radius * (m_config.elevationMax - elevation));
        }
        return slack;
    }
    return std::min(slack, m_config.height / 2.0L - std::abs(v[2]));
}

std::vector<ExpectedHit> RoundOracle::meetings(const Point<double, 3>& from, const Point<double, 3>& to) const {
    const Exact start = own(from);
    Exact direction = turnedBack(m_config.orientation, exact(to) - exact(from));
    direction *= 1 / norm(direction);
    const auto flat = [this](Exact v) {
        v[2] = isSphere() ? v[2] : 0;
        return v;
    };
    const long double across2 = dot(flat(direction), flat(direction));
    const long double middle = -dot(flat(start), flat(direction)) / across2;
    const long double passing = norm(flat(start + middle * direction));
    const long double radius = m_config.radius;
    if (passing > radius) {
        return {};
    }
    const long double half = std::sqrt((radius - passing) * (radius + passing) / across2);
    std::vector<ExpectedHit> found;
    for (const long double along : {middle - half, middle + half}) {
        const Exact place = start + along * direction;
        found.push_back({along, dot(flat(place), direction) / radius, slackOf(place)});
    }
    return found;
}

long double RoundOracle::clearance(const Point<double, 3>& from, const Point<double, 3>& to) const {
    const Exact start = own(from);
    const Exact direction = turnedBack(m_config.orientation, exact(to) - exact(from));
    if (isSphere()) {
        return norm(cross(start, direction)) / norm(direction) - m_config.radius;
    }
    return std::abs(start[0] * direction[1] - start[1] * direction[0]) / std::hypot(direction[0], direction[1]) -
           m_config.radius;
}

double RoundOracle::scale(const Point<double, 3>& from, const Point<double, 3>& to) const {
    return std::max({norm(from), norm(to), norm(m_config.centre), m_config.radius, m_config.height});
}

std::string RoundOracle::faultOf(const IntersectionSet& hits, const Point<double, 3>& from, const Point<double, 3>& to,
                                 bool whole) const {
    const std::vector<ExpectedHit> expected = meetings(from, to);
    std::ostringstream fault;
    for (std::size_t i = 0; i < hits.size(); ++i) {
        if (i > 0 && hits[i].t < hits[i - 1].t) {
            fault << "hit " << i << " is out of order; ";
        }
        fault << faultOfHit(hits[i], from, to, expected, whole);
    }
    const long double allowed = ACCURACY * scale(from, to);
    const bool isTouching = std::abs(clearance(from, to)) <= allowed;
    const long double length = norm(exact(to) - exact(from));
    for (const ExpectedHit& one : expected) {
        const long double along = allowed / std::abs(one.cosine);
        int found = 0;
        for (std::size_t i = 0; i < hits.size(); ++i) {
            found += std::abs(hits[i].t * length - one.along) <= along ? 1 : 0;
        }
        const bool isCertain = !isTouching && one.along > along && (whole || one.limitSlack > along);
        if (isCertain && found == 0) {
            fault << "no hit at " << one.along << " (cosine " << one.cosine << "); ";
        }
        if (found > 1 && std::abs(expected[0].along - expected[1].along) > 2 * along) {
            fault << "more than one hit at " << one.along << "; ";
        }
    }
    return fault.str();
}

std::string RoundOracle::faultOfHit(const Intersection& hit, const Point<double, 3>& from, const Point<double, 3>& to,
                                    const std::vector<ExpectedHit>& expected, bool whole) const {
    std::ostringstream fault;
    const Exact direction = exact(to) - exact(from);
    const long double allowed = ACCURACY * std::max<long double>(scale(from, to), norm(hit.point));
    const long double offSurface = distanceFromWholeSurface(hit.point);
    const long double offRay = lineDistance(from, to, hit.point);
    if (!(std::abs(offSurface) <= allowed) || !(offRay <= allowed) || !(hit.t >= 0)) {
        fault << "hit at t = " << hit.t << " is off the surface by " << offSurface << ", off the ray by " << offRay
              << "; ";
    }
    if (!(norm(exact(from) + hit.t * direction - exact(hit.point)) <= 2 * allowed)) {
        fault << "hit is not at its t = " << hit.t << "; ";
    }
    const bool isKnown = std::any_of(expected.begin(), expected.end(), [&](const ExpectedHit& one) {
        const long double along = allowed / std::abs(one.cosine);
        return std::abs(hit.t * norm(direction) - one.along) <= along && (whole || one.limitSlack >= -along);
    });
    if (!isKnown && !(std::abs(clearance(from, to)) <= allowed)) {
        fault << "hit at t = " << hit.t << " is not expected; ";
    }
    return fault.str();
}

}  // namespace oracle
