#pragma once

#include "DisplayFit/FitOptions.h"
#include "DisplayFit/detail/ChannelModel.h"
#include "DisplayFit/detail/FitLibrary.h"
#include "DisplayFit/detail/WeightedProblem.h"

#include <cstddef>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// What a solver found; the values are the base of the model.
struct Solution {
    bool isSolved = false;
    bool isHopeless = false;    ///< no values lead near to most points
    std::vector<double> sizes;  ///< of the residuals of all points, in standard deviations; infinite where unmapped
    std::vector<bool> isOutlier;
    std::size_t inliers = 0;
    double cost = 0;         ///< of the inliers: sum of the squares, weighted by stated deviations
    double deviation = 0;    ///< of one residual, in their weighted units, by the inliers
    double typicalSize = 0;  ///< what half of the residuals of all points are below, as a deviation
    int steps = 0;
    /// The triangle of the weighted Jacobian of the inliers at the solution, n x n, row by row.
    std::vector<double> triangle;
};

/// Solves one channel from the base of its model: by a robust loss that narrows with the residuals, then by plain least
/// squares of what is no outlier, again until no point changes sides.
class ChannelSolver {
public:
    explicit ChannelSolver(const DisplayFit::FitOptions& options);

    /// The model's base is the solution afterwards; where nothing was solved, what it was.
    [[nodiscard]] Solution solve(ChannelModel& model) const;

    /// Returns the triangle of the weighted Jacobian at the base of a model, as `Solution` has it, without the points
    /// that are left out; empty where a point is not mapped.
    [[nodiscard]] static std::vector<double> triangleOf(const ChannelModel& model, const std::vector<bool>& leftOut);

private:
    /// Steps to the minimum, and moves the base there.
    static bool minimise(ChannelModel& model, WeightedProblem& problem, Solution& solution, const SolverPlan& plan);
    static bool solveRobustly(ChannelModel& model, WeightedProblem& problem, Solution& solution);
    bool solvePlainly(ChannelModel& model, WeightedProblem& problem, Solution& solution) const;
    /// Steps of Gauss and Newton by an orthogonal factorisation: what is left of the normal equations' rounding.
    static void polish(ChannelModel& model, WeightedProblem& problem, Solution& solution);
    static void summarise(const WeightedProblem& problem, Solution& solution);

    DisplayFit::FitOptions m_options;
};

/// Returns the deviation of one coordinate of which half of the sizes of pairs lie below; the infinite ones count.
[[nodiscard]] double typicalDeviation(std::vector<double> sizes);

}  // namespace Veltrani::DisplayFitDetail
