#pragma once

#include "KelvoScreen/IntersectionSet.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/detail/RuledPatch.h"

#include <span>
#include <string>
#include <vector>

namespace Veltrani::KelvoScreenDetail {

struct RayAim;

/// The rails of a ruled surface; see `RuledSurfaceScreen`. Compared and hashed point by point.
struct RuledNumbers {
    std::vector<Point<double, 3>> lower;
    std::vector<Point<double, 3>> upper;
};

/// The patches between two rails, side by side: what a ruled screen computes, without its description.
class RuledSurface {
public:
    explicit RuledSurface(RuledNumbers numbers);

    [[nodiscard]] const RuledNumbers& numbers() const { return m_numbers; }
    [[nodiscard]] bool isValid() const { return m_isValid; }
    /// Returns the fault of the rails that makes the surface one that is not valid; empty when it is valid.
    [[nodiscard]] std::wstring fault() const;

    /// Hits between the rails; none when the surface is not valid.
    [[nodiscard]] IntersectionSet intersect(const Point<double, 3>& from, const Point<double, 3>& to) const;
    /// The first of `intersect` for each ray, with its normal and side; `hits` is as long as `rays`.
    void nearestHits(std::span<const Ray> rays, std::span<SurfaceHit> hits) const;
    /// Hits between the rails with side `sign`; when there is none, those of the continuation.
    [[nodiscard]] IntersectionSet intersectContinued(const Point<double, 3>& from, const Point<double, 3>& to,
                                                     int sign) const;
    /// Returns the normal at the nearest point between the rails, or of the continuation when that point is on an edge;
    /// zero for a NaN.
    [[nodiscard]] Point<double, 3> normal(const Point<double, 3>& point) const;
    /// The point at (s, t). False, with `out` untouched, where not even the continuation has one.
    [[nodiscard]] bool pointAt(double s, double t, Point<double, 3>& out) const;

private:
    struct AimedLine;
    class Collector;

    void build();
    /// Returns an empty text when there are two rails of as many points, all of them finite.
    [[nodiscard]] std::wstring faultOfRails() const;
    /// Makes the patches and returns their length.
    [[nodiscard]] double parameterised();
    /// Returns the mean length of both rails from one ruling straight to another.
    [[nodiscard]] double widthBetween(std::size_t left, std::size_t right) const;
    /// Returns the numbers of the rulings that are further than `dust` apart: the others would make patches of noise.
    [[nodiscard]] std::vector<std::size_t> rulings(double dust) const;
    [[nodiscard]] AimedLine aimedLine(const Point<double, 3>& from, const RayAim& aim) const;
    /// Returns the whole patch, or with `continued` also what lies beyond the edges that it has in common with the
    /// surface.
    [[nodiscard]] PatchRange rangeOf(std::size_t patch, bool continued) const;
    void collect(const AimedLine& line, bool continued, Collector& collector) const;
    [[nodiscard]] SurfaceHit nearestHit(const Ray& ray) const;
    /// Returns what `normal` returns for a point that is known to be on a patch, mostly sooner.
    [[nodiscard]] Point<double, 3> normalOn(std::size_t patch, const Point<double, 3>& point) const;
    /// Returns false when a patch other than this one may be within `distance` of a point.
    [[nodiscard]] bool isFarFromOthers(std::size_t patch, const Point<double, 3>& relative, double distance) const;
    [[nodiscard]] std::size_t nearestPatch(const Point<double, 3>& point, PatchPlace& place) const;

    RuledNumbers m_numbers;
    Point<double, 3> m_centre;           ///< the patches are relative to it
    std::vector<RuledPatch> m_patches;   ///< left to right; segments of dust have none
    std::vector<std::size_t> m_rulings;  ///< the points of the rails between which the patches are
    std::vector<double> m_ends;          ///< s at the right end of each patch, growing, the last one 1
    double m_dust = 0;                   ///< rulings this near to each other are one: the rounding of a point of a rail
    double m_extent = 0;                 ///< the largest coordinate of a rail: the unit of rounding
    bool m_isClosed = false;             ///< the last ruling is the first one, to rounding
    bool m_isValid = false;
};

}  // namespace Veltrani::KelvoScreenDetail
