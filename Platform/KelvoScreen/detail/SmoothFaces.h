#pragma once

#include "KelvoScreen/TriangleMesh.h"
#include "KelvoScreen/detail/MeshTopology.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Veltrani::KelvoScreenDetail {

/// A mesh divided along its creases into smooth faces.
///
/// An edge is a crease when the surface bends across it by far more than it does at most of its edges: the corner of a
/// room is one, an edge of a coarse dome is not. Triangles without area, or so thin that their normal is noise, join
/// their neighbours.
class SmoothFaces {
public:
    /// The vertices that the triangles use must be finite.
    SmoothFaces(const TriangleMesh& mesh, const MeshTopology& topology);

    /// Returns the neighbours of the topology, without those across a crease.
    [[nodiscard]] const std::vector<MeshTopology::Neighbours>& neighbours() const { return m_neighbours; }
    /// Returns the unit normals of the triangles; zero for those whose normal is noise.
    [[nodiscard]] const std::vector<Point<double, 3>>& normals() const { return m_normals; }
    /// Returns for each triangle the lowest one of its face.
    [[nodiscard]] const std::vector<std::uint32_t>& faces() const { return m_faces; }

private:
    [[nodiscard]] double creaseCosine() const;
    void cut(double creaseCosine);
    void label();

    std::vector<MeshTopology::Neighbours> m_neighbours;
    std::vector<Point<double, 3>> m_normals;
    std::vector<std::uint32_t> m_faces;
};

/// Collects the vertices of a smooth face around a place on it, one place after another.
///
/// Refers to everything it is given, which must stay as it is.
class FaceRegion {
public:
    FaceRegion(const TriangleMesh& mesh, const MeshTopology& topology, const SmoothFaces& faces);

    /// Grows around a place on a triangle as far as `radius` across the surface, at least a few triangles far and at
    /// most some thousand vertices, and no further than the surface has turned by 45 degrees. Replaces the last region.
    void grow(std::uint32_t triangle, const Point<double, 3>& place, double radius);

    /// Returns the mean normal near the place, unit length; zero when no triangle there has one.
    [[nodiscard]] const Point<double, 3>& normal() const { return m_normal; }
    /// Returns the points of the region, nearest to the place first; vertices at the same place count once.
    [[nodiscard]] std::span<const Point<double, 3>> points() const { return m_points; }
    /// Returns the mean distance between neighbouring vertices.
    [[nodiscard]] double spacing() const { return m_spacing; }

private:
    [[nodiscard]] Point<double, 3> meanNormal(std::uint32_t triangle);
    template <class Accept, class Take>
    void walk(std::uint32_t triangle, const Accept& accept, const Take& take);
    [[nodiscard]] double distanceTo(std::uint32_t triangle, const Point<double, 3>& place) const;

    const TriangleMesh& m_mesh;
    const MeshTopology& m_topology;
    const SmoothFaces& m_faces;
    std::vector<std::uint32_t> m_triangleSeen;  ///< the walk in which a triangle was met last
    std::vector<std::uint32_t> m_vertexSeen;    ///< the same of the merged vertices
    std::uint32_t m_walk = 0;
    std::vector<std::pair<std::uint32_t, int>> m_open;  ///< triangles and their ring
    Point<double, 3> m_normal;
    std::vector<Point<double, 3>> m_points;
    double m_spacing = 0;
};

}  // namespace Veltrani::KelvoScreenDetail
