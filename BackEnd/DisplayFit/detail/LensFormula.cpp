#include "DisplayFit/detail/LensFormula.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::DisplayFitDetail {

namespace {

using Vector = Point<double, 3>;

/// Below this part of the distance ahead, a ray lies on the axis of a fisheye: the formula's limit is taken.
constexpr double ON_AXIS = 1e-9;

/// Newton's method needs about five steps.
constexpr int MOST_NEWTON_STEPS = 50;

/// How near the way back comes to a place.
constexpr double PLACE_TOLERANCE = 1e-12;

}  // namespace

LensFormula::LensFormula(Kind kind, const std::vector<double>& coefficients)
    : m_kind(kind), m_count(std::min(coefficients.size(), MOST_COEFFICIENTS)) {
    std::copy_n(coefficients.begin(), m_count, m_k.begin());
    if (coefficients.size() > MOST_COEFFICIENTS) {
        const std::size_t prisms = std::min(coefficients.size() - MOST_COEFFICIENTS, m_prism.size());
        std::copy_n(coefficients.begin() + MOST_COEFFICIENTS, prisms, m_prism.begin());
    }
}

bool LensFormula::place(const Vector& ray, Place& place, bool needsDerivatives) const {
    switch (m_kind) {
        case Kind::RECTILINEAR:
            return placeRectilinear(ray, place);
        case Kind::EQUIDISTANT:
            return placeEquidistant(ray, place);
        case Kind::BROWN_CONRADY:
            return placeBrownConrady(ray, place, needsDerivatives);
        case Kind::FISHEYE:
            return placeFisheye(ray, place);
    }
    return false;
}

bool LensFormula::placeRectilinear(const Vector& ray, Place& place) const {
    if (!(ray[1] > 0)) {
        return false;
    }
    const double inverse = 1 / ray[1];
    place.a = ray[0] * inverse;
    place.b = ray[2] * inverse;
    place.aByRay = {inverse, -place.a * inverse, 0};
    place.bByRay = {0, -place.b * inverse, inverse};
    return true;
}

bool LensFormula::placeEquidistant(const Vector& ray, Place& place) const {
    if (!(ray[1] > 0)) {
        return false;
    }
    const auto [x, y, z] = std::array{ray[0], ray[1], ray[2]};
    const double level2 = x * x + y * y;
    const double level = std::sqrt(level2);
    const double all2 = level2 + z * z;
    place.a = std::atan2(x, y);
    place.b = std::atan2(z, level);
    place.aByRay = {y / level2, -x / level2, 0};
    place.bByRay = {-z * x / (level * all2), -z * y / (level * all2), level / all2};
    return true;
}

bool LensFormula::placeBrownConrady(const Vector& ray, Place& place, bool needsDerivatives) const {
    if (!(ray[1] > 0)) {
        return false;
    }
    const double inverse = 1 / ray[1];
    // The formula's plane has y down.
    const double x = ray[0] * inverse;
    const double y = -ray[2] * inverse;
    const double r2 = x * x + y * y;
    const double r4 = r2 * r2;
    const auto [k1, k2, p1, p2, k3, k4, k5, k6] = m_k;
    const auto [s1, s2, s3, s4] = m_prism;
    const double under = 1 / (1 + r2 * (k4 + r2 * (k5 + r2 * k6)));
    const double c = (1 + r2 * (k1 + r2 * (k2 + r2 * k3))) * under;
    place.a = x * c + 2 * p1 * x * y + p2 * (r2 + 2 * x * x) + s1 * r2 + s2 * r4;
    place.b = -(y * c + p1 * (r2 + 2 * y * y) + 2 * p2 * x * y + s3 * r2 + s4 * r4);
    if (!needsDerivatives) {
        return true;
    }

    const double slope = (k1 + r2 * (2 * k2 + r2 * 3 * k3) - c * (k4 + r2 * (2 * k5 + r2 * 3 * k6))) * under;
    const double mixed = 2 * (x * y * slope + p1 * x + p2 * y);
    const double across = 2 * (s1 + 2 * s2 * r2);
    const double along = 2 * (s3 + 2 * s4 * r2);
    const double aByX = c + 2 * x * x * slope + 2 * p1 * y + 6 * p2 * x + x * across;
    const double aByY = mixed + y * across;
    const double bByX = -(mixed + x * along);
    const double bByY = -(c + 2 * y * y * slope + 6 * p1 * y + 2 * p2 * x + y * along);
    place.aByRay = {aByX * inverse, -(aByX * x + aByY * y) * inverse, -aByY * inverse};
    place.bByRay = {bByX * inverse, -(bByX * x + bByY * y) * inverse, -bByY * inverse};

    const double n = r2 * under;
    const double d = -c * n;
    place.aByCoefficient = {x * n, x * n * r2, 2 * x * y, r2 + 2 * x * x, x * n * r4, x * d, x * d * r2, x * d * r4};
    place.bByCoefficient = {-y * n,      -y * n * r2, -(r2 + 2 * y * y), -2 * x * y,
                            -y * n * r4, -y * d,      -y * d * r2,       -y * d * r4};
    return true;
}

bool LensFormula::placeFisheye(const Vector& ray, Place& place) const {
    const double x = ray[0];
    const double y = ray[1];
    const double z = ray[2];
    const double beside = std::hypot(x, z);
    if (!(beside > ON_AXIS * std::abs(y))) {
        place.aByCoefficient = {};
        place.bByCoefficient = {};
        return placeRectilinear(ray, place);
    }
    const double theta = std::atan2(beside, y);
    const double t2 = theta * theta;
    const auto [k1, k2, k3, k4, k5, k6, k7, k8] = m_k;
    const double distorted = theta * (1 + t2 * (k1 + t2 * (k2 + t2 * (k3 + t2 * k4))));
    const double slope = 1 + t2 * (3 * k1 + t2 * (5 * k2 + t2 * (7 * k3 + t2 * 9 * k4)));
    const double g = distorted / beside;
    place.a = g * x;
    place.b = g * z;
    // g depends on the angle and on the distance from the axis.
    const double all2 = beside * beside + y * y;
    const double byBeside = (slope * y / all2 - g) / (beside * beside);
    const Vector gByRay{byBeside * x, -slope / all2, byBeside * z};
    place.aByRay = {gByRay[0] * x + g, gByRay[1] * x, gByRay[2] * x};
    place.bByRay = {gByRay[0] * z, gByRay[1] * z, gByRay[2] * z + g};
    double power = theta / beside;
    for (std::size_t i = 0; i < m_count; ++i) {
        power *= t2;
        place.aByCoefficient[i] = power * x;
        place.bByCoefficient[i] = power * z;
    }
    return true;
}

bool LensFormula::tangentsOf(const Point<double, 2>& wanted, Point<double, 2>& tangents) const {
    Point<double, 2> found = wanted;
    if (m_kind == Kind::EQUIDISTANT) {
        found = {std::tan(wanted[0]), std::tan(wanted[1]) / std::cos(wanted[0])};
    } else if (m_kind == Kind::FISHEYE) {
        const double angle = norm(wanted);
        found = wanted * (angle > 0 && angle < 1.4 ? std::tan(angle) / angle : 1.0);
    }
    for (int step = 0; step < MOST_NEWTON_STEPS; ++step) {
        Place there;
        if (!place({found[0], 1, found[1]}, there)) {
            return false;
        }
        const Point<double, 2> miss{wanted[0] - there.a, wanted[1] - there.b};
        if (norm(miss) <= PLACE_TOLERANCE * (1 + norm(wanted))) {
            tangents = found;
            return true;
        }
        const double determinant = there.aByRay[0] * there.bByRay[2] - there.aByRay[2] * there.bByRay[0];
        found += Point<double, 2>{(there.bByRay[2] * miss[0] - there.aByRay[2] * miss[1]) / determinant,
                                  (there.aByRay[0] * miss[1] - there.bByRay[0] * miss[0]) / determinant};
        if (!(norm(found) < 1e3)) {
            return false;
        }
    }
    return false;
}

LensFormula LensFormula::withCoefficients(std::size_t count) const {
    LensFormula other = *this;
    other.m_count = std::min(count, MOST_COEFFICIENTS);
    std::fill(other.m_k.begin() + static_cast<std::ptrdiff_t>(other.m_count), other.m_k.end(), 0.0);
    return other;
}

}  // namespace Veltrani::DisplayFitDetail
