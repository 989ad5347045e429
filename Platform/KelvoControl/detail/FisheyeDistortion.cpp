#include "KelvoControl/detail/FisheyeDistortion.h"

#include "KelvoControl/detail/UnivariateFunctions.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Veltrani::KelvoControlDetail {

namespace {

/// Where the distorted angle grows less than this per radian, the lens counts as folding: on the way back the rounding
/// of the formula is divided by its growth. Relative to the sum of the terms without their signs, in whose units the
/// formula is rounded: strong terms may cancel each other.
constexpr double LEAST_SLOPE = 1e-4;

/// A relative tolerance; a ray at the edge of the fold may be rounded out of it on its way there.
constexpr double ROUNDING = 1e-12;

}  // namespace

FisheyeDistortion::FisheyeDistortion(const std::array<double, 4>& coefficients) : m_k(coefficients) {
    Polynomial growth{1.0 - LEAST_SLOPE};
    for (std::size_t i = 0; i < m_k.size(); ++i) {
        growth.push_back(static_cast<double>(2 * i + 3) * m_k[i] - LEAST_SLOPE * std::abs(m_k[i]));
    }
    m_foldAngle = std::min(std::sqrt(positiveUpTo(growth, std::numbers::pi * std::numbers::pi)), std::numbers::pi);
    m_distortedFoldAngle = distortedAngle(m_foldAngle);
}

double FisheyeDistortion::distortedAngle(double theta) const {
    const double t = theta * theta;
    return theta * (1.0 + t * (m_k[0] + t * (m_k[1] + t * (m_k[2] + t * m_k[3]))));
}

double FisheyeDistortion::slope(double theta) const {
    const double t = theta * theta;
    return 1.0 + t * (3 * m_k[0] + t * (5 * m_k[1] + t * (7 * m_k[2] + t * 9 * m_k[3])));
}

bool FisheyeDistortion::distort(const Point<double, 3>& ray, Point<double, 2>& distorted) const {
    const double aside = std::hypot(ray[0], ray[1]);
    if (aside == 0) {
        if (!(ray[2] > 0)) {
            return false;
        }
        distorted = {};
        return true;
    }
    const double theta = std::atan2(aside, ray[2]);
    if (!(theta < m_foldAngle)) {
        return false;
    }
    // The division comes first: the product of tiny components with an angle could vanish.
    distorted = Point<double, 2>{ray[0] / aside, ray[1] / aside} * distortedAngle(theta);
    return true;
}

bool FisheyeDistortion::undistort(const Point<double, 2>& distorted, Point<double, 3>& ray) const {
    const double radius = std::hypot(distorted[0], distorted[1]);
    if (!(radius <= m_distortedFoldAngle * (1 + ROUNDING))) {
        return false;
    }
    if (radius == 0) {
        ray = {0.0, 0.0, 1.0};
        return true;
    }
    const auto grown = [this](double theta) { return ValueAndSlope{distortedAngle(theta), slope(theta)}; };
    const double theta = whereIncreasingEquals(grown, radius, 0, m_foldAngle, std::min(radius, m_foldAngle));
    const double aside = std::sin(theta);
    ray = {aside * (distorted[0] / radius), aside * (distorted[1] / radius), std::cos(theta)};
    return true;
}

}  // namespace Veltrani::KelvoControlDetail
