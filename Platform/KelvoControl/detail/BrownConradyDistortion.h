#pragma once

#include "Common/Point.h"

#include <array>
#include <vector>

namespace Veltrani::KelvoControlDetail {

/// The distortion of a lens with radial, tangential and thin-prism terms, on the plane one unit in front of it (x
/// right, y down).
///
///     r2 = x^2 + y^2
///     c  = (1 + k1 r2 + k2 r2^2 + k3 r2^3) / (1 + k4 r2 + k5 r2^2 + k6 r2^3)
///     xd = x c + 2 p1 x y + p2 (r2 + 2 x^2) + s1 r2 + s2 r2^2
///     yd = y c + p1 (r2 + 2 y^2) + 2 p2 x y + s3 r2 + s4 r2^2
///
/// Where the radius r c(r) stops growing the formula folds back upon itself and describes no lens any more: points at
/// and beyond that radius are refused, and so are those where the other terms turn the picture over or bring two places
/// to one point, and all from just short of a pole of c. Whatever is distorted comes back within 1e-9 of 1 + its
/// distance from the axis.
class BrownConradyDistortion {
public:
    /// @param coefficients k1 k2 p1 p2 [k3 [k4 k5 k6 [s1 s2 s3 s4]]]: 4, 5, 8 or 12 finite numbers; more are ignored
    explicit BrownConradyDistortion(const std::vector<double>& coefficients);

    /// The distorted point; false, with `distorted` untouched, where the lens folds.
    bool distort(const Point<double, 2>& plain, Point<double, 2>& distorted) const;

    /// The point that `distort` moves here, to rounding; false, with `plain` untouched, when there is none.
    bool undistort(const Point<double, 2>& distorted, Point<double, 2>& plain) const;

    /// Returns the distance from the axis where the lens folds or comes near to a pole; `FARTHEST` for one that never
    /// does.
    [[nodiscard]] double foldRadius() const { return m_foldRadius; }

    /// No point farther out than this is ever needed: it is less than 0.0001 degrees from a right angle to the axis.
    static constexpr double FARTHEST = 1e6;

private:
    /// Columns: the derivatives by x and by y.
    struct Jacobian {
        double xx = 1, xy = 0, yx = 0, yy = 1;
        [[nodiscard]] double determinant() const { return xx * yy - xy * yx; }
    };

    [[nodiscard]] double findFold() const;
    [[nodiscard]] double findRegular() const;
    [[nodiscard]] double radial(double r2, double& slope) const;
    [[nodiscard]] Point<double, 2> formula(const Point<double, 2>& plain, Jacobian& jacobian) const;
    /// Returns true when the other terms leave the picture the right way round all the way from the axis to the point.
    [[nodiscard]] bool isRightWayRoundUpTo(const Point<double, 2>& plain) const;
    /// Returns the place that the formula brings here, if there is one; unchecked.
    [[nodiscard]] Point<double, 2> inverse(const Point<double, 2>& distorted) const;
    /// Returns the point in the same direction whose radius the radial part alone would bring here.
    [[nodiscard]] Point<double, 2> undistortRadius(const Point<double, 2>& distorted, double distortedRadius) const;
    [[nodiscard]] Point<double, 2> refine(const Point<double, 2>& distorted, Point<double, 2> guess) const;

    std::array<double, 3> m_numerator{};    ///< k1 k2 k3
    std::array<double, 3> m_denominator{};  ///< k4 k5 k6
    std::array<double, 2> m_tangential{};   ///< p1 p2
    std::array<double, 4> m_prism{};        ///< s1 s2 s3 s4
    bool m_radialOnly = true;
    double m_foldRadius = 0;
    double m_distortedFoldRadius = 0;  ///< where the radial part brings it
    double m_regularRadius = 0;        ///< within it no two places come to one point, whatever the other terms are
};

}  // namespace Veltrani::KelvoControlDetail
