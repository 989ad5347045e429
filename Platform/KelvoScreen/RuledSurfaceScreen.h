#pragma once

#include "KelvoScreen/ScreenGeometry.h"

#include <array>
#include <memory>
#include <span>
#include <vector>

namespace Veltrani::KelvoScreenDetail {
class RuledSurface;
}

/// The surface that a straight ruling sweeps along two rails: a cockpit screen, a cone, a faceted wall.
///
/// The rails are polylines with equally many points, left to right, straight between the points. Ruling i joins point i
/// of both; between two rulings lies a bilinear patch, which is plane only when its four corners are. (s, t): t from
/// the lower (0) to the upper rail (1) along the ruling; s grows with the mean length of the two rails, so that a grid
/// of targets is even however unevenly the points of the rails were measured. Points that are repeated on both rails,
/// to rounding, add nothing; points repeated on one rail make a triangle.
///
/// The continuation prolongs the rulings straight past both rails, and the first and the last patch straight past
/// their sides, up to a million heights and widths; when the last ruling is the first one, to rounding, there are no
/// sides, and s goes round. A ray that hits the surface itself from the wanted side never ends on the continuation.
/// Normals are (d/dt) x (d/ds): forward on a surface in front of the viewer, as for a flat screen.
///
/// A hit lies on a patch and on the ray to within rounding of the largest coordinate involved. A ray that passes an
/// edge within that rounding hits it there; where two patches meet it hits once. A ray that lies in a patch, to
/// rounding, does not hit it. A ray that starts on the surface hits it at t = 0. A screen that is not valid is never
/// hit, maps nothing and has a zero normal.
///
/// A ray is tested against every patch: meant for rails of some hundred points. One that meets the surface more than
/// twice allocates, once for up to eight hits. Cheap to copy: copies share what they
/// compute with.
class RuledSurfaceScreen : public ScreenGeometry {
public:
    /// The two rails of the description; null gives a screen that is not valid.
    explicit RuledSurfaceScreen(const IScreenConfig* screen);

    /// Returns the hash of the ruled surface of a description, without building it.
    [[nodiscard]] static std::array<unsigned char, 20> calcUniqueDataHash(const IScreenConfig* screen);

    /// Returns true for two rails of equally many finite points, at least two, with an area between them.
    [[nodiscard]] bool isValid() const override;
    [[nodiscard]] IntersectionSet intersect(const Point<double, 3>& from, const Point<double, 3>& to) const override;
    /// (d/dt) x (d/ds) at the nearest point of the surface or, past its edges, of the continuation there. Zero for a
    /// NaN.
    [[nodiscard]] Point<double, 3> getScreenNormal(const Point<double, 3>& point) const override;
    bool mapInto3D(const Point<double, 2>& st, Point<double, 3>& out, bool extrapolate) const override;
    [[nodiscard]] std::array<unsigned char, 20> getUniqueDataHash() const override;
    void updateGeometry(const IScreenConfig* screen) override;
    void sampleHorizontally(double y, double xMin, double xMax, int columns, int row, Grid& grid,
                            bool extrapolate) const override;
    /// The side is determined by the normal of the patch that is hit. Far out on the continuation another patch may be
    /// nearer to the hit, so that `getScreenNormal` there gives another side.
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
    std::shared_ptr<const Veltrani::KelvoScreenDetail::RuledSurface> m_surface;  ///< never null
};
