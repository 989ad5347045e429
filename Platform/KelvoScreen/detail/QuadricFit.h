#pragma once

#include "KelvoScreen/detail/QuadricSheet.h"

#include <optional>
#include <span>

namespace KelvoScreenDetail {

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
/// Nothing for fewer points than `FEWEST_FIT_POINTS`, and when they do not spread in two directions.
///
/// @param radius the distance of the farthest point from the origin
/// @param noise heights up to this are those of a plane
[[nodiscard]] std::optional<FittedSheet> fitSheet(std::span<const Point<double, 3>> points,
                                                  const Point<double, 3>& origin, const Point<double, 3>& normal,
                                                  double radius, double noise);

}  // namespace KelvoScreenDetail
