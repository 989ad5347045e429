#pragma once

#include <cmath>
#include <vector>

// Functions of one variable, of which distortions are made: polynomials, and the inverse of any increasing function.
namespace Veltrani::KelvoControlDetail {

/// A polynomial in one variable by its coefficients, constant first. Empty is zero.
using Polynomial = std::vector<double>;

[[nodiscard]] double valueAt(const Polynomial& polynomial, double x);
[[nodiscard]] Polynomial derivative(const Polynomial& polynomial);
[[nodiscard]] Polynomial sum(const Polynomial& a, const Polynomial& b);
[[nodiscard]] Polynomial product(const Polynomial& a, const Polynomial& b);

/// Up to where a polynomial that is positive at zero stays so: its smallest root above zero, or `limit` when there is
/// none before it. Zero when it is not positive at zero.
[[nodiscard]] double positiveUpTo(const Polynomial& polynomial, double limit);

/// A value and the slope there.
struct ValueAndSlope {
    double value = 0;
    double slope = 0;
};

/// Finds where an increasing function takes a value: Newton's method, kept within bounds that close in on the place, so
/// that it converges for every increasing function, and in about five steps for smooth ones.
///
/// @param function x -> ValueAndSlope, increasing from `low` to `high`
/// @param target within its values at `low` and `high`
/// @param guess where to start, within the bounds
template <class Function>
[[nodiscard]] double whereIncreasingEquals(const Function& function, double target, double low, double high,
                                           double guess) {
    // Halving alone reaches neighbouring doubles in fewer steps than this.
    constexpr int MOST_STEPS = 200;
    double x = guess;
    for (int step = 0; step < MOST_STEPS; ++step) {
        const ValueAndSlope at = function(x);
        (at.value < target ? low : high) = x;
        double next = x + (target - at.value) / at.slope;
        if (!(next > low && next < high)) {
            next = low + (high - low) / 2;
        }
        if (at.value == target || next == x || next <= low || next >= high) {
            break;
        }
        // A step below the rounding of x itself changes nothing that matters.
        const bool settled = std::abs(next - x) <= 1e-16 * std::abs(x);
        x = next;
        if (settled) {
            break;
        }
    }
    return x;
}

}  // namespace Veltrani::KelvoControlDetail
