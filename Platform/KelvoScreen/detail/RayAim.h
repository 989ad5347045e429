#pragma once

#include "Common/Point.h"
#include "KelvoScreen/detail/Numbers.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <type_traits>

// A ray as round shapes use it: its direction, of a length that can be squared, and its chord through a ball or circle.
namespace Veltrani::KelvoScreenDetail {

/// The direction of a ray, of a length whose square neither overflows nor vanishes.
struct RayAim {
    RayAim(const Point<double, 3>& from, const Point<double, 3>& to)
        : direction(to - from), length2(dot(direction, direction)) {
        if (!(length2 >= SMALLEST_SQUARE && length2 <= LARGEST_SQUARE)) {
            *this = rescaled(direction);
        }
    }

    /// Returns false for a ray of length zero and for one that is not finite.
    [[nodiscard]] bool isUsable() const { return length2 > 0; }

    /// Returns the position on the ray of a t in units of `direction`; not finite where a double cannot hold it. The
    /// start is 0 for every ray.
    [[nodiscard]] double positionOf(double t) const { return t == 0 ? 0.0 : t * scale; }

    /// `to - from`, scaled when that is extremely short or long.
    Point<double, 3> direction;
    /// The square of the length of `direction`; zero when the ray is not usable.
    double length2;
    /// Positions along the ray, in units of `to - from`, per unit of `direction`.
    double scale = 1;

    /// Outside these bounds the square of a length loses digits or leaves the range of a double.
    static constexpr double SMALLEST_SQUARE = 1e-200;
    static constexpr double LARGEST_SQUARE = 1e200;

private:
    explicit RayAim(const Point<double, 3>& unscaled) : direction(unscaled), length2(0) {}

    /// Passed by value: an object that a function elsewhere may change does not stay in registers.
    [[nodiscard]] static RayAim rescaled(Point<double, 3> direction);
};

/// The points where a ray passes the surface of a ball (N = 3) or a circle (N = 2) around the origin: none, one or two
/// ends of the chord, nearest first, only at t >= 0.
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

/// Outside these bounds the terms of a discriminant may have left the range of a double.
inline constexpr double SMALLEST_DISCRIMINANT = 1e-250;
inline constexpr double LARGEST_DISCRIMINANT = 1e300;
/// A discriminant is known to this part of the squares that enter it; a generous bound.
inline constexpr double DISCRIMINANT_NOISE = 1e-14;
/// Up to four radii from the centre the textbook formula loses no more than a digit.
inline constexpr double NEAR = 16;

/// Returns the chord of any line; see `visitChord`. The line is passed by value: an object that a function elsewhere
/// may read would have to be in memory for all rays.
///
/// Both ends are built from the point of the line that is nearest to the centre. That point is at right angles to the
/// direction, so neither end suffers from the cancellation of the textbook formula, however far away the ray starts.
template <std::size_t N>
[[nodiscard]] Chord<N> chordFromItsMiddle(Point<double, N> origin, Point<double, N> direction, double directionLength2,
                                          double radius, double tolerance) {
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
        return chord;  // too far away to be distinguished from anything, whatever the tolerance
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

/// The chord of a line through a ball or a circle around the origin by the textbook formula, (origin + t direction)^2 =
/// radius^2, and where that is exact: for a clear miss, from well inside, as a projector looks at its dome, and for a
/// clear hit from no further than a few radii. None of the three is set where it is not: see `visitChord`.
template <class Number>
struct PlainChord {
    /// @param offset2 the square of the distance of the origin of the ray
    /// @param theTowards -origin . direction; if it is zero, of either sign
    [[gnu::always_inline]] PlainChord(Number offset2, Number theTowards, Number theLength2, double radius,
                                      Number tolerance)
        : towards(theTowards), length2(theLength2) {
        const double square2 = radius * radius;
        const Number surface2 = tolerance * (2 * radius + tolerance);
        outside2 = offset2 - square2;
        discriminant = towards * towards - length2 * outside2;
        const Number noise = length2 * (surface2 + DISCRIMINANT_NOISE * (offset2 + square2));
        const Truth<Number> isOutside = outside2 > surface2;
        const Truth<Number> isInRange =
            both(discriminant >= SMALLEST_DISCRIMINANT, discriminant <= LARGEST_DISCRIMINANT);
        isMiss = both(isOutside, either(towards < 0, discriminant < -noise));
        isInside = both(outside2 < -surface2, isInRange);
        isThrough =
            both(both(both(isOutside, towards > 0), discriminant > noise), both(isInRange, offset2 <= NEAR * square2));
    }

    /// Returns the t of the first end in front of the origin, of a line that has one. Terms of one sign do not cancel;
    /// the other root follows from the product of both.
    [[nodiscard, gnu::always_inline]] Number first() const {
        const Number sum = sumOfTerms();
        if constexpr (std::is_same_v<Number, double>) {
            return isInside ? whereAbove(towards, sum, absolute(outside2)) / whereAbove(towards, length2, sum)
                            : absolute(outside2) / sum;
        } else {
            const WideMask isBySum = isInside & (towards > 0);
            return (isBySum ? sum : absolute(outside2)) / (isBySum ? length2 : sum);
        }
    }
    /// Returns the t of the second end, of a line that passes through.
    [[nodiscard, gnu::always_inline]] Number second() const { return sumOfTerms() / length2; }

    Number towards, length2, outside2, discriminant;
    Truth<Number> isMiss;
    Truth<Number> isInside;
    Truth<Number> isThrough;  ///< both ends are in front

private:
    [[nodiscard, gnu::always_inline]] Number sumOfTerms() const { return absolute(towards) + squareRoot(discriminant); }
};

/// Adds the ends of a chord that are in front, nearest first.
/// @param addEnd t -> bool; false when an end takes more care
/// @return false when the chord or one of its ends takes more care: what was added then is not to be used
template <class AddEnd>
[[nodiscard, gnu::always_inline]] inline bool addEndsOf(const PlainChord<double>& chord, const AddEnd& addEnd) {
    if (chord.isInside) {
        return addEnd(chord.first());
    }
    return chord.isMiss || (chord.isThrough && addEnd(chord.first()) && addEnd(chord.second()));
}

/// Visits the ends of a chord, nearest first, as `visit(place, t)`.
///
/// Within `tolerance` (a length) the decision is in favour of a hit: a line that misses by less touches the surface in
/// one point, and an origin that is off the surface by less lies on it, at t = 0.
///
/// @param radius above zero
/// @param directionLength2 the square of the length of `direction`, above zero
template <std::size_t N, class Visit>
void visitChord(const Point<double, N>& origin, const Point<double, N>& direction, double directionLength2,
                double radius, double tolerance, const Visit& visit) {
    const PlainChord<double> plain(dot(origin, origin), -dot(origin, direction), directionLength2, radius, tolerance);
    if (plain.isMiss) {
        return;
    }
    if (plain.isInside || plain.isThrough) {
        const double first = plain.first();
        visit(origin + first * direction, first);
        if (plain.isThrough) {
            const double second = plain.second();
            visit(origin + second * direction, second);
        }
        return;
    }
    const Chord<N> chord = chordFromItsMiddle(origin, direction, directionLength2, radius, tolerance);
    for (std::size_t i = 0; i < chord.count; ++i) {
        visit(chord.ends[i].place, chord.ends[i].t);
    }
}

}  // namespace Veltrani::KelvoScreenDetail
