#pragma once

#include "Common/Point.h"
#include "KelvoScreen/IntersectionSet.h"

/// A surface in space, as a target locator sees it.
///
/// World frame: +x right, +y forward, +z up, right-handed; lengths in native units. 2D screen coordinates (s, t) are
/// normalised, (0, 0) to (1, 1), s to the right and t upwards.
class IScreenGeometry {
public:
    virtual ~IScreenGeometry() = default;

    /// Returns true when the surface is finite and has an extent.
    [[nodiscard]] virtual bool isValid() const = 0;

    /// Returns where the ray from `from` through `to` meets the surface, nearest first: t >= 0, not limited to `to`,
    /// and only within the limits of the shape. A NaN or a ray of length zero gives an empty set.
    [[nodiscard]] virtual IntersectionSet intersect(const Point<double, 3>& from, const Point<double, 3>& to) const = 0;

    /// Returns the unit normal at the surface point nearest to `point`. Flat and ruled: (d/dt) x (d/ds), which is +y
    /// for an unrotated flat screen. Sphere and cylinder: outward. Mesh: by the winding of the triangle.
    [[nodiscard]] virtual Point<double, 3> getScreenNormal(const Point<double, 3>& point) const = 0;

    /// Calculates the surface point at (s, t). Up to 1e-9 outside [0, 1] counts as the edge. Further outside the result
    /// is false, unless `extrapolate` is set and the surface has a continuation there. `out` is untouched when the
    /// result is false. Throws `VeltraniException` when the surface has no 2D parameterisation.
    virtual bool mapInto3D(const Point<double, 2>& st, Point<double, 3>& out, bool extrapolate) const = 0;
};
