#include "KelvoControl/detail/BrownConradyDistortion.h"

#include "KelvoControl/detail/UnivariateFunctions.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::KelvoControlDetail {

namespace {

/// Where the distorted radius (or area) grows less than this per unit, the lens counts as folding: on the way back the
/// rounding of the formula is divided by its growth. Relative to its size, times the factor by which the terms of the
/// formula cancel each other, in whose units it is rounded.
constexpr double LEAST_SLOPE = 1e-4;

/// Where the denominator falls below this part of its terms without their signs, a pole is near: the picture is
/// magnified beyond what any lens does, and rounding with it.
constexpr double LEAST_DENOMINATOR = 1e-3;

/// A relative tolerance; a point at the edge of the fold may be rounded out of it on its way there and back.
constexpr double ROUNDING = 1e-12;

/// How near the way back must come to a point, relative to 1 + its size; places that the formula brings to the same
/// point are much farther apart.
constexpr double RETURN_TOLERANCE = 1e-9;

/// How near the way there must come to the distorted point again, relative to 1 + its size: far above rounding, far
/// below what is left where the search did not arrive.
constexpr double INVERSE_TOLERANCE = 1e-10;

/// Newton's method needs about five steps; with halved ones, near a fold, a few more.
constexpr int MOST_STEPS = 50;
constexpr int MOST_HALVINGS = 20;

/// How much the radial part grows at least in every direction, and the other terms take from that at most, within the
/// regular radius: the derivative in every direction leads forwards there by their difference, so that a move of the
/// point moves its place by no more than the quotient.
constexpr double REGULAR_GROWTH = 0.5;
constexpr double REGULAR_DISTURBANCE = 0.1;

/// The part of the regular radius within which the way back never leaves it: there the other terms move a point by no
/// more than 0.375 x 0.1 of its radius, so that the search begins, and stays, nearer than a fifth of the radius.
constexpr double REGULAR_RETURN = 0.7;

/// The number of places between the axis and a point at which the other terms are tested for turning the picture over.
constexpr int PLACES_ON_THE_WAY = 16;

Polynomial onePlus(const std::array<double, 3>& higher) {
    return {1.0, higher[0], higher[1], higher[2]};
}

Polynomial withoutSigns(Polynomial polynomial) {
    for (double& coefficient : polynomial) {
        coefficient = std::abs(coefficient);
    }
    return polynomial;
}

/// With s = r^2 and c = n / d, the radius r c grows by (n d + 2 s (n' d - n d')) / d^2 per unit of r; without the
/// division.
Polynomial growthOf(const Polynomial& n, const Polynomial& d) {
    const Polynomial twist = sum(product(derivative(n), d), product({-1.0}, product(n, derivative(d))));
    return sum(product(n, d), product({0.0, 2.0}, twist));
}

bool allZero(const Point<double, 2>& a) {
    return a[0] == 0 && a[1] == 0;
}

}  // namespace

BrownConradyDistortion::BrownConradyDistortion(const std::vector<double>& coefficients) {
    std::array<double, 12> all{};
    std::copy_n(coefficients.begin(), std::min(coefficients.size(), all.size()), all.begin());
    const auto [k1, k2, p1, p2, k3, k4, k5, k6, s1, s2, s3, s4] = all;
    m_numerator = {k1, k2, k3};
    m_denominator = {k4, k5, k6};
    m_tangential = {p1, p2};
    m_prism = {s1, s2, s3, s4};
    const auto isZero = [](double value) { return value == 0; };
    m_radialOnly = std::all_of(m_tangential.begin(), m_tangential.end(), isZero) &&
                   std::all_of(m_prism.begin(), m_prism.end(), isZero);
    m_foldRadius = findFold();
    double slope = 0;
    m_distortedFoldRadius = m_foldRadius * radial(m_foldRadius * m_foldRadius, slope);
    m_regularRadius = findRegular();
}

double BrownConradyDistortion::findFold() const {
    const Polynomial n = onePlus(m_numerator);
    const Polynomial d = onePlus(m_denominator);
    const Polynomial growth = growthOf(n, d);
    // c is rounded by the part |n| / n of n, and |d| / d of d, where |.| sums the terms without their signs.
    const Polynomial terms = product({0.5}, sum(product(withoutSigns(n), d), product(n, withoutSigns(d))));
    const Polynomial above = sum(growth, product({-LEAST_SLOPE}, terms));
    const Polynomial abovePole = sum(d, product({-LEAST_DENOMINATOR}, withoutSigns(d)));
    const double nearPole = positiveUpTo(abovePole, FARTHEST * FARTHEST);
    return std::sqrt(positiveUpTo(above, nearPole));
}

double BrownConradyDistortion::findRegular() const {
    const Polynomial n = onePlus(m_numerator);
    const Polynomial d = onePlus(m_denominator);
    const Polynomial along = sum(growthOf(n, d), product({-REGULAR_GROWTH}, product(d, d)));
    const Polynomial across = sum(n, product({-REGULAR_GROWTH}, d));
    const double radial = std::sqrt(positiveUpTo(across, positiveUpTo(along, m_foldRadius * m_foldRadius)));
    // A derivative of the other terms is at most r (8 |p| + 2 |s| + 4 |s| r^2), and the matrix of them twice that.
    const double tangential = std::abs(m_tangential[0]) + std::abs(m_tangential[1]);
    const double low = std::abs(m_prism[0]) + std::abs(m_prism[2]);
    const double high = std::abs(m_prism[1]) + std::abs(m_prism[3]);
    return positiveUpTo({REGULAR_DISTURBANCE, -16 * tangential - 4 * low, 0.0, -8 * high}, radial);
}

double BrownConradyDistortion::radial(double r2, double& slope) const {
    const auto& n = m_numerator;
    const auto& d = m_denominator;
    const double over = 1.0 + r2 * (n[0] + r2 * (n[1] + r2 * n[2]));
    const double under = 1.0 + r2 * (d[0] + r2 * (d[1] + r2 * d[2]));
    const double overSlope = n[0] + r2 * (2 * n[1] + r2 * 3 * n[2]);
    const double underSlope = d[0] + r2 * (2 * d[1] + r2 * 3 * d[2]);
    const double c = over / under;
    slope = (overSlope - c * underSlope) / under;
    return c;
}

Point<double, 2> BrownConradyDistortion::formula(const Point<double, 2>& plain, Jacobian& jacobian) const {
    const double x = plain[0];
    const double y = plain[1];
    const double r2 = x * x + y * y;
    const auto [p1, p2] = m_tangential;
    const auto& s = m_prism;
    double slope = 0;
    const double c = radial(r2, slope);
    const double across = s[0] + 2 * s[1] * r2;
    const double along = s[2] + 2 * s[3] * r2;
    const double mixed = 2 * (x * y * slope + p1 * x + p2 * y);
    jacobian.xx = c + 2 * x * x * slope + 2 * p1 * y + 6 * p2 * x + 2 * x * across;
    jacobian.xy = mixed + 2 * y * across;
    jacobian.yx = mixed + 2 * x * along;
    jacobian.yy = c + 2 * y * y * slope + 6 * p1 * y + 2 * p2 * x + 2 * y * along;
    return {x * c + 2 * p1 * x * y + p2 * (r2 + 2 * x * x) + r2 * (s[0] + r2 * s[1]),
            y * c + p1 * (r2 + 2 * y * y) + 2 * p2 * x * y + r2 * (s[2] + r2 * s[3])};
}

bool BrownConradyDistortion::isRightWayRoundUpTo(const Point<double, 2>& plain) const {
    if (m_radialOnly || norm(plain) <= m_regularRadius) {
        return true;
    }
    for (int place = 1; place <= PLACES_ON_THE_WAY; ++place) {
        Jacobian jacobian;
        static_cast<void>(formula(plain * (static_cast<double>(place) / PLACES_ON_THE_WAY), jacobian));
        if (!(jacobian.determinant() > LEAST_SLOPE)) {
            return false;
        }
    }
    return true;
}

bool BrownConradyDistortion::distort(const Point<double, 2>& plain, Point<double, 2>& distorted) const {
    if (!(norm(plain) < m_foldRadius) || !isRightWayRoundUpTo(plain)) {
        return false;
    }
    Jacobian jacobian;
    const Point<double, 2> there = formula(plain, jacobian);
    // Tangential and prism terms can bring two places to one point: it belongs to the one that the way back finds.
    const bool isRegular = m_radialOnly || norm(plain) <= REGULAR_RETURN * m_regularRadius;
    if (!isRegular && !(norm(inverse(there) - plain) <= RETURN_TOLERANCE * (1 + norm(plain)))) {
        return false;
    }
    distorted = there;
    return true;
}

Point<double, 2> BrownConradyDistortion::undistortRadius(const Point<double, 2>& distorted,
                                                         double distortedRadius) const {
    const auto grown = [this](double r) {
        double slope = 0;
        const double c = radial(r * r, slope);
        return ValueAndSlope{r * c, c + 2 * r * r * slope};
    };
    const double target = std::min(distortedRadius, m_distortedFoldRadius);
    const double guess = std::min(target, m_foldRadius);
    return distorted * (whereIncreasingEquals(grown, target, 0, m_foldRadius, guess) / distortedRadius);
}

Point<double, 2> BrownConradyDistortion::refine(const Point<double, 2>& distorted, Point<double, 2> guess) const {
    Jacobian jacobian;
    Point<double, 2> miss = distorted - formula(guess, jacobian);
    for (int step = 0; step < MOST_STEPS && !allZero(miss); ++step) {
        const double determinant = jacobian.determinant();
        Point<double, 2> move{(jacobian.yy * miss[0] - jacobian.xy * miss[1]) / determinant,
                              (jacobian.xx * miss[1] - jacobian.yx * miss[0]) / determinant};
        bool nearer = false;
        for (int halving = 0; halving < MOST_HALVINGS && !nearer; ++halving, move *= 0.5) {
            const Point<double, 2> moved = guess + move;
            Jacobian there;
            const Point<double, 2> missThere = distorted - formula(moved, there);
            if (norm(missThere) < norm(miss)) {
                guess = moved;
                miss = missThere;
                jacobian = there;
                nearer = true;
            }
        }
        if (!nearer) {
            break;
        }
    }
    return guess;
}

Point<double, 2> BrownConradyDistortion::inverse(const Point<double, 2>& distorted) const {
    const double radius = norm(distorted);
    if (!(radius > 0)) {
        return distorted;
    }
    const Point<double, 2> found = undistortRadius(distorted, radius);
    return m_radialOnly ? found : refine(distorted, found);
}

bool BrownConradyDistortion::undistort(const Point<double, 2>& distorted, Point<double, 2>& plain) const {
    const double radius = norm(distorted);
    if (!std::isfinite(radius)) {
        return false;
    }
    const Point<double, 2> found = inverse(distorted);
    Jacobian jacobian;
    const double miss = norm(formula(found, jacobian) - distorted);
    if (!(miss <= INVERSE_TOLERANCE * (1 + radius)) || !(norm(found) <= m_foldRadius * (1 + ROUNDING)) ||
        !isRightWayRoundUpTo(found)) {
        return false;
    }
    plain = found;
    return true;
}

}  // namespace Veltrani::KelvoControlDetail
