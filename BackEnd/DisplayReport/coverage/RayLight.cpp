#include "DisplayReport/coverage/RayLight.h"

#include "DisplayReport/coverage/LineOfSight.h"
#include "KelvoScreen/ScreenGeometry.h"

#include <utility>
#include <vector>

namespace Veltrani::DisplayReport {

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

}  // namespace Veltrani::DisplayReport
