#pragma once

#include "KelvoScreen/IntersectionSet.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/detail/Lanes.h"
#include "KelvoScreen/detail/Numbers.h"
#include "KelvoScreen/detail/Placement.h"
#include "KelvoScreen/detail/SurfaceLimits.h"

#include <span>
#include <string>

namespace Veltrani::KelvoScreenDetail {

struct OwnHit;
struct RayAim;
struct WideEnds;

/// The numbers of a part of a cylinder; see `CylinderScreen`.
struct CylinderNumbers {
    Point<double, 3> centre;
    Point<double, 3> orientation;  ///< angles for `Veltrani::rotationZXY`
    double radius = 0;
    double height = 0;
    double azimuthMin = 0;
    double azimuthMax = 0;
};

/// The wall of a cylinder between limits: what a cylinder screen computes, without its description.
class CylinderSurface {
public:
    explicit CylinderSurface(const CylinderNumbers& numbers);

    [[nodiscard]] const CylinderNumbers& numbers() const { return m_numbers; }
    [[nodiscard]] bool isValid() const { return m_isValid; }
    /// Which number makes the surface one that is not valid; empty when it is valid.
    [[nodiscard]] const std::wstring& fault() const { return m_fault; }

    /// Hits within the limits; none when the surface is not valid.
    [[nodiscard]] IntersectionSet intersect(const Point<double, 3>& from, const Point<double, 3>& to) const;
    /// The first of `intersect` for each ray, with its normal and side; `hits` is as long as `rays`.
    void nearestHits(std::span<const Ray> rays, std::span<SurfaceHit> hits) const;
    /// Hits of the endless cylinder; none when the surface is not valid.
    [[nodiscard]] IntersectionSet intersectEndless(const Point<double, 3>& from, const Point<double, 3>& to) const;
    /// Returns the outward normal at the nearest point of the endless cylinder; zero for a NaN.
    [[nodiscard]] Point<double, 3> normal(const Point<double, 3>& point) const;
    /// Returns the point at (s, t); not finite when (s, t) or the result is not.
    [[nodiscard]] Point<double, 3> pointAt(double s, double t) const;

private:
    template <class Number>
    struct PlainRay;

    [[nodiscard]] static std::wstring faultOf(const CylinderNumbers& numbers);
    template <class Limit>
    [[nodiscard]] IntersectionSet hits(const Point<double, 3>& from, const Point<double, 3>& to,
                                       const Limit& limit) const;
    /// What `intersect` and `nearestHits` return, for rays of all kinds.
    [[nodiscard]] IntersectionSet intersectAny(const Point<double, 3>& from, const Point<double, 3>& to) const;
    [[nodiscard]] SurfaceHit nearestHit(const Ray& ray) const;
    /// Adds the end at t of the chord of a ray when it is within the limits; false, with nothing added, when that takes
    /// more care.
    [[nodiscard]] bool addEnd(const PlainRay<double>& ray, double t, IntersectionSet& found) const;
    [[nodiscard]] WideEnds endsOfFour(const Ray* rays) const;
    /// Writes the hits of four rays and returns those that are left to `nearestHit`.
    [[nodiscard]] LaneMask finishFour(const WideEnds& ends, SurfaceHit* hits) const;
    /// Decides what can be decided about an end of a chord by its place alone.
    template <class Number>
    [[nodiscard]] LimitVerdict<Number> judge(const Triple<Number>& own, Number tolerance) const;
    /// Moves a hit beyond a limit onto that limit, when the ray passes it closely enough. `aim` is in the own frame.
    [[nodiscard]] bool slideToLimit(const RayAim& aim, double tolerance, OwnHit& hit) const;
    /// Returns the point within the limits nearest to a point, both relative to the centre, in the own frame.
    [[nodiscard]] Point<double, 3> moveWithinLimits(const Point<double, 3>& own) const;

    CylinderNumbers m_numbers;
    Placement m_placement;
    AzimuthSector m_sector;
    double m_extent = 0;  ///< the largest coordinate of the surface: the unit of its rounding
    std::wstring m_fault;
    bool m_isValid = false;
};

}  // namespace Veltrani::KelvoScreenDetail
