#include "DisplayFit/detail/LeastSquares.h"

#include <Eigen/Core>

#include <algorithm>

namespace Veltrani::DisplayFitDetail {

bool LeastSquares::sum(const double* unknowns, Sums& sums, bool needsDerivatives) const {
    using Rows = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    const std::size_t all = residuals();
    const auto columns = static_cast<Eigen::Index>(this->unknowns());
    m_residuals.resize(std::min(all, BLOCK));
    m_jacobian.resize(m_residuals.size() * this->unknowns());
    sums.squares = 0;
    sums.gradient.assign(this->unknowns(), 0.0);
    sums.normal.assign(this->unknowns() * this->unknowns(), 0.0);
    Eigen::Map<Eigen::VectorXd> gradient(sums.gradient.data(), columns);
    Eigen::Map<Rows> normal(sums.normal.data(), columns, columns);
    for (std::size_t first = 0; first < all; first += BLOCK) {
        pulse();
        const std::size_t count = std::min(all - first, BLOCK);
        if (!evaluate(unknowns, first, count, m_residuals.data(), needsDerivatives ? m_jacobian.data() : nullptr)) {
            return false;
        }
        const auto rows = static_cast<Eigen::Index>(count);
        const Eigen::Map<const Eigen::VectorXd> misses(m_residuals.data(), rows);
        sums.squares += misses.squaredNorm();
        if (needsDerivatives) {
            const Eigen::Map<const Rows> jacobian(m_jacobian.data(), rows, columns);
            gradient.noalias() += jacobian.transpose() * misses;
            normal.selfadjointView<Eigen::Lower>().rankUpdate(jacobian.transpose());
        }
    }
    return true;
}

}  // namespace Veltrani::DisplayFitDetail
