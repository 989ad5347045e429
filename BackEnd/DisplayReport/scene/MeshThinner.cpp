#include "DisplayReport/scene/MeshThinner.h"

#include "Common/Finite.h"
#include "DisplayReport/basics/Extent.h"

#include <meshoptimizer.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <span>
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
/// Marks a vertex that is not on the border.
constexpr double INSIDE = -1;
/// Bits of a cell's number per axis: three fit one number of 64 bits, with one to spare.
constexpr unsigned AXIS_BITS = 21;

/// The places that a picture can hold together with most of a mesh.
class Neighbourhood {
public:
    explicit Neighbourhood(const std::vector<P3>& vertices) {
        P3 size;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            std::vector<double> places;
            places.reserve(vertices.size());
            for (const P3& vertex : vertices) {
                if (isFinite(vertex)) {
                    places.push_back(vertex[axis]);
                }
            }
            m_middle[axis] = quantile(places, 0.5);
            size[axis] = quantile(places, 0.75) - quantile(places, 0.25);
        }
        m_reach = norm(size) > 0 ? FARTHEST * norm(size) : std::numeric_limits<double>::infinity();
    }

    [[nodiscard]] bool has(const TriangleMesh& mesh, const Triangle& triangle) const {
        return std::all_of(triangle.begin(), triangle.end(), [&](std::uint32_t corner) {
            const P3& vertex = mesh.vertices[corner];
            return isFinite(vertex) && norm(vertex - m_middle) <= m_reach;
        });
    }

private:
    /// The farthest that a vertex may stand from the middle, in sizes of the middle half of the vertices.
    static constexpr double FARTHEST = 1e4;

    static double quantile(std::vector<double>& places, double part) {
        if (places.empty()) {
            return 0;
        }
        const auto place = places.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(places.size() - 1));
        std::nth_element(places.begin(), place, places.end());
        return *place;
    }

    P3 m_middle;
    double m_reach = 0;
};

double areaOf(const SceneSurface& surface) {
    double area = 0;
    for (const auto& [a, b, c] : surface.triangles) {
        const P3& corner = surface.vertices[a];
        area += norm(cross(surface.vertices[b] - corner, surface.vertices[c] - corner)) / 2;
    }
    return area;
}

/// How much the border turns at each vertex, from 0 for straight on to 2 for straight back; `INSIDE` for a vertex that
/// is not on it. Vertices at the same place are alike.
std::vector<double> borderTurns(const SceneSurface& surface) {
    std::vector<P3> sums(surface.vertices.size());
    std::vector<double> turns(surface.vertices.size(), INSIDE);
    for (const auto& [a, b] : borderOf(surface.vertices, surface.triangles)) {
        const P3 along = surface.vertices[b] - surface.vertices[a];
        const double length = norm(along);
        const P3 step = length > 0 ? along * (1 / length) : P3();
        sums[a] += step;
        sums[b] -= step;
        turns[a] = turns[b] = 0;
    }
    // The directions to both neighbours cancel out where the border runs straight on.
    for (std::size_t i = 0; i < turns.size(); ++i) {
        turns[i] = turns[i] == INSIDE ? INSIDE : norm(sums[i]);
    }
    const std::vector<std::uint32_t> welded = weldedVertices(surface.vertices);
    for (std::size_t i = 0; i < turns.size(); ++i) {
        turns[i] = turns[welded[i]];
    }
    return turns;
}

/// What the vertices of a mesh become when those in the same cell are one.
struct Clusters {
    std::vector<P3> places;
    std::vector<std::uint32_t> ofVertex;  ///< index into `places`
};

/// A vertex with the number of its cell.
using CellVertex = std::pair<std::uint64_t, std::uint32_t>;

/// In the order of the cells; those of the border are cells of their own.
std::vector<CellVertex> cellsOf(const SceneSurface& surface, const std::vector<double>& turns, const Extent& extent,
                                double width) {
    std::vector<CellVertex> cells;
    cells.reserve(surface.vertices.size());
    for (std::uint32_t i = 0; i < surface.vertices.size(); ++i) {
        std::uint64_t cell = turns[i] == INSIDE ? 0 : 1;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double steps = (surface.vertices[i][axis] - extent.minimum()[axis]) / width;
            cell = cell << AXIS_BITS | static_cast<std::uint64_t>(steps);
        }
        cells.emplace_back(cell, i);
    }
    std::sort(cells.begin(), cells.end());
    return cells;
}

using CellSpan = std::span<const CellVertex>;

P3 middleOf(const std::vector<P3>& vertices, CellSpan cell) {
    // Relative to the first: far from the origin, a sum of many would lose the places behind the point.
    const P3& origin = vertices[cell.front().second];
    P3 sum;
    for (const CellVertex& member : cell) {
        sum += vertices[member.second] - origin;
    }
    return origin + sum * (1.0 / static_cast<double>(cell.size()));
}

const P3& sharpestOf(const std::vector<P3>& vertices, const std::vector<double>& turns, CellSpan cell) {
    const auto sharpest = std::max_element(
        cell.begin(), cell.end(), [&turns](const auto& a, const auto& b) { return turns[a.second] < turns[b.second]; });
    return vertices[sharpest->second];
}

Clusters gather(const SceneSurface& surface, const std::vector<double>& turns, const Extent& extent, double width) {
    const std::vector<CellVertex> cells = cellsOf(surface, turns, extent, width);
    Clusters clusters;
    clusters.ofVertex.resize(surface.vertices.size());
    for (std::size_t first = 0; first < cells.size();) {
        std::size_t end = first;
        for (; end < cells.size() && cells[end].first == cells[first].first; ++end) {
            clusters.ofVertex[cells[end].second] = static_cast<std::uint32_t>(clusters.places.size());
        }
        const CellSpan cell = CellSpan(cells).subspan(first, end - first);
        clusters.places.push_back(turns[cell.front().second] == INSIDE ? middleOf(surface.vertices, cell)
                                                                       : sharpestOf(surface.vertices, turns, cell));
        first = end;
    }
    return clusters;
}

/// The triangles that keep three corners, each once.
std::vector<Triangle> remaining(const std::vector<Triangle>& triangles, const Clusters& clusters) {
    std::vector<Triangle> kept;
    for (const Triangle& triangle : triangles) {
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

/// With the first vertex at each place, each triangle once, and without those that have no area then.
std::vector<Triangle> weldedTriangles(const SceneSurface& surface) {
    Clusters places;
    places.ofVertex = weldedVertices(surface.vertices);
    return remaining(surface.triangles, places);
}

/// Relative to the middle of the mesh and to its size: a float has seven digits, and no room for great numbers. Empty
/// where the size is none.
std::vector<float> unitPlaces(const std::vector<P3>& vertices) {
    Extent extent;
    for (const P3& vertex : vertices) {
        extent.add(vertex);
    }
    const P3 size = extent.size();
    const double longest = std::max({size[0], size[1], size[2]});
    if (!(longest > 0) || !std::isfinite(longest)) {
        return {};
    }
    const P3 middle = extent.minimum() + size * 0.5;
    std::vector<float> places;
    places.reserve(3 * vertices.size());
    for (const P3& vertex : vertices) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            places.push_back(static_cast<float>((vertex[axis] - middle[axis]) / longest));
        }
    }
    return places;
}

}  // namespace

SceneSurface MeshThinner::thin(const TriangleMesh& mesh) const {
    const Neighbourhood neighbourhood(mesh.vertices);
    std::vector<Triangle> near;
    std::copy_if(mesh.triangles.begin(), mesh.triangles.end(), std::back_inserter(near),
                 [&](const Triangle& triangle) { return neighbourhood.has(mesh, triangle); });
    const SceneSurface whole = compacted(mesh.vertices, near);
    SceneSurface thinned = near.size() <= m_mostTriangles ? whole : simplified(whole);
    if (thinned.triangles.size() > m_mostTriangles) {
        // Many loose parts, or edges of several triangles: edges that may be collapsed have run out.
        thinned = gathered(whole);
    }
    thinned.trianglesFarOff = mesh.triangles.size() - near.size();
    return thinned;
}

SceneSurface MeshThinner::simplified(const SceneSurface& whole) const {
    const std::vector<Triangle> triangles = weldedTriangles(whole);
    const std::vector<float> places = unitPlaces(whole.vertices);
    if (places.empty() || triangles.size() <= m_mostTriangles) {
        return compacted(whole.vertices, triangles);
    }
    std::vector<std::uint32_t> kept(3 * triangles.size());
    constexpr float ANY_ERROR = 1;  // of the size of the mesh
    constexpr std::size_t BYTES_OF_PLACE = 3 * sizeof(float);
    kept.resize(meshopt_simplify(kept.data(), triangles.front().data(), kept.size(), places.data(),
                                 whole.vertices.size(), BYTES_OF_PLACE, 3 * m_mostTriangles, ANY_ERROR, 0, nullptr));
    std::vector<Triangle> remaining;
    for (std::size_t i = 0; i < kept.size(); i += 3) {
        remaining.push_back({kept[i], kept[i + 1], kept[i + 2]});
    }
    return compacted(whole.vertices, remaining);
}

SceneSurface MeshThinner::gathered(const SceneSurface& whole) const {
    Extent extent;
    for (const P3& vertex : whole.vertices) {
        extent.add(vertex);
    }
    const P3 size = extent.size();
    const double longest = std::max({size[0], size[1], size[2]});
    // A cell's number has room for no more cells along the mesh.
    const double narrowest = longest / ((1U << AXIS_BITS) - 1U);
    double width =
        std::max(narrowest, std::sqrt(TRIANGLES_PER_CELL * areaOf(whole) / static_cast<double>(m_mostTriangles)));
    if (!(width > 0) || !std::isfinite(width)) {
        return {};
    }
    const std::vector<double> turns = borderTurns(whole);
    for (;; width *= WIDENING) {
        const Clusters clusters = gather(whole, turns, extent, width);
        const std::vector<Triangle> kept = remaining(whole.triangles, clusters);
        // Cells wider than the mesh leave nothing, so this ends.
        if (kept.size() <= m_mostTriangles) {
            return compacted(clusters.places, kept);
        }
    }
}

}  // namespace Veltrani::DisplayReport
