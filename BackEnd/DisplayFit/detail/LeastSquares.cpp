#include "DisplayFit/detail/LeastSquares.h"

#include <Eigen/Core>

namespace Veltrani::DisplayFitDetail {

bool LeastSquares::sum(const double* unknowns, Sums& sums, bool needsDerivatives) const {
    const auto rows = static_cast<Eigen::Index>(residuals());
    const auto columns = static_cast<Eigen::Index>(this->unknowns());
    m_residuals.resize(residuals());
    m_jacobian.resize(residuals() * this->unknowns());
    sums.gradient.resize(this->unknowns());
    sums.normal.resize(this->unknowns() * this->unknowns());
    if (!evaluate(unknowns, m_residuals.data(), needsDerivatives ? m_jacobian.data() : nullptr)) {
        return false;
    }
    using Rows = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    const Eigen::Map<const Eigen::VectorXd> misses(m_residuals.data(), rows);
    sums.squares = misses.squaredNorm();
    if (needsDerivatives) {
        const Eigen::Map<const Rows> jacobian(m_jacobian.data(), rows, columns);
        Eigen::Map<Eigen::VectorXd>(sums.gradient.data(), columns).noalias() = jacobian.transpose() * misses;
        Eigen::Map<Rows> normal(sums.normal.data(), columns, columns);
        normal.setZero();
        normal.selfadjointView<Eigen::Lower>().rankUpdate(jacobian.transpose());
    }
    return true;
}

}  // namespace Veltrani::DisplayFitDetail
