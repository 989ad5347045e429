#include "DisplayReport/coverage/MapFileLight.h"

#include <utility>

namespace Veltrani::DisplayReport {

MapFileLight::MapFileLight(const CustomPlanarTargetLocatorParams& channel,
                           std::shared_ptr<const ScreenGeometry> surface)
    : ParameterLight(std::move(surface)),
      m_map(channel.filename, nullptr),
      m_size{channel.resolution[0], channel.resolution[1]} {}

bool MapFileLight::mapToScreen(const Point<double, 2>& picture, Point<double, 2>& screen) const {
    return m_map.mapChannel2DToScreen2D({m_size[0] * picture[0], m_size[1] * picture[1]}, screen);
}

bool MapFileLight::covers(const Point<double, 2>& screen) const {
    Point<double, 2> picture;
    return mapToPicture(screen, picture) && isInPicture(picture);
}

bool MapFileLight::mapToPicture(const Point<double, 2>& screen, Point<double, 2>& picture) const {
    Point<double, 2> pixel;
    if (!(m_size[0] > 0.0 && m_size[1] > 0.0) || !m_map.mapScreen2DToChannel2D(screen, pixel)) {
        return false;
    }
    picture = {pixel[0] / m_size[0], pixel[1] / m_size[1]};
    return true;
}

}  // namespace Veltrani::DisplayReport
