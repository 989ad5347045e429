#include "KelvoScreen/detail/CylinderSurface.h"

#include "KelvoScreen/detail/RayAim.h"
#include "KelvoScreen/detail/Rounding.h"
#include "KelvoScreen/detail/ShapeFaults.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::KelvoScreenDetail {

CylinderSurface::CylinderSurface(const CylinderNumbers& numbers)
    : m_numbers(numbers),
      m_placement(numbers.centre, numbers.orientation),
      m_fault(faultOf(numbers)),
      m_isValid(m_fault.empty()) {
    if (m_isValid) {
        m_sector = AzimuthSector(numbers.azimuthMin, numbers.azimuthMax);
        m_extent = largestComponent(numbers.centre) + std::max(numbers.radius, numbers.height);
    }
}

std::wstring CylinderSurface::faultOf(const CylinderNumbers& numbers) {
    return firstFault({faultOfPlace(numbers.centre, numbers.orientation), faultOfLength(L"height", numbers.height),
                       faultOfRadius(numbers.radius, numbers.centre),
                       faultOfAzimuths(numbers.azimuthMin, numbers.azimuthMax)});
}

template <class Limit>
IntersectionSet CylinderSurface::hits(const Point<double, 3>& from, const Point<double, 3>& to,
                                      const Limit& limit) const {
    IntersectionSet found;
    RayAim aim(from, to);
    if (!m_isValid || !aim.isUsable()) {
        return found;
    }
    // Seen along the axis, the wall is a circle.
    aim.direction = m_placement.toOwn(aim.direction);
    const Point<double, 3> origin = m_placement.toOwn(from - m_numbers.centre);
    const Point<double, 2> across{aim.direction[0], aim.direction[1]};
    const double across2 = dot(across, across);
    if (!(across2 > ROUNDING * ROUNDING * aim.length2)) {
        return found;
    }
    const double tolerance = ROUNDING * (largestComponent(from) + m_extent);
    visitChord(Point<double, 2>{origin[0], origin[1]}, across, across2, m_numbers.radius, tolerance,
               [&](const Point<double, 2>& place, double t) {
                   OwnHit hit{{place[0], place[1], origin[2] + t * aim.direction[2]}, t};
                   if (!limit(aim, tolerance, hit)) {
                       return;
                   }
                   const double position = aim.positionOf(hit.t);
                   if (std::isfinite(position)) {
                       found.add({m_numbers.centre + m_placement.toWorld(hit.place), position});
                   }
               });
    return found;
}

IntersectionSet CylinderSurface::intersect(const Point<double, 3>& from, const Point<double, 3>& to) const {
    return hits(from, to, [this](const RayAim& aim, double tolerance, OwnHit& hit) {
        if (isWithinLimits(hit.place)) {
            return true;
        }
        if (limitBound(hit.place) > LimitSearch::farthestReach(tolerance)) {
            return false;
        }
        OwnHit moved = hit;
        const bool isHit = slideToLimit(aim, tolerance, moved);
        hit = moved;
        return isHit;
    });
}

bool CylinderSurface::slideToLimit(const RayAim& aim, double tolerance, OwnHit& hit) const {
    const double perRadius = 1 / m_numbers.radius;
    const Point<double, 3> outward{hit.place[0] * perRadius, hit.place[1] * perRadius, 0.0};
    const LimitSearch search(aim.direction, aim.length2, outward, tolerance);
    const double rim = std::copysign(m_numbers.height / 2, hit.place[2]);
    const std::array planes{m_sector.limitPlane(hit.place, aim.direction),
                            LimitPlane{hit.place[2] - rim, aim.direction[2]}};
    return search.move(
        planes, [this](const auto& own) { return moveWithinLimits(own); }, hit);
}

IntersectionSet CylinderSurface::intersectEndless(const Point<double, 3>& from, const Point<double, 3>& to) const {
    return hits(from, to, [](const RayAim&, double, const OwnHit& hit) { return isFinite(hit.place); });
}

bool CylinderSurface::isWithinLimits(const Point<double, 3>& own) const {
    return std::abs(own[2]) <= m_numbers.height / 2 && m_sector.contains(own[0], own[1]);
}

double CylinderSurface::limitBound(const Point<double, 3>& own) const {
    return std::max(std::abs(own[2]) - m_numbers.height / 2, m_sector.distanceBound(own[0], own[1]));
}

Point<double, 3> CylinderSurface::moveWithinLimits(const Point<double, 3>& own) const {
    const double height = std::clamp(own[2], -m_numbers.height / 2, m_numbers.height / 2);
    if (!m_sector.contains(own[0], own[1])) {
        const Point<double, 2>& limit = m_sector.nearestLimit(own[0], own[1]);
        return {m_numbers.radius * limit[0], m_numbers.radius * limit[1], height};
    }
    const double outward = m_numbers.radius / std::hypot(own[0], own[1]);
    return {own[0] * outward, own[1] * outward, height};
}

Point<double, 3> CylinderSurface::normal(const Point<double, 3>& point) const {
    Point<double, 3> outward = m_placement.toOwn(point - m_numbers.centre);
    outward[2] = 0;
    const double fromAxis = norm(outward);
    if (!m_isValid || !isFinite(point) || !std::isfinite(fromAxis)) {
        return {};
    }
    return m_placement.toWorld(fromAxis > 0 ? outward * (1 / fromAxis) : Point<double, 3>{0.0, 1.0, 0.0});
}

Point<double, 3> CylinderSurface::pointAt(double s, double t) const {
    const double azimuth = m_numbers.azimuthMin + s * (m_numbers.azimuthMax - m_numbers.azimuthMin);
    return m_numbers.centre + m_placement.toWorld({m_numbers.radius * std::sin(azimuth),
                                                   m_numbers.radius * std::cos(azimuth), (t - 0.5) * m_numbers.height});
}

}  // namespace Veltrani::KelvoScreenDetail
