#include "DisplayReport/coverage/ParameterLight.h"

#include "DisplayReport/basics/GeometryText.h"
#include "KelvoScreen/ScreenGeometry.h"

#include <algorithm>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

/// A part of the size of the screen: far above rounding, far below a pixel.
constexpr double SAME_PLACE = 1e-6;

/// Either bound may be the larger one; false for NaN.
bool isBetween(double value, double bound, double other) {
    return value >= std::min(bound, other) && value <= std::max(bound, other);
}

}  // namespace

ParameterLight::ParameterLight(std::shared_ptr<const ScreenGeometry> surface)
    : m_surface(std::move(surface)),
      m_mayOverlap(m_surface->triangleMesh() != nullptr),
      m_samePlace(m_mayOverlap ? SAME_PLACE * norm(extentOf(*m_surface).size()) : 0.0) {}

void ParameterLight::land(std::span<const Point<double, 2>> picture, std::span<Landing> landings) const {
    for (std::size_t i = 0; i < picture.size(); ++i) {
        Landing& landing = landings[i];
        Point<double, 2> screen;
        landing.hits = mapToScreen(picture[i], screen) && m_surface->mapInto3D(screen, landing.on.place, false);
        if (landing.hits) {
            landing.on.parameters = screen;
            landing.on.hasParameters = true;
        }
    }
}

bool ParameterLight::lights(const SurfacePoint& point) const {
    return point.hasParameters && covers(point.parameters) && isReached(point);
}

bool ParameterLight::isReached(const SurfacePoint& point) const {
    return !m_mayOverlap || standsAt(point);
}

bool ParameterLight::findPicture(const SurfacePoint& point, Point<double, 2>& picture) const {
    return point.hasParameters && mapToPicture(point.parameters, picture);
}

bool ParameterLight::standsAt(const SurfacePoint& point) const {
    Point<double, 3> place;
    return m_surface->mapInto3D(point.parameters, place, false) && norm(place - point.place) <= m_samePlace;
}

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
