#include "DisplayFit/detail/Rejection.h"

#include "DisplayFit/detail/NormalFactors.h"

#include <Eigen/Cholesky>

#include <cmath>
#include <limits>

namespace Veltrani::DisplayFitDetail {

namespace {

/// Sizes in deviations of what the other points lead one to expect, of points that take no part and are larger than
/// `most` as they are: few points leave the values open, above all where they lead beyond themselves.
void expectLeftOut(const WeightedProblem& problem, double most, std::vector<double>& sizes) {
    std::vector<std::size_t> far;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        if (problem.isLeftOut(i) && sizes[i] > most && std::isfinite(sizes[i])) {
            far.push_back(i);
        }
    }
    const std::vector<double> base(problem.unknowns(), 0.0);
    LeastSquares::Sums sums;
    NormalFactors factors;
    if (far.empty() || !problem.sum(base.data(), sums, true) ||
        !(factors.fromNormal(sums) || factors.fromResiduals(problem)) || factors.isSingular()) {
        return;
    }
    Eigen::Vector2d pair;
    std::vector<double> rows(2 * problem.unknowns());
    for (const std::size_t i : far) {
        if (problem.rowsOf(i, pair.data(), rows.data())) {
            const Eigen::Matrix2d spread = Eigen::Matrix2d::Identity() + factors.spreadOf(rows);
            sizes[i] = std::sqrt(pair.dot(spread.llt().solve(pair)));
        }
    }
}

}  // namespace

Rejection::Rejection(double deviations, bool isKnown) : m_square(deviations * deviations), m_isKnown(isKnown) {
    const double probability = std::erfc(deviations / std::sqrt(2.0));
    if (probability > 0) {
        m_square = -2 * std::log(probability);
    }
}

double Rejection::largest(double freedom) const {
    if (isKnown(freedom)) {
        return std::sqrt(m_square);
    }
    return freedom > 0 ? std::sqrt(freedom * std::expm1(m_square / freedom)) : std::numeric_limits<double>::infinity();
}

std::vector<bool> Rejection::leftOut(const WeightedProblem& problem, double deviation, double freedom) const {
    const double most = largest(freedom) * deviation;
    std::vector<double> sizes = problem.sizes();
    if (!isKnown(freedom)) {
        expectLeftOut(problem, most, sizes);
    }
    std::vector<bool> isLeftOut;
    isLeftOut.reserve(sizes.size());
    for (const double size : sizes) {
        isLeftOut.push_back(!std::isfinite(size) || size > most);
    }
    return isLeftOut;
}

}  // namespace Veltrani::DisplayFitDetail
