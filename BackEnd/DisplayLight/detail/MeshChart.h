#pragma once

#include "DisplayLight/SurfaceChart.h"

namespace Veltrani::DisplayLightDetail {

/// The chart of a mesh.
[[nodiscard]] DisplayLight::SurfaceChart meshChart(const std::shared_ptr<const ScreenGeometry>& surface,
                                                   std::size_t mostPlaces);

}  // namespace Veltrani::DisplayLightDetail
