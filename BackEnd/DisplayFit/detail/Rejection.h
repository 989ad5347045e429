#pragma once

#include "DisplayFit/detail/WeightedProblem.h"

#include <cstddef>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// Which points are so far off that they take no part.
class Rejection {
public:
    /// @param deviations as of `FitOptions::rejection`
    /// @param isKnown true where the deviations of the points are stated: they are not taken from their residuals
    Rejection(double deviations, bool isKnown);

    /// Returns the size, in deviations, that a sound pair exceeds as rarely as a normal number exceeds so many of its
    /// own. A deviation that was estimated may be too small by chance, the more so the fewer numbers it is from: then
    /// half the square of the size has the distribution of Fisher with 2 and `freedom` degrees, whose tail is
    /// (1 + size^2 / freedom)^(-freedom / 2). Infinite where nothing is left to estimate it from. Where `isKnown`, the
    /// difference is not worth a point that is missed.
    [[nodiscard]] double largest(double freedom) const;
    /// True where the deviation is stated, or from enough numbers.
    [[nodiscard]] bool isKnown(double freedom) const { return m_isKnown || freedom >= ENOUGH; }

    /// Returns the points that are to be left out of a problem at its base.
    /// @param deviation of one number of a pair, in units of the sizes
    /// @param freedom degrees of freedom that it is from
    [[nodiscard]] std::vector<bool> leftOut(const WeightedProblem& problem, double deviation, double freedom) const;

private:
    static constexpr double ENOUGH = 60;

    double m_square;  ///< of `largest`, with endless freedom
    bool m_isKnown;
};

}  // namespace Veltrani::DisplayFitDetail
