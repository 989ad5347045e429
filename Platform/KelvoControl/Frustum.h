#pragma once

#include "Common/Matrix.h"
#include "KelvoControl/Viewport.h"

/// A viewport with what the spherical maps read from it: the position of the projector as seen from the eye point, and
/// its rotation. The direction of the picture point (u, v) in the world frame is R * (ox + sx u, 1, oy + sy v).
struct Frustum : Viewport {
    Point<double, 3> origin;  ///< position relative to the eye point, world axes, native units
    Matrix<double, 3> R;      ///< from the projector's frame to world axes
    Matrix<double, 3> Rinv;   ///< from world axes to the projector's frame: the transpose of R

    /// Origin and rotations from the viewport's position and orientation and an eye point in the world frame.
    [[nodiscard]] static Frustum of(const Viewport& viewport, const Point<double, 3>& eyePoint);
};
