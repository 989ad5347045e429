#include "DisplayFit/detail/ChannelSolver.h"

#include "DisplayFit/detail/FitLibrary.h"

#include <Eigen/QR>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace Veltrani::DisplayFitDetail {

namespace {

/// Half of the pairs of two normal numbers of deviation 1 are shorter than this.
constexpr double MEDIAN_OF_PAIRS = 1.1774100225154747;

/// Width of the loss, in deviations: 95 % of the efficiency of plain least squares where there are no outliers.
constexpr double LOSS_WIDTH = 2.385;

/// The loss narrows with the residuals at most this often.
constexpr int MOST_NARROWINGS = 12;
/// It is narrow enough when the next one would lessen it by less than this part.
constexpr double ENOUGH = 0.9;

/// What is only the start of the next minimisation is found to this part of its cost.
constexpr double ROUGHLY = 1e-4;

/// Points change sides at most this often.
constexpr int MOST_REJECTIONS = 12;

/// Each step also settles the places of the points.
constexpr int MOST_POLISHING_STEPS = 8;

/// A step that lessens the squares by less than this part of them is below what rounding does.
constexpr double NEGLIGIBLE = 1e-22;

using Jacobian = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

/// The size of a pair of two normal numbers that is exceeded as rarely as one of them exceeds so many deviations.
double sizeAsRareAs(double deviations) {
    const double probability = std::erfc(deviations / std::sqrt(2.0));
    return probability > 0 ? std::sqrt(-2 * std::log(probability)) : deviations;
}

/// The cost of a state of a model; infinite where it has none.
double costOf(const WeightedProblem& problem, std::vector<double>& residuals) {
    const std::vector<double> base(problem.unknowns(), 0.0);
    residuals.resize(problem.residuals());
    return problem.evaluate(base.data(), residuals.data(), nullptr)
               ? std::inner_product(residuals.begin(), residuals.end(), residuals.begin(), 0.0)
               : std::numeric_limits<double>::infinity();
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
                             double costTolerance) const {
    if (m_options.pulse) {
        m_options.pulse();
    }
    std::vector<double> step(problem.unknowns(), 0.0);
    SolverPlan plan;
    plan.costTolerance = costTolerance;
    const SolverEnd end = FitLibrary::get().minimise(problem, step, plan);
    solution.steps += end.steps;
    if (!end.isUsable) {
        return false;
    }
    model.move(step.data());
    problem.weigh();
    return true;
}

bool ChannelSolver::solveRobustly(ChannelModel& model, WeightedProblem& problem, Solution& solution) const {
    const double least = model.points().hasDeviations() ? 1.0 : model.leastDeviation();
    double deviation = typicalDeviation(problem.sizes());
    for (int narrowing = 0; narrowing < MOST_NARROWINGS; ++narrowing) {
        if (!std::isfinite(deviation)) {
            return false;
        }
        problem.setLoss(LOSS_WIDTH * std::max(deviation, least));
        if (!minimise(model, problem, solution, ROUGHLY)) {
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
    return std::isfinite(deviation);
}

bool ChannelSolver::solvePlainly(ChannelModel& model, WeightedProblem& problem, Solution& solution) const {
    const double least = model.points().hasDeviations() ? 1.0 : model.leastDeviation();
    const std::size_t count = model.points().size();
    double deviation = std::max(typicalDeviation(problem.sizes()), least);
    const double largest = sizeAsRareAs(m_options.rejection);
    std::vector<bool> leftOut(count, false);
    for (int rejection = 0; rejection < MOST_REJECTIONS; ++rejection) {
        const std::vector<double> sizes = problem.sizes();
        std::vector<bool> next(count, false);
        std::transform(sizes.begin(), sizes.end(), next.begin(), [&](double size) {
            return !std::isfinite(size) || (m_options.isRobust && size > largest * deviation);
        });
        if (rejection > 0 && next == leftOut) {
            break;
        }
        leftOut = next;
        const auto rejected = static_cast<std::size_t>(std::count(leftOut.begin(), leftOut.end(), true));
        if (2 * (count - rejected) < problem.unknowns()) {
            return false;
        }
        problem.setLeftOut(leftOut);
        if (!minimise(model, problem, solution, SolverPlan().costTolerance)) {
            return false;
        }
        summarise(problem, solution);
        deviation = std::max(solution.deviation, least);
    }
    model.settle();
    problem.weigh();
    polish(model, problem, solution);
    summarise(problem, solution);
    return true;
}

void ChannelSolver::polish(ChannelModel& model, WeightedProblem& problem, Solution& solution) {
    const auto rows = static_cast<Eigen::Index>(problem.residuals());
    const auto columns = static_cast<Eigen::Index>(problem.unknowns());
    std::vector<double> residuals;
    for (int polishing = 0; polishing <= MOST_POLISHING_STEPS; ++polishing) {
        const std::vector<double> base(problem.unknowns(), 0.0);
        Jacobian jacobian(rows, columns);
        Eigen::VectorXd misses(rows);
        if (!problem.evaluate(base.data(), misses.data(), jacobian.data())) {
            return;
        }
        const Eigen::VectorXd norms = jacobian.colwise().norm().cwiseMax(std::numeric_limits<double>::min());
        const Eigen::HouseholderQR<Eigen::MatrixXd> factors(jacobian * norms.cwiseInverse().asDiagonal());
        Eigen::MatrixXd triangle = factors.matrixQR().topRows(columns).triangularView<Eigen::Upper>();
        const Eigen::VectorXd along = (factors.householderQ().transpose() * misses).head(columns);
        const Eigen::MatrixXd unscaled = triangle * norms.asDiagonal();
        solution.triangle.resize(static_cast<std::size_t>(columns * columns));
        for (Eigen::Index r = 0; r < columns; ++r) {
            for (Eigen::Index c = 0; c < columns; ++c) {
                solution.triangle[static_cast<std::size_t>(r * columns + c)] = unscaled(r, c);
            }
        }
        const double cost = misses.squaredNorm();
        const bool isSingular = !(triangle.diagonal().cwiseAbs().minCoeff() > 1e-12);
        if (polishing == MOST_POLISHING_STEPS || isSingular || along.squaredNorm() <= NEGLIGIBLE * cost) {
            return;
        }
        const Eigen::VectorXd step = -(triangle.triangularView<Eigen::Upper>().solve(along)).cwiseQuotient(norms);
        Eigen::VectorXd there(rows);
        // Rounding may hide what the last step gains.
        if (!problem.evaluate(step.data(), there.data(), nullptr) || there.squaredNorm() > cost * (1 + 1e-13)) {
            return;
        }
        model.move(step.data());
        model.settle();
        problem.weigh();
    }
}

void ChannelSolver::summarise(const WeightedProblem& problem, Solution& solution) {
    std::vector<double> residuals;
    solution.cost = costOf(problem, residuals);
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
