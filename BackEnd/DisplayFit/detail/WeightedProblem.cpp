#include "DisplayFit/detail/WeightedProblem.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Veltrani::DisplayFitDetail {

namespace {

/// Size of the residual of a point that is not mapped, in units of the loss: no step gains by losing points.
constexpr double UNMAPPED = 1e4;

/// Below this square, in units of the loss, its series is exact to rounding.
constexpr double SMALL_SQUARE = 1e-6;

/// The factor that turns a pair of square s (in units of the loss) into its loss, and the derivative by s.
struct LossFactor {
    double value = 1;
    double slope = -0.25;
};

LossFactor lossFactor(double s) {
    if (s < SMALL_SQUARE) {
        return {1 - s / 4, -0.25};
    }
    const double loss = std::log1p(s);
    const double factor = std::sqrt(loss / s);
    return {factor, (s / (1 + s) - loss) / (2 * factor * s * s)};
}

}  // namespace

WeightedProblem::WeightedProblem(const ChannelModel& model, bool isWeighted)
    : m_model(model),
      m_isWeighted(isWeighted && model.points().hasDeviations()),
      m_leftOut(model.points().size(), false),
      m_isMapped(std::make_unique<bool[]>(BLOCK / 2)) {
    weigh();
}

void WeightedProblem::weigh() {
    m_factors.clear();
    if (!m_isWeighted) {
        return;
    }
    for (std::size_t i = 0; i < m_model.points().size(); ++i) {
        m_model.points().pulseAt(i);
        Spread spread;
        std::array<double, 3> factor{};
        if (m_model.spreadOf(i, spread)) {
            // The inverse of the Cholesky factor of the spread.
            const double xx = std::sqrt(spread[0]);
            const double yx = spread[1] / xx;
            const double yy = std::sqrt(spread[2] - yx * yx);
            if (xx > 0 && yy > 0) {
                factor = {1 / xx, -yx / (xx * yy), 1 / yy};
            }
        }
        m_factors.push_back(factor);
    }
}

void WeightedProblem::whiten(std::size_t point, double* pair, double* rows) const {
    if (m_factors.empty()) {
        return;
    }
    const auto [xx, yx, yy] = m_factors[point];
    pair[1] = yx * pair[0] + yy * pair[1];
    pair[0] *= xx;
    const std::size_t columns = rows != nullptr ? unknowns() : 0;
    for (std::size_t k = 0; k < columns; ++k) {
        rows[columns + k] = yx * rows[k] + yy * rows[columns + k];
        rows[k] *= xx;
    }
}

void WeightedProblem::applyLoss(double* pair, double* rows) const {
    const double inverse = 1 / (m_loss * m_loss);
    const auto [value, slope] = lossFactor((pair[0] * pair[0] + pair[1] * pair[1]) * inverse);
    const std::size_t columns = rows != nullptr ? unknowns() : 0;
    for (std::size_t k = 0; k < columns; ++k) {
        double& first = rows[k];
        double& second = rows[columns + k];
        const double along = 2 * slope * inverse * (pair[0] * first + pair[1] * second);
        first = value * first + along * pair[0];
        second = value * second + along * pair[1];
    }
    pair[0] *= value;
    pair[1] *= value;
}

bool WeightedProblem::evaluate(const double* unknowns, std::size_t first, std::size_t count, double* residuals,
                               double* jacobian) const noexcept {
    m_model.evaluate(unknowns, first / 2, count / 2, residuals, jacobian, m_isMapped.get());
    const std::size_t columns = m_model.unknowns().size();
    for (std::size_t i = 0; i < count / 2; ++i) {
        const std::size_t point = first / 2 + i;
        double* const pair = residuals + 2 * i;
        double* const rows = jacobian != nullptr ? jacobian + 2 * i * columns : nullptr;
        if (m_leftOut[point]) {
            std::fill(pair, pair + 2, 0.0);
            if (rows != nullptr) {
                std::fill(rows, rows + 2 * columns, 0.0);
            }
        } else if (m_isMapped[i]) {
            whiten(point, pair, rows);
            if (m_loss > 0) {
                applyLoss(pair, rows);
            }
        } else if (m_loss > 0) {
            pair[0] = m_loss * std::sqrt(std::log1p(UNMAPPED * UNMAPPED));
        } else {
            return false;
        }
    }
    return true;
}

std::vector<double> WeightedProblem::sizes() const {
    const std::vector<double> base(unknowns(), 0.0);
    std::vector<double> pairs(BLOCK);
    std::vector<double> sizes;
    sizes.reserve(m_leftOut.size());
    while (sizes.size() < m_leftOut.size()) {
        pulse();
        const std::size_t first = sizes.size();
        const std::size_t count = std::min(m_leftOut.size() - first, BLOCK / 2);
        m_model.evaluate(base.data(), first, count, pairs.data(), nullptr, m_isMapped.get());
        for (std::size_t i = 0; i < count; ++i) {
            whiten(first + i, &pairs[2 * i], nullptr);
            const bool hasWeight = m_factors.empty() || m_factors[first + i][0] > 0;
            sizes.push_back(m_isMapped[i] && hasWeight ? std::hypot(pairs[2 * i], pairs[2 * i + 1])
                                                       : std::numeric_limits<double>::infinity());
        }
    }
    return sizes;
}

bool WeightedProblem::rowsOf(std::size_t point, double* pair, double* rows) const {
    const std::vector<double> base(unknowns(), 0.0);
    m_model.evaluate(base.data(), point, 1, pair, rows, m_isMapped.get());
    whiten(point, pair, rows);
    return m_isMapped[0];
}

}  // namespace Veltrani::DisplayFitDetail
