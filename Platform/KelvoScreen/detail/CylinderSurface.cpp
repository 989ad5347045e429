#include "KelvoScreen/detail/CylinderSurface.h"

#include "KelvoScreen/detail/Chord.h"
#include "KelvoScreen/detail/RayAim.h"
#include "KelvoScreen/detail/Rounding.h"
#include "KelvoScreen/detail/ScreenSampling.h"

#include <algorithm>
#include <cmath>

namespace KelvoScreenDetail {

CylinderSurface::CylinderSurface(const CylinderNumbers& numbers)
    : m_numbers(numbers), m_placement(numbers.centre, numbers.orientation), m_isValid(areValid(numbers)) {
    if (m_isValid) {
        m_sector = AzimuthSector(numbers.azimuthMin, numbers.azimuthMax);
        m_extent = largestComponent(numbers.centre) + std::max(numbers.radius, numbers.height);
    }
}

bool CylinderSurface::areValid(const CylinderNumbers& numbers) {
    return isFinite(numbers.centre) && isFinite(numbers.orientation) && numbers.radius > 0 && numbers.height > 0 &&
           std::isnormal(numbers.radius * numbers.radius) && std::isfinite(numbers.height) &&
           AzimuthSector::isRange(numbers.azimuthMin, numbers.azimuthMax);
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
    const Chord<2> chord =
        chordInFront(Point<double, 2>{origin[0], origin[1]}, across, across2, m_numbers.radius, tolerance);
    for (std::size_t i = 0; i < chord.count; ++i) {
        double t = chord.ends[i].t;
        Point<double, 3> own{chord.ends[i].place[0], chord.ends[i].place[1], origin[2] + t * aim.direction[2]};
        if (limit(own, t, aim, tolerance)) {
            found.add({m_numbers.centre + m_placement.toWorld(own), t * aim.scale});
        }
    }
    return found;
}

IntersectionSet CylinderSurface::intersect(const Point<double, 3>& from, const Point<double, 3>& to) const {
    return hits(from, to, [this](Point<double, 3>& own, double& t, const RayAim& aim, double tolerance) {
        return isWithinLimits(own) || moveToLimit(aim, tolerance, moveWithinLimits(own), own, t);
    });
}

IntersectionSet CylinderSurface::intersectEndless(const Point<double, 3>& from, const Point<double, 3>& to) const {
    return hits(from, to, [](const Point<double, 3>& own, double, const RayAim&, double) { return isFinite(own); });
}

bool CylinderSurface::isWithinLimits(const Point<double, 3>& own) const {
    return std::abs(own[2]) <= m_numbers.height / 2 && m_sector.contains(own[0], own[1]);
}

Point<double, 3> CylinderSurface::moveWithinLimits(const Point<double, 3>& own) const {
    Point<double, 3> moved = own;
    if (!m_sector.contains(own[0], own[1])) {
        const Point<double, 2>& limit = m_sector.nearestLimit(own[0], own[1]);
        moved = {m_numbers.radius * limit[0], m_numbers.radius * limit[1], own[2]};
    }
    moved[2] = std::clamp(own[2], -m_numbers.height / 2, m_numbers.height / 2);
    return moved;
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

}  // namespace KelvoScreenDetail
