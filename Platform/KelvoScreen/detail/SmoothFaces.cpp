#include "KelvoScreen/detail/SmoothFaces.h"

#include "KelvoScreen/detail/MeshSurface.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace KelvoScreenDetail {

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
/// So many edges tell what is usual.
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

/// The cosine of the bend; 1 where a normal is missing.
double bendCosine(const Point<double, 3>& a, const Point<double, 3>& b) {
    const Point<double, 3> none;
    return a == none || b == none ? 1 : dot(a, b);
}

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

}  // namespace KelvoScreenDetail
