#pragma once

#include "DisplayFit/FitResult.h"
#include "DisplayFit/detail/ChannelModel.h"
#include "DisplayFit/detail/ChannelSolver.h"

#include <vector>

namespace Veltrani::DisplayFitDetail {

/// How well the points of a channel determine the values that were solved, from the Jacobian at the solution.
class Determination {
public:
    /// @param deviation of one weighted residual
    Determination(const std::vector<Unknown>& unknowns, const Solution& solution, double deviation);

    /// Of the unknowns, row by row; empty where a combination is not determined at all.
    [[nodiscard]] const std::vector<double>& covariance() const { return m_covariance; }
    [[nodiscard]] const DisplayFit::WorstCombination& worst() const { return m_worst; }
    /// Above this, rounding hides what the points say of the combination.
    [[nodiscard]] bool isSingular() const { return !(m_worst.scaledCondition < SINGULAR); }
    /// Above this, the combination is hardly determined.
    [[nodiscard]] bool isDoubtful() const { return !(m_worst.scaledCondition < DOUBTFUL); }

private:
    static constexpr double SINGULAR = 1e10;
    static constexpr double DOUBTFUL = 1e6;

    void nameWorst(const std::vector<Unknown>& unknowns, const std::vector<double>& share,
                   const std::vector<double>& lengths, double smallest, double deviation);

    std::vector<double> m_covariance;
    DisplayFit::WorstCombination m_worst;
};

}  // namespace Veltrani::DisplayFitDetail
