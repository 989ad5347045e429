#include "KelvoScreen/detail/SphereSurface.h"

#include "KelvoScreen/detail/RayAim.h"
#include "KelvoScreen/detail/Rounding.h"
#include "KelvoScreen/detail/ShapeFaults.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace Veltrani::KelvoScreenDetail {

namespace {

constexpr double POLE = std::numbers::pi / 2;
constexpr double INFINITE = std::numeric_limits<double>::infinity();

/// Every hit of the whole sphere passes.
constexpr auto NO_LIMIT = [](const RayAim&, double, const Point<double, 3>&, double) { return true; };

}  // namespace

SphereSurface::SphereSurface(const SphereNumbers& numbers)
    : m_numbers(numbers),
      m_placement(numbers.centre, numbers.orientation),
      m_fault(faultOf(numbers)),
      m_isValid(m_fault.empty()) {
    if (!m_isValid) {
        return;
    }
    m_sector = AzimuthSector(numbers.azimuthMin, numbers.azimuthMax);
    m_lower = rimAt(numbers.elevationMin, numbers.radius);
    m_upper = rimAt(numbers.elevationMax, numbers.radius);
    m_extent = largestComponent(numbers.centre) + numbers.radius;
    m_isWhole = m_sector.isWhole() && std::isinf(m_lower.height) && std::isinf(m_upper.height);
}

std::wstring SphereSurface::faultOf(const SphereNumbers& numbers) {
    return firstFault({faultOfPlace(numbers.centre, numbers.orientation), faultOfRadius(numbers.radius, numbers.centre),
                       faultOfAzimuths(numbers.azimuthMin, numbers.azimuthMax),
                       faultOfElevations(numbers.elevationMin, numbers.elevationMax)});
}

SphereSurface::Rim SphereSurface::rimAt(double elevation, double radius) {
    if (std::abs(elevation) >= POLE - ANGLE_TOLERANCE) {
        return {std::copysign(INFINITE, elevation), 0.0};
    }
    return {radius * std::sin(elevation), radius * std::cos(elevation)};
}

double SphereSurface::Rim::excess(const Point<double, 3>& own) const {
    const bool isNearPole = std::abs(height) > radius && own[2] * height > 0;
    if (!isNearPole) {
        return own[2] - height;
    }
    const double inwards = radius * radius - (own[0] * own[0] + own[1] * own[1]);
    return height > 0 ? inwards : -inwards;
}

template <class Limit, class Visit>
void SphereSurface::visitHits(const Point<double, 3>& from, const Point<double, 3>& to, const Limit& limit,
                              const Visit& visit) const {
    const RayAim aim(from, to);
    if (!m_isValid || !aim.isUsable()) {
        return;
    }
    const double tolerance = ROUNDING * (largestComponent(from) + m_extent);
    visitChord(from - m_numbers.centre, aim.direction, aim.length2, m_numbers.radius, tolerance,
               [&](Point<double, 3> place, double t) {
                   if (!limit(aim, tolerance, place, t)) {
                       return;
                   }
                   const double position = aim.positionOf(t);
                   if (std::isfinite(position)) {
                       visit(m_numbers.centre + place, position);
                   }
               });
}

template <class Limit>
IntersectionSet SphereSurface::hits(const Point<double, 3>& from, const Point<double, 3>& to,
                                    const Limit& limit) const {
    IntersectionSet found;
    visitHits(from, to, limit, [&found](const Point<double, 3>& point, double t) { found.add({point, t}); });
    return found;
}

template <class Limit>
SurfaceHit SphereSurface::nearestPoint(const Ray& ray, const Limit& limit) const {
    SurfaceHit nearest;
    visitHits(ray.first, ray.second, limit, [&nearest](const Point<double, 3>& point, double t) {
        if (!nearest.hit || t < nearest.t) {
            nearest.point = point;
            nearest.t = t;
            nearest.hit = true;
        }
    });
    return nearest;
}

IntersectionSet SphereSurface::intersect(const Point<double, 3>& from, const Point<double, 3>& to) const {
    if (m_isWhole) {
        return intersectWhole(from, to);
    }
    return hits(from, to, [this](const RayAim& aim, double tolerance, Point<double, 3>& place, double& t) {
        return isKept(aim, tolerance, place, t);
    });
}

void SphereSurface::nearestHits(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    // All points are calculated, then all normals: the processor works at several rays together.
    const auto ask = [&](const auto& limit) {
        for (std::size_t i = 0; i < rays.size(); ++i) {
            hits[i] = nearestPoint(rays[i], limit);
        }
        for (std::size_t i = 0; i < rays.size(); ++i) {
            if (hits[i].hit) {
                hits[i].normal = normal(hits[i].point);
                hits[i].side = sideOfSurface(rays[i].second - rays[i].first, hits[i].normal);
            }
        }
    };
    if (m_isWhole) {
        ask(NO_LIMIT);
    } else {
        ask([this](const RayAim& aim, double tolerance, Point<double, 3>& place, double& t) {
            return isKept(aim, tolerance, place, t);
        });
    }
}

bool SphereSurface::isKept(const RayAim& aim, double tolerance, Point<double, 3>& place, double& t) const {
    const Point<double, 3> own = m_placement.toOwn(place);
    if (isWithinLimits(own)) {
        return true;
    }
    if (limitBound(own) > LimitSearch::farthestReach(tolerance)) {
        return false;
    }
    OwnHit hit{own, t};
    if (!slideToLimit(aim, tolerance, hit)) {
        return false;
    }
    place = m_placement.toWorld(hit.place);
    t = hit.t;
    return true;
}

bool SphereSurface::slideToLimit(const RayAim& aim, double tolerance, OwnHit& hit) const {
    const Point<double, 3> direction = m_placement.toOwn(aim.direction);
    const Point<double, 3> outward = hit.place * (1 / m_numbers.radius);
    const LimitSearch search(direction, aim.length2, outward, tolerance);
    const std::array planes{m_sector.limitPlane(hit.place, direction),
                            LimitPlane{hit.place[2] - nearestRim(hit.place[2]).height, direction[2]}};
    return search.move(
        planes, [this](const auto& own) { return moveWithinLimits(own); }, hit);
}

IntersectionSet SphereSurface::intersectWhole(const Point<double, 3>& from, const Point<double, 3>& to) const {
    return hits(from, to, NO_LIMIT);
}

bool SphereSurface::isWithinLimits(const Point<double, 3>& own) const {
    return m_lower.excess(own) >= 0 && m_upper.excess(own) <= 0 && m_sector.contains(own[0], own[1]);
}

double SphereSurface::limitBound(const Point<double, 3>& own) const {
    return std::max({m_lower.height - own[2], own[2] - m_upper.height, m_sector.distanceBound(own[0], own[1])});
}

const SphereSurface::Rim& SphereSurface::nearestRim(double height) const {
    return std::abs(height - m_lower.height) < std::abs(height - m_upper.height) ? m_lower : m_upper;
}

Point<double, 3> SphereSurface::moveWithinLimits(const Point<double, 3>& own) const {
    Point<double, 3> moved = own * (m_numbers.radius / norm(own));
    if (!m_sector.contains(own[0], own[1])) {
        const double fromAxis = std::hypot(moved[0], moved[1]);
        const Point<double, 2>& limit = m_sector.nearestLimit(own[0], own[1]);
        moved = {fromAxis * limit[0], fromAxis * limit[1], moved[2]};
    }
    const bool isTooHigh = m_upper.excess(moved) > 0;
    if (!isTooHigh && m_lower.excess(moved) >= 0) {
        return moved;
    }
    const Rim& rim = isTooHigh ? m_upper : m_lower;
    const double fromAxis = std::hypot(moved[0], moved[1]);
    const double narrowing = fromAxis > 0 ? rim.radius / fromAxis : 0.0;
    return {narrowing * moved[0], narrowing * moved[1], rim.height};
}

Point<double, 3> SphereSurface::pointAt(double s, double t) const {
    const double azimuth = m_numbers.azimuthMin + s * (m_numbers.azimuthMax - m_numbers.azimuthMin);
    const double elevation = elevationAt(t);
    const double fromAxis = m_numbers.radius * std::cos(elevation);
    const Point<double, 3> own{fromAxis * std::sin(azimuth), fromAxis * std::cos(azimuth),
                               m_numbers.radius * std::sin(elevation)};
    return m_numbers.centre + m_placement.toWorld(own);
}

bool SphereSurface::continuesAt(double t) const {
    return std::abs(elevationAt(t)) <= POLE + ANGLE_TOLERANCE;
}

double SphereSurface::elevationAt(double t) const {
    return m_numbers.elevationMin + t * (m_numbers.elevationMax - m_numbers.elevationMin);
}

}  // namespace Veltrani::KelvoScreenDetail
