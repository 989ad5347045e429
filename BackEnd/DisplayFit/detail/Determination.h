#pragma once

#include "DisplayFit/FitResult.h"
#include "DisplayFit/detail/ChannelModel.h"

#include <cstddef>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// How well the points of a channel determine the values that were solved, from the Jacobian at the solution.
class Determination {
public:
    /// @param triangle as `Solution` has it
    /// @param deviation of one weighted residual
    Determination(const std::vector<Unknown>& unknowns, const std::vector<double>& triangle, double deviation);

    /// Of the unknowns, row by row; empty where a combination is not determined at all.
    [[nodiscard]] const std::vector<double>& covariance() const { return m_covariance; }
    [[nodiscard]] const DisplayFit::WorstCombination& worst() const { return m_worst; }
    /// The combination that a linear function of the unknowns owes most of its variance to; its condition is that of
    /// all.
    /// @param slopes derivatives of the function, one for each unknown
    [[nodiscard]] DisplayFit::WorstCombination worstFor(const std::vector<double>& slopes) const;
    /// Above this, rounding hides what the points say of the combination.
    [[nodiscard]] bool isSingular() const { return !(m_worst.scaledCondition < SINGULAR); }
    /// Above this, the combination is hardly determined.
    [[nodiscard]] bool isDoubtful() const { return !(m_worst.scaledCondition < DOUBTFUL); }

private:
    static constexpr double SINGULAR = 1e10;
    static constexpr double DOUBTFUL = 1e6;

    /// The combination along a singular vector of the scaled triangle.
    [[nodiscard]] DisplayFit::WorstCombination combination(std::size_t axis) const;

    const std::vector<Unknown>& m_unknowns;
    double m_deviation;
    std::vector<double> m_lengths;            ///< of the columns
    std::vector<double> m_singular;           ///< falling
    std::vector<std::vector<double>> m_axes;  ///< one for each of these, of the length 1
    std::vector<double> m_covariance;
    DisplayFit::WorstCombination m_worst;
};

}  // namespace Veltrani::DisplayFitDetail
