#pragma once

#include "Common/Matrix.h"

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
    [[nodiscard]] static std::string nameOf(Depth depth);
    [[nodiscard]] static std::string nameOf(World world);
    [[nodiscard]] static std::string nameOf(Handed handed);
    [[nodiscard]] static std::vector<std::string> depthNames();
    [[nodiscard]] static std::vector<std::string> worldNames();
    [[nodiscard]] static std::vector<std::string> handedNames();

    /// From the axes of the display to those of the engine: a rotation, or a mirror image for a left-handed world.
    [[nodiscard]] Matrix<double, 3> engineFromWorld() const;
};

}  // namespace Veltrani::DisplayExport
