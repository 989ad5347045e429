#pragma once

#include "DisplayLight/SurfaceChart.h"

namespace Veltrani::DisplayLightDetail {

/// The chart of a surface that is given by numbers. Throws what `ScreenGeometry::mapInto3D` throws.
[[nodiscard]] DisplayLight::SurfaceChart shapeChart(const ScreenGeometry& surface, std::size_t mostPlaces);

}  // namespace Veltrani::DisplayLightDetail
