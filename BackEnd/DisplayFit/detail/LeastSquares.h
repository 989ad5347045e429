#pragma once

#include <cstddef>

namespace Veltrani::DisplayFitDetail {

/// A sum of squares to be minimised.
class LeastSquares {
public:
    LeastSquares() = default;
    LeastSquares(const LeastSquares&) = delete;
    LeastSquares& operator=(const LeastSquares&) = delete;
    virtual ~LeastSquares() = default;

    /// Both above zero.
    [[nodiscard]] virtual std::size_t unknowns() const = 0;
    [[nodiscard]] virtual std::size_t residuals() const = 0;

    /// Calculates every residual, and their derivatives where `jacobian` is not null: a row of `unknowns` for each
    /// residual. Returns false where there is none; what is written then is not used. Throws nothing.
    virtual bool evaluate(const double* unknowns, double* residuals, double* jacobian) const noexcept = 0;
};

}  // namespace Veltrani::DisplayFitDetail
