// The module that is opened with the first fit: every call to Ceres.
#include "DisplayFit/detail/FitLibrary.h"

#include <ceres/ceres.h>
#include <glog/logging.h>
#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <exception>
#include <limits>
#include <vector>

namespace Veltrani::DisplayFitDetail {

namespace {

/// A problem as one function of few residuals, of which squares, gradient and normal equations are those of all: with
/// the triangle R^T R = J^T J these are R^-T J^T r, with the derivatives R, and a last one for what no step lessens.
/// The solver's own work does not grow with the number of points.
class Condensed : public ceres::CostFunction {
public:
    explicit Condensed(const LeastSquares& problem) : m_problem(problem) {
        const auto columns = static_cast<int>(problem.unknowns());
        set_num_residuals(columns + 1);
        mutable_parameter_block_sizes()->push_back(columns);
    }

    bool Evaluate(double const* const* parameters, double* residuals, double** jacobians) const override {
        double* const jacobian = jacobians != nullptr ? jacobians[0] : nullptr;
        // What is not finite must not reach the solver: it would log it.
        if (m_thrown || !isSummed(parameters[0], jacobian != nullptr) || !areFinite(m_sums)) {
            return false;
        }
        const auto columns = static_cast<Eigen::Index>(m_problem.unknowns());
        Eigen::Map<Eigen::VectorXd> misses(residuals, columns + 1);
        misses.setZero();
        if (jacobian != nullptr) {
            Eigen::Map<Rows> derivatives(jacobian, columns + 1, columns);
            derivatives.setZero();
            condense(misses, derivatives);
        }
        misses[columns] = std::sqrt(std::max(m_sums.squares - misses.head(columns).squaredNorm(), 0.0));
        return misses.allFinite();
    }

    /// Throws what the problem threw: the solver is not made for it.
    void rethrow() const {
        if (m_thrown) {
            std::rethrow_exception(m_thrown);
        }
    }

private:
    using Rows = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

    bool isSummed(const double* unknowns, bool needsDerivatives) const noexcept {
        try {
            return m_problem.sum(unknowns, m_sums, needsDerivatives);
        } catch (...) {
            m_thrown = std::current_exception();
            return false;
        }
    }

    static bool areFinite(const LeastSquares::Sums& sums) {
        const auto areAll = [](const std::vector<double>& numbers) {
            return std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); });
        };
        return std::isfinite(sums.squares) && areAll(sums.gradient) && areAll(sums.normal);
    }

    void condense(Eigen::Map<Eigen::VectorXd>& misses, Eigen::Map<Rows>& derivatives) const {
        const auto columns = static_cast<Eigen::Index>(m_problem.unknowns());
        const Eigen::Map<const Rows> normal(m_sums.normal.data(), columns, columns);
        const Eigen::Map<const Eigen::VectorXd> gradient(m_sums.gradient.data(), columns);
        // Columns of the length 1: lengths, angles and coefficients differ by orders.
        const Eigen::VectorXd norms = normal.diagonal().cwiseSqrt().cwiseMax(std::numeric_limits<double>::min());
        const Eigen::VectorXd inverse = norms.cwiseInverse();
        const Eigen::MatrixXd scaled = inverse.asDiagonal() * normal * inverse.asDiagonal();
        const Eigen::VectorXd along = gradient.cwiseProduct(inverse);
        const Eigen::LLT<Eigen::MatrixXd> factors(scaled);
        if (factors.info() == Eigen::Success) {
            const Eigen::MatrixXd triangle = factors.matrixU();
            derivatives.topRows(columns) = triangle * norms.asDiagonal();
            misses.head(columns) = factors.matrixL().solve(along);
            return;
        }
        // A combination without any effect: its residual is zero.
        const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> axes(scaled);
        for (Eigen::Index i = 0; i < columns; ++i) {
            const double square = axes.eigenvalues()[i];
            if (square > std::numeric_limits<double>::epsilon()) {
                const Eigen::VectorXd axis = axes.eigenvectors().col(i);
                derivatives.row(i) = axis.cwiseProduct(norms).transpose() * std::sqrt(square);
                misses[i] = axis.dot(along) / std::sqrt(square);
            }
        }
    }

    const LeastSquares& m_problem;
    mutable LeastSquares::Sums m_sums;  ///< of the last call; the solver makes one at a time
    mutable std::exception_ptr m_thrown;
};

ceres::Solver::Options optionsOf(const SolverPlan& plan) {
    ceres::Solver::Options options;
    options.linear_solver_type = ceres::DENSE_NORMAL_CHOLESKY;
    options.dense_linear_algebra_library_type = ceres::EIGEN;
    options.trust_region_strategy_type = ceres::LEVENBERG_MARQUARDT;
    options.num_threads = 1;
    options.logging_type = ceres::SILENT;
    options.minimizer_progress_to_stdout = false;
    options.max_num_iterations = plan.mostSteps;
    options.function_tolerance = plan.costTolerance;
    options.gradient_tolerance = 0;
    options.parameter_tolerance = 1e-15;
    return options;
}

class Module : public FitLibrary {
public:
    Module() {
        // Nothing below a fatal error is logged by Ceres; what would be one is kept from it.
        FLAGS_minloglevel = google::GLOG_FATAL;
    }

    [[nodiscard]] SolverEnd minimise(const LeastSquares& problem, std::vector<double>& unknowns,
                                     const SolverPlan& plan) const override {
        const bool isFinite =
            std::all_of(unknowns.begin(), unknowns.end(), [](double value) { return std::isfinite(value); });
        if (problem.unknowns() == 0 || problem.residuals() == 0 || unknowns.size() != problem.unknowns() || !isFinite) {
            return {};
        }
        std::vector<double> best = unknowns;
        Condensed condensed(problem);
        ceres::Problem::Options kept;
        kept.cost_function_ownership = ceres::DO_NOT_TAKE_OWNERSHIP;
        ceres::Problem sum(kept);
        sum.AddResidualBlock(&condensed, nullptr, best.data());
        ceres::Solver::Summary summary;
        ceres::Solve(optionsOf(plan), &sum, &summary);
        condensed.rethrow();
        if (!summary.IsSolutionUsable()) {
            return {};
        }
        unknowns = best;
        return {true, static_cast<int>(summary.iterations.size())};
    }
};

}  // namespace

}  // namespace Veltrani::DisplayFitDetail

extern "C" const Veltrani::DisplayFitDetail::FitLibrary* SM_FIT_MODULE_FUNCTION();

/// Returns the entry of the module; its name carries the version.
extern "C" const Veltrani::DisplayFitDetail::FitLibrary* SM_FIT_MODULE_FUNCTION() {
    static const Veltrani::DisplayFitDetail::Module module;
    return &module;
}
