#pragma once

#include "KelvoScreen/TriangleMesh.h"
#include "KelvoScreen/detail/QuadricSheet.h"
#include "KelvoScreen/detail/TriangleMath.h"

#include <cstdint>
#include <optional>
#include <vector>

// The continuation of a mesh past its border: the border cut into stretches, each with a sheet, and the sheets blended.
namespace Veltrani::KelvoScreenDetail {

/// Encloses triangles, so that most need not be examined one by one.
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
    /// The stretches of a face follow each other.
    std::vector<BorderStretch> stretches;
};

/// Cuts the border into stretches and fits their sheets. The vertices that the triangles use must be finite.
///
/// A sheet is fitted to the smooth face around the stretch: as far as a tenth of the mesh when one sheet fits so much,
/// to the precision that the vertices have themselves; less where the surface changes its curvature. Where the face has
/// too few vertices for a curvature, each triangle along the border is a stretch with its own plane. Triangles without
/// area are left out.
[[nodiscard]] BorderStretches borderStretches(const TriangleMesh& mesh);

/// A point where a ray meets blended sheets.
struct BlendedHit {
    double tau = 0;
    Point<double, 3> normal;
};

/// The sheets of the stretches of one smooth face, blended into one surface that begins at the border.
///
/// At a point each sheet counts by its distance: those more than twice as far as the nearest do not count, those whose
/// normal is across the wanted one neither. So near the border a sheet rules its own stretch, and far from it many
/// agree on the course. What the blend leaves of a step at the border itself, such as the noise of the vertices there,
/// fades within a few triangles.
///
/// Refers to the stretches, which must stay as they are.
class BorderBlend {
public:
    /// Blends the stretches first to last - 1; those whose normal is on the side of `normal` count.
    BorderBlend(const BorderStretches& border, std::uint32_t first, std::uint32_t last, const Point<double, 3>& normal)
        : m_border(border), m_first(first), m_last(last), m_normal(normal) {}

    /// Returns where start + tau direction meets the surface, near a start that is near it; nothing when it passes it.
    [[nodiscard]] std::optional<BlendedHit> meet(const Point<double, 3>& start,
                                                 const Point<double, 3>& direction) const;

private:
    struct Sum;

    [[nodiscard]] std::uint32_t nearestStretch(const Point<double, 3>& point) const;
    [[nodiscard]] bool approach(const BorderStretch& stretch, const Point<double, 3>& point, Point<double, 3>& nearest,
                                double& smallest) const;
    [[nodiscard]] Point<double, 3> nearestOnBorder(const Point<double, 3>& point, double& spacing) const;
    [[nodiscard]] double smallestDistance2(const Point<double, 3>& point) const;
    [[nodiscard]] Sum blendAt(const Point<double, 3>& point, const Point<double, 3>& direction) const;

    const BorderStretches& m_border;
    std::uint32_t m_first;
    std::uint32_t m_last;
    Point<double, 3> m_normal;
};

}  // namespace Veltrani::KelvoScreenDetail
