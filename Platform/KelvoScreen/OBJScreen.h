#pragma once

#include "Common/Matrix.h"
#include "KelvoScreen/MeshScreen.h"

#include <iosfwd>
#include <string>

/// A mesh screen read from OBJ text.
class OBJScreen : public MeshScreen {
public:
    /// @param up, forward axes of the text that point up and forward: "X", "-X", "Y", "-Y", "Z" or "-Z"
    /// @param scale native units per unit of the text
    OBJScreen(std::wstring up, std::wstring forward, float scale);

    /// Replaces the mesh by the one in an OBJ text, read to the end of the stream, in the world frame and native units.
    /// Throws `ObjLoadException` for a faulty text and `VeltraniException` for the axes (see `getTransformMatrix`); the
    /// mesh is unchanged then. A text without faces is no fault: the mesh is not valid.
    void deserialize(std::istream& text);

    /// The transform from a file whose up and forward axes are named into the world frame, with the scale: column
    /// vectors, no translation, right = forward x up, never a mirror image. Throws `VeltraniException` for unknown or
    /// parallel names.
    [[nodiscard]] static Matrix<float, 4> getTransformMatrix(const std::wstring& up, const std::wstring& forward,
                                                             float scale);

private:
    std::wstring m_up;
    std::wstring m_forward;
    float m_scale;
};
