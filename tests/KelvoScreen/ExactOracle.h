#pragma once

#include "Common/Point.h"

#include <array>

/// Distances from lines and triangles, decided without the rounding of double precision.
namespace oracle {

using Triangle = std::array<Point<double, 3>, 3>;

/// True when the point is no further than `bound` from the line through two others. In quadruple precision: what that
/// rounds is 1e-15 times the bounds that are checked with it.
[[nodiscard]] bool isNearLine(const Point<double, 3>& from, const Point<double, 3>& to, const Point<double, 3>& point,
                              double bound);

/// True when the point is no further than `bound` from the triangle, in quadruple precision.
[[nodiscard]] bool isNearTriangle(const Triangle& triangle, const Point<double, 3>& point, double bound);

/// The same two in whole numbers of any length: each double is one of some power of two, and nothing is rounded.
[[nodiscard]] bool isExactlyNearLine(const Point<double, 3>& from, const Point<double, 3>& to,
                                     const Point<double, 3>& point, double bound);
[[nodiscard]] bool isExactlyNearTriangle(const Triangle& triangle, const Point<double, 3>& point, double bound);

/// The distance from the triangle, in quadruple precision.
[[nodiscard]] double preciseDistance(const Triangle& triangle, const Point<double, 3>& point);

/// The unit normal by the winding, in quadruple precision.
[[nodiscard]] Point<double, 3> preciseNormal(const Triangle& triangle);

/// (b - a) x (c - a) in the plane, rounded once.
[[nodiscard]] double exactArea(const Point<double, 2>& a, const Point<double, 2>& b, const Point<double, 2>& c);

/// (b - a) . (c - a) in the plane, rounded once.
[[nodiscard]] double exactProjection(const Point<double, 2>& a, const Point<double, 2>& b, const Point<double, 2>& c);

struct MappedPlace {
    Point<double, 3> point;
    bool isInside = false;  ///< edges included
    double distance = 0;    ///< of `st` from the triangle `texture`
};

/// The place on `triangle` that corresponds linearly to `st` on the triangle `texture`, or to the place on its edges
/// that is nearest to an `st` outside; in fractions, rounded once.
[[nodiscard]] MappedPlace exactlyMapped(const std::array<Point<double, 2>, 3>& texture, const Triangle& triangle,
                                        const Point<double, 2>& st);

}  // namespace oracle
