// The module that is opened with the first fit: every call to Ceres.
#include "DisplayFit/detail/FitLibrary.h"

#include <ceres/ceres.h>
#include <glog/logging.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace Veltrani::DisplayFitDetail {

namespace {

/// All residuals of a problem as one function: nothing is allocated or looked up point by point.
class AllResiduals : public ceres::CostFunction {
public:
    explicit AllResiduals(const LeastSquares& problem) : m_problem(problem) {
        set_num_residuals(static_cast<int>(problem.residuals()));
        mutable_parameter_block_sizes()->push_back(static_cast<int>(problem.unknowns()));
    }

    bool Evaluate(double const* const* parameters, double* residuals, double** jacobians) const override {
        double* const jacobian = jacobians != nullptr ? jacobians[0] : nullptr;
        const std::size_t rows = m_problem.residuals();
        // What is not finite must not reach the solver: it would log it.
        return m_problem.evaluate(parameters[0], residuals, jacobian) && areFinite(residuals, rows) &&
               (jacobian == nullptr || areFinite(jacobian, rows * m_problem.unknowns()));
    }

private:
    static bool areFinite(const double* numbers, std::size_t count) {
        double sum = 0;
        for (std::size_t i = 0; i < count; ++i) {
            sum += numbers[i] * 0.0;
        }
        return sum == 0.0;
    }

    const LeastSquares& m_problem;
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
        ceres::Problem sum;
        sum.AddResidualBlock(new AllResiduals(problem), nullptr, best.data());
        ceres::Solver::Summary summary;
        ceres::Solve(optionsOf(plan), &sum, &summary);
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
