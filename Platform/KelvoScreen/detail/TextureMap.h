#pragma once

#include "KelvoScreen/TriangleMesh.h"
#include "KelvoScreen/detail/TriangleIndex.h"

#include <array>
#include <cstdint>
#include <optional>

namespace Veltrani::KelvoScreenDetail {

/// A place on a mesh, found by its texture coordinates.
struct TexturePlace {
    std::uint32_t triangle = 0;
    std::array<double, 3> weights{};  ///< barycentric; some are negative outside the triangle
};

/// The texture coordinates of a mesh, searched from (s, t) to the triangle.
///
/// Triangles without area there do not take part. Refers to the mesh, which must stay as it is and be parameterised.
class TextureMap {
public:
    explicit TextureMap(const TriangleMesh& mesh);

    /// Returns the triangle at (s, t): among those that contain the point, edges included and without gaps between
    /// neighbours, the lowest. When none does, the nearest one, of equally near ones the lowest: up to
    /// PARAMETER_TOLERANCE away the place is on its edge; further away, only with `extrapolate`, the triangle is
    /// continued linearly. Nothing for a point that is not finite.
    [[nodiscard]] std::optional<TexturePlace> find(const Point<double, 2>& st, bool extrapolate) const;

private:
    const TriangleMesh& m_mesh;
    TriangleIndex m_index;
};

}  // namespace Veltrani::KelvoScreenDetail
