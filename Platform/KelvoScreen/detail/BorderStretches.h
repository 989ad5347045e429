#pragma once

#include "KelvoScreen/TriangleMesh.h"
#include "KelvoScreen/detail/QuadricSheet.h"
#include "KelvoScreen/detail/TriangleMath.h"

#include <cstdint>
#include <vector>

namespace KelvoScreenDetail {

/// Encloses triangles, so that most need no closer look.
struct BoundingSphere {
    Point<double, 3> centre;
    double radius = 0;

    /// No point inside is nearer to `point` than this; negative within the sphere.
    [[nodiscard]] double leastDistance(const Point<double, 3>& point) const { return norm(point - centre) - radius; }
};

/// A triangle along the border.
struct BorderTriangle {
    std::uint32_t triangle = 0;
    Corners corners;
    BoundingSphere bounds;
};

/// A piece of the border that is continued by one sheet: the triangles first to last - 1 of `BorderStretches`.
struct BorderStretch {
    QuadricSheet sheet;
    std::uint32_t face = 0;  ///< the smooth face of its triangles
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    BoundingSphere bounds;  ///< of all its triangles
    /// About half the distance to the next stretch.
    double reach = 0;
    /// The mean distance of the vertices around.
    double spacing = 0;
};

/// The border of a mesh, cut into stretches, and how the mesh continues at each.
struct BorderStretches {
    std::vector<BorderTriangle> triangles;
    /// Those of a face follow each other.
    std::vector<BorderStretch> stretches;
};

/// Cuts the border into stretches and fits their sheets. The vertices that the triangles use must be finite.
///
/// A sheet is fitted to the smooth face around the stretch: as far as a tenth of the mesh when one sheet fits so much,
/// to the precision that the vertices have themselves; less where the surface changes its curvature. Where the face has
/// too few vertices for a curvature, each triangle along the border is a stretch with its own plane. Triangles without
/// area are left out.
[[nodiscard]] BorderStretches borderStretches(const TriangleMesh& mesh);

}  // namespace KelvoScreenDetail
