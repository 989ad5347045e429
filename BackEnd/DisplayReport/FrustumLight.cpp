#include "DisplayReport/FrustumLight.h"

#include <cmath>
#include <utility>

namespace Veltrani::DisplayReport {

FrustumLight::FrustumLight(const SphereTargetLocatorParams& camera, std::shared_ptr<const ScreenGeometry> surface)
    : RayLight(camera.eyepoint, std::move(surface)),
      m_rotation(Veltrani::rotationZXY(camera.rotationZ, camera.rotationX, camera.rotationY)),
      m_inverse(transpose(m_rotation)),
      m_start{std::tan(camera.angleLeft), std::tan(camera.angleBottom)},
      m_size{std::tan(camera.angleRight) - m_start[0], std::tan(camera.angleTop) - m_start[1]} {}

bool FrustumLight::rayOf(const Point<double, 2>& picture, Point<double, 3>& direction) const {
    direction =
        m_rotation * Point<double, 3>{m_start[0] + m_size[0] * picture[0], 1.0, m_start[1] + m_size[1] * picture[1]};
    return true;
}

bool FrustumLight::pictureOf(const Point<double, 3>& place, Point<double, 2>& picture) const {
    const Point<double, 3> ahead = m_inverse * (place - origin());
    if (!(ahead[1] > 0.0) || m_size[0] == 0.0 || m_size[1] == 0.0) {
        return false;
    }
    picture = {(ahead[0] / ahead[1] - m_start[0]) / m_size[0], (ahead[2] / ahead[1] - m_start[1]) / m_size[1]};
    return true;
}

}  // namespace Veltrani::DisplayReport
