#include "ScreenManager/FrustumRays.h"

#include <cmath>

FrustumRays::FrustumRays(const SphereTargetLocatorParams& camera)
    : m_rotation(Veltrani::rotationZXY(camera.rotationZ, camera.rotationX, camera.rotationY)),
      m_inverse(transpose(m_rotation)),
      m_start{std::tan(camera.angleLeft), std::tan(camera.angleBottom)},
      m_size{std::tan(camera.angleRight) - m_start[0], std::tan(camera.angleTop) - m_start[1]} {}

Point<double, 3> FrustumRays::directionOf(const Point<double, 2>& picture) const {
    return m_rotation * Point<double, 3>{m_start[0] + m_size[0] * picture[0], 1.0, m_start[1] + m_size[1] * picture[1]};
}

bool FrustumRays::pictureOf(const Point<double, 3>& direction, Point<double, 2>& picture) const {
    const Point<double, 3> ahead = m_inverse * direction;
    if (!(ahead[1] > 0.0) || m_size[0] == 0.0 || m_size[1] == 0.0) {
        return false;
    }
    picture = {(ahead[0] / ahead[1] - m_start[0]) / m_size[0], (ahead[2] / ahead[1] - m_start[1]) / m_size[1]};
    return true;
}
