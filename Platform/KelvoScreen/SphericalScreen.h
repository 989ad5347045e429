#pragma once

#include "KelvoScreen/ScreenGeometry.h"

#include <array>
#include <memory>
#include <span>
#include <vector>

namespace Veltrani::KelvoScreenDetail {
class SphereSurface;
}

/// A sphere, or the part of one between four angular limits: a dome, a spherical mirror.
///
/// (s, t) -> centre + R r (sin a cos e, cos a cos e, sin e) with azimuth a = azMin + s (azMax - azMin), elevation
/// e = elMin + t (elMax - elMin), and R from the three orientation angles: a tilted dome keeps its limits. The limits
/// belong to the surface. The whole sphere, -pi..pi and -pi/2..pi/2, has neither a seam nor gaps at the poles.
///
/// Its continuation is the whole sphere: azimuths go round, elevations end at the poles. Normals point outward, so that
/// a ray from inside arrives from side +1. A hit lies on the sphere and on the ray to within rounding of the largest
/// coordinate involved, however far away the ray starts. A line that passes the sphere or one of its limits within that
/// rounding hits it there; a touching ray hits once. A ray that starts on the surface hits it at t = 0. A screen that
/// is not valid is never hit, maps nothing and has a zero normal.
///
/// Cheap to copy: copies share what they compute with.
class SphericalScreen : public ScreenGeometry {
public:
    /// Centre, orientation, radius and limits of the description; null gives a screen that is not valid.
    explicit SphericalScreen(const IScreenConfig* screen);
    /// An unrotated sphere. Limits in radians, growing: at most one turn of azimuth, elevations from pole to pole. A
    /// radius of zero or below gives a screen that is not valid.
    SphericalScreen(Point<double, 3> centre, double radius, double azimuthMin, double azimuthMax, double elevationMin,
                    double elevationMax);

    /// Returns the hash of the sphere of a description, without building it.
    [[nodiscard]] static std::array<unsigned char, 20> calcUniqueDataHash(const IScreenConfig* screen);

    /// Returns true when the numbers are finite, the radius is above zero and the limits grow.
    [[nodiscard]] bool isValid() const override;
    [[nodiscard]] IntersectionSet intersect(const Point<double, 3>& from, const Point<double, 3>& to) const override;
    /// Points outward at the nearest point of the whole sphere, so that it also holds for hits of the continuation. At
    /// the centre, to which all points are equally near: forward in the frame of the sphere. Zero for a NaN.
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
    std::shared_ptr<const Veltrani::KelvoScreenDetail::SphereSurface> m_surface;  ///< never null
};
