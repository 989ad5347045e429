#pragma once

#include "KelvoScreen/IntersectionSet.h"
#include "support/ScreenConfigDouble.h"

#include <string>
#include <vector>

/// Answers about spheres and cylinders in extended precision, by other formulas than the library: rotations written out
/// axis by axis, limits as angles.
namespace oracle {

using Exact = Point<long double, 3>;

[[nodiscard]] Exact exact(const Point<double, 3>& p);

/// R(-z, Z) R(x, X) R(y, Y) v for the angles (z, x, y).
[[nodiscard]] Exact turned(const Point<double, 3>& angles, Exact v);
/// The inverse of `turned`.
[[nodiscard]] Exact turnedBack(const Point<double, 3>& angles, Exact v);

/// Where a ray should meet a surface.
struct ExpectedHit {
    long double along = 0;       ///< distance from the start of the ray
    long double cosine = 0;      ///< of the angle with the normal; positive outward
    long double limitSlack = 0;  ///< how far inside the limits of the shape, a length; negative outside
};

/// A sphere or, when the shape of the description says so, a cylinder.
class RoundOracle {
public:
    explicit RoundOracle(ScreenConfigDouble config);

    /// The place that the formula of the class maps (s, t) to.
    [[nodiscard]] Exact mapped(long double s, long double t) const;
    /// Positive outside.
    [[nodiscard]] long double distanceFromWholeSurface(const Point<double, 3>& point) const;
    [[nodiscard]] long double limitSlack(const Point<double, 3>& point) const;
    /// All meetings of the line with the whole surface, nearest first, those behind the start included.
    [[nodiscard]] std::vector<ExpectedHit> meetings(const Point<double, 3>& from, const Point<double, 3>& to) const;
    /// How far the line passes outside the whole surface; negative when it cuts it.
    [[nodiscard]] long double clearance(const Point<double, 3>& from, const Point<double, 3>& to) const;
    /// The largest of |from|, |to| and the size of the shape: the unit in which errors are allowed.
    [[nodiscard]] double scale(const Point<double, 3>& from, const Point<double, 3>& to) const;

    /// What is wrong with the hits of a ray; empty when they agree with the oracle. A hit may be there or not when it
    /// lies within `1e-12 scale` (over the cosine, along the ray) of a limit, of the start or of touching.
    [[nodiscard]] std::string faultOf(const IntersectionSet& hits, const Point<double, 3>& from,
                                      const Point<double, 3>& to, bool whole) const;

private:
    [[nodiscard]] std::string faultOfHit(const Intersection& hit, const Point<double, 3>& from,
                                         const Point<double, 3>& to, const std::vector<ExpectedHit>& expected,
                                         bool whole) const;
    [[nodiscard]] bool isSphere() const;
    [[nodiscard]] Exact own(const Point<double, 3>& point) const;
    [[nodiscard]] long double slackOf(const Exact& ownPoint) const;

    ScreenConfigDouble m_config;
};

/// The distance of a point from the line of a ray.
[[nodiscard]] long double lineDistance(const Point<double, 3>& from, const Point<double, 3>& to,
                                       const Point<double, 3>& point);

}  // namespace oracle
