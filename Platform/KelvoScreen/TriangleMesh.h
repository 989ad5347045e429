#pragma once

#include "Common/Point.h"

#include <array>
#include <cstdint>
#include <vector>

/// A triangle mesh with optional texture coordinates, indexed by corner: one vertex may carry several of them.
struct TriangleMesh {
    using Triangle = std::array<std::uint32_t, 3>;

    /// The positions of the vertices, in the frame and the unit of the text where `ObjReader` has filled the mesh, and
    /// in the world frame and native units in a `MeshScreen`.
    std::vector<Point<double, 3>> vertices;
    /// Indices into `vertices`, counter-clockwise when seen against the normal.
    std::vector<Triangle> triangles;
    /// (s, t).
    std::vector<Point<double, 2>> textureCoordinates;
    /// Indices into `textureCoordinates`, corner by corner as in `triangles`. Either as many as `triangles` or empty: a
    /// mesh is parameterised only when every corner has a texture coordinate.
    std::vector<Triangle> textureTriangles;
};
