#include "DisplayFit/detail/ChannelSolver.h"

#include "DisplayFit/detail/FitLibrary.h"
#include "DisplayFit/detail/NormalFactors.h"
#include "DisplayFit/detail/Rejection.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Veltrani::DisplayFitDetail {

namespace {

/// Half of the pairs of two normal numbers of deviation 1 are shorter than this.
constexpr double MEDIAN_OF_PAIRS = 1.1774100225154747;

/// A deviation from the median is as uncertain as one from the squares of this part of the numbers.
constexpr double MEDIAN_EFFICIENCY = 0.37;

/// Width of the loss, in deviations: 95 % of the efficiency of plain least squares where there are no outliers.
constexpr double LOSS_WIDTH = 2.385;

/// The loss narrows with the residuals at most this often.
constexpr int MOST_NARROWINGS = 12;
/// It is narrow enough when the next one would lessen it by less than this part.
constexpr double ENOUGH = 0.9;

/// What is only the start of the next minimisation is found to this part of its cost, or in so many steps.
constexpr double ROUGHLY = 1e-4;
constexpr int MOST_ROUGH_STEPS = 50;

/// Where a typical point is further off than this part of the picture no values explain the points, and a minimum that
/// is flat and far away is worth no more steps than these.
constexpr double HOPELESS = 0.05;
constexpr int MOST_HOPELESS_STEPS = 20;

/// Points change sides at most this often.
constexpr int MOST_REJECTIONS = 12;

/// Each step also settles the places of the points. Further ones are made where the squares are halved by each.
constexpr int USUAL_POLISHING_STEPS = 8;
constexpr int MOST_POLISHING_STEPS = 40;
constexpr int MOST_HALVINGS = 8;

/// Where residuals are so few times what counts as none, what is left of them may be that of the minimisation.
constexpr double NEARLY_NONE = 1e3;

/// A step that lessens the squares by less than this part of them is below what rounding does.
constexpr double NEGLIGIBLE = 1e-22;

/// The cost of a state of a model; infinite where it has none.
double costOf(const WeightedProblem& problem) {
    const std::vector<double> base(problem.unknowns(), 0.0);
    LeastSquares::Sums sums;
    return problem.sum(base.data(), sums, false) ? sums.squares : std::numeric_limits<double>::infinity();
}

/// Numbers that are left to estimate a deviation from.
double freedomOf(const WeightedProblem& problem, std::size_t points) {
    return 2 * static_cast<double>(points) - static_cast<double>(problem.unknowns());
}

}  // namespace

double typicalDeviation(std::vector<double> sizes) {
    if (sizes.empty()) {
        return 0;
    }
    const auto middle = sizes.begin() + static_cast<std::ptrdiff_t>(sizes.size() / 2);
    std::nth_element(sizes.begin(), middle, sizes.end());
    return *middle / MEDIAN_OF_PAIRS;
}

ChannelSolver::ChannelSolver(const DisplayFit::FitOptions& options) : m_options(options) {}

bool ChannelSolver::minimise(ChannelModel& model, WeightedProblem& problem, Solution& solution,
                             const SolverPlan& plan) {
    std::vector<double> step(problem.unknowns(), 0.0);
    const SolverEnd end = FitLibrary::get().minimise(problem, step, plan);
    solution.steps += end.steps;
    if (!end.isUsable) {
        return false;
    }
    model.move(step.data());
    problem.weigh();
    return true;
}

bool ChannelSolver::solveRobustly(ChannelModel& model, WeightedProblem& problem, Solution& solution) {
    const double least = model.points().hasDeviations() ? 1.0 : model.leastDeviation();
    double deviation = typicalDeviation(problem.sizes());
    for (int narrowing = 0; narrowing < MOST_NARROWINGS; ++narrowing) {
        if (!std::isfinite(deviation)) {
            return false;
        }
        problem.setLoss(LOSS_WIDTH * std::max(deviation, least));
        if (!minimise(model, problem, solution, {MOST_ROUGH_STEPS, ROUGHLY})) {
            return false;
        }
        const double narrower = typicalDeviation(problem.sizes());
        const bool isEnough = narrower > ENOUGH * deviation || deviation <= least;
        deviation = narrower;
        if (isEnough) {
            break;
        }
    }
    problem.setLoss(0);
    solution.isHopeless = typicalDeviation(WeightedProblem(model, false).sizes()) > HOPELESS * model.extent();
    return std::isfinite(deviation);
}

bool ChannelSolver::solvePlainly(ChannelModel& model, WeightedProblem& problem, Solution& solution) const {
    const double least = model.points().hasDeviations() ? 1.0 : model.leastDeviation();
    const std::size_t count = model.points().size();
    const Rejection rejection(m_options.isRobust ? m_options.rejection : std::numeric_limits<double>::infinity(),
                              model.points().hasDeviations());
    const SolverPlan plan = solution.isHopeless ? SolverPlan{MOST_HOPELESS_STEPS, ROUGHLY} : SolverPlan{};
    const double all = freedomOf(problem, count);
    // Residuals of few points that were fitted are smaller than those of others, and their median says less.
    const bool areEnough = rejection.isKnown(all);
    const double fitted = !areEnough && all > 0 ? std::sqrt(2 * static_cast<double>(count) / all) : 1.0;
    double freedom = areEnough ? all : MEDIAN_EFFICIENCY * all;
    double deviation = std::max(typicalDeviation(problem.sizes()) * fitted, least);
    std::vector<bool> leftOut(count, false);
    for (int pass = 0; pass < MOST_REJECTIONS; ++pass) {
        std::vector<bool> next = rejection.leftOut(problem, deviation, freedom);
        if (pass > 0 && next == leftOut) {
            break;
        }
        leftOut = std::move(next);
        const auto rejected = static_cast<std::size_t>(std::count(leftOut.begin(), leftOut.end(), true));
        if (2 * (count - rejected) < problem.unknowns()) {
            return false;
        }
        problem.setLeftOut(leftOut);
        if (!minimise(model, problem, solution, plan)) {
            return false;
        }
        summarise(problem, solution);
        if (solution.deviation < NEARLY_NONE * model.leastDeviation()) {
            polish(model, problem, solution);
            summarise(problem, solution);
        }
        deviation = std::max(solution.deviation, least);
        freedom = freedomOf(problem, solution.inliers);
    }
    model.settle();
    problem.weigh();
    polish(model, problem, solution);
    summarise(problem, solution);
    return true;
}

void ChannelSolver::polish(ChannelModel& model, WeightedProblem& problem, Solution& solution) {
    const std::vector<double> base(problem.unknowns(), 0.0);
    LeastSquares::Sums sums;
    LeastSquares::Sums there;
    for (int polishing = 0; polishing <= MOST_POLISHING_STEPS; ++polishing) {
        NormalFactors factors;
        if (!problem.sum(base.data(), sums, true)) {
            return;
        }
        if (!factors.fromNormal(sums) && !factors.fromResiduals(problem)) {
            return;
        }
        solution.triangle = factors.triangle();
        if (polishing == MOST_POLISHING_STEPS || factors.isSingular() || factors.gain() <= NEGLIGIBLE * sums.squares) {
            return;
        }
        std::vector<double> step = factors.step();
        // In a narrow valley the whole step leads across it. Rounding may hide what the last step gains.
        int halving = 0;
        while (halving < MOST_HALVINGS &&
               (!problem.sum(step.data(), there, false) || there.squares > sums.squares * (1 + 1e-13))) {
            std::transform(step.begin(), step.end(), step.begin(), [](double part) { return part / 2; });
            ++halving;
        }
        if (halving == MOST_HALVINGS || (polishing >= USUAL_POLISHING_STEPS && there.squares > sums.squares / 2)) {
            return;
        }
        model.move(step.data());
        model.settle();
        problem.weigh();
    }
}

void ChannelSolver::summarise(const WeightedProblem& problem, Solution& solution) {
    solution.cost = costOf(problem);
    solution.sizes = problem.sizes();
    solution.typicalSize = typicalDeviation(solution.sizes);
    solution.isOutlier.clear();
    for (std::size_t i = 0; i < solution.sizes.size(); ++i) {
        solution.isOutlier.push_back(problem.isLeftOut(i));
    }
    solution.inliers =
        static_cast<std::size_t>(std::count(solution.isOutlier.begin(), solution.isOutlier.end(), false));
    const std::size_t equations = 2 * solution.inliers;
    const std::size_t freedom = equations > problem.unknowns() ? equations - problem.unknowns() : 0;
    solution.deviation = freedom > 0 ? std::sqrt(solution.cost / static_cast<double>(freedom)) : 0.0;
}

std::vector<double> ChannelSolver::triangleOf(const ChannelModel& model, const std::vector<bool>& leftOut) {
    WeightedProblem problem(model);
    problem.setLeftOut(leftOut);
    NormalFactors factors;
    return factors.fromResiduals(problem) ? factors.triangle() : std::vector<double>{};
}

Solution ChannelSolver::solve(ChannelModel& model) const {
    Solution solution;
    WeightedProblem problem(model);
    if (m_options.isRobust && !solveRobustly(model, problem, solution)) {
        solution.typicalSize = std::numeric_limits<double>::infinity();
        return solution;
    }
    solution.isSolved = solvePlainly(model, problem, solution);
    if (!solution.isSolved) {
        solution.typicalSize = std::numeric_limits<double>::infinity();
    }
    return solution;
}

}  // namespace Veltrani::DisplayFitDetail
