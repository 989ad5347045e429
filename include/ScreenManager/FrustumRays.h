#pragma once

#include "Common/Matrix.h"
#include "ScreenManager/SphereTargetLocator.h"

/// The rays of a channel that is described like a camera, before tables bend them: the tangents of the frustum grow
/// evenly over the picture.
class FrustumRays {
public:
    explicit FrustumRays(const SphereTargetLocatorParams& camera);

    /// World frame, of any length, for places outside of the picture too.
    [[nodiscard]] Point<double, 3> directionOf(const Point<double, 2>& picture) const;
    /// The picture point of a direction; false behind the camera, and for a frustum without width or height.
    bool pictureOf(const Point<double, 3>& direction, Point<double, 2>& picture) const;

private:
    Matrix<double, 3> m_world_from_camera;  ///< from the camera's frame to world axes
    Matrix<double, 3> m_camera_from_world;  ///< back
    Point<double, 2> m_start;               ///< tangents at (u, v) = (0, 0)
    Point<double, 2> m_size;                ///< from there to (1, 1)
};
