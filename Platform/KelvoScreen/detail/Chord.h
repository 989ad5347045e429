#pragma once

#include "Common/Point.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace KelvoScreenDetail {

/// Where a ray passes the surface of a ball (N = 3) or a circle (N = 2) around the origin: none, one or two ends of the
/// chord, nearest first, only at t >= 0.
template <std::size_t N>
struct Chord {
    struct End {
        Point<double, N> place;  ///< on the surface
        double t = 0;            ///< in units of the direction
    };

    std::array<End, 2> ends;
    std::size_t count = 0;

    void add(const Point<double, N>& place, double t) {
        if (t >= 0 && std::isfinite(t)) {
            ends[count++] = {place, t};
        }
    }
};

/// The ends of a chord.
///
/// Both are built from the point of the line that is nearest to the centre. That point is at right angles to the
/// direction, so neither end suffers from the cancellation of the textbook formula, however far away the ray starts.
///
/// Within `tolerance` (a length) the answer is in favour of a hit: a line that misses by less touches the surface in
/// one point, and an origin that is off the surface by less lies on it, at t = 0.
///
/// @param radius above zero
/// @param directionLength2 the square of the length of `direction`, above zero
template <std::size_t N>
[[nodiscard]] Chord<N> chordInFront(const Point<double, N>& origin, const Point<double, N>& direction,
                                    double directionLength2, double radius, double tolerance) {
    const double perLength2 = 1 / directionLength2;
    double middle = -dot(origin, direction) * perLength2;
    Point<double, N> nearest = origin + middle * direction;
    // The first step rounds in units of the distance of the origin, the second in units of what is left.
    const double rest = -dot(nearest, direction) * perLength2;
    nearest += rest * direction;
    middle += rest;

    Chord<N> chord;
    const double distance2 = dot(nearest, nearest);
    if (!std::isfinite(distance2)) {
        return chord;  // too far away to be told from anything, whatever the tolerance
    }
    const double halfSquare = radius * radius - distance2;
    if (!(halfSquare > 0)) {
        if (!(distance2 <= (radius + tolerance) * (radius + tolerance))) {
            return chord;
        }
        nearest *= radius / std::sqrt(distance2);
    }
    const double half = halfSquare > 0 ? std::sqrt(halfSquare * perLength2) : 0.0;
    const double first = middle - half;
    const double second = middle + half;
    if (first < 0) {
        const double originDistance2 = dot(origin, origin);
        const bool hasDirection = originDistance2 > 0 && std::isfinite(originDistance2);
        if (hasDirection && std::abs(originDistance2 - radius * radius) <= tolerance * (2 * radius + tolerance)) {
            const Point<double, N> start = origin * (radius / std::sqrt(originDistance2));
            chord.add(start, 0);
            if (half > 0 && std::abs(first) < std::abs(second)) {
                chord.add(nearest + half * direction, second);
            }
            return chord;
        }
    } else {
        chord.add(nearest - half * direction, first);
    }
    if (half > 0) {
        chord.add(nearest + half * direction, second);
    }
    return chord;
}

}  // namespace KelvoScreenDetail
