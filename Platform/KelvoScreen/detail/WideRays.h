#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/detail/Numbers.h"
#include "KelvoScreen/detail/RayAim.h"
#include "KelvoScreen/detail/SurfaceLimits.h"

#include <bit>
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

/// Four doubles that follow each other in any objects.
using WideInMemory [[gnu::vector_size(32), gnu::aligned(8), gnu::may_alias]] = double;

/// Reads four doubles. (Copied by `std::memcpy`, they come in two halves, and wait for each other.)
[[nodiscard, gnu::always_inline]] inline Wide loadFrom(const void* place) {
    return *static_cast<const WideInMemory*>(place);
}
[[gnu::always_inline]] inline void storeAt(void* place, Wide value) {
    *static_cast<WideInMemory*>(place) = value;
}

/// Exchanges rows and columns of four vectors: the components of four points, side by side, for four points, and back.
[[gnu::always_inline]] inline void transpose(Wide& a, Wide& b, Wide& c, Wide& d) {
    const Wide evenLow = __builtin_shufflevector(a, b, 0, 4, 2, 6);
    const Wide oddLow = __builtin_shufflevector(a, b, 1, 5, 3, 7);
    const Wide evenHigh = __builtin_shufflevector(c, d, 0, 4, 2, 6);
    const Wide oddHigh = __builtin_shufflevector(c, d, 1, 5, 3, 7);
    a = __builtin_shufflevector(evenLow, evenHigh, 0, 1, 4, 5);
    b = __builtin_shufflevector(oddLow, oddHigh, 0, 1, 4, 5);
    c = __builtin_shufflevector(evenLow, evenHigh, 2, 3, 6, 7);
    d = __builtin_shufflevector(oddLow, oddHigh, 2, 3, 6, 7);
}

/// The points of four rays side by side.
struct WideRays {
    [[gnu::always_inline]] explicit WideRays(const Ray* rays) {
        static_assert(sizeof(Ray) == 6 * sizeof(double), "the six coordinates of a ray follow each other");
        Wide x0 = loadFrom(&rays[0].first);
        Wide y0 = loadFrom(&rays[1].first);
        Wide z0 = loadFrom(&rays[2].first);
        Wide x1 = loadFrom(&rays[3].first);
        transpose(x0, y0, z0, x1);
        // The last four coordinates of each ray: two of them again.
        Wide y = loadFrom(&rays[0].first[2]);
        Wide x = loadFrom(&rays[1].first[2]);
        Wide y1 = loadFrom(&rays[2].first[2]);
        Wide z1 = loadFrom(&rays[3].first[2]);
        transpose(y, x, y1, z1);
        from = {x0, y0, z0};
        to = {x1, y1, z1};
    }

    Triple<Wide> from{}, to{};
};

/// The hits of four rays side by side.
struct WideHits {
    Triple<Wide> point;
    Triple<Wide> normal;
    Wide t;
    WideMask isHit;

    /// Writes the hits, with their sides; zero for misses.
    /// @param along the inner product of the direction of the ray and the normal, but for the sign of zero
    [[gnu::always_inline]] void storeTo(SurfaceHit* hits, Wide along) const {
        static_assert(sizeof(SurfaceHit) == 2 * sizeof(Wide) && offsetof(SurfaceHit, t) == 6 * sizeof(double) &&
                          offsetof(SurfaceHit, side) == 7 * sizeof(double) &&
                          offsetof(SurfaceHit, hit) == offsetof(SurfaceHit, side) + sizeof(int) &&
                          std::endian::native == std::endian::little,
                      "a hit is seven numbers, then its side in the lower half of a word and `hit` in the upper one");
        // A mask is -1 where it is true. What is below zero as a side must not reach into the upper half.
        constexpr long long LOWER_HALF = 0xffff'ffff;
        constexpr long long IS_HIT = 1LL << 32;
        const WideMask side = ((along < 0) - (along > 0)) & LOWER_HALF;
        const WideMask state = isHit ? side | IS_HIT : WideMask{1, 1, 1, 1};
        Wide head0 = where(point.x), head1 = where(point.y), head2 = where(point.z), head3 = where(normal.x);
        Wide tail0 = where(normal.y), tail1 = where(normal.z), tail2 = where(t), tail3 = reinterpret_cast<Wide>(state);
        transpose(head0, head1, head2, head3);
        transpose(tail0, tail1, tail2, tail3);
        storeAt(&hits[0].point, head0);
        storeAt(&hits[0].normal[1], tail0);
        storeAt(&hits[1].point, head1);
        storeAt(&hits[1].normal[1], tail1);
        storeAt(&hits[2].point, head2);
        storeAt(&hits[2].normal[1], tail2);
        storeAt(&hits[3].point, head3);
        storeAt(&hits[3].normal[1], tail3);
    }

private:
    /// Returns a number of the hits, zero for misses.
    [[nodiscard, gnu::always_inline]] Wide where(Wide number) const {
        return reinterpret_cast<Wide>(reinterpret_cast<WideMask>(number) & isHit);
    }
};

/// Four rays and where each ends, before its normal is known.
struct WideEnds {
    Triple<Wide> direction;  ///< in the world frame
    Triple<Wide> place;      ///< relative to the centre
    Wide t;
    WideMask isHit;
    WideMask isSure;  ///< false for the rays that take more care
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
        const LimitVerdict<Wide> first = judge(place);
        isSure = chord.isMiss | (isHit & (first.isWithin | first.isBeyond));
        isHit = isHit & first.isWithin;
        if (bitsOf(chord.isThrough) == 0) {
            return;
        }
        const WideMask takesSecond = chord.isThrough & ~first.isWithin;
        const Wide secondT = chord.second();
        const Triple<Wide> secondPlace = placeOnRay(origin, direction, secondT);
        const LimitVerdict<Wide> second = judge(secondPlace);
        // A second end at a limit may be moved onto it, even in front of the first one.
        isSure = isSure & (~chord.isThrough | second.isWithin | second.isBeyond);
        isHit = isHit | (takesSecond & second.isWithin);
        t = takesSecond ? secondT : t;
        place = {takesSecond ? secondPlace.x : place.x, takesSecond ? secondPlace.y : place.y,
                 takesSecond ? secondPlace.z : place.z};
    }
};

}  // namespace Veltrani::KelvoScreenDetail
