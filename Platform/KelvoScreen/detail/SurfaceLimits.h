#pragma once

#include "Common/Point.h"
#include "KelvoScreen/detail/Numbers.h"
#include "KelvoScreen/detail/Rounding.h"

#include <algorithm>
#include <array>
#include <cmath>

// Where a surface ends: the range of its azimuths, and rays that pass a limit so closely that they hit it.
namespace Veltrani::KelvoScreenDetail {

/// What bounds the cosine of a touching ray: the curvature of a surface as large as the coordinates.
inline constexpr double SMALLEST_COSINE = 0x1p-24;
static_assert(SMALLEST_COSINE * SMALLEST_COSINE == ROUNDING);

/// How far along a ray a hit is uncertain when the ray is known to `tolerance` across: a length. See `SMALLEST_COSINE`
/// for a touching ray, where the angle gives no bound.
///
/// @param cosine of the angle between the ray and the normal
[[nodiscard]] inline double uncertaintyAlong(double tolerance, double cosine) {
    return tolerance / std::max(std::abs(cosine), SMALLEST_COSINE);
}

/// A hit in the own frame of a shape.
struct OwnHit {
    Point<double, 3> place;
    double t = 0;
};

/// Whether a place is within the limits of a surface, or so far beyond them that no ray hits them there; neither near a
/// limit.
template <class Number>
struct LimitVerdict {
    Truth<Number> isWithin;
    Truth<Number> isBeyond;
};

/// A plane in which a surface ends, seen from a hit.
struct LimitPlane {
    double distance = 0;  ///< of the hit from the plane, with a sign
    double approach = 0;  ///< change of that distance per unit of the direction of the ray
};

/// Decides whether a ray whose hit lies beyond a limit of the surface passes the limit so closely that it hits it.
///
/// Closeness is measured across the ray, as a length. Along the ray a grazing hit is uncertain by far more: the hit may
/// slide that far, to the plane of the limit, before it is moved onto the limit itself.
class LimitSearch {
public:
    /// @param outward unit normal at the hit
    LimitSearch(const Point<double, 3>& direction, double directionLength2, const Point<double, 3>& outward,
                double tolerance)
        : m_direction(direction), m_length2(directionLength2), m_tolerance(tolerance) {
        const double length = std::sqrt(directionLength2);
        m_reach = FARTHEST_SLIDE * uncertaintyAlong(tolerance, dot(direction, outward) / length);
        m_reachT = m_reach / length;
    }

    /// A hit this far (a length) from the surface within its limits is beyond them, whatever the ray.
    template <class Number>
    [[nodiscard, gnu::always_inline]] static Number farthestReach(Number tolerance) {
        return FARTHEST_SLIDE * (tolerance / SMALLEST_COSINE);
    }

    /// @param moveWithinLimits the point of the surface within its limits nearest to a given one
    /// @return false, with the hit unchanged, when the ray misses the limit
    template <class MoveWithinLimits>
    [[nodiscard]] bool move(const std::array<LimitPlane, 2>& planes, const MoveWithinLimits& moveWithinLimits,
                            OwnHit& hit) const {
        if (!(norm(moveWithinLimits(hit.place) - hit.place) <= m_reach)) {
            return false;
        }
        const std::array<double, 3> slides{0.0, -planes[0].distance / planes[0].approach,
                                           -planes[1].distance / planes[1].approach};
        return std::any_of(slides.begin(), slides.end(), [&](double slide) {
            return std::abs(slide) <= m_reachT && moveFrom(slide, moveWithinLimits, hit);
        });
    }

private:
    /// The farthest slide in units of the uncertainty; the limits may be oblique to the ray.
    static constexpr double FARTHEST_SLIDE = 4;

    template <class MoveWithinLimits>
    [[nodiscard]] bool moveFrom(double slide, const MoveWithinLimits& moveWithinLimits, OwnHit& hit) const {
        const Point<double, 3> start = hit.place + slide * m_direction;
        const Point<double, 3> limit = moveWithinLimits(start);
        const Point<double, 3> offset = limit - start;
        const Point<double, 3> across = cross(offset, m_direction);
        if (!(dot(across, across) <= m_tolerance * m_tolerance * m_length2)) {
            return false;
        }
        hit.place = limit;
        hit.t = std::max(0.0, hit.t + slide + dot(offset, m_direction) / m_length2);
        return true;
    }

    Point<double, 3> m_direction;
    double m_length2;
    double m_tolerance;
    double m_reach = 0;   ///< a length
    double m_reachT = 0;  ///< in units of the direction
};

/// Up to this far (radians) beyond a pole or a whole turn counts as the pole or the whole turn. Sums of angles in
/// degrees miss them by some 1e-14; this is generous, and still a gap of no more than a tenth of a micrometre in a dome
/// of 100 m. Files are read with less tolerance, so that every range of azimuths that is read is one here too.
inline constexpr double ANGLE_TOLERANCE = 1e-9;

/// A range of azimuths, limits included; azimuth = atan2(x, y). Its tests use no trigonometry.
class AzimuthSector {
public:
    /// The whole turn.
    AzimuthSector() = default;
    /// The sector from `min`, growing, to `max` (radians). See `isRange`.
    AzimuthSector(double min, double max);

    /// Returns true when these limits make a sector: finite, growing, no more than one turn.
    [[nodiscard]] static bool isRange(double min, double max);

    [[nodiscard]] bool isWhole() const { return m_isWhole; }

    /// How a point lies to the sector.
    template <class Number>
    struct Sight {
        Truth<Number> isWithin;
        Number distanceBound;  ///< a lower bound of the distance from the sector; may be below zero
    };

    /// Every point is within when the sector is whole, and x = y = 0 always.
    template <class Number>
    [[nodiscard, gnu::always_inline]] Sight<Number> sightOf(Number x, Number y) const {
        if (m_isWhole) {
            return {Number{} == Number{}, Number{}};
        }
        // The distances from the two limiting half-planes, positive inwards.
        const Number fromMin = x * m_min[1] - y * m_min[0];
        const Number fromMax = y * m_max[0] - x * m_max[1];
        if (m_isWide) {
            return {either(fromMin >= 0, fromMax >= 0), -larger(fromMin, fromMax)};
        }
        return {both(both(fromMin >= 0, fromMax >= 0), x * m_middle[0] + y * m_middle[1] >= 0),
                -smaller(fromMin, fromMax)};
    }

    template <class Number>
    [[nodiscard, gnu::always_inline]] Truth<Number> contains(Number x, Number y) const {
        return sightOf(x, y).isWithin;
    }

    /// Returns the half-plane of the nearest limit, seen from a place beyond it.
    [[nodiscard]] LimitPlane limitPlane(const Point<double, 3>& place, const Point<double, 3>& direction) const;

    /// Returns the limit nearest to the direction (x, y), as a unit vector.
    [[nodiscard]] const Point<double, 2>& nearestLimit(double x, double y) const;

private:
    Point<double, 2> m_min, m_middle, m_max;  ///< unit vectors (sin, cos)
    bool m_isWhole = true;
    bool m_isWide = true;  ///< more than half a turn
};

}  // namespace Veltrani::KelvoScreenDetail
