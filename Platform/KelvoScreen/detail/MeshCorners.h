#pragma once

#include "KelvoScreen/TriangleMesh.h"
#include "KelvoScreen/detail/TriangleMath.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace KelvoScreenDetail {

/// The corners of a triangle of a mesh.
[[nodiscard]] inline Corners cornersOf(const TriangleMesh& mesh, std::uint32_t triangle) {
    const TriangleMesh::Triangle& corners = mesh.triangles[triangle];
    return {mesh.vertices[corners[0]], mesh.vertices[corners[1]], mesh.vertices[corners[2]]};
}

/// What the arithmetic of rays must know of all triangles of a mesh.
struct TriangleShapes {
    double longest2 = 0;     ///< square of the longest edge
    double longestEdge = 0;  ///< its root
    bool hasNeedles = false;
    std::vector<bool> needles;  ///< a bit for each triangle, or none when no triangle is a needle

    void add(const TriangleMesh& mesh, std::uint32_t triangle, const TriangleShape& shape) {
        if (shape.longest2 > longest2) {
            longest2 = shape.longest2;
            longestEdge = std::sqrt(longest2);
        }
        if (shape.isNeedle) {
            hasNeedles = true;
            needles.resize(mesh.triangles.size());
            needles[triangle] = true;
        }
    }

    [[nodiscard]] bool isNeedle(std::uint32_t triangle) const { return hasNeedles && needles[triangle]; }
};

}  // namespace KelvoScreenDetail
