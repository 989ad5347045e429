#include "DisplayReport/MeshThinner.h"

#include "DisplayReport/Extent.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using P3 = Point<double, 3>;
using Triangle = SceneSurface::Triangle;

/// An even surface of area A in cells of width w keeps about 3 A / w^2 triangles: more than two per cell, since it
/// passes through the corners of cells too.
constexpr double TRIANGLES_PER_CELL = 3;
/// How much wider the cells become when too many triangles are left.
constexpr double WIDENING = 1.2;
/// Bits of a cell's number per axis: three fit one number of 64 bits.
constexpr unsigned AXIS_BITS = 21;

bool isFinite(const P3& point) {
    return std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]);
}

bool isFinite(const TriangleMesh& mesh, const Triangle& triangle) {
    return std::all_of(triangle.begin(), triangle.end(),
                       [&mesh](std::uint32_t corner) { return isFinite(mesh.vertices[corner]); });
}

double areaOf(const TriangleMesh& mesh, const Triangle& triangle) {
    const P3& a = mesh.vertices[triangle[0]];
    return norm(cross(mesh.vertices[triangle[1]] - a, mesh.vertices[triangle[2]] - a)) / 2;
}

/// False for a point that is not finite.
bool contains(const Extent& extent, const P3& point) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (!(point[axis] >= extent.minimum()[axis] && point[axis] <= extent.maximum()[axis])) {
            return false;
        }
    }
    return true;
}

/// What the vertices of a mesh become when those in the same cell are one.
struct Clusters {
    std::vector<P3> middles;
    std::vector<std::uint32_t> ofVertex;  ///< index into `middles`
};

/// @param extent around the vertices that triangles use; others take no part
Clusters gather(const std::vector<P3>& vertices, const Extent& extent, double width) {
    std::vector<std::pair<std::uint64_t, std::uint32_t>> cells;
    cells.reserve(vertices.size());
    for (std::uint32_t i = 0; i < vertices.size(); ++i) {
        if (!contains(extent, vertices[i])) {
            continue;
        }
        std::uint64_t cell = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            cell = cell << AXIS_BITS | static_cast<std::uint64_t>((vertices[i][axis] - extent.minimum()[axis]) / width);
        }
        cells.emplace_back(cell, i);
    }
    std::sort(cells.begin(), cells.end());
    Clusters clusters;
    clusters.ofVertex.resize(vertices.size());
    for (std::size_t i = 0; i < cells.size();) {
        P3 sum;
        const std::size_t first = i;
        // Relative to the first: far from the origin, a sum of many would lose the places behind the point.
        const P3 origin = vertices[cells[first].second];
        for (; i < cells.size() && cells[i].first == cells[first].first; ++i) {
            sum += vertices[cells[i].second] - origin;
            clusters.ofVertex[cells[i].second] = static_cast<std::uint32_t>(clusters.middles.size());
        }
        clusters.middles.push_back(origin + sum * (1.0 / static_cast<double>(i - first)));
    }
    return clusters;
}

/// The triangles that keep three corners, each once.
std::vector<Triangle> remaining(const std::vector<Triangle>& finite, const Clusters& clusters) {
    std::vector<Triangle> kept;
    for (const Triangle& triangle : finite) {
        Triangle moved{clusters.ofVertex[triangle[0]], clusters.ofVertex[triangle[1]], clusters.ofVertex[triangle[2]]};
        if (moved[0] != moved[1] && moved[1] != moved[2] && moved[2] != moved[0]) {
            // The lowest corner first keeps the winding and makes equal triangles equal.
            std::rotate(moved.begin(), std::min_element(moved.begin(), moved.end()), moved.end());
            kept.push_back(moved);
        }
    }
    std::sort(kept.begin(), kept.end());
    kept.erase(std::unique(kept.begin(), kept.end()), kept.end());
    return kept;
}

/// Without the vertices that no triangle names.
SceneSurface compacted(const std::vector<P3>& vertices, const std::vector<Triangle>& triangles) {
    constexpr auto UNUSED = static_cast<std::uint32_t>(-1);
    std::vector<std::uint32_t> place(vertices.size(), UNUSED);
    SceneSurface surface;
    surface.triangles.reserve(triangles.size());
    for (Triangle triangle : triangles) {
        for (std::uint32_t& corner : triangle) {
            if (place[corner] == UNUSED) {
                place[corner] = static_cast<std::uint32_t>(surface.vertices.size());
                surface.vertices.push_back(vertices[corner]);
            }
            corner = place[corner];
        }
        surface.triangles.push_back(triangle);
    }
    return surface;
}

}  // namespace

SceneSurface MeshThinner::thin(const TriangleMesh& mesh) const {
    std::vector<Triangle> finite;
    Extent extent;
    double area = 0;
    for (const Triangle& triangle : mesh.triangles) {
        if (isFinite(mesh, triangle)) {
            finite.push_back(triangle);
            area += areaOf(mesh, triangle);
            for (const std::uint32_t corner : triangle) {
                extent.add(mesh.vertices[corner]);
            }
        }
    }
    if (finite.size() <= m_mostTriangles) {
        return compacted(mesh.vertices, finite);
    }
    const P3 size = extent.size();
    const double longest = std::max({size[0], size[1], size[2]});
    // A cell's number has room for no more cells along the mesh.
    const double narrowest = longest / ((1U << AXIS_BITS) - 1U);
    double width = std::max(narrowest, std::sqrt(TRIANGLES_PER_CELL * area / static_cast<double>(m_mostTriangles)));
    if (!(width > 0) || !std::isfinite(width)) {
        return {};
    }
    for (;; width *= WIDENING) {
        const Clusters clusters = gather(mesh.vertices, extent, width);
        const std::vector<Triangle> kept = remaining(finite, clusters);
        // Cells wider than the mesh leave nothing, so this ends.
        if (kept.size() <= m_mostTriangles) {
            return compacted(clusters.middles, kept);
        }
    }
}

}  // namespace Veltrani::DisplayReport
