#pragma once

#include "DisplayFit/detail/LeastSquares.h"

#include <vector>

namespace Veltrani::DisplayFitDetail {

/// When the solver ends.
struct SolverPlan {
    int mostSteps = 500;
    double costTolerance = 1e-14;  ///< a step that lessens the cost by less than this part of it is the last
};

/// How it ended.
struct SolverEnd {
    bool isUsable = false;  ///< false where there was no residual to start from, or a number that is not finite
    int steps = 0;
};

/// The solver of least squares, opened with the first fit: it brings other shared libraries into the process, which
/// nothing else needs. The code that calls it is in a module of its own beside the libraries. It starts no thread and
/// logs nothing.
class FitLibrary {
public:
    FitLibrary() = default;
    FitLibrary(const FitLibrary&) = delete;
    FitLibrary& operator=(const FitLibrary&) = delete;
    virtual ~FitLibrary() = default;

    /// Opens the module at the first call; it stays open. Throws `VeltraniException` when it cannot be opened,
    /// `std::bad_alloc` when memory runs out; the next call tries again.
    [[nodiscard]] static const FitLibrary& get();

    /// Steps from `unknowns` to where the sum of squares has a minimum, by the method of Levenberg and Marquardt.
    /// Throws what the problem's sums throw.
    /// @param unknowns as many as the problem has; the best ones found, or as they were when the end is not usable
    [[nodiscard]] virtual SolverEnd minimise(const LeastSquares& problem, std::vector<double>& unknowns,
                                             const SolverPlan& plan) const = 0;
};

}  // namespace Veltrani::DisplayFitDetail
