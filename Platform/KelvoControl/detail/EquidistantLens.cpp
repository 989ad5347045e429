#include "KelvoControl/detail/EquidistantLens.h"

#include <cmath>
#include <numbers>

namespace Veltrani::KelvoControlDetail {

EquidistantLens::EquidistantLens(const Viewport& viewport, const std::wstring& name)
    : LensModel(viewport, name, {}), m_first{std::atan(viewport.ox), std::atan(viewport.oy)} {
    requireExtents(viewport, name);
    const Point<double, 2> last{std::atan(viewport.ox + viewport.sx), std::atan(viewport.oy + viewport.sy)};
    m_span = last - m_first;
}

bool EquidistantLens::rayOf(const Point<double, 2>& normalised, Point<double, 3>& ray) const {
    constexpr double RIGHT_ANGLE = std::numbers::pi / 2;
    const double yaw = m_first[0] + m_span[0] * normalised[0];
    const double pitch = m_first[1] + m_span[1] * normalised[1];
    if (!(std::abs(yaw) < RIGHT_ANGLE && std::abs(pitch) < RIGHT_ANGLE)) {
        return false;
    }
    ray = {std::sin(yaw) * std::cos(pitch), std::cos(yaw) * std::cos(pitch), std::sin(pitch)};
    return true;
}

bool EquidistantLens::pictureOf(const Point<double, 3>& ray, Point<double, 2>& normalised) const {
    if (!(ray[1] > 0)) {
        return false;
    }
    const double yaw = std::atan2(ray[0], ray[1]);
    const double pitch = std::atan2(ray[2], std::hypot(ray[0], ray[1]));
    normalised = {(yaw - m_first[0]) / m_span[0], (pitch - m_first[1]) / m_span[1]};
    return true;
}

}  // namespace Veltrani::KelvoControlDetail
