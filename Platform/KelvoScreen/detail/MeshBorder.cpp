#include "KelvoScreen/detail/MeshBorder.h"

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/detail/Components.h"
#include "KelvoScreen/detail/Rounding.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <tuple>
#include <utility>

namespace KelvoScreenDetail {

namespace {

/// For each vertex the lowest one at the same place.
std::vector<std::uint32_t> mergeVertices(const std::vector<Point<double, 3>>& vertices) {
    std::vector<std::uint32_t> order(vertices.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(), [&vertices](std::uint32_t a, std::uint32_t b) {
        return vertices[a] == vertices[b] ? a < b : vertices[a] < vertices[b];
    });
    std::vector<std::uint32_t> merged(vertices.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        const bool same = i > 0 && vertices[order[i]] == vertices[order[i - 1]];
        merged[order[i]] = same ? merged[order[i - 1]] : order[i];
    }
    return merged;
}

struct Edge {
    std::uint32_t low;
    std::uint32_t high;
    std::uint32_t triangle;
};

bool areAlike(const Edge& a, const Edge& b) {
    return a.low == b.low && a.high == b.high;
}

std::vector<Edge> sortedEdges(const TriangleMesh& mesh) {
    const std::vector<std::uint32_t> merged = mergeVertices(mesh.vertices);
    std::vector<Edge> edges;
    edges.reserve(3 * mesh.triangles.size());
    for (std::uint32_t triangle = 0; triangle < mesh.triangles.size(); ++triangle) {
        const TriangleMesh::Triangle& corners = mesh.triangles[triangle];
        for (std::size_t i = 0; i < 3; ++i) {
            const auto [low, high] = std::minmax(merged[corners[i]], merged[corners[(i + 1) % 3]]);
            if (low != high) {
                edges.push_back({low, high, triangle});
            }
        }
    }
    std::sort(edges.begin(), edges.end(),
              [](const Edge& a, const Edge& b) { return std::tie(a.low, a.high) < std::tie(b.low, b.high); });
    return edges;
}

std::vector<std::uint32_t> borderTriangles(const TriangleMesh& mesh) {
    const std::vector<Edge> edges = sortedEdges(mesh);
    std::vector<std::uint32_t> triangles;
    for (auto run = edges.begin(); run != edges.end();) {
        const auto end = std::find_if(run, edges.end(), [run](const Edge& edge) { return !areAlike(edge, *run); });
        if (end - run == 1) {
            triangles.push_back(run->triangle);
        }
        run = end;
    }
    std::sort(triangles.begin(), triangles.end());
    triangles.erase(std::unique(triangles.begin(), triangles.end()), triangles.end());
    return triangles;
}

/// Where a ray meets a plane at t >= 0; nothing when it runs along it.
std::optional<MeshPoint> hitPlane(const Point<double, 3>& from, const Point<double, 3>& direction,
                                  const Point<double, 3>& planePoint, const Point<double, 3>& normal) {
    const double approach = dot(direction, normal);
    if (!(std::abs(approach) > ROUNDING * norm(direction))) {
        return std::nullopt;
    }
    const double t = dot(planePoint - from, normal) / approach;
    const Point<double, 3> point = from + t * direction;
    if (!(t >= 0) || !isFinite(point)) {
        return std::nullopt;
    }
    return MeshPoint{point, normal, t, 0};
}

}  // namespace

MeshBorder::MeshBorder(const TriangleMesh& mesh) {
    for (const std::uint32_t triangle : borderTriangles(mesh)) {
        const Corners corners = cornersOf(mesh, triangle);
        if (hasArea(corners)) {
            m_triangles.push_back({triangle, corners, unitNormal(corners)});
        }
    }
}

std::vector<std::uint32_t> MeshBorder::triangles() const {
    std::vector<std::uint32_t> triangles;
    for (const BorderTriangle& border : m_triangles) {
        triangles.push_back(border.triangle);
    }
    return triangles;
}

std::optional<MeshPoint> MeshBorder::continuedHit(const Point<double, 3>& from, const Point<double, 3>& to,
                                                  int side) const {
    const Point<double, 3> direction = to - from;
    std::optional<MeshPoint> best;
    double smallest = Box::INFINITE;
    for (const BorderTriangle& border : m_triangles) {
        if (sideOfSurface(direction, border.normal) != side) {
            continue;
        }
        const std::optional<MeshPoint> hit = hitPlane(from, direction, border.corners[0], border.normal);
        const double distance = hit ? norm(closestPoint(border.corners, hit->point) - hit->point) : Box::INFINITE;
        if (distance < smallest) {
            smallest = distance;
            best = hit;
            best->triangle = border.triangle;
        }
    }
    return best;
}

}  // namespace KelvoScreenDetail
