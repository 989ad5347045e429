#pragma once

#include "Common/Point.h"

class ScreenGeometry;

namespace Veltrani::DisplayReport {

/// Whether light from `from` reaches a point of the surface before it meets another part of the surface.
///
/// A surface is not hidden by itself: what is met less than a millionth of the way before the point is the point, and
/// so is a ray that passes an edge by rounding and meets nothing at all. False for a NaN.
[[nodiscard]] bool isInSight(const ScreenGeometry& surface, const Point<double, 3>& from,
                             const Point<double, 3>& onSurface);

}  // namespace Veltrani::DisplayReport
