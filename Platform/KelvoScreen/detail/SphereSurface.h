#pragma once

#include "KelvoScreen/IntersectionSet.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/detail/Lanes.h"
#include "KelvoScreen/detail/Numbers.h"
#include "KelvoScreen/detail/Placement.h"
#include "KelvoScreen/detail/SurfaceLimits.h"

#include <cmath>
#include <span>
#include <string>

namespace Veltrani::KelvoScreenDetail {

struct OwnHit;
struct RayAim;
struct WideEnds;

/// The numbers of a sphere between limits; see `SphericalScreen`.
struct SphereNumbers {
    Point<double, 3> centre;
    Point<double, 3> orientation;  ///< angles for `Veltrani::rotationZXY`
    double radius = 0;
    double azimuthMin = 0;
    double azimuthMax = 0;
    double elevationMin = 0;
    double elevationMax = 0;
};

/// The surface of a sphere between limits: what a spherical screen computes, without its description.
class SphereSurface {
public:
    explicit SphereSurface(const SphereNumbers& numbers);

    [[nodiscard]] const SphereNumbers& numbers() const { return m_numbers; }
    [[nodiscard]] bool isValid() const { return m_isValid; }
    /// Which number makes the surface one that is not valid; empty when it is valid.
    [[nodiscard]] const std::wstring& fault() const { return m_fault; }

    /// Hits within the limits; none when the surface is not valid.
    [[nodiscard]] IntersectionSet intersect(const Point<double, 3>& from, const Point<double, 3>& to) const;
    /// The first of `intersect` for each ray, with its normal and side; `hits` is as long as `rays`.
    void nearestHits(std::span<const Ray> rays, std::span<SurfaceHit> hits) const;
    /// Hits of the whole sphere; none when the surface is not valid.
    [[nodiscard]] IntersectionSet intersectWhole(const Point<double, 3>& from, const Point<double, 3>& to) const;
    /// Returns the outward normal at the nearest point of the whole sphere; zero for a NaN.
    [[nodiscard]] Point<double, 3> normal(const Point<double, 3>& point) const {
        const Point<double, 3> outward = point - m_numbers.centre;
        const double distance = norm(outward);
        if (!m_isValid || !std::isfinite(distance)) {
            return {};
        }
        return distance > 0 ? outward * (1 / distance) : m_placement.toWorld({0.0, 1.0, 0.0});
    }
    /// Returns the point at (s, t); not finite when (s, t) or the result is not.
    [[nodiscard]] Point<double, 3> pointAt(double s, double t) const;
    /// Returns true when the whole sphere continues at this t: not past a pole.
    [[nodiscard]] bool continuesAt(double t) const;

private:
    /// The circle of a limiting elevation.
    struct Rim {
        double height = 0;  ///< above the centre, along the axis; infinite at a pole, which limits nothing
        double radius = 0;

        /// Above zero for a point of the sphere that is higher than the circle, below zero for a lower one. Near a
        /// pole, where the height hardly changes any more, the distance from the axis decides.
        template <class Number>
        [[nodiscard]] Number excess(const Triple<Number>& own) const;
    };
    template <class Number>
    struct PlainRay;

    [[nodiscard]] static std::wstring faultOf(const SphereNumbers& numbers);
    [[nodiscard]] static Rim rimAt(double elevation, double radius);
    [[nodiscard]] double elevationAt(double t) const;
    /// Calls `visit(point, t)` for each hit of the whole sphere that `limit` lets pass, mostly nearest first.
    template <class Limit, class Visit>
    void visitHits(const Point<double, 3>& from, const Point<double, 3>& to, const Limit& limit,
                   const Visit& visit) const;
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
    [[nodiscard]] LimitVerdict<Number> judge(const Triple<Number>& place, Number tolerance) const;
    /// Returns whether a hit of the whole sphere, relative to the centre, is within the limits, perhaps after a small
    /// move.
    [[nodiscard]] bool isKept(const RayAim& aim, double tolerance, Point<double, 3>& place, double& t) const;
    /// The same for a place in the own frame of a sphere that is not whole.
    template <class Number>
    [[nodiscard]] LimitVerdict<Number> judgeOwn(const Triple<Number>& own, Number tolerance) const;
    [[nodiscard]] const Rim& nearestRim(double height) const;
    /// Moves a hit beyond a limit onto that limit, when the ray passes it closely enough. `aim` is in the world frame.
    [[nodiscard]] bool slideToLimit(const RayAim& aim, double tolerance, OwnHit& hit) const;
    /// Returns the point within the limits nearest to a point, both relative to the centre, in the own frame.
    [[nodiscard]] Point<double, 3> moveWithinLimits(const Point<double, 3>& own) const;

    SphereNumbers m_numbers;
    Placement m_placement;
    AzimuthSector m_sector;
    Rim m_lower, m_upper;
    double m_extent = 0;  ///< the largest coordinate of the sphere: the unit of its rounding
    bool m_isWhole = false;
    std::wstring m_fault;
    bool m_isValid = false;
};

}  // namespace Veltrani::KelvoScreenDetail
