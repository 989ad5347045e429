#include "DisplayReport/scene/SceneSurface.h"

#include "DisplayReport/basics/Extent.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using Vertices = std::vector<Point<double, 3>>;

/// Of the size of the surface: the width of the cells in which vertices count as one. Rounding at a seam is many orders
/// smaller, a triangle that can be seen many orders larger.
constexpr double SAME_PLACE = 1e-7;

using Cell = std::array<long long, 3>;

}  // namespace

std::vector<std::uint32_t> weldedVertices(const Vertices& vertices) {
    Extent extent;
    for (const auto& vertex : vertices) {
        extent.add(vertex);
    }
    const double width = std::max(SAME_PLACE * norm(extent.size()), std::numeric_limits<double>::min());
    std::vector<std::pair<Cell, std::uint32_t>> cells;
    cells.reserve(vertices.size());
    for (std::uint32_t i = 0; i < vertices.size(); ++i) {
        const Point<double, 3> place = vertices[i] - extent.minimum();
        cells.push_back(
            {{std::llround(place[0] / width), std::llround(place[1] / width), std::llround(place[2] / width)}, i});
    }
    std::sort(cells.begin(), cells.end());
    std::vector<std::uint32_t> welded(vertices.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const bool isSame = i > 0 && cells[i].first == cells[i - 1].first;
        welded[cells[i].second] = isSame ? welded[cells[i - 1].second] : cells[i].second;
    }
    return welded;
}

std::vector<SceneSurface::Edge> borderOf(const Vertices& vertices,
                                         const std::vector<SceneSurface::Triangle>& triangles) {
    const std::vector<std::uint32_t> welded = weldedVertices(vertices);
    std::vector<SceneSurface::Edge> edges;
    edges.reserve(triangles.size() * 3);
    for (const auto& triangle : triangles) {
        for (std::size_t corner = 0; corner < triangle.size(); ++corner) {
            const std::uint32_t a = welded[triangle[corner]];
            const std::uint32_t b = welded[triangle[(corner + 1) % triangle.size()]];
            if (a != b) {
                edges.push_back({std::min(a, b), std::max(a, b)});
            }
        }
    }
    std::sort(edges.begin(), edges.end());
    std::vector<SceneSurface::Edge> border;
    for (std::size_t i = 0; i < edges.size();) {
        const auto end = static_cast<std::size_t>(
            std::upper_bound(edges.begin() + static_cast<std::ptrdiff_t>(i), edges.end(), edges[i]) - edges.begin());
        if (end - i == 1) {
            border.push_back(edges[i]);
        }
        i = end;
    }
    return border;
}

}  // namespace Veltrani::DisplayReport
