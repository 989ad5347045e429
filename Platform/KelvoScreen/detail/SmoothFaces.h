#pragma once

#include "KelvoScreen/detail/MeshTopology.h"

#include <cstdint>
#include <vector>

namespace KelvoScreenDetail {

/// A mesh divided along its creases into smooth faces.
///
/// An edge is a crease when the surface bends across it by far more than it does at most of its edges: the corner of a
/// room is one, an edge of a coarse dome is not. Triangles without area, or so thin that their normal is noise, join
/// their neighbours.
class SmoothFaces {
public:
    /// The vertices that the triangles use must be finite.
    SmoothFaces(const TriangleMesh& mesh, const MeshTopology& topology);

    /// As those of the topology, without those across a crease.
    [[nodiscard]] const std::vector<MeshTopology::Neighbours>& neighbours() const { return m_neighbours; }
    /// The unit normals of the triangles; zero for those whose normal is noise.
    [[nodiscard]] const std::vector<Point<double, 3>>& normals() const { return m_normals; }
    /// For each triangle the lowest one of its face.
    [[nodiscard]] const std::vector<std::uint32_t>& faces() const { return m_faces; }

private:
    [[nodiscard]] double creaseCosine() const;
    void cut(double creaseCosine);
    void label();

    std::vector<MeshTopology::Neighbours> m_neighbours;
    std::vector<Point<double, 3>> m_normals;
    std::vector<std::uint32_t> m_faces;
};

}  // namespace KelvoScreenDetail
