#pragma once

#include "Common/Point.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>

namespace Veltrani::KelvoScreenDetail {

/// A symmetric 3 x 3 matrix: xx, xy, xz, yy, yz, zz.
using SymmetricMatrix = std::array<double, 6>;

/// m v
[[nodiscard]] inline Point<double, 3> multiply(const SymmetricMatrix& m, const Point<double, 3>& v) {
    return {m[0] * v[0] + m[1] * v[1] + m[2] * v[2], m[1] * v[0] + m[3] * v[1] + m[4] * v[2],
            m[2] * v[0] + m[4] * v[1] + m[5] * v[2]};
}

/// Values along a ray: f(tau) = value + slope tau + bend tau^2.
struct AlongRay {
    double value = 0;
    double slope = 0;
    double bend = 0;
};

/// A surface of second order: the points with height(p) = 0, a plane, sphere or cylinder among them.
///
/// height(p) = offset + slope . x + x . bend x with x = p - origin. Near the surface it is about the distance from it,
/// positive on the side of the normal.
struct QuadricSheet {
    Point<double, 3> origin;
    double offset = 0;
    Point<double, 3> slope;
    SymmetricMatrix bend{};

    [[nodiscard]] bool isPlane() const { return bend == SymmetricMatrix{}; }
    [[nodiscard]] double height(const Point<double, 3>& point) const;
    /// Returns the gradient of the height, which lies along the normal at a point of the surface.
    [[nodiscard]] Point<double, 3> gradient(const Point<double, 3>& point) const;
    /// Returns the heights along point + tau direction.
    [[nodiscard]] AlongRay alongRay(const Point<double, 3>& point, const Point<double, 3>& direction) const;
};

/// The zeros of value + slope tau + bend tau^2, the smaller in magnitude first; `count` of them, 0 to 2. None for
/// numbers that are not finite and where all values are zero.
struct Zeros {
    explicit Zeros(const AlongRay& values);

    std::array<double, 2> tau{};
    std::size_t count = 0;
};

/// A sheet and how well it fits its points.
struct FittedSheet {
    QuadricSheet sheet;
    /// Root mean square of the heights of the points over what the sheet could adapt to.
    double error = 0;
};

/// The fewest points to which a sheet is fitted: half as many again as it has freedoms.
inline constexpr std::size_t FEWEST_FIT_POINTS = 9;

/// Fits a sheet by least squares to points around an origin, which is seen as nearly flat along `normal`.
///
/// In the frame of the origin and the fitted normal the sheet is z = (a x^2 + 2 b x y + c y^2 + k z^2) / 2, where a, b
/// and c are its curvatures and k follows from them so that the points of a sphere give that sphere, those of a
/// cylinder that cylinder, and those of a plane that plane; surfaces between are met to second order, which is what
/// decides how they continue. A curvature across which the points do not extend, as the one across a narrow strip, is
/// zero.
///
/// Returns nothing for fewer points than `FEWEST_FIT_POINTS`, and when they do not spread in two directions.
///
/// @param radius the distance of the farthest point from the origin
/// @param noise heights up to this are those of a plane
[[nodiscard]] std::optional<FittedSheet> fitSheet(std::span<const Point<double, 3>> points,
                                                  const Point<double, 3>& origin, const Point<double, 3>& normal,
                                                  double radius, double noise);

}  // namespace Veltrani::KelvoScreenDetail
