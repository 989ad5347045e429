#pragma once

#include "KelvoScreen/ScreenGeometry.h"

#include <array>
#include <memory>
#include <span>
#include <vector>

namespace Veltrani::KelvoScreenDetail {
class CylinderSurface;
}

/// A part of the wall of an upright cylinder: a curved wall, a ring.
///
/// (s, t) -> centre + R (r sin a, r cos a, (t - 1/2) height) with azimuth a = azMin + s (azMax - azMin) and R from the
/// three orientation angles; the centre is the middle of the axis. The edges belong to the surface. A cylinder of a
/// whole turn, -pi..pi, has no seam.
///
/// Its continuation is the endless cylinder: azimuths go round, heights have no end. Normals point outward, so that a
/// ray from inside arrives from side +1. A hit lies on the cylinder and on the ray to within rounding of the largest
/// coordinate involved, however far away the ray starts. A line that passes the cylinder or one of its edges within
/// that rounding hits it there; a touching ray hits once; one that is parallel to the axis, to rounding, never hits,
/// one that lies in the wall included. A ray that starts on the surface hits it at t = 0. A screen that is not valid is
/// never hit, maps nothing and has a zero normal.
///
/// Cheap to copy: copies share what they compute with.
class CylinderScreen : public ScreenGeometry {
public:
    /// Centre, orientation, radius, height and azimuth limits (radians, growing, at most one turn) of the description;
    /// null gives a screen that is not valid.
    explicit CylinderScreen(const IScreenConfig* screen);

    /// Returns the hash of the cylinder of a description, without building it.
    [[nodiscard]] static std::array<unsigned char, 20> calcUniqueDataHash(const IScreenConfig* screen);

    /// Returns true when the numbers are finite, radius and height are above zero and the azimuth limits grow.
    [[nodiscard]] bool isValid() const override;
    [[nodiscard]] IntersectionSet intersect(const Point<double, 3>& from, const Point<double, 3>& to) const override;
    /// Points outward at the nearest point of the endless cylinder, so that it also holds for hits of the continuation.
    /// On the axis, to which a whole circle is equally near: forward in the frame of the cylinder. Zero for a NaN.
    [[nodiscard]] Point<double, 3> getScreenNormal(const Point<double, 3>& point) const override;
    bool mapInto3D(const Point<double, 2>& st, Point<double, 3>& out, bool extrapolate) const override;
    [[nodiscard]] std::array<unsigned char, 20> getUniqueDataHash() const override;
    void updateGeometry(const IScreenConfig* screen) override;
    void sampleHorizontally(double y, double xMin, double xMax, int columns, int row, Grid& grid,
                            bool extrapolate) const override;
    [[nodiscard]] IntersectionSet intersectExtrapolatedWithSpecifiedNormal(const Point<double, 3>& from,
                                                                           const Point<double, 3>& to,
                                                                           int sign) const override;
    [[nodiscard]] std::vector<Point<double, 3>> intersectChannelBoundary(const std::vector<Ray>& boundary,
                                                                         const std::vector<Ray>& centre) const override;
    /// The results are bit for bit those of single rays. For a class derived from this one the rays are cast one by
    /// one.
    void intersectRays(std::span<const Ray> rays, std::span<SurfaceHit> hits) const override;
    [[nodiscard]] std::size_t raysAtOnce() const override;
    [[nodiscard]] std::wstring faultOfShape() const override;

private:
    std::shared_ptr<const Veltrani::KelvoScreenDetail::CylinderSurface> m_surface;  ///< never null
};
