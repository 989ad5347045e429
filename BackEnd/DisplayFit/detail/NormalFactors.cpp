#include "DisplayFit/detail/NormalFactors.h"

#include <Eigen/Cholesky>
#include <Eigen/QR>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace Veltrani::DisplayFitDetail {

namespace {

using Rows = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

/// Where a diagonal number of the triangle of the scaled normal equations falls below this, they are solved by an
/// orthogonal factorisation of the Jacobian: rounding is the square of the condition there.
constexpr double WELL_CONDITIONED = 1e-3;

/// Below this a combination has no effect but rounding.
constexpr double SINGULAR = 1e-12;

}  // namespace

bool NormalFactors::fromNormal(const LeastSquares::Sums& sums) {
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

bool NormalFactors::fromResiduals(const LeastSquares& problem) {
    const auto columns = static_cast<Eigen::Index>(problem.unknowns());
    const std::vector<double> base(problem.unknowns(), 0.0);
    std::vector<double> residuals(LeastSquares::BLOCK);
    std::vector<double> jacobian(LeastSquares::BLOCK * problem.unknowns());
    // The derivatives with the residuals as a last column. The triangle of all blocks before stands above the next one.
    Eigen::MatrixXd above = Eigen::MatrixXd::Zero(columns, columns + 1);
    for (std::size_t first = 0; first < problem.residuals(); first += LeastSquares::BLOCK) {
        problem.pulse();
        const std::size_t count = std::min(problem.residuals() - first, LeastSquares::BLOCK);
        if (!problem.evaluate(base.data(), first, count, residuals.data(), jacobian.data())) {
            return false;
        }
        const auto rows = static_cast<Eigen::Index>(count);
        Eigen::MatrixXd stacked(above.rows() + rows, columns + 1);
        stacked.topRows(above.rows()) = above;
        stacked.bottomLeftCorner(rows, columns) = Eigen::Map<const Rows>(jacobian.data(), rows, columns);
        stacked.bottomRightCorner(rows, 1) = Eigen::Map<const Eigen::VectorXd>(residuals.data(), rows);
        const Eigen::HouseholderQR<Eigen::MatrixXd> factors(stacked);
        const Eigen::Index kept = std::min(stacked.rows(), columns + 1);
        above = factors.matrixQR().topRows(kept).triangularView<Eigen::Upper>();
    }
    m_norms = above.leftCols(columns).colwise().norm().cwiseMax(std::numeric_limits<double>::min());
    m_triangle = above.topLeftCorner(columns, columns) * m_norms.cwiseInverse().asDiagonal();
    m_along = above.col(columns).head(columns);
    return true;
}

bool NormalFactors::isSingular() const {
    return !(m_triangle.diagonal().cwiseAbs().minCoeff() > SINGULAR);
}

std::vector<double> NormalFactors::step() const {
    const Eigen::VectorXd step = -(m_triangle.triangularView<Eigen::Upper>().solve(m_along)).cwiseQuotient(m_norms);
    return {step.begin(), step.end()};
}

std::vector<double> NormalFactors::triangle() const {
    const Rows unscaled = m_triangle * m_norms.asDiagonal();
    return {unscaled.data(), unscaled.data() + unscaled.size()};
}

Eigen::Matrix2d NormalFactors::spreadOf(const std::vector<double>& rows) const {
    const Eigen::Map<const Eigen::Matrix<double, 2, Eigen::Dynamic, Eigen::RowMajor>> derivatives(rows.data(), 2,
                                                                                                  m_norms.size());
    const Eigen::MatrixXd scaled = m_norms.cwiseInverse().asDiagonal() * derivatives.transpose();
    const Eigen::MatrixXd along = m_triangle.transpose().triangularView<Eigen::Lower>().solve(scaled);
    return along.transpose() * along;
}

}  // namespace Veltrani::DisplayFitDetail
