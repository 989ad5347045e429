#include "DisplayReport/coverage/FrustumLight.h"

#include <utility>

namespace Veltrani::DisplayReport {

FrustumLight::FrustumLight(const SphereTargetLocatorParams& camera, std::shared_ptr<const ScreenGeometry> surface)
    : RayLight(camera.eyepoint, std::move(surface)), m_rays(camera) {}

bool FrustumLight::rayOf(const Point<double, 2>& picture, Point<double, 3>& direction) const {
    direction = m_rays.directionOf(picture);
    return true;
}

bool FrustumLight::pictureOf(const Point<double, 3>& place, Point<double, 2>& picture) const {
    return m_rays.pictureOf(place - origin(), picture);
}

}  // namespace Veltrani::DisplayReport
