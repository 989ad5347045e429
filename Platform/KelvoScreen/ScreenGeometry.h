#pragma once

#include "Common/Point.h"
#include "KelvoScreen/IScreenGeometry.h"

#include <array>
#include <cstddef>
#include <iosfwd>
#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

class IScreenConfig;
struct TriangleMesh;

/// A ray: its origin and a second point that it passes through.
using Ray = std::pair<Point<double, 3>, Point<double, 3>>;

/// The result for one ray of a batch.
struct SurfaceHit {
    Point<double, 3> point;   ///< nearest hit; zero on a miss
    Point<double, 3> normal;  ///< unit normal at the hit; zero on a miss
    double t = 0;             ///< position along the ray: point = origin + t (second point - origin)
    int side = 1;             ///< +1 along the normal, -1 against it, 0 across; 1 on a miss
    bool hit = false;
};

/// "(0, 4, 1) at t 0.5, side 1, normal (0, -1, 0)", with all digits, or "miss".
std::ostream& operator<<(std::ostream& out, const SurfaceHit& hit);

/// Returns the side from which a direction reaches a surface: +1 when it travels along the normal, -1 against it, 0
/// across it or when either is not a number.
[[nodiscard]] inline int sideOfSurface(const Point<double, 3>& direction, const Point<double, 3>& normal) {
    const double along = dot(direction, normal);
    return static_cast<int>(along > 0) - static_cast<int>(along < 0);
}

/// The geometry of a physical screen, with every query that the calibration needs.
///
/// Operations that this class adds after its first release have default bodies, so that classes derived elsewhere
/// continue to compile.
class ScreenGeometry : public IScreenGeometry {
public:
    /// Grid sample map: from (column, row) to a surface point.
    using Grid = std::map<Point<int, 2>, Point<double, 3>>;

    /// SHA-1 of the description: covers the kind, equal for equal descriptions, never all zero.
    [[nodiscard]] virtual std::array<unsigned char, 20> getUniqueDataHash() const = 0;

    /// Reads the numbers of the shape again. Does nothing when the description is of another shape, and for a mesh.
    virtual void updateGeometry(const IScreenConfig* screen) = 0;

    /// Samples one row at height y: for column i, x = ((xMax - xMin) * i) / (columns - 1) + xMin (xMin for a single
    /// column), then `mapInto3D`; points that map go to (i, row) and overwrite what the grid holds there. Throws
    /// `VeltraniException` at once when the surface has no 2D parameterisation.
    virtual void sampleHorizontally(double y, double xMin, double xMax, int columns, int row, Grid& grid,
                                    bool extrapolate) const = 0;

    /// As `intersect`, with the surface continued past its edges; keeps the hits with sign((to - from) . normal) ==
    /// sign.
    [[nodiscard]] virtual IntersectionSet intersectExtrapolatedWithSpecifiedNormal(const Point<double, 3>& from,
                                                                                   const Point<double, 3>& to,
                                                                                   int sign) const = 0;

    /// Returns the outline of a channel: with the side that the majority of the centre rays hit (when none hits, of the
    /// boundary rays; when none of those hits either, nothing), the first extrapolated hit of every boundary ray, in
    /// order. Rays without one are dropped.
    [[nodiscard]] virtual std::vector<Point<double, 3>> intersectChannelBoundary(
        const std::vector<Ray>& boundary, const std::vector<Ray>& centre) const = 0;

    /// Many rays at once: the nearest hit of each with its normal and side, in order. `hits` is as long as `rays`;
    /// throws `VeltraniException` when it is not. The default body casts the rays one by one, with `intersect` and
    /// `getScreenNormal`.
    virtual void intersectRays(std::span<const Ray> rays, std::span<SurfaceHit> hits) const;

    /// How many rays `intersectRays` is best given at once. 1: it gains nothing from more. 0, here: the rays must be
    /// cast one by one, in the order in which their results are needed.
    ///
    /// A kind returns more than 0 for objects of exactly its class whose results depend on nothing but the ray. A class
    /// derived from it may count the rays or change the screen meanwhile: its rays are cast one by one again until it
    /// overrides this operation.
    [[nodiscard]] virtual std::size_t raysAtOnce() const;

    /// Returns the triangles that the surface consists of, valid until the surface changes; null, here, for a surface
    /// that is given by numbers.
    [[nodiscard]] virtual const TriangleMesh* triangleMesh() const;

    /// Returns whether the surface has 2D coordinates, so that `mapInto3D` does not throw; here: true.
    [[nodiscard]] virtual bool isParameterised() const;

    /// Which number keeps the shape from being valid, what was expected, and the remedy; empty for a valid shape. Here,
    /// where no number is known: that the shape has no extent or a number that is not finite.
    [[nodiscard]] virtual std::wstring faultOfShape() const;
};
