#include "KelvoScreen/detail/MeshTopology.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <tuple>

namespace Veltrani::KelvoScreenDetail {

namespace {

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

/// The ends of a side, lower first.
struct Edge {
    std::uint32_t low;
    std::uint32_t high;
    std::uint32_t triangle;
};

bool areAlike(const Edge& a, const Edge& b) {
    return a.low == b.low && a.high == b.high;
}

std::array<Edge, 3> edgesOf(const TriangleMesh::Triangle& corners, const std::vector<std::uint32_t>& merged,
                            std::uint32_t triangle) {
    std::array<Edge, 3> edges{};
    for (std::size_t i = 0; i < 3; ++i) {
        const auto [low, high] = std::minmax(merged[corners[i]], merged[corners[(i + 1) % 3]]);
        edges[i] = {low, high, triangle};
    }
    return edges;
}

std::vector<Edge> sortedEdges(const TriangleMesh& mesh, const std::vector<std::uint32_t>& merged) {
    std::vector<Edge> edges;
    edges.reserve(3 * mesh.triangles.size());
    for (std::uint32_t triangle = 0; triangle < mesh.triangles.size(); ++triangle) {
        const std::array<Edge, 3> sides = edgesOf(mesh.triangles[triangle], merged, triangle);
        if (std::none_of(sides.begin(), sides.end(), [](const Edge& edge) { return edge.low == edge.high; })) {
            edges.insert(edges.end(), sides.begin(), sides.end());
        }
    }
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) {
        return std::tie(a.low, a.high, a.triangle) < std::tie(b.low, b.high, b.triangle);
    });
    return edges;
}

}  // namespace

MeshTopology::MeshTopology(const TriangleMesh& mesh)
    : m_merged(mergeVertices(mesh.vertices)), m_neighbours(mesh.triangles.size(), Neighbours{NONE, NONE, NONE}) {
    const auto sideOf = [&](const Edge& edge) {
        const std::array<Edge, 3> sides = edgesOf(mesh.triangles[edge.triangle], m_merged, edge.triangle);
        return static_cast<std::uint32_t>(areAlike(sides[0], edge) ? 0 : areAlike(sides[1], edge) ? 1 : 2);
    };
    const std::vector<Edge> edges = sortedEdges(mesh, m_merged);
    for (auto run = edges.begin(); run != edges.end();) {
        const auto end = std::find_if(run, edges.end(), [run](const Edge& edge) { return !areAlike(edge, *run); });
        if (end - run == 1) {
            m_border.push_back({run->triangle, sideOf(*run)});
        } else if (end - run == 2) {
            m_neighbours[run->triangle][sideOf(*run)] = run[1].triangle;
            m_neighbours[run[1].triangle][sideOf(run[1])] = run->triangle;
        }
        run = end;
    }
    std::sort(m_border.begin(), m_border.end(), [](const BorderEdge& a, const BorderEdge& b) {
        return std::tie(a.triangle, a.side) < std::tie(b.triangle, b.side);
    });
}

}  // namespace Veltrani::KelvoScreenDetail
