#include "KelvoScreen/detail/SurfaceLimits.h"

#include <cmath>
#include <numbers>

namespace Veltrani::KelvoScreenDetail {

namespace {

Point<double, 2> directionOf(double azimuth) {
    return {std::sin(azimuth), std::cos(azimuth)};
}

}  // namespace

AzimuthSector::AzimuthSector(double min, double max)
    : m_min(directionOf(min)),
      m_middle(directionOf(min + (max - min) / 2)),
      m_max(directionOf(max)),
      m_isWhole(max - min >= 2 * std::numbers::pi - ANGLE_TOLERANCE),
      m_isWide(max - min > std::numbers::pi) {}

bool AzimuthSector::isRange(double min, double max) {
    return std::isfinite(min) && std::isfinite(max) && max > min && max - min <= 2 * std::numbers::pi + ANGLE_TOLERANCE;
}

LimitPlane AzimuthSector::limitPlane(const Point<double, 3>& place, const Point<double, 3>& direction) const {
    const Point<double, 2>& limit = nearestLimit(place[0], place[1]);
    return {place[0] * limit[1] - place[1] * limit[0], direction[0] * limit[1] - direction[1] * limit[0]};
}

const Point<double, 2>& AzimuthSector::nearestLimit(double x, double y) const {
    return x * m_min[0] + y * m_min[1] >= x * m_max[0] + y * m_max[1] ? m_min : m_max;
}

}  // namespace Veltrani::KelvoScreenDetail
