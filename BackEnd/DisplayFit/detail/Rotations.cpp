#include "DisplayFit/detail/Rotations.h"

#include <cmath>
#include <numbers>

namespace Veltrani::DisplayFitDetail {

namespace {

using Vector = Point<double, 3>;

/// Below this angle the series of the turns are exact to rounding.
constexpr double SMALL_TURN = 1e-4;

/// Sine of the angle to the vertical below which Z and Y turn about one axis.
constexpr double VERTICAL = 1e-8;

/// I + a [v]x + b [v]x^2.
Matrix<double, 3> series(const Vector& v, double a, double b) {
    Matrix<double, 3> m;
    const double square = dot(v, v);
    const Vector diagonal{v[0] * v[0] - square, v[1] * v[1] - square, v[2] * v[2] - square};
    for (std::size_t i = 0; i < 3; ++i) {
        m(i, i) = 1 + b * diagonal[i];
    }
    m(0, 1) = b * v[0] * v[1] - a * v[2];
    m(1, 0) = b * v[0] * v[1] + a * v[2];
    m(0, 2) = b * v[0] * v[2] + a * v[1];
    m(2, 0) = b * v[0] * v[2] - a * v[1];
    m(1, 2) = b * v[1] * v[2] - a * v[0];
    m(2, 1) = b * v[1] * v[2] + a * v[0];
    return m;
}

double nearest(double angle, double to) {
    constexpr double TURN = 2 * std::numbers::pi;
    return angle + TURN * std::round((to - angle) / TURN);
}

Vector nearest(const Vector& angles, const Vector& to) {
    return {nearest(angles[0], to[0]), nearest(angles[1], to[1]), nearest(angles[2], to[2])};
}

}  // namespace

Matrix<double, 3> rotationOf(const Vector& turn) {
    const double angle = norm(turn);
    if (angle < SMALL_TURN) {
        const double square = angle * angle;
        return series(turn, 1 - square / 6, 0.5 - square / 24);
    }
    const double half = std::sin(angle / 2) / angle;
    return series(turn, std::sin(angle) / angle, 2 * half * half);
}

Matrix<double, 3> turnBefore(const Vector& turn) {
    const double angle = norm(turn);
    if (angle < SMALL_TURN) {
        const double square = angle * angle;
        return series(turn, 0.5 - square / 24, 1.0 / 6 - square / 120);
    }
    const double half = std::sin(angle / 2) / angle;
    return series(turn, 2 * half * half, (angle - std::sin(angle)) / (angle * angle * angle));
}

Vector anglesOf(const Matrix<double, 3>& rotation, const Vector& near) {
    constexpr double PI = std::numbers::pi;
    const double level = std::hypot(rotation(0, 1), rotation(1, 1));
    const double x = std::atan2(rotation(2, 1), level);
    double z = std::atan2(rotation(0, 1), rotation(1, 1));
    if (level < VERTICAL) {
        const double turned = std::atan2(rotation(1, 0), rotation(0, 0));
        z = (x > 0 ? near[2] : -near[2]) - turned;
    }
    // Y from what is left, so that the three fit together where Z hardly matters.
    const Matrix<double, 3> rest = Veltrani::rotationZXY(-z, 0, 0) * rotation;
    const double y = std::atan2(rest(0, 2), rest(0, 0));
    const Vector first = nearest(Vector{z, x, y}, near);
    const Vector second = nearest(Vector{z + PI, PI - x, y + PI}, near);
    return norm(first - near) <= norm(second - near) ? first : second;
}

double rollOf(const Matrix<double, 3>& turn) {
    return std::atan2(turn(0, 2), turn(2, 2));
}

}  // namespace Veltrani::DisplayFitDetail
