#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"
#include "KelvoScreen/detail/TriangleIndex.h"
#include "KelvoScreen/detail/TriangleMath.h"

#include <cstdint>
#include <optional>
#include <span>

namespace Veltrani::KelvoScreenDetail {

/// A point of a mesh.
struct MeshPoint {
    Point<double, 3> point;
    Point<double, 3> area;  ///< area vector of the triangle: along its normal
    double t = 0;           ///< along the ray; zero where there is none
    std::uint32_t triangle = 0;
};

/// The triangles of a mesh as a surface for rays and nearest points. Triangles without area do not take part.
///
/// Refers to the mesh, which must stay as it is.
class MeshSurface {
public:
    /// The vertices that the triangles use must be finite.
    explicit MeshSurface(const TriangleMesh& mesh);

    /// Returns the nearest hit at t >= 0; only hits on a given side (see `sideOfSurface`) when one is wanted. Of hits
    /// at the same t the one of the lowest triangle. Nothing for a ray that is not finite or has no length, and for
    /// triangles that the ray sees edge-on.
    [[nodiscard]] std::optional<MeshPoint> nearestHit(const Point<double, 3>& from, const Point<double, 3>& to,
                                                      std::optional<int> side) const;

    /// The nearest hit at t >= 0 of each ray with its normal and side, to the last bit those of `nearestHit`. Fastest
    /// when neighbouring rays run close to each other. `hits` is as long as `rays`.
    void nearestHits(std::span<const Ray> rays, std::span<SurfaceHit> hits) const;

    /// Returns the point of the mesh nearest to a point; of equally near ones that of the lowest triangle. Nothing when
    /// no triangle has an area or the point is not finite.
    [[nodiscard]] std::optional<MeshPoint> nearestPoint(const Point<double, 3>& point) const;

private:
    [[nodiscard]] SurfaceHit surfaceHit(const Ray& ray) const;

    const TriangleMesh& m_mesh;
    TriangleShapes m_shapes;  ///< filled while the index is built
    TriangleIndex m_index;
    double m_largestCoordinate;
};

}  // namespace Veltrani::KelvoScreenDetail
