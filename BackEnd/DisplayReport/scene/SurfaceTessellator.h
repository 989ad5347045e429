#pragma once

#include "DisplayReport/scene/SceneSurface.h"

#include <cstddef>

class ScreenGeometry;

namespace Veltrani::DisplayReport {

/// Turns a screen geometry of any kind into triangles for a picture: a mesh gives its own, thinned when there are too
/// many, every other kind a lattice over its 2D parameters.
class SurfaceTessellator {
public:
    /// @param mostTriangles at least 2
    explicit SurfaceTessellator(std::size_t mostTriangles) : m_mostTriangles(mostTriangles) {}

    /// With its border, without a name. Empty when the geometry has neither triangles nor 2D parameters, or when no
    /// point of it is finite.
    [[nodiscard]] SceneSurface tessellate(const ScreenGeometry& geometry) const;

private:
    std::size_t m_mostTriangles;
};

}  // namespace Veltrani::DisplayReport
