#include "DisplayFit/detail/Determination.h"

#include <Eigen/SVD>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <string>

namespace Veltrani::DisplayFitDetail {

namespace {

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

Determination::Determination(const std::vector<Unknown>& unknowns, const Solution& solution, double deviation) {
    const auto count = static_cast<Eigen::Index>(unknowns.size());
    for (const Unknown& unknown : unknowns) {
        m_worst.solvedNames.push_back(unknown.words);
    }
    if (count == 0 || solution.triangle.size() != unknowns.size() * unknowns.size()) {
        return;
    }
    using Rows = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    const Eigen::Map<const Rows> triangle(solution.triangle.data(), count, count);
    std::vector<double> lengths;
    Eigen::MatrixXd scaled = triangle;
    for (Eigen::Index c = 0; c < count; ++c) {
        lengths.push_back(std::max(scaled.col(c).norm(), std::numeric_limits<double>::min()));
        scaled.col(c) /= lengths.back();
    }
    const Eigen::JacobiSVD<Eigen::MatrixXd> svd(scaled, Eigen::ComputeFullV);
    const double smallest = svd.singularValues()(count - 1);
    m_worst.scaledCondition = svd.singularValues()(0) / smallest;
    std::vector<double> share;
    for (Eigen::Index i = 0; i < count; ++i) {
        share.push_back(svd.matrixV()(i, count - 1));
    }
    nameWorst(unknowns, share, lengths, smallest, deviation);
    if (isSingular()) {
        return;
    }
    const Eigen::VectorXd inverse = svd.singularValues().cwiseInverse() * deviation;
    const Eigen::MatrixXd half = svd.matrixV() * inverse.asDiagonal();
    const Rows covariance = half * half.transpose();
    for (Eigen::Index r = 0; r < count; ++r) {
        for (Eigen::Index c = 0; c < count; ++c) {
            m_covariance.push_back(covariance(r, c) / lengths[static_cast<std::size_t>(r)] /
                                   lengths[static_cast<std::size_t>(c)]);
        }
    }
}

void Determination::nameWorst(const std::vector<Unknown>& unknowns, const std::vector<double>& share,
                              const std::vector<double>& lengths, double smallest, double deviation) {
    std::vector<std::size_t> order(unknowns.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return std::abs(share[a]) > std::abs(share[b]); });
    std::vector<const Unknown*> named;
    for (const std::size_t i : order) {
        if (named.size() < MOST_NAMED && std::abs(share[i]) > BELONGS * std::abs(share[order.front()])) {
            named.push_back(&unknowns[i]);
        }
    }
    const std::size_t first = order.front();
    m_worst.weights = share;
    m_worst.text = listed(named);
    m_worst.remedy = remedyOf(named);
    m_worst.deviatingName = unknowns[first].words;
    m_worst.quantity = unknowns[first].quantity;
    m_worst.deviation = deviation * std::abs(share[first]) / (lengths[first] * smallest);
}

}  // namespace Veltrani::DisplayFitDetail
