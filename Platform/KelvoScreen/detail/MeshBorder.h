#pragma once

#include "KelvoScreen/TriangleMesh.h"
#include "KelvoScreen/detail/MeshSurface.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace KelvoScreenDetail {

/// The triangles along the border of a mesh, continued in their planes.
///
/// An edge is on the border when a single triangle has it. Vertices at the same place count as one, so that a mesh cut
/// along the seams of its texture has no border there. Triangles without area carry no plane, but their edges count:
/// they close the gap between their neighbours.
class MeshBorder {
public:
    explicit MeshBorder(const TriangleMesh& mesh);

    /// Triangles on the border, ascending.
    [[nodiscard]] std::vector<std::uint32_t> triangles() const;

    /// Where the ray meets the plane of a border triangle at t >= 0 on the given side: of these points the one nearest
    /// to its triangle, among equals that of the lowest triangle. The ray misses the mesh itself.
    [[nodiscard]] std::optional<MeshPoint> continuedHit(const Point<double, 3>& from, const Point<double, 3>& to,
                                                        int side) const;

private:
    struct BorderTriangle {
        std::uint32_t triangle = 0;
        Corners corners;
        Point<double, 3> normal;
    };

    std::vector<BorderTriangle> m_triangles;
};

}  // namespace KelvoScreenDetail
