#include "DisplayLight/SurfaceChart.h"

#include "DisplayLight/detail/MeshChart.h"
#include "DisplayLight/detail/ShapeChart.h"
#include "KelvoScreen/ScreenGeometry.h"

namespace Veltrani::DisplayLight {

SurfaceChart SurfaceChart::of(const std::shared_ptr<const ScreenGeometry>& surface, std::size_t mostPlaces) {
    return surface->triangleMesh() != nullptr ? DisplayLightDetail::meshChart(surface, mostPlaces)
                                              : DisplayLightDetail::shapeChart(*surface, mostPlaces);
}

}  // namespace Veltrani::DisplayLight
