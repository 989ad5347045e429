#pragma once

#include "Common/Matrix.h"
#include "DisplayExport/ViewFrame.h"

#include <optional>
#include <string>
#include <vector>

namespace Veltrani::DisplayExport {

/// What a render engine expects of its matrices.
struct RenderConvention {
    /// Where the depths between the near plane and the far plane lie after the division by w.
    enum class Depth {
        OPENGL,      ///< -1 at the near plane, 1 at the far one
        DIRECT3D,    ///< 0 at the near plane, 1 at the far one
        REVERSED_Z,  ///< 1 at the near plane, 0 at the far one
    };
    /// Which axes the world of the engine has. What is x right, y forward and z up here is there:
    enum class World {
        Z_UP,  ///< right-handed: x right, y forward, z up; left-handed: x forward, y right, z up
        Y_UP,  ///< right-handed: x right, y up, z backward; left-handed: x right, y up, z forward
    };
    /// Of the world and of the camera, which has x right and y up: it looks along -z in a right-handed one, along +z in
    /// a left-handed one.
    enum class Handed { RIGHT, LEFT };

    Depth depth = Depth::OPENGL;
    World world = World::Z_UP;
    Handed handed = Handed::RIGHT;
    double nearPlane = 0.1;    ///< native units along `forward`, above zero
    double farPlane = 1000.0;  ///< above `nearPlane`

    /// "opengl", "direct3d", "reversed-z"; "z-up", "y-up"; "right", "left". None for anything else.
    [[nodiscard]] static std::optional<Depth> depthOf(const std::string& name);
    [[nodiscard]] static std::optional<World> worldOf(const std::string& name);
    [[nodiscard]] static std::optional<Handed> handedOf(const std::string& name);
    [[nodiscard]] static std::vector<std::string> depthNames();
    [[nodiscard]] static std::vector<std::string> worldNames();
    [[nodiscard]] static std::vector<std::string> handedNames();

    /// From the axes of the display to those of the engine: a rotation, or a mirror image for a left-handed world.
    [[nodiscard]] Matrix<double, 3> engineFromWorld() const;
};

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
