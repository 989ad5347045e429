#include "DisplayReport/coverage/AreaLight.h"

#include <algorithm>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

/// Either bound may be the larger one; false for NaN.
bool isBetween(double value, double bound, double other) {
    return value >= std::min(bound, other) && value <= std::max(bound, other);
}

}  // namespace

AreaLight::AreaLight(const PlanarTargetLocatorParams& area, std::shared_ptr<const ScreenGeometry> surface)
    : ParameterLight(std::move(surface)), m_area(area) {}

bool AreaLight::mapToScreen(const Point<double, 2>& picture, Point<double, 2>& screen) const {
    screen = {m_area.screenLeft + (m_area.screenRight - m_area.screenLeft) * picture[0],
              m_area.screenBottom + (m_area.screenTop - m_area.screenBottom) * picture[1]};
    return true;
}

bool AreaLight::covers(const Point<double, 2>& screen) const {
    return isBetween(screen[0], m_area.screenLeft, m_area.screenRight) &&
           isBetween(screen[1], m_area.screenBottom, m_area.screenTop);
}

bool AreaLight::mapToPicture(const Point<double, 2>& screen, Point<double, 2>& picture) const {
    const double width = m_area.screenRight - m_area.screenLeft;
    const double height = m_area.screenTop - m_area.screenBottom;
    if (width == 0.0 || height == 0.0) {
        return false;
    }
    picture = {(screen[0] - m_area.screenLeft) / width, (screen[1] - m_area.screenBottom) / height};
    return true;
}

}  // namespace Veltrani::DisplayReport
