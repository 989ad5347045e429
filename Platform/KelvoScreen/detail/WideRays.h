#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/detail/Numbers.h"
#include "KelvoScreen/detail/RayAim.h"
#include "KelvoScreen/detail/SurfaceLimits.h"

#include <cstddef>

// Rays of a batch, four at a time, and their hits.
namespace Veltrani::KelvoScreenDetail {

/// What `raysAtOnce` of a shape that is given by numbers returns for objects of its own class: enough for its calls not
/// to matter, and few enough for their rays and hits to stay in the nearest cache.
inline constexpr std::size_t FORMULA_RAYS_AT_ONCE = 128;

/// The same point for four rays.
[[nodiscard, gnu::always_inline]] inline Triple<Wide> wide(const Point<double, 3>& point) {
    return {all(point[0]), all(point[1]), all(point[2])};
}

/// The points of four rays side by side.
struct WideRays {
    [[gnu::always_inline]] explicit WideRays(const Ray* rays)
        : from{component(rays, &Ray::first, 0), component(rays, &Ray::first, 1), component(rays, &Ray::first, 2)},
          to{component(rays, &Ray::second, 0), component(rays, &Ray::second, 1), component(rays, &Ray::second, 2)} {}

    Triple<Wide> from, to;

private:
    [[nodiscard, gnu::always_inline]] static Wide component(const Ray* rays, Point<double, 3> Ray::*end,
                                                            std::size_t i) {
        return Wide{(rays[0].*end)[i], (rays[1].*end)[i], (rays[2].*end)[i], (rays[3].*end)[i]};
    }
};

/// The hits of four rays side by side.
struct WideHits {
    Triple<Wide> point;
    Triple<Wide> normal;
    Wide t;
    WideMask isHit;

    /// Writes the hits, with their sides; zero for misses.
    [[gnu::always_inline]] void storeTo(SurfaceHit* hits, const Triple<Wide>& direction) const {
        const Wide along = dotOf(direction, normal);
        const WideMask isAlong = along > 0;
        const WideMask isAgainst = along < 0;
        const WideMask sides = isHit ? isAgainst - isAlong : WideMask{1, 1, 1, 1};
        const Wide none{};
        const Triple<Wide> p{isHit ? point.x : none, isHit ? point.y : none, isHit ? point.z : none};
        const Triple<Wide> n{isHit ? normal.x : none, isHit ? normal.y : none, isHit ? normal.z : none};
        const Wide positions = isHit ? t : none;
        for (std::size_t i = 0; i < WIDTH; ++i) {
            hits[i].point = {p.x[i], p.y[i], p.z[i]};
            hits[i].normal = {n.x[i], n.y[i], n.z[i]};
            hits[i].t = positions[i];
            hits[i].side = static_cast<int>(sides[i]);
            hits[i].hit = isHit[i] != 0;
        }
    }
};

/// For each of four rays the first end of its chord that is within the limits of the surface.
struct EndWithinLimits {
    /// @param isUnlimited whether every place is within the limits
    /// @param judge the `LimitVerdict` of a place
    template <class Judge>
    [[gnu::always_inline]] EndWithinLimits(const PlainChord<Wide>& chord, const Triple<Wide>& origin,
                                           const Triple<Wide>& direction, bool isUnlimited, const Judge& judge)
        : t(chord.first()),
          place(placeOnRay(origin, direction, t)),
          isHit(chord.isInside | chord.isThrough),
          isSure(chord.isMiss | isHit) {
        if (!isUnlimited) {
            limit(chord, origin, direction, judge);
        }
    }

    Wide t;
    Triple<Wide> place;
    WideMask isHit;
    WideMask isSure;  ///< false for the rays that take more care

private:
    template <class Judge>
    [[gnu::always_inline]] void limit(const PlainChord<Wide>& chord, const Triple<Wide>& origin,
                                      const Triple<Wide>& direction, const Judge& judge) {
        const WideMask mayHit = isHit;
        const LimitVerdict<Wide> first = judge(place);
        const WideMask takesSecond = chord.isThrough & first.isBeyond & ~first.isWithin;
        const Wide secondT = chord.second();
        const Triple<Wide> secondPlace = placeOnRay(origin, direction, secondT);
        const LimitVerdict<Wide> second = judge(secondPlace);
        const WideMask isFirstSure = first.isWithin | first.isBeyond;
        const WideMask isSecondSure = second.isWithin | second.isBeyond;
        // A second end at a limit may be moved onto it, even in front of the first one.
        isSure = chord.isMiss | (mayHit & isFirstSure & (chord.isInside | isSecondSure));
        isHit = mayHit & (first.isWithin | (takesSecond & second.isWithin));
        t = takesSecond ? secondT : t;
        place = {takesSecond ? secondPlace.x : place.x, takesSecond ? secondPlace.y : place.y,
                 takesSecond ? secondPlace.z : place.z};
    }
};

}  // namespace Veltrani::KelvoScreenDetail
