#include "DisplayFit/detail/ScreenPlane.h"

#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"

#include <cmath>
#include <memory>

namespace Veltrani::DisplayFitDetail {

namespace {

using Vector = Point<double, 3>;

/// Sine of the angle to the screen below which a place on it says nothing.
constexpr double FROM_THE_EDGE = 1e-3;

Vector unit(const Vector& direction) {
    const double length = norm(direction);
    return length > 0 ? direction * (1 / length) : Vector{0, 1, 0};
}

}  // namespace

ScreenPlane::ScreenPlane(const Vector& origin, const Vector& normal) : m_origin(origin) {
    const bool isUpright = std::abs(normal[2]) > 0.9;
    m_first = unit(cross(isUpright ? Vector{0, 1, 0} : Vector{0, 0, 1}, normal));
    m_second = cross(normal, m_first);
}

ScreenPlane ScreenPlane::across(const Vector& point, const Vector& direction) {
    return {point, unit(direction)};
}

ScreenPlane ScreenPlane::at(const Vector& point, const Vector& viewer) {
    const Vector view = unit(point - viewer);
    if (const auto screen = ScreenManager::getInstance()->getScreenGeometry()) {
        const Vector normal = screen->getScreenNormal(point);
        if (std::abs(norm(normal) - 1) < 1e-6 && std::abs(dot(normal, view)) > FROM_THE_EDGE) {
            return {point, normal};
        }
    }
    return {point, view};
}

Point<double, 2> ScreenPlane::solve(const std::array<Vector, 2>& gradients, const Point<double, 2>& wanted) const {
    const double a = dot(gradients[0], m_first);
    const double b = dot(gradients[0], m_second);
    const double c = dot(gradients[1], m_first);
    const double d = dot(gradients[1], m_second);
    const double determinant = a * d - b * c;
    return {(d * wanted[0] - b * wanted[1]) / determinant, (a * wanted[1] - c * wanted[0]) / determinant};
}

bool ScreenPlane::meet(const Vector& origin, const Vector& direction, Point<double, 2>& along) const {
    const Vector normal = cross(m_first, m_second);
    const double towards = dot(direction, normal);
    if (!(std::abs(towards) > FROM_THE_EDGE * norm(direction))) {
        return false;
    }
    const Vector there = origin + direction * (dot(m_origin - origin, normal) / towards) - m_origin;
    along = {dot(there, m_first), dot(there, m_second)};
    return true;
}

}  // namespace Veltrani::DisplayFitDetail
