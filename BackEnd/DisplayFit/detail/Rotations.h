#pragma once

#include "Common/Matrix.h"
#include "Common/Point.h"

namespace Veltrani::DisplayFitDetail {

/// Returns the rotation about the axis of a vector by its length, right-handed.
[[nodiscard]] Matrix<double, 3> rotationOf(const Point<double, 3>& turn);

/// Returns the derivative by d of the turn that `rotationOf(turn + d)` makes after `rotationOf(turn)`: with `result *
/// d` small, rotationOf(turn + d) is rotationOf(result * d) * rotationOf(turn).
[[nodiscard]] Matrix<double, 3> turnBefore(const Point<double, 3>& turn);

/// Returns the angles Z, X, Y of a rotation for `Veltrani::rotationZXY`: of all that there are, those nearest to
/// `near`. Straight up and down, where Z and Y turn about one axis, Y stays as it is in `near`.
[[nodiscard]] Point<double, 3> anglesOf(const Matrix<double, 3>& rotation, const Point<double, 3>& near);

/// Returns how far a turn of a projector rolls its picture: the angle about its axis, y, of what was up, radians.
[[nodiscard]] double rollOf(const Matrix<double, 3>& turn);

}  // namespace Veltrani::DisplayFitDetail
