#include "DisplayFit/detail/Determination.h"

#include <Eigen/SVD>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <string>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::WorstCombination;
using Role = Unknown::Role;

/// A value belongs to the worst combination when it has more than this part of what the first one has.
constexpr double BELONGS = 0.3;

/// No more values than this are named.
constexpr std::size_t MOST_NAMED = 4;

bool has(const std::vector<const Unknown*>& named, std::initializer_list<Role> roles) {
    return std::any_of(named.begin(), named.end(), [&](const Unknown* unknown) {
        return std::find(roles.begin(), roles.end(), unknown->role) != roles.end();
    });
}

std::string remedyOf(const std::vector<const Unknown*>& named) {
    if (has(named, {Role::ALONG}) && has(named, {Role::WIDTH, Role::HEIGHT})) {
        return "add points at another depth";
    }
    if (has(named, {Role::ACROSS, Role::UPWARDS, Role::ALONG})) {
        return "add points at another depth and towards the edges of the picture";
    }
    if (has(named, {Role::LENS})) {
        return "add points towards the edges and corners of the picture, or hold the coefficients of the lens";
    }
    if (has(named, {Role::AREA})) {
        return "add points at other places of the picture";
    }
    return "add points towards the edges of the picture, or hold one of these values";
}

std::string listed(const std::vector<const Unknown*>& named) {
    std::string text;
    for (std::size_t i = 0; i < named.size(); ++i) {
        text += i == 0 ? "" : i + 1 == named.size() ? " and " : ", ";
        text += named[i]->words;
    }
    return text;
}

}  // namespace

Determination::Determination(const std::vector<Unknown>& unknowns, const std::vector<double>& triangle,
                             double deviation)
    : m_unknowns(unknowns), m_deviation(deviation) {
    const auto count = static_cast<Eigen::Index>(unknowns.size());
    for (const Unknown& unknown : unknowns) {
        m_worst.solvedNames.push_back(unknown.words);
    }
    if (count == 0 || triangle.size() != unknowns.size() * unknowns.size()) {
        return;
    }
    using Rows = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    Eigen::MatrixXd scaled = Eigen::Map<const Rows>(triangle.data(), count, count);
    for (Eigen::Index c = 0; c < count; ++c) {
        m_lengths.push_back(std::max(scaled.col(c).norm(), std::numeric_limits<double>::min()));
        scaled.col(c) /= m_lengths.back();
    }
    const Eigen::JacobiSVD<Eigen::MatrixXd> svd(scaled, Eigen::ComputeFullV);
    m_singular.assign(svd.singularValues().begin(), svd.singularValues().end());
    for (Eigen::Index axis = 0; axis < count; ++axis) {
        const Eigen::VectorXd column = svd.matrixV().col(axis);
        m_axes.emplace_back(column.begin(), column.end());
    }
    m_worst.scaledCondition = m_singular.front() / m_singular.back();
    m_worst = combination(unknowns.size() - 1);
    if (isSingular()) {
        return;
    }
    const Eigen::VectorXd inverse = svd.singularValues().cwiseInverse() * deviation;
    const Eigen::MatrixXd half = svd.matrixV() * inverse.asDiagonal();
    const Rows covariance = half * half.transpose();
    for (Eigen::Index r = 0; r < count; ++r) {
        for (Eigen::Index c = 0; c < count; ++c) {
            m_covariance.push_back(covariance(r, c) / m_lengths[static_cast<std::size_t>(r)] /
                                   m_lengths[static_cast<std::size_t>(c)]);
        }
    }
}

WorstCombination Determination::worstFor(const std::vector<double>& slopes) const {
    std::size_t worst = 0;
    double most = -1;
    for (std::size_t axis = 0; axis < m_axes.size(); ++axis) {
        double along = 0;
        for (std::size_t i = 0; i < slopes.size(); ++i) {
            along += slopes[i] * m_axes[axis][i] / m_lengths[i];
        }
        if (const double part = std::abs(along) / m_singular[axis]; part > most) {
            most = part;
            worst = axis;
        }
    }
    return m_axes.empty() ? m_worst : combination(worst);
}

WorstCombination Determination::combination(std::size_t axis) const {
    const std::vector<double>& share = m_axes[axis];
    std::vector<std::size_t> order(m_unknowns.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return std::abs(share[a]) > std::abs(share[b]); });
    std::vector<const Unknown*> named;
    for (const std::size_t i : order) {
        if (named.size() < MOST_NAMED && std::abs(share[i]) > BELONGS * std::abs(share[order.front()])) {
            named.push_back(&m_unknowns[i]);
        }
    }
    const std::size_t first = order.front();
    WorstCombination found = m_worst;
    found.weights = share;
    found.text = listed(named);
    found.remedy = remedyOf(named);
    found.deviatingName = m_unknowns[first].words;
    found.quantity = m_unknowns[first].quantity;
    found.deviation = m_deviation * std::abs(share[first]) / (m_lengths[first] * m_singular[axis]);
    return found;
}

}  // namespace Veltrani::DisplayFitDetail
