#include "DisplayFit/detail/ChannelSolver.h"

#include "DisplayFit/detail/FitLibrary.h"

#include <Eigen/Cholesky>
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

/// Each step also settles the places of the points. Further ones are made where the squares are halved by each.
constexpr int USUAL_POLISHING_STEPS = 8;
constexpr int MOST_POLISHING_STEPS = 40;
constexpr int MOST_HALVINGS = 8;

/// Where residuals are so few times what counts as none, what is left of them may be that of the minimisation.
constexpr double NEARLY_NONE = 1e3;

/// A step that lessens the squares by less than this part of them is below what rounding does.
constexpr double NEGLIGIBLE = 1e-22;

using Rows = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

/// Where a diagonal number of the triangle of the scaled normal equations falls below this, they are solved by an
/// orthogonal factorisation of the Jacobian: rounding is the square of the condition there.
constexpr double WELL_CONDITIONED = 1e-3;

/// Below this a combination has no effect but rounding.
constexpr double SINGULAR = 1e-12;

/// The triangle R^T R = J^T J of a problem, its columns scaled to the length 1, and the step of Gauss and Newton.
class NormalFactors {
public:
    /// False where rounding would show.
    bool fromNormal(const LeastSquares::Sums& sums) {
        const auto columns = static_cast<Eigen::Index>(sums.gradient.size());
        const Eigen::Map<const Rows> normal(sums.normal.data(), columns, columns);
        m_norms = normal.diagonal().cwiseSqrt().cwiseMax(std::numeric_limits<double>::min());
        const Eigen::VectorXd inverse = m_norms.cwiseInverse();
        const Eigen::LLT<Eigen::MatrixXd> factors(inverse.asDiagonal() * normal * inverse.asDiagonal());
        m_triangle = factors.matrixU();
        if (factors.info() != Eigen::Success || !(m_triangle.diagonal().minCoeff() > WELL_CONDITIONED)) {
            return false;
        }
        const Eigen::Map<const Eigen::VectorXd> gradient(sums.gradient.data(), columns);
        m_along = factors.matrixL().solve(gradient.cwiseProduct(inverse));
        return true;
    }

    /// False where the problem has no residuals.
    bool fromResiduals(const LeastSquares& problem) {
        const auto columns = static_cast<Eigen::Index>(problem.unknowns());
        const auto rows = static_cast<Eigen::Index>(problem.residuals());
        const std::vector<double> base(problem.unknowns(), 0.0);
        Rows jacobian(rows, columns);
        Eigen::VectorXd misses(rows);
        if (!problem.evaluate(base.data(), misses.data(), jacobian.data())) {
            return false;
        }
        m_norms = jacobian.colwise().norm().cwiseMax(std::numeric_limits<double>::min());
        const Eigen::HouseholderQR<Eigen::MatrixXd> factors(jacobian * m_norms.cwiseInverse().asDiagonal());
        m_triangle = factors.matrixQR().topRows(columns).triangularView<Eigen::Upper>();
        m_along = (factors.householderQ().transpose() * misses).head(columns);
        return true;
    }

    [[nodiscard]] bool isSingular() const { return !(m_triangle.diagonal().cwiseAbs().minCoeff() > SINGULAR); }
    /// By which a step to where the linear residuals have their minimum lessens the squares.
    [[nodiscard]] double gain() const { return m_along.squaredNorm(); }
    [[nodiscard]] std::vector<double> step() const {
        const Eigen::VectorXd step = -(m_triangle.triangularView<Eigen::Upper>().solve(m_along)).cwiseQuotient(m_norms);
        return {step.begin(), step.end()};
    }
    /// Of columns as they are, row by row.
    [[nodiscard]] std::vector<double> triangle() const {
        const Rows unscaled = m_triangle * m_norms.asDiagonal();
        return {unscaled.data(), unscaled.data() + unscaled.size()};
    }

private:
    Eigen::VectorXd m_norms;
    Eigen::MatrixXd m_triangle;
    Eigen::VectorXd m_along;
};

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
        if (solution.deviation < NEARLY_NONE * model.leastDeviation()) {
            polish(model, problem, solution);
            summarise(problem, solution);
        }
        deviation = std::max(solution.deviation, least);
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
