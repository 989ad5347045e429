#pragma once

#include "Common/Point.h"

#include <emmintrin.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

/// Doubles side by side, one for each ray of a packet, and the arithmetic on four of them at a time.
///
/// The results are those of the same operations one by one, to the last bit: vector instructions round each lane as the
/// scalar ones do, and none is fused.
namespace Veltrani::KelvoScreenDetail {

inline constexpr std::size_t LANES = 16;

/// A bit for each lane, the lowest for lane 0.
using LaneMask = std::uint32_t;
inline constexpr LaneMask ALL_LANES = (LaneMask{1} << LANES) - 1;

/// Aligned for any vector register.
struct alignas(64) Lanes : std::array<double, LANES> {};

/// x, y and z of as many points.
using LanePoints = std::array<Lanes, 3>;

/// Four neighbouring lanes; the operators of double work on each of them. Where the processor has no vectors of four,
/// the compiler takes two of two.
using Wide [[gnu::vector_size(32)]] = double;
/// All bits or none for each of four lanes: what comparing yields, and `mask ? a : b` takes.
using WideMask [[gnu::vector_size(32)]] = long long;
inline constexpr std::size_t WIDTH = 4;
inline constexpr LaneMask WIDE_BITS = (LaneMask{1} << WIDTH) - 1;

// The functions below are always part of their callers, so that how vectors are passed does not matter.
#pragma GCC diagnostic ignored "-Wpsabi"

[[nodiscard, gnu::always_inline]] inline Wide load(const Lanes& lanes, std::size_t i) {
    return *reinterpret_cast<const Wide*>(&lanes[i]);
}
[[gnu::always_inline]] inline void store(Lanes& lanes, std::size_t i, Wide value) {
    *reinterpret_cast<Wide*>(&lanes[i]) = value;
}

using FourPoints = std::array<const Point<double, 3>*, WIDTH>;

/// Returns one component of four points.
[[nodiscard, gnu::always_inline]] inline Wide sideBySide(const FourPoints& points, std::size_t k) {
    return Wide{(*points[0])[k], (*points[1])[k], (*points[2])[k], (*points[3])[k]};
}

[[nodiscard, gnu::always_inline]] inline Wide all(double value) {
    return Wide{value, value, value, value};
}
/// Work as `std::min` and `std::max`: they return the first of two that are equal or not comparable.
[[nodiscard, gnu::always_inline]] inline Wide smaller(Wide a, Wide b) {
    return b < a ? b : a;
}
[[nodiscard, gnu::always_inline]] inline Wide larger(Wide a, Wide b) {
    return a < b ? b : a;
}
/// The number of the greatest of three components, 0 to 2.
[[nodiscard, gnu::always_inline]] inline Wide longestAxis(Wide x, Wide y, Wide z) {
    const WideMask mostlyX = (x > y) & (x > z);
    const WideMask mostlyY = (x <= y) & (y > z);
    return mostlyX ? all(0) : mostlyY ? all(1) : all(2);
}
[[nodiscard, gnu::always_inline]] inline Wide absolute(Wide a) {
    constexpr long long WITHOUT_SIGN = 0x7fff'ffff'ffff'ffff;
    return reinterpret_cast<Wide>(reinterpret_cast<WideMask>(a) & WITHOUT_SIGN);
}
/// One instruction where the processor has vectors of four: the library is compiled without the error number that
/// `std::sqrt` would set for a negative argument.
[[nodiscard, gnu::always_inline]] inline Wide squareRoot(Wide a) {
    return Wide{__builtin_sqrt(a[0]), __builtin_sqrt(a[1]), __builtin_sqrt(a[2]), __builtin_sqrt(a[3])};
}
/// Returns the inner product, as `dot` calculates it: summed from zero, first component first.
[[nodiscard, gnu::always_inline]] inline Wide innerProduct(Wide ax, Wide ay, Wide az, Wide bx, Wide by, Wide bz) {
    return 0.0 + ax * bx + ay * by + az * bz;
}

/// Returns a bit for each of four lanes.
[[nodiscard, gnu::always_inline]] inline LaneMask bitsOf(WideMask mask) {
    const auto low = reinterpret_cast<__m128d>(__builtin_shufflevector(mask, mask, 0, 1));
    const auto high = reinterpret_cast<__m128d>(__builtin_shufflevector(mask, mask, 2, 3));
    return static_cast<LaneMask>(_mm_movemask_pd(low) | _mm_movemask_pd(high) << 2);
}
/// The inverse of `bitsOf`: `bits` is below 16.
[[nodiscard, gnu::always_inline]] inline WideMask maskOf(LaneMask bits) {
    const WideMask bitOfLane = {1, 2, 4, 8};
    const long long number = bits;
    return (WideMask{number, number, number, number} & bitOfLane) == bitOfLane;
}

/// Returns the lanes below zero; -0.0 is among them.
[[nodiscard]] inline LaneMask negativeLanes(const Lanes& lanes) {
    LaneMask mask = 0;
    for (std::size_t i = 0; i < LANES; i += 2) {
        mask |= static_cast<LaneMask>(_mm_movemask_pd(_mm_load_pd(&lanes[i]))) << i;
    }
    return mask;
}

/// Calls `action(lane)` for each lane of a mask, lowest first.
template <class Action>
void forEachLane(LaneMask mask, const Action& action) {
    for (; mask != 0; mask &= mask - 1) {
        action(static_cast<std::size_t>(std::countr_zero(mask)));
    }
}

}  // namespace Veltrani::KelvoScreenDetail

/// Compiles a function three times: for processors with vectors of four doubles, once with as many registers of them as
/// the formulas need, and for all others; which one runs is decided when the library is loaded. All give the same bits.
/// (clang 14 cannot do that to members: it takes two of two.)
#ifdef __clang__
#define KELVO_SCREEN_WIDE_VECTORS
#define KELVO_SCREEN_THREE_OPERANDS
#else
#define KELVO_SCREEN_WIDE_VECTORS [[gnu::target_clones("arch=x86-64-v4", "avx2", "default")]]
/// Likewise for a single ray with many numbers at hand: instructions that do not overwrite an operand save copies.
#define KELVO_SCREEN_THREE_OPERANDS [[gnu::target_clones("avx", "default")]]
#endif
