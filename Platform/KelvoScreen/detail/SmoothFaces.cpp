#include "KelvoScreen/detail/SmoothFaces.h"

#include "KelvoScreen/detail/MeshSurface.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace Veltrani::KelvoScreenDetail {

namespace {

constexpr double DEGREE = std::numbers::pi / 180;

/// A crease bends more than this many times what is usual in its mesh.
constexpr double CREASE_FACTOR = 2.5;
/// ... and never less than panels that are meant to be one surface do,
constexpr double SMALLEST_CREASE = 10 * DEGREE;
/// ... but always when it bends as much as this.
constexpr double LARGEST_BEND = 60 * DEGREE;
/// The share of edges that bend no more than is usual. Of the edges of a cylinder cut into quadrilaterals only a third
/// bend at all.
constexpr double USUAL_SHARE = 0.8;
/// The number of edges that determine what is usual.
constexpr std::size_t SAMPLE_SIZE = 20000;

/// Height over longest edge below which the normal of a triangle is noise: in a mesh measured to a ten-thousandth of
/// its edges, ten times the error.
constexpr double THIN = 1e-3;

Point<double, 3> steadyNormal(const Corners& corners) {
    const Point<double, 3> area = areaVector(corners);
    double longest2 = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const Point<double, 3> edge = corners[(i + 1) % 3] - corners[i];
        longest2 = std::max(longest2, dot(edge, edge));
    }
    return norm(area) > THIN * longest2 ? unitNormal(corners) : Point<double, 3>{};
}

/// Returns the cosine of the bend; 1 where a normal is missing.
double bendCosine(const Point<double, 3>& a, const Point<double, 3>& b) {
    const Point<double, 3> none;
    return a == none || b == none ? 1 : dot(a, b);
}

/// Rings of triangles whose mean is the normal of a place: enough that the noise of single ones cancels.
constexpr int NORMAL_RINGS = 2;
/// So many vertices belong to a region whatever their distance: fewer are too few for a curvature.
constexpr std::size_t FEWEST_POINTS = 16;
/// More vertices than this make a region no better and its search slow.
constexpr std::size_t MOST_POINTS = 4000;
/// Cosine of 45 degrees: beyond, a surface is not seen as heights over a plane any more.
constexpr double FLATTEST_COSINE = 0.70710678118654752;

}  // namespace

SmoothFaces::SmoothFaces(const TriangleMesh& mesh, const MeshTopology& topology) : m_neighbours(topology.neighbours()) {
    m_normals.reserve(mesh.triangles.size());
    for (std::uint32_t triangle = 0; triangle < mesh.triangles.size(); ++triangle) {
        m_normals.push_back(steadyNormal(cornersOf(mesh, triangle)));
    }
    cut(creaseCosine());
    label();
}

double SmoothFaces::creaseCosine() const {
    const std::size_t step = 1 + m_neighbours.size() / SAMPLE_SIZE;
    std::vector<double> cosines;
    for (std::size_t i = 0; i < m_neighbours.size(); i += step) {
        for (const std::uint32_t other : m_neighbours[i]) {
            if (other != MeshTopology::NONE) {
                cosines.push_back(bendCosine(m_normals[i], m_normals[other]));
            }
        }
    }
    if (cosines.empty()) {
        return std::cos(SMALLEST_CREASE);
    }
    const auto usual =
        cosines.begin() + static_cast<std::ptrdiff_t>((1 - USUAL_SHARE) * static_cast<double>(cosines.size()));
    std::nth_element(cosines.begin(), usual, cosines.end());
    const double bend = std::acos(std::clamp(*usual, -1.0, 1.0));
    return std::cos(std::clamp(CREASE_FACTOR * bend, SMALLEST_CREASE, LARGEST_BEND));
}

void SmoothFaces::cut(double creaseCosine) {
    for (std::size_t i = 0; i < m_neighbours.size(); ++i) {
        for (std::uint32_t& other : m_neighbours[i]) {
            if (other != MeshTopology::NONE && bendCosine(m_normals[i], m_normals[other]) < creaseCosine) {
                other = MeshTopology::NONE;
            }
        }
    }
}

void SmoothFaces::label() {
    m_faces.assign(m_neighbours.size(), MeshTopology::NONE);
    std::vector<std::uint32_t> open;
    for (std::uint32_t first = 0; first < m_faces.size(); ++first) {
        if (m_faces[first] != MeshTopology::NONE) {
            continue;
        }
        m_faces[first] = first;
        open.push_back(first);
        while (!open.empty()) {
            const std::uint32_t triangle = open.back();
            open.pop_back();
            for (const std::uint32_t other : m_neighbours[triangle]) {
                if (other != MeshTopology::NONE && m_faces[other] == MeshTopology::NONE) {
                    m_faces[other] = first;
                    open.push_back(other);
                }
            }
        }
    }
}

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

}  // namespace Veltrani::KelvoScreenDetail
