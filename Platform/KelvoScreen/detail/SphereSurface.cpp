#include "KelvoScreen/detail/SphereSurface.h"

#include "KelvoScreen/detail/RayAim.h"
#include "KelvoScreen/detail/Rounding.h"
#include "KelvoScreen/detail/ShapeFaults.h"
#include "KelvoScreen/detail/WideRays.h"

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

template <class Number>
[[gnu::always_inline]] inline Number SphereSurface::Rim::excess(const Triple<Number>& own) const {
    const Number above = own.z - height;
    // A pole limits nothing; which of the formulas below says so would depend on the point.
    if (!(std::abs(height) > radius) || std::isinf(height)) {
        return above;
    }
    const Number inwards = radius * radius - (own.x * own.x + own.y * own.y);
    return own.z * height > 0 ? (height > 0 ? inwards : -inwards) : above;
}

/// A ray at the sphere and its chord by the plain formula.
template <class Number>
struct SphereSurface::PlainRay {
    [[gnu::always_inline]] PlainRay(const SphereSurface& sphere, const Triple<Number>& from, const Triple<Number>& to)
        : origin(minus(from, sphere.m_numbers.centre)),
          direction(difference(to, from)),
          tolerance(ROUNDING * (largestOf(from) + sphere.m_extent)),
          chord(productOf(origin, origin), -productOf(origin, direction), productOf(direction, direction),
                sphere.m_numbers.radius, tolerance),
          isPlain(both(chord.length2 >= RayAim::SMALLEST_SQUARE, chord.length2 <= RayAim::LARGEST_SQUARE)) {}

    Triple<Number> origin, direction;
    Number tolerance;
    PlainChord<Number> chord;
    Truth<Number> isPlain;  ///< the direction can be squared as it is: see `RayAim`
};

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

template <class Number>
[[gnu::always_inline]] inline LimitVerdict<Number> SphereSurface::judge(const Triple<Number>& place,
                                                                        Number tolerance) const {
    if (m_isWhole) {
        return {Number{} == Number{}, Number{} != Number{}};
    }
    return judgeOwn(m_placement.toOwn(place), tolerance);
}

template <class Number>
[[gnu::always_inline]] inline LimitVerdict<Number> SphereSurface::judgeOwn(const Triple<Number>& own,
                                                                           Number tolerance) const {
    const AzimuthSector::Sight<Number> sight = m_sector.sightOf(own.x, own.y);
    const Number beyondRims = larger(m_lower.height - own.z, own.z - m_upper.height);
    return {both(both(m_lower.excess(own) >= 0, m_upper.excess(own) <= 0), sight.isWithin),
            larger(beyondRims, sight.distanceBound) > LimitSearch::farthestReach(tolerance)};
}

IntersectionSet SphereSurface::intersect(const Point<double, 3>& from, const Point<double, 3>& to) const {
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

[[gnu::always_inline]] inline bool SphereSurface::addEnd(const PlainRay<double>& ray, double t,
                                                         IntersectionSet& found) const {
    const Triple<double> place = placeOnRay(ray.origin, ray.direction, t);
    const LimitVerdict<double> verdict = judge(place, ray.tolerance);
    if (verdict.isWithin) {
        const Triple<double> point = plus(m_numbers.centre, place);
        found.add({{point.x, point.y, point.z}, t});
    }
    return verdict.isWithin || verdict.isBeyond;
}

[[gnu::noinline]] IntersectionSet SphereSurface::intersectAny(const Point<double, 3>& from,
                                                              const Point<double, 3>& to) const {
    if (m_isWhole) {
        return intersectWhole(from, to);
    }
    return hits(from, to, [this](const RayAim& aim, double tolerance, Point<double, 3>& place, double& t) {
        return isKept(aim, tolerance, place, t);
    });
}

[[gnu::noinline]] SurfaceHit SphereSurface::nearestHit(const Ray& ray) const {
    SurfaceHit nearest;
    visitHits(
        ray.first, ray.second,
        [this](const RayAim& aim, double tolerance, Point<double, 3>& place, double& t) {
            return m_isWhole || isKept(aim, tolerance, place, t);
        },
        [&nearest](const Point<double, 3>& point, double t) {
            if (!nearest.hit || t < nearest.t) {
                nearest.point = point;
                nearest.t = t;
                nearest.hit = true;
            }
        });
    if (nearest.hit) {
        nearest.normal = normal(nearest.point);
        nearest.side = sideOfSurface(ray.second - ray.first, nearest.normal);
    }
    return nearest;
}

KELVO_SCREEN_WIDE_VECTORS void SphereSurface::nearestHits(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
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

[[gnu::always_inline]] inline WideEnds SphereSurface::endsOfFour(const Ray* rays) const {
    const WideRays four(rays);
    const PlainRay<Wide> ray(*this, four.from, four.to);
    const EndWithinLimits end(
        ray.chord, ray.origin, ray.direction, m_isWhole, [&](const Triple<Wide>& place) __attribute__((always_inline)) {
            return judge(place, ray.tolerance);
        });
    return {ray.direction, end.place, end.t, end.isHit, ray.isPlain & end.isSure};
}

[[gnu::always_inline]] inline LaneMask SphereSurface::finishFour(const WideEnds& ends, SurfaceHit* hits) const {
    WideHits found{};
    found.t = ends.t;
    found.isHit = ends.isHit;
    found.point = plus(m_numbers.centre, ends.place);
    const Triple<Wide> outward = minus(found.point, m_numbers.centre);
    const Wide distance = squareRoot(productOf(outward, outward));
    found.normal = scaled(outward, 1 / distance);
    found.storeTo(hits, productOf(ends.direction, found.normal));
    const WideMask hasNormal = areFinite(distance) & (distance > 0);
    return WIDE_BITS & ~bitsOf(ends.isSure & (~ends.isHit | hasNormal));
}

bool SphereSurface::isKept(const RayAim& aim, double tolerance, Point<double, 3>& place, double& t) const {
    const Point<double, 3> own = m_placement.toOwn(place);
    const LimitVerdict<double> verdict = judgeOwn(tripleOf(own), tolerance);
    if (verdict.isWithin || verdict.isBeyond) {
        return verdict.isWithin;
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
    const bool isTooHigh = m_upper.excess(tripleOf(moved)) > 0;
    if (!isTooHigh && m_lower.excess(tripleOf(moved)) >= 0) {
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
