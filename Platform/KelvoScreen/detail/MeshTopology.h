#pragma once

#include "KelvoScreen/TriangleMesh.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Veltrani::KelvoScreenDetail {

/// Which triangles of a mesh share an edge, and where the mesh ends.
///
/// Vertices at the same place count as one, so that a mesh cut along the seams of its texture is whole here. Triangles
/// with two corners at one place do not take part. An edge of a single triangle is on the border; one of two joins
/// them; one of more is neither.
class MeshTopology {
public:
    /// Stands for a triangle where there is none.
    static constexpr std::uint32_t NONE = 0xffffffff;

    /// One neighbour for each side of a triangle: side i runs from corner i to corner i + 1.
    using Neighbours = std::array<std::uint32_t, 3>;

    struct BorderEdge {
        std::uint32_t triangle = 0;
        std::uint32_t side = 0;
    };

    /// Costs about half a second for a million triangles.
    explicit MeshTopology(const TriangleMesh& mesh);

    /// Returns for each vertex the lowest one at the same place.
    [[nodiscard]] const std::vector<std::uint32_t>& mergedVertices() const { return m_merged; }
    /// Returns for each triangle those across its sides, or NONE.
    [[nodiscard]] const std::vector<Neighbours>& neighbours() const { return m_neighbours; }
    /// Returns the edges of the border, ordered by triangle, then by side.
    [[nodiscard]] const std::vector<BorderEdge>& border() const { return m_border; }

private:
    std::vector<std::uint32_t> m_merged;
    std::vector<Neighbours> m_neighbours;
    std::vector<BorderEdge> m_border;
};

}  // namespace Veltrani::KelvoScreenDetail
