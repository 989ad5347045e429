#pragma once

#include "Common/Point.h"
#include "KelvoScreen/detail/Lanes.h"

#include <cmath>
#include <limits>
#include <type_traits>

// Formulas that are written once for one ray and for four rays side by side: `Number` is `double` or `Wide`. Both give
// the same bits, and what a ray that needs more care gives is left to the code for rays of all kinds.
namespace Veltrani::KelvoScreenDetail {

/// What comparing two numbers yields: `bool`, or a mask of lanes.
template <class Number>
using Truth = std::conditional_t<std::is_same_v<Number, double>, bool, WideMask>;

// Without branches: for single rays each condition is practically random.
[[nodiscard, gnu::always_inline]] inline bool both(bool a, bool b) {
    return (static_cast<int>(a) & static_cast<int>(b)) != 0;
}
[[nodiscard, gnu::always_inline]] inline WideMask both(WideMask a, WideMask b) {
    return a & b;
}
[[nodiscard, gnu::always_inline]] inline bool either(bool a, bool b) {
    return (static_cast<int>(a) | static_cast<int>(b)) != 0;
}
[[nodiscard, gnu::always_inline]] inline WideMask either(WideMask a, WideMask b) {
    return a | b;
}
[[nodiscard, gnu::always_inline]] inline double absolute(double a) {
    return std::abs(a);
}
[[nodiscard, gnu::always_inline]] inline double squareRoot(double a) {
    return _mm_cvtsd_f64(_mm_sqrt_pd(_mm_set1_pd(a)));  // without the test of `std::sqrt` for an error number
}
[[nodiscard, gnu::always_inline]] inline double smaller(double a, double b) {
    return b < a ? b : a;
}
[[nodiscard, gnu::always_inline]] inline double larger(double a, double b) {
    return a < b ? b : a;
}
/// Returns a where a number is above zero, else b.
[[nodiscard, gnu::always_inline]] inline double whereAbove(double number, double a, double b) {
    const __m128d isAbove = _mm_cmpgt_sd(_mm_set_sd(number), _mm_setzero_pd());
    return _mm_cvtsd_f64(_mm_or_pd(_mm_and_pd(isAbove, _mm_set_sd(a)), _mm_andnot_pd(isAbove, _mm_set_sd(b))));
}
/// Returns false for infinities and NaN.
template <class Number>
[[nodiscard, gnu::always_inline]] inline Truth<Number> areFinite(Number a) {
    return absolute(a) <= std::numeric_limits<double>::max();
}

/// A point or a direction, or four of them.
template <class Number>
struct Triple {
    Number x, y, z;
};

/// Returns the inner product, as `dot` calculates it but for the sign of zero: `dot` sums from zero. So squares are the
/// same bits.
template <class Number>
[[nodiscard, gnu::always_inline]] inline Number productOf(const Triple<Number>& a, const Triple<Number>& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
/// Returns the inner product, as `dot` calculates it.
template <class Number>
[[nodiscard, gnu::always_inline]] inline Number dotOf(const Triple<Number>& a, const Triple<Number>& b) {
    return 0.0 + a.x * b.x + a.y * b.y + a.z * b.z;
}
template <class Number>
[[nodiscard, gnu::always_inline]] inline Triple<Number> difference(const Triple<Number>& a, const Triple<Number>& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
template <class Number>
[[nodiscard, gnu::always_inline]] inline Triple<Number> minus(const Triple<Number>& a, const Point<double, 3>& b) {
    return {a.x - b[0], a.y - b[1], a.z - b[2]};
}
template <class Number>
[[nodiscard, gnu::always_inline]] inline Triple<Number> plus(const Point<double, 3>& a, const Triple<Number>& b) {
    return {a[0] + b.x, a[1] + b.y, a[2] + b.z};
}
template <class Number>
[[nodiscard, gnu::always_inline]] inline Triple<Number> scaled(const Triple<Number>& a, Number factor) {
    return {a.x * factor, a.y * factor, a.z * factor};
}
/// Returns the place of t on a ray.
template <class Number>
[[nodiscard, gnu::always_inline]] inline Triple<Number> placeOnRay(const Triple<Number>& origin,
                                                                   const Triple<Number>& direction, Number t) {
    return {origin.x + t * direction.x, origin.y + t * direction.y, origin.z + t * direction.z};
}
template <class Number>
[[nodiscard, gnu::always_inline]] inline Number largestOf(const Triple<Number>& a) {
    return larger(larger(absolute(a.x), absolute(a.y)), absolute(a.z));
}
[[nodiscard, gnu::always_inline]] inline Triple<double> tripleOf(const Point<double, 3>& point) {
    return {point[0], point[1], point[2]};
}

}  // namespace Veltrani::KelvoScreenDetail
