#include "KelvoScreen/detail/FaceRegion.h"

#include "KelvoScreen/detail/MeshSurface.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace KelvoScreenDetail {

namespace {

/// Rings of triangles whose mean is the normal of a place: enough that the noise of single ones cancels.
constexpr int NORMAL_RINGS = 2;
/// So many vertices belong to a region whatever their distance: fewer are too few for a curvature.
constexpr std::size_t FEWEST_POINTS = 16;
/// More vertices than this make a region no better and its search slow.
constexpr std::size_t MOST_POINTS = 4000;
/// Cosine of 45 degrees: beyond, a surface is not seen as heights over a plane any more.
constexpr double FLATTEST_COSINE = 0.70710678118654752;

}  // namespace

FaceRegion::FaceRegion(const TriangleMesh& mesh, const MeshTopology& topology, const SmoothFaces& faces)
    : m_mesh(mesh),
      m_topology(topology),
      m_faces(faces),
      m_triangleSeen(mesh.triangles.size(), 0),
      m_vertexSeen(mesh.vertices.size(), 0) {}

/// Visits the triangles around one, ring by ring, as long as they are accepted by their index and ring.
template <class Accept, class Take>
void FaceRegion::walk(std::uint32_t triangle, const Accept& accept, const Take& take) {
    ++m_walk;
    m_open.assign(1, {triangle, 0});
    m_triangleSeen[triangle] = m_walk;
    for (std::size_t i = 0; i < m_open.size(); ++i) {
        const auto [current, ring] = m_open[i];
        take(current);
        for (const std::uint32_t other : m_faces.neighbours()[current]) {
            if (other != MeshTopology::NONE && m_triangleSeen[other] != m_walk && accept(other, ring + 1)) {
                m_triangleSeen[other] = m_walk;
                m_open.emplace_back(other, ring + 1);
            }
        }
    }
}

Point<double, 3> FaceRegion::meanNormal(std::uint32_t triangle) {
    Point<double, 3> sum;
    walk(
        triangle, [](std::uint32_t /*other*/, int ring) { return ring <= NORMAL_RINGS; },
        [&](std::uint32_t current) {
            sum += norm(areaVector(cornersOf(m_mesh, current))) * m_faces.normals()[current];
        });
    const double length = norm(sum);
    return length > 0 ? sum * (1 / length) : Point<double, 3>{};
}

double FaceRegion::distanceTo(std::uint32_t triangle, const Point<double, 3>& place) const {
    const Corners corners = cornersOf(m_mesh, triangle);
    return std::min({norm(corners[0] - place), norm(corners[1] - place), norm(corners[2] - place)});
}

void FaceRegion::grow(std::uint32_t triangle, const Point<double, 3>& place, double radius) {
    m_normal = meanNormal(triangle);
    m_points.clear();
    double area = 0;
    const auto accept = [&](std::uint32_t other, int /*ring*/) {
        const Point<double, 3>& normal = m_faces.normals()[other];
        const bool isNear = m_points.size() < FEWEST_POINTS || distanceTo(other, place) <= radius;
        const bool isFlat = normal == Point<double, 3>{} || dot(normal, m_normal) >= FLATTEST_COSINE;
        return isNear && isFlat && m_points.size() < MOST_POINTS;
    };
    const auto take = [&](std::uint32_t current) {
        area += norm(areaVector(cornersOf(m_mesh, current))) / 2;
        for (const std::uint32_t corner : m_mesh.triangles[current]) {
            const std::uint32_t vertex = m_topology.mergedVertices()[corner];
            if (m_vertexSeen[vertex] != m_walk) {
                m_vertexSeen[vertex] = m_walk;
                m_points.push_back(m_mesh.vertices[vertex]);
            }
        }
    };
    walk(triangle, accept, take);
    m_spacing = std::sqrt(area / static_cast<double>(m_points.size()));
    std::sort(m_points.begin(), m_points.end(),
              [&place](const auto& a, const auto& b) { return norm(a - place) < norm(b - place); });
}

}  // namespace KelvoScreenDetail
