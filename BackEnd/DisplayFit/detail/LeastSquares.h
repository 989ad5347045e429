#pragma once

#include <cstddef>
#include <vector>

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

    /// Residuals that are calculated at once: an even number, so that no pair of them is split, and few enough to stay
    /// in the nearer caches with their derivatives.
    static constexpr std::size_t BLOCK = 2048;

    /// Calculates `count` residuals from the residual `first` on, and their derivatives where `jacobian` is not null: a
    /// row of `unknowns` for each of these. Returns false where there is none; what is written then is not used.
    virtual bool evaluate(const double* unknowns, std::size_t first, std::size_t count, double* residuals,
                          double* jacobian) const noexcept = 0;

    /// Called before each block of residuals; what it throws ends what is computed.
    virtual void pulse() const {}

    /// What a step of Gauss and Newton needs of all residuals r and their derivatives J: few numbers, however many
    /// residuals there are.
    struct Sums {
        double squares = 0;            ///< r^T r
        std::vector<double> gradient;  ///< J^T r
        std::vector<double> normal;    ///< J^T J, the lower triangle of `unknowns` x `unknowns`, row by row
    };

    /// Calculates these sums block by block, the last two where `needsDerivatives`. Returns false as `evaluate` does,
    /// throws what `pulse` throws. Only the first call takes memory.
    virtual bool sum(const double* unknowns, Sums& sums, bool needsDerivatives) const;

private:
    mutable std::vector<double> m_residuals;
    mutable std::vector<double> m_jacobian;
};

}  // namespace Veltrani::DisplayFitDetail
