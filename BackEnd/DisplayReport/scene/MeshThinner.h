#pragma once

#include "DisplayReport/scene/SceneSurface.h"
#include "KelvoScreen/TriangleMesh.h"

#include <cstddef>

namespace Veltrani::DisplayReport {

/// Fewer triangles for a picture of a mesh: edges are collapsed where that changes the shape least (meshoptimizer), so
/// that surfaces that fit each other still do, and no vertex moves. The border stays where it is, corners included.
///
/// Where edges run out, as in many loose parts, vertices are gathered in cells of equal size instead: the middle of
/// each takes their place, and triangles that keep three different corners stay. Vertices of the border are gathered
/// apart from the others, and the one where it turns most takes their place.
///
/// The result is for looking at, not for measuring: what is small disappears.
class MeshThinner {
public:
    /// @param mostTriangles at least 1
    explicit MeshThinner(std::size_t mostTriangles) : m_mostTriangles(mostTriangles) {}

    /// Vertices and triangles alone, without name and border. A mesh of few enough triangles is handed on as it is.
    /// Triangles with a corner that is not finite, or so far from most others that no picture could hold both, are left
    /// out and counted.
    [[nodiscard]] SceneSurface thin(const TriangleMesh& mesh) const;

private:
    /// A surface of too many triangles.
    [[nodiscard]] SceneSurface simplified(const SceneSurface& whole) const;
    [[nodiscard]] SceneSurface gathered(const SceneSurface& whole) const;

    std::size_t m_mostTriangles;
};

}  // namespace Veltrani::DisplayReport
