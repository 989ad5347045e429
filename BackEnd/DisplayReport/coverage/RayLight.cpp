#include "DisplayReport/coverage/RayLight.h"

#include "KelvoControl/ProjectionModel.h"
#include "KelvoScreen/ScreenGeometry.h"

#include <cmath>
#include <utility>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

/// A part of the way to the point: far above rounding, and a few micrometres on the way across a room.
constexpr double SAME_PLACE = 1e-6;

}  // namespace

bool isInSight(const ScreenGeometry& surface, const Point<double, 3>& from, const Point<double, 3>& onSurface) {
    if (!std::isfinite(norm(onSurface - from))) {
        return false;
    }
    const IntersectionSet met = surface.intersect(from, onSurface);
    return met.empty() || met.first().t >= 1.0 - SAME_PLACE;
}

RayLight::RayLight(const Point<double, 3>& origin, std::shared_ptr<const ScreenGeometry> surface)
    : m_origin(origin), m_surface(std::move(surface)) {}

void RayLight::land(std::span<const Point<double, 2>> picture, std::span<Landing> landings) const {
    // A picture point without a ray stays a ray of length zero, which meets nothing.
    std::vector<Ray> rays(picture.size(), Ray{m_origin, m_origin});
    std::vector<SurfaceHit> hits(picture.size());
    for (std::size_t i = 0; i < picture.size(); ++i) {
        Point<double, 3> direction;
        if (rayOf(picture[i], direction)) {
            rays[i].second = m_origin + direction;
        }
    }
    m_surface->intersectRays(rays, hits);
    for (std::size_t i = 0; i < picture.size(); ++i) {
        landings[i].hits = hits[i].hit;
        if (hits[i].hit) {
            landings[i].on = {hits[i].point, {}, false};
            landings[i].side = hits[i].side;
        }
    }
}

bool RayLight::lights(const SurfacePoint& point) const {
    Point<double, 2> picture;
    return pictureOf(point.place, picture) && isInPicture(picture) && isInSight(*m_surface, m_origin, point.place);
}

bool RayLight::findPicture(const SurfacePoint& point, Point<double, 2>& picture) const {
    return pictureOf(point.place, picture);
}

void RayLight::reach(std::span<const SurfacePoint> points, std::span<Reach> reaches) const {
    std::vector<Ray> rays;
    std::vector<std::size_t> numbers;
    for (std::size_t i = 0; i < points.size(); ++i) {
        Reach& one = reaches[i];
        one = {};
        one.hasPicture = pictureOf(points[i].place, one.picture);
        if (one.hasPicture && isNearPicture(one.picture) && std::isfinite(norm(points[i].place - m_origin))) {
            rays.emplace_back(m_origin, points[i].place);
            numbers.push_back(i);
        }
    }
    std::vector<SurfaceHit> hits(rays.size());
    m_surface->intersectRays(rays, hits);
    for (std::size_t k = 0; k < hits.size(); ++k) {
        reaches[numbers[k]].inSight = !hits[k].hit || hits[k].t >= 1.0 - SAME_PLACE;
        // A ray that passes by the point has no side there.
        reaches[numbers[k]].side = hits[k].hit && hits[k].t <= 1.0 + SAME_PLACE ? hits[k].side : 0;
    }
}

FrustumLight::FrustumLight(const SphereTargetLocatorParams& camera, std::shared_ptr<const ScreenGeometry> surface)
    : RayLight(camera.eyepoint, std::move(surface)), m_rays(camera) {}

bool FrustumLight::rayOf(const Point<double, 2>& picture, Point<double, 3>& direction) const {
    direction = m_rays.directionOf(picture);
    return true;
}

bool FrustumLight::pictureOf(const Point<double, 3>& place, Point<double, 2>& picture) const {
    return m_rays.pictureOf(place - origin(), picture);
}

LensLight::LensLight(std::shared_ptr<const ProjectionModel> model, std::shared_ptr<const ScreenGeometry> surface)
    : RayLight(model ? model->viewport().position : Point<double, 3>(), std::move(surface)),
      m_model(std::move(model)) {}

bool LensLight::rayOf(const Point<double, 2>& picture, Point<double, 3>& direction) const {
    return m_model && m_model->unproject(picture, direction);
}

bool LensLight::pictureOf(const Point<double, 3>& place, Point<double, 2>& picture) const {
    return m_model && m_model->projectNormalised(place, picture);
}

}  // namespace Veltrani::DisplayReport
