#pragma once

#include "Common/Point.h"
#include "DisplayReport/scene/SceneShading.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class ScreenGeometry;

namespace Veltrani::DisplayReport {

/// A surface as a picture shows it: triangles in the world frame, native units. Every vertex is finite.
struct SceneSurface {
    using Triangle = std::array<std::uint32_t, 3>;
    using Edge = std::array<std::uint32_t, 2>;

    std::string name;  ///< "content" or "measured"; UTF-8
    std::string text;  ///< what it is, in words
    std::vector<Point<double, 3>> vertices;
    std::vector<Triangle> triangles;  ///< indices into `vertices`
    std::vector<Edge> border;         ///< edges that belong to one triangle alone; indices into `vertices`
    std::size_t trianglesOfMesh = 0;  ///< of the mesh before it was thinned; 0 for a shape given by its numbers
    std::size_t trianglesFarOff = 0;  ///< left out: they reach to no place, or to where no picture could hold the rest

    /// What lights it; of the current screen alone. It is drawn in place of `triangles`, which it covers.
    std::optional<SceneShading> shading;

    [[nodiscard]] bool isThinned() const { return trianglesOfMesh > triangles.size(); }
};

/// Returns for each vertex the first of those at its place, itself where it stands alone. All must be finite.
[[nodiscard]] std::vector<std::uint32_t> weldedVertices(const std::vector<Point<double, 3>>& vertices);

/// The edges of exactly one triangle. Vertices at the same place count as one, so that the seam of a closed shape is no
/// border; an edge names the first of them.
[[nodiscard]] std::vector<SceneSurface::Edge> borderOf(const std::vector<Point<double, 3>>& vertices,
                                                       const std::vector<SceneSurface::Triangle>& triangles);

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
