#include "DisplayReport/scene/SceneSurface.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/basics/Extent.h"
#include "DisplayReport/basics/GeometryText.h"
#include "DisplayReport/scene/MeshThinner.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using Vertices = std::vector<Point<double, 3>>;

/// The width of the cells in which vertices count as one, as a part of the size of the surface. Rounding at a seam is
/// many orders smaller, a triangle that can be seen many orders larger.
constexpr double SAME_PLACE = 1e-7;

using Cell = std::array<long long, 3>;

using P3 = Point<double, 3>;

/// Cells of a lattice along s and t: chords of a whole turn then stand off by less than a thousandth of the radius.
constexpr std::size_t COLUMNS = 96;
constexpr std::size_t ROWS = 48;

/// A lattice of points over the 2D parameters; those that cannot be had are not finite.
class Lattice {
public:
    Lattice(const ScreenGeometry& geometry, std::size_t columns, std::size_t rows) : m_columns(columns), m_rows(rows) {
        for (std::size_t row = 0; row <= rows; ++row) {
            for (std::size_t column = 0; column <= columns; ++column) {
                const Point<double, 2> st{static_cast<double>(column) / static_cast<double>(columns),
                                          static_cast<double>(row) / static_cast<double>(rows)};
                P3 point;
                const bool isMapped = geometry.mapInto3D(st, point, false);
                m_points.push_back(isMapped ? point : P3{NAN, NAN, NAN});
            }
        }
    }

    [[nodiscard]] TriangleMesh mesh() const {
        TriangleMesh mesh;
        mesh.vertices = m_points;
        for (std::size_t row = 0; row < m_rows; ++row) {
            for (std::size_t column = 0; column < m_columns; ++column) {
                const auto corner = [&](std::size_t right, std::size_t up) {
                    return static_cast<std::uint32_t>((row + up) * (m_columns + 1) + column + right);
                };
                add({corner(0, 0), corner(1, 0), corner(1, 1)}, mesh);
                add({corner(0, 0), corner(1, 1), corner(0, 1)}, mesh);
            }
        }
        return mesh;
    }

private:
    /// At a pole, one side of a cell is a point: a triangle without an area.
    static void add(const TriangleMesh::Triangle& triangle, TriangleMesh& mesh) {
        const auto& [a, b, c] = triangle;
        if (!(mesh.vertices[a] == mesh.vertices[b] || mesh.vertices[b] == mesh.vertices[c] ||
              mesh.vertices[c] == mesh.vertices[a])) {
            mesh.triangles.push_back(triangle);
        }
    }

    std::size_t m_columns;
    std::size_t m_rows;
    std::vector<P3> m_points;
};

/// Both numbers of cells, made smaller alike until there are few enough triangles.
TriangleMesh latticeOf(const ScreenGeometry& geometry, std::size_t mostTriangles) {
    const double share = static_cast<double>(mostTriangles) / (2.0 * COLUMNS * ROWS);
    const auto cells = [share](std::size_t most) {
        return std::max<std::size_t>(1, static_cast<std::size_t>(static_cast<double>(most) * std::sqrt(share)));
    };
    return share >= 1 ? Lattice(geometry, COLUMNS, ROWS).mesh() : Lattice(geometry, cells(COLUMNS), cells(ROWS)).mesh();
}

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

SceneSurface SurfaceTessellator::tessellate(const ScreenGeometry& geometry) const {
    SceneSurface surface;
    const MeshThinner thinner(m_mostTriangles);
    if (const TriangleMesh* const mesh = geometry.triangleMesh()) {
        surface = thinner.thin(*mesh);
        surface.trianglesOfMesh = mesh->triangles.size();
    } else {
        try {
            surface = thinner.thin(latticeOf(geometry, m_mostTriangles));
        } catch (const VeltraniException&) {
            return {};  // no 2D parameters: nothing to show
        }
    }
    surface.text = geometryText(geometry);
    surface.border = borderOf(surface.vertices, surface.triangles);
    return surface;
}

}  // namespace Veltrani::DisplayReport
