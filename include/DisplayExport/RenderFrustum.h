#pragma once

#include "Common/Matrix.h"
#include "DisplayExport/RenderConvention.h"
#include "DisplayExport/ViewFrame.h"

namespace Veltrani::DisplayExport {

/// What an engine renders for one channel: an off-axis frustum from an eye. The rectangle that it spans is the input of
/// the channel's warp: (u, v) = (0, 0) is its bottom left corner, (1, 1) its top right one, whatever the convention.
struct RenderFrustum {
    ViewFrame view;
    double left = -1;  ///< tangents against `view.forward`, those on the left and below it negative
    double right = 1;  ///< above `left`
    double bottom = -1;
    double top = 1;  ///< above `bottom`

    /// The place of a direction of the world in the rectangle, which may lie outside of it; false, and `place` as it
    /// was, for a direction that does not point forward.
    [[nodiscard]] bool placeOf(const Point<double, 3>& direction, Point<double, 2>& place) const;
    /// The direction of a place; world frame, one long along `view.forward`.
    [[nodiscard]] Point<double, 3> directionOf(const Point<double, 2>& place) const;

    /// From a point of the engine's world (x, y, z, 1) to the camera's frame; row-major, acts on columns.
    [[nodiscard]] Matrix<double, 4> viewMatrix(const RenderConvention& convention) const;
    /// From the camera's frame to clip space, whose x and y grow to the right and upwards from -1 to 1 after the
    /// division by w: u = (x / w + 1) / 2, v = (y / w + 1) / 2. Row-major, acts on columns.
    ///
    /// Throws `VeltraniException` for planes that are not 0 < near < far.
    [[nodiscard]] Matrix<double, 4> projectionMatrix(const RenderConvention& convention) const;
};

}  // namespace Veltrani::DisplayExport
