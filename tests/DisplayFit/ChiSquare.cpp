#include "ChiSquare.h"

#include <Eigen/Cholesky>

#include <cmath>

std::pair<double, double> chiSquareBand(double degrees) {
    constexpr double HALF_PERCENT = 2.5758293035489004;
    const auto bound = [degrees](double z) {
        const double part = 2 / (9 * degrees);
        return degrees * std::pow(1 - part + z * std::sqrt(part), 3);
    };
    return {bound(-HALF_PERCENT), bound(HALF_PERCENT)};
}

double normalisedSquare(const std::vector<double>& error, const std::vector<double>& covariance) {
    const auto size = static_cast<Eigen::Index>(error.size());
    const Eigen::Map<const Eigen::MatrixXd> spread(covariance.data(), size, size);
    // Scaled, since lengths, angles and coefficients differ by orders.
    const Eigen::VectorXd scale = spread.diagonal().cwiseSqrt();
    const Eigen::MatrixXd unit = scale.cwiseInverse().asDiagonal() * spread * scale.cwiseInverse().asDiagonal();
    const Eigen::VectorXd scaled = Eigen::Map<const Eigen::VectorXd>(error.data(), size).cwiseQuotient(scale);
    return scaled.dot(unit.ldlt().solve(scaled));
}
