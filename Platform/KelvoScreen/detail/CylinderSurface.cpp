#include "KelvoScreen/detail/CylinderSurface.h"

#include "KelvoScreen/detail/RayAim.h"
#include "KelvoScreen/detail/Rounding.h"
#include "KelvoScreen/detail/ShapeFaults.h"
#include "KelvoScreen/detail/WideRays.h"

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

/// A ray at the cylinder, in its own frame, and its chord by the plain formula: seen along the axis, the wall is a
/// circle.
template <class Number>
struct CylinderSurface::PlainRay {
    [[gnu::always_inline]] PlainRay(const CylinderSurface& wall, const Triple<Number>& from, const Triple<Number>& to)
        : worldDirection(difference(to, from)),
          origin(wall.m_placement.toOwn(minus(from, wall.m_numbers.centre))),
          direction(wall.m_placement.toOwn(worldDirection)),
          tolerance(ROUNDING * (largestOf(from) + wall.m_extent)),
          chord(origin.x * origin.x + origin.y * origin.y, -(origin.x * direction.x + origin.y * direction.y),
                direction.x * direction.x + direction.y * direction.y, wall.m_numbers.radius, tolerance) {
        const Number length2 = productOf(worldDirection, worldDirection);
        isPlain = both(both(length2 >= RayAim::SMALLEST_SQUARE, length2 <= RayAim::LARGEST_SQUARE),
                       chord.length2 > ROUNDING * ROUNDING * length2);
    }

    Triple<Number> worldDirection, origin, direction;
    Number tolerance;
    PlainChord<Number> chord;
    /// The direction can be squared as it is (see `RayAim`) and is not that of the axis.
    Truth<Number> isPlain;
};

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

template <class Number>
[[gnu::always_inline]] inline LimitVerdict<Number> CylinderSurface::judge(const Triple<Number>& own,
                                                                          Number tolerance) const {
    const AzimuthSector::Sight<Number> sight = m_sector.sightOf(own.x, own.y);
    const Number beyondRim = absolute(own.z) - m_numbers.height / 2;
    return {both(absolute(own.z) <= m_numbers.height / 2, sight.isWithin),
            larger(beyondRim, sight.distanceBound) > LimitSearch::farthestReach(tolerance)};
}

KELVO_SCREEN_THREE_OPERANDS IntersectionSet CylinderSurface::intersect(const Point<double, 3>& from,
                                                                       const Point<double, 3>& to) const {
    IntersectionSet found;
    if (!m_isValid) {
        return found;
    }
    const PlainRay<double> ray(*this, tripleOf(from), tripleOf(to));
    const auto add = [&](double t) __attribute__((always_inline)) {
        return addEnd(ray, t, found);
    };
    if (!ray.isPlain || !addEndsOf(ray.chord, add)) {
        found = intersectAny(from, to);
    }
    return found;
}

[[gnu::always_inline]] inline bool CylinderSurface::addEnd(const PlainRay<double>& ray, double t,
                                                           IntersectionSet& found) const {
    const Triple<double> place = placeOnRay(ray.origin, ray.direction, t);
    const LimitVerdict<double> verdict = judge(place, ray.tolerance);
    if (verdict.isWithin) {
        const Triple<double> point = plus(m_numbers.centre, m_placement.toWorld(place));
        found.add({{point.x, point.y, point.z}, t});
    }
    return verdict.isWithin || verdict.isBeyond;
}

[[gnu::noinline]] IntersectionSet CylinderSurface::intersectAny(const Point<double, 3>& from,
                                                                const Point<double, 3>& to) const {
    return hits(from, to, [this](const RayAim& aim, double tolerance, OwnHit& hit) {
        const LimitVerdict<double> verdict = judge(tripleOf(hit.place), tolerance);
        if (verdict.isWithin || verdict.isBeyond) {
            return verdict.isWithin;
        }
        OwnHit moved = hit;
        const bool isHit = slideToLimit(aim, tolerance, moved);
        hit = moved;
        return isHit;
    });
}

[[gnu::noinline]] SurfaceHit CylinderSurface::nearestHit(const Ray& ray) const {
    const IntersectionSet found = intersectAny(ray.first, ray.second);
    if (found.empty()) {
        return {};
    }
    const Intersection& nearest = found.first();
    const Point<double, 3> outward = normal(nearest.point);
    return {nearest.point, outward, nearest.t, sideOfSurface(ray.second - ray.first, outward), true};
}

KELVO_SCREEN_WIDE_VECTORS void CylinderSurface::nearestHits(std::span<const Ray> rays,
                                                            std::span<SurfaceHit> hits) const {
    const std::size_t whole = m_isValid ? rays.size() - rays.size() % WIDTH : 0;
    WideEnds next{};
    if (whole > 0) {
        next = endsOfFour(&rays[0]);
    }
    for (std::size_t i = 0; i < whole; i += WIDTH) {
        // The next four are begun before these are finished: the processor works at both instead of waiting for roots.
        const WideEnds ends = next;
        if (i + WIDTH < whole) {
            next = endsOfFour(&rays[i + WIDTH]);
        }
        const LaneMask left = finishFour(ends, &hits[i]);
        forEachLane(left, [&](std::size_t lane) { hits[i + lane] = nearestHit(rays[i + lane]); });
    }
    for (std::size_t i = whole; i < rays.size(); ++i) {
        hits[i] = nearestHit(rays[i]);
    }
}

[[gnu::always_inline]] inline WideEnds CylinderSurface::endsOfFour(const Ray* rays) const {
    const WideRays four(rays);
    const PlainRay<Wide> ray(*this, four.from, four.to);
    const EndWithinLimits end(
        ray.chord, ray.origin, ray.direction,
        false, [&](const Triple<Wide>& place) __attribute__((always_inline)) { return judge(place, ray.tolerance); });
    return {ray.worldDirection, end.place, end.t, end.isHit, ray.isPlain & end.isSure};
}

[[gnu::always_inline]] inline LaneMask CylinderSurface::finishFour(const WideEnds& ends, SurfaceHit* hits) const {
    WideHits found{};
    found.t = ends.t;
    found.isHit = ends.isHit;
    found.point = plus(m_numbers.centre, m_placement.toWorld(ends.place));
    Triple<Wide> outward = m_placement.toOwn(minus(found.point, m_numbers.centre));
    outward.z = Wide{};
    const Wide fromAxis = squareRoot(productOf(outward, outward));
    found.normal = m_placement.toWorld(scaled(outward, 1 / fromAxis));
    found.storeTo(hits, productOf(ends.direction, found.normal));
    const WideMask hasNormal = areFinite(fromAxis) & (fromAxis > 0) & areFinite(found.point.z);
    return WIDE_BITS & ~bitsOf(ends.isSure & (~ends.isHit | hasNormal));
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
