#pragma once

#include "KelvoScreen/TriangleMesh.h"
#include "KelvoScreen/detail/TriangleMath.h"

#include <cstdint>

namespace KelvoScreenDetail {

/// The corners of a triangle of a mesh.
[[nodiscard]] inline Corners cornersOf(const TriangleMesh& mesh, std::uint32_t triangle) {
    const TriangleMesh::Triangle& corners = mesh.triangles[triangle];
    return {mesh.vertices[corners[0]], mesh.vertices[corners[1]], mesh.vertices[corners[2]]};
}

}  // namespace KelvoScreenDetail
