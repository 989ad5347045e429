#pragma once

#include "Common/Finite.h"
#include "Common/Point.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Veltrani::KelvoScreenDetail {

/// Relative error that a handful of double operations may leave: where coordinates of size x enter, lengths below
/// ROUNDING * x are noise. A ray that passes an edge closer than that counts as on the edge, so that nothing slips
/// between two surfaces whose common edge is rounded differently.
inline constexpr double ROUNDING = 16 * std::numeric_limits<double>::epsilon();

/// A round shape must be this much larger than the rounding of its centre: a ray that starts at the centre of a smaller
/// one cannot be distinguished from one that starts on the surface.
inline constexpr double SMALLEST_IN_ROUNDINGS = 8;

/// How far outside its range a normalised 2D screen coordinate still counts as the edge. The row formulas of the grids
/// end up to a few last bits above 1, and mapped coordinates come out of single precision in some files.
inline constexpr double PARAMETER_TOLERANCE = 1e-9;

/// Returns the largest absolute component: the size to which the rounding of the others is compared.
[[nodiscard]] inline double largestComponent(const Point<double, 3>& point) {
    return std::max({std::abs(point[0]), std::abs(point[1]), std::abs(point[2])});
}

}  // namespace Veltrani::KelvoScreenDetail
