#include "DisplayReport/coverage/ParameterLight.h"

#include "DisplayReport/basics/GeometryText.h"
#include "KelvoScreen/ScreenGeometry.h"

#include <utility>

namespace Veltrani::DisplayReport {

namespace {

/// Of the size of the screen: far above rounding, far below a pixel.
constexpr double SAME_PLACE = 1e-6;

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
    return point.hasParameters && covers(point.parameters) && (!m_mayOverlap || standsAt(point));
}

bool ParameterLight::findPicture(const SurfacePoint& point, Point<double, 2>& picture) const {
    return point.hasParameters && mapToPicture(point.parameters, picture);
}

bool ParameterLight::standsAt(const SurfacePoint& point) const {
    Point<double, 3> place;
    return m_surface->mapInto3D(point.parameters, place, false) && norm(place - point.place) <= m_samePlace;
}

}  // namespace Veltrani::DisplayReport
