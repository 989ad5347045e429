#pragma once

#include "DisplayReport/coverage/SurfacePoint.h"

#include <cstddef>
#include <vector>

class ScreenGeometry;

namespace Veltrani::DisplayReport {

/// About `count` points of a surface: on a mesh evenly by area whatever its triangles are, on any other shape evenly in
/// its 2D coordinates. The same points at every call. None for a mesh without area and a surface with neither.
[[nodiscard]] std::vector<SurfacePoint> samplesOf(const ScreenGeometry& surface, std::size_t count);

}  // namespace Veltrani::DisplayReport
