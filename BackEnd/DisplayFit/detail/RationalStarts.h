#pragma once

#include "DisplayFit/detail/FitPoints.h"
#include "DisplayFit/detail/PictureModel.h"

#include <vector>

namespace Veltrani::DisplayFitDetail {

/// Returns true for a lens whose distortion is a quotient of polynomials, of which both are solved.
[[nodiscard]] bool isRational(const PictureModel& model);

/// Returns the square of the tangent of the angle between the axis and the ray to a point; infinite behind the lens.
[[nodiscard]] double squareOfTangent(const PictureView& view, const Point<double, 3>& world);

/// Other starts for such a lens: about the same distortion by other denominators, the first one none, the others small
/// at some radius of the picture, where the numerator is small with them.
///
/// Points with noise have a minimum for many of these radii, and from one start a solver finds one of them.
/// @param view of the solution that was found
[[nodiscard]] std::vector<PictureView> rationalStarts(const PictureView& view, const FitPoints& points);

}  // namespace Veltrani::DisplayFitDetail
