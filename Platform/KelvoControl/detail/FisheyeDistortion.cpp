#include "KelvoControl/detail/FisheyeDistortion.h"

#include "KelvoControl/detail/IncreasingFunction.h"
#include "KelvoControl/detail/Polynomial.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace KelvoControlDetail {

namespace {

/// Where the distorted angle grows less than this per radian, the lens counts as folding: on the way back a rounding
/// error of 2e-16 would grow beyond 1e-9.
constexpr double LEAST_SLOPE = 1e-6;

}  // namespace

FisheyeDistortion::FisheyeDistortion(const std::array<double, 4>& coefficients) : m_k(coefficients) {
    const Polynomial growth{1.0 - LEAST_SLOPE, 3 * m_k[0], 5 * m_k[1], 7 * m_k[2], 9 * m_k[3]};
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
    // Divided first: the product of tiny components with an angle could vanish.
    distorted = Point<double, 2>{ray[0] / aside, ray[1] / aside} * distortedAngle(theta);
    return true;
}

bool FisheyeDistortion::undistort(const Point<double, 2>& distorted, Point<double, 3>& ray) const {
    const double radius = std::hypot(distorted[0], distorted[1]);
    if (!(radius < m_distortedFoldAngle)) {
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

}  // namespace KelvoControlDetail
