#include "ScreenManager/FrustumRays.h"

#include <cmath>

FrustumRays::FrustumRays(const SphereTargetLocatorParams& camera)
    : m_world_from_camera(Veltrani::rotationZXY(camera.rotationZ, camera.rotationX, camera.rotationY)),
      m_camera_from_world(transpose(m_world_from_camera)),
      m_start{std::tan(camera.angleLeft), std::tan(camera.angleBottom)},
      m_size{std::tan(camera.angleRight) - m_start[0], std::tan(camera.angleTop) - m_start[1]} {}

Point<double, 3> FrustumRays::directionOf(const Point<double, 2>& picture) const {
    return m_world_from_camera *
           Point<double, 3>{m_start[0] + m_size[0] * picture[0], 1.0, m_start[1] + m_size[1] * picture[1]};
}

bool FrustumRays::pictureOf(const Point<double, 3>& direction, Point<double, 2>& picture) const {
    const Point<double, 3> ahead = m_camera_from_world * direction;
    if (!(ahead[1] > 0.0) || m_size[0] == 0.0 || m_size[1] == 0.0) {
        return false;
    }
    picture = {(ahead[0] / ahead[1] - m_start[0]) / m_size[0], (ahead[2] / ahead[1] - m_start[1]) / m_size[1]};
    return true;
}
