#include "DisplayReport/scene/SurfaceTessellator.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/basics/GeometryText.h"
#include "DisplayReport/scene/MeshThinner.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::DisplayReport {

namespace {

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
