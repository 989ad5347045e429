#include "DisplayExport/ScreenCoordinateWay.h"

#include "KelvoScreen/ScreenGeometry.h"

#include <algorithm>
#include <utility>

namespace Veltrani::DisplayExport {

ScreenCoordinateWay::ScreenCoordinateWay(std::shared_ptr<const ScreenGeometry> surface)
    : m_surface(std::move(surface)) {}

void ScreenCoordinateWay::follow(std::span<const Point<double, 2>> picture, std::span<Arrival> arrivals) const {
    std::transform(picture.begin(), picture.end(), arrivals.begin(),
                   [this](const Point<double, 2>& place) { return arrivalOf(place, Beyond::NOTHING); });
}

Arrival ScreenCoordinateWay::continued(const Point<double, 2>& picture) const {
    return arrivalOf(picture, Beyond::CONTINUATION);
}

Arrival ScreenCoordinateWay::arrivalOf(const Point<double, 2>& picture, Beyond beyond) const {
    Arrival arrival;
    arrival.arrives = mapToScreen(picture, arrival.screen) &&
                      m_surface->mapInto3D(arrival.screen, arrival.point, beyond == Beyond::CONTINUATION);
    return arrival;
}

AreaWay::AreaWay(const PlanarTargetLocatorParams& area, std::shared_ptr<const ScreenGeometry> surface)
    : ScreenCoordinateWay(std::move(surface)), m_area(area) {}

bool AreaWay::mapToScreen(const Point<double, 2>& picture, Point<double, 2>& screen) const {
    screen = {m_area.screenLeft + (m_area.screenRight - m_area.screenLeft) * picture[0],
              m_area.screenBottom + (m_area.screenTop - m_area.screenBottom) * picture[1]};
    return true;
}

MapFileWay::MapFileWay(std::shared_ptr<const CustomPlanarTargetLocator> locator,
                       std::shared_ptr<const ScreenGeometry> surface)
    : ScreenCoordinateWay(std::move(surface)), m_locator(std::move(locator)) {}

bool MapFileWay::mapToScreen(const Point<double, 2>& picture, Point<double, 2>& screen) const {
    const Point<int, 2> pixels = m_locator->getResolution();
    return m_locator->getTransform().mapChannel2DToScreen2D({pixels[0] * picture[0], pixels[1] * picture[1]}, screen);
}

}  // namespace Veltrani::DisplayExport
