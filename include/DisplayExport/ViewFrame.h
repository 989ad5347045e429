#pragma once

#include "Common/Matrix.h"
#include "Common/Point.h"

namespace Veltrani::DisplayExport {

/// How a viewer stands: an eye with three axes of length one, each at right angles to the others; world frame, native
/// units. It looks along `forward`; `right` is forward x up.
struct ViewFrame {
    /// Radians: a viewer who looks up or down more steeply than this less than a quarter turn has no world z above.
    static constexpr double STEEP = 1e-3;

    Point<double, 3> eye;
    Point<double, 3> right{1.0, 0.0, 0.0};
    Point<double, 3> forward{0.0, 1.0, 0.0};
    Point<double, 3> up{0.0, 0.0, 1.0};

    /// Up is the world's +z; where `forward` points along it or against it, within `STEEP`, +y.
    ///
    /// Throws `VeltraniException` for a direction without length and for numbers that are not finite.
    /// @param forward of any length
    /// @param roll radians; a positive one turns right down, as the angle y of an orientation does
    [[nodiscard]] static ViewFrame looking(const Point<double, 3>& eye, const Point<double, 3>& forward,
                                           double roll = 0);

    /// The components of a direction of the world along right, forward and up.
    [[nodiscard]] Point<double, 3> inFrame(const Point<double, 3>& direction) const {
        return {dot(direction, right), dot(direction, forward), dot(direction, up)};
    }
    /// The way back.
    [[nodiscard]] Point<double, 3> inWorld(const Point<double, 3>& components) const {
        return components[0] * right + components[1] * forward + components[2] * up;
    }

    /// The angles (z, x, y) in radians, as an `Orientation` of a display has them: `Veltrani::rotationZXY` of them has
    /// right, forward and up as its columns.
    [[nodiscard]] Point<double, 3> angles() const;
};

}  // namespace Veltrani::DisplayExport
