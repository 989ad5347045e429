#pragma once

#include "Common/Matrix.h"
#include "KelvoScreen/MeshScreen.h"

#include <array>
#include <iosfwd>
#include <string>
#include <string_view>

/// A mesh screen read from OBJ text.
class OBJScreen : public MeshScreen {
public:
    /// @param up, forward axes of the text that point up and forward: "X", "-X", "Y", "-Y", "Z" or "-Z"
    /// @param scale native units per unit of the text; its single precision is that of the whole mesh's size, seven
    ///     digits: 0.001 makes 4 m of 4000 mm but for 0.2 micrometres
    OBJScreen(std::wstring up, std::wstring forward, float scale);

    /// Replaces the mesh by the one in an OBJ text (see `ObjReader`), read from the current position to the end of the
    /// stream, in the world frame and native units. The hash is that of the bytes read. A text without faces is no
    /// fault: the mesh is not valid then. Neither is a mesh valid that the scale takes beyond the range of a double.
    ///
    /// Throws `ObjLoadException` for a faulty text, and `VeltraniException` for a stream that cannot be read and for
    /// axes or a scale that make no transform (see `getTransformMatrix`); the mesh is unchanged then. A string stream
    /// is read in place, without a copy of its text.
    void deserialize(std::istream& text);

    /// As `deserialize`, for a text whose bytes are in memory and have been hashed already.
    /// @param hash of the bytes, see `calcUniqueDataHash`; held as it is
    void read(std::string_view bytes, const std::array<unsigned char, 20>& hash);

    void intersectRays(std::span<const Ray> rays, std::span<SurfaceHit> hits) const override;
    [[nodiscard]] std::size_t raysAtOnce() const override;

    /// Returns the transform from a file whose up and forward axes are named into the world frame, with the scale:
    /// column vectors, no translation, right = forward x up, never a mirror image. Throws `VeltraniException` for
    /// unknown or parallel names and for a scale that is not finite or not above zero, which would flatten or mirror
    /// the screen.
    [[nodiscard]] static Matrix<float, 4> getTransformMatrix(const std::wstring& up, const std::wstring& forward,
                                                             float scale);

private:
    std::wstring m_up;
    std::wstring m_forward;
    float m_scale;
};
