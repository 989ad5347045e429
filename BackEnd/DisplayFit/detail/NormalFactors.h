#pragma once

#include "DisplayFit/detail/LeastSquares.h"

#include <Eigen/Core>

#include <vector>

namespace Veltrani::DisplayFitDetail {

/// The triangle R^T R = J^T J of a problem at its base, its columns scaled to the length 1, and the step of Gauss and
/// Newton.
class NormalFactors {
public:
    /// Takes them from the normal equations; false where rounding would show.
    bool fromNormal(const LeastSquares::Sums& sums);
    /// Takes them from the residuals by an orthogonal factorisation, block by block; false where the problem has none.
    bool fromResiduals(const LeastSquares& problem);

    [[nodiscard]] bool isSingular() const;
    /// By which a step to where the linear residuals have their minimum lessens the squares.
    [[nodiscard]] double gain() const { return m_along.squaredNorm(); }
    [[nodiscard]] std::vector<double> step() const;
    /// Of columns as they are, row by row.
    [[nodiscard]] std::vector<double> triangle() const;
    /// Returns the covariance of a pair that follows from that of the unknowns, where the residuals deviate by 1.
    /// @param rows of derivatives of the pair, two
    [[nodiscard]] Eigen::Matrix2d spreadOf(const std::vector<double>& rows) const;

private:
    Eigen::VectorXd m_norms;
    Eigen::MatrixXd m_triangle;
    Eigen::VectorXd m_along;
};

}  // namespace Veltrani::DisplayFitDetail
