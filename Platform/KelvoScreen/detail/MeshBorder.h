#pragma once

#include "KelvoScreen/detail/BorderSheets.h"
#include "KelvoScreen/detail/MeshSurface.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Veltrani::KelvoScreenDetail {

/// A mesh continued past its border: where it is flat there, in its plane, and where it is curved, with that curvature.
///
/// An edge is on the border when a single triangle has it. Vertices at the same place count as one, so that a mesh cut
/// along the seams of its texture has no border there. Triangles without area carry no surface, but their edges count:
/// they close the gap between their neighbours.
///
/// The continuation of a smooth face begins at its border, without a step, and changes smoothly along it. A query
/// allocates nothing.
class MeshBorder {
public:
    /// The vertices that the triangles use must be finite.
    explicit MeshBorder(const TriangleMesh& mesh);

    /// Triangles on the border, ascending.
    [[nodiscard]] std::vector<std::uint32_t> triangles() const;

    /// Returns where the ray meets the continuation at t >= 0 on the given side. Of the points where it meets the
    /// sheets of the stretches of the border, the one nearest to a triangle of its stretch decides which is meant,
    /// among equals that of the lowest triangle. The ray misses the mesh itself.
    [[nodiscard]] std::optional<MeshPoint> continuedHit(const Point<double, 3>& from, const Point<double, 3>& to,
                                                        int side) const;

private:
    /// The stretches of a smooth face, from first to last - 1.
    struct Face {
        std::uint32_t first = 0;
        std::uint32_t last = 0;
        bool isCurved = false;
    };

    [[nodiscard]] const Face& faceOf(std::uint32_t stretch) const;

    BorderStretches m_border;
    std::vector<Face> m_faces;  ///< in the order of their stretches
};

}  // namespace Veltrani::KelvoScreenDetail
