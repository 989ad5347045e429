#include "KelvoScreen/OBJScreen.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/ObjReader.h"
#include "KelvoScreen/detail/Sha1.h"

#include <array>
#include <cmath>
#include <istream>
#include <optional>
#include <sstream>
#include <string_view>
#include <typeinfo>
#include <utility>

namespace {

using Axis = Point<float, 3>;

/// Bytes read from a stream at a time.
constexpr std::size_t BLOCK_BYTES = 65536;

std::optional<Axis> axisNamed(const std::wstring& name) {
    static const std::array<std::pair<std::wstring_view, Axis>, 6> AXES = {{{L"X", {1.0F, 0.0F, 0.0F}},
                                                                            {L"-X", {-1.0F, 0.0F, 0.0F}},
                                                                            {L"Y", {0.0F, 1.0F, 0.0F}},
                                                                            {L"-Y", {0.0F, -1.0F, 0.0F}},
                                                                            {L"Z", {0.0F, 0.0F, 1.0F}},
                                                                            {L"-Z", {0.0F, 0.0F, -1.0F}}}};
    for (const auto& [axisName, axis] : AXES) {
        if (axisName == name) {
            return axis;
        }
    }
    return std::nullopt;
}

void requireScale(float scale) {
    if (!std::isfinite(scale) || scale <= 0) {
        std::wostringstream message;
        message << L"The scale of the screen file is " << scale
                << L" in single precision: give a finite number above zero";
        throw VeltraniException(__FILE__, __LINE__, message.str());
    }
}

Matrix<double, 3> widened(const Matrix<float, 4>& transform) {
    Matrix<double, 3> result;
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            result(r, c) = transform(r, c);
        }
    }
    return result;
}

/// Returns the text of a plain string stream from its position on, where it lies; the stream is left at its end.
/// Returns nothing for any other stream, whose characters may be generated while they are read.
std::optional<std::string_view> takeInPlace(std::istream& stream) {
    const std::streambuf* const buffer = stream.rdbuf();
    if (typeid(*buffer) != typeid(std::stringbuf)) {
        return std::nullopt;
    }
    auto& text = static_cast<std::stringbuf&>(*stream.rdbuf());
    const std::streamoff position = text.pubseekoff(0, std::ios_base::cur, std::ios_base::in);
    if (position < 0) {
        return std::nullopt;
    }
    text.pubseekoff(0, std::ios_base::end, std::ios_base::in);
    return text.view().substr(static_cast<std::size_t>(position));
}

/// Returns the rest of a stream of unknown size. Reads through a stream of its own, so that the exceptions that the
/// caller may have enabled do not replace ours.
std::string takeInBlocks(std::istream& stream) {
    std::istream source(stream.rdbuf());
    std::array<char, BLOCK_BYTES> block{};
    std::string text;
    while (source.good()) {
        source.read(block.data(), block.size());
        text.append(block.data(), static_cast<std::size_t>(source.gcount()));
    }
    if (source.bad()) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"The screen file cannot be read on after " + std::to_wstring(text.size()) + L" bytes");
    }
    return text;
}

}  // namespace

OBJScreen::OBJScreen(std::wstring up, std::wstring forward, float scale)
    : m_up(std::move(up)), m_forward(std::move(forward)), m_scale(scale) {}

void OBJScreen::deserialize(std::istream& text) {
    // Axes that make no transform are reported before a stream that cannot be read, and leave it untouched.
    static_cast<void>(getTransformMatrix(m_up, m_forward, m_scale));
    if (text.fail() || text.rdbuf() == nullptr) {
        throw VeltraniException(__FILE__, __LINE__, L"The screen file cannot be read: its stream has failed");
    }
    std::string copy;
    std::optional<std::string_view> bytes = takeInPlace(text);
    if (!bytes) {
        copy = takeInBlocks(text);
        bytes = copy;
    }
    text.setstate(std::ios_base::eofbit);
    Veltrani::KelvoScreenDetail::Sha1 sha1;
    sha1.addBytes(bytes->data(), bytes->size());
    read(*bytes, sha1.finish());
}

void OBJScreen::read(std::string_view bytes, const std::array<unsigned char, 20>& hash) {
    const Matrix<double, 3> world_from_file = widened(getTransformMatrix(m_up, m_forward, m_scale));
    TriangleMesh mesh = ObjReader::read(bytes);
    for (Point<double, 3>& vertex : mesh.vertices) {
        vertex = world_from_file * vertex;
    }
    setMesh(std::move(mesh), hash);
}

void OBJScreen::intersectRays(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    if (typeid(*this) == typeid(OBJScreen)) {
        intersectAtOnce(rays, hits);
    } else {
        MeshScreen::intersectRays(rays, hits);
    }
}

std::size_t OBJScreen::raysAtOnce() const {
    return typeid(*this) == typeid(OBJScreen) ? MESH_RAYS_AT_ONCE : MeshScreen::raysAtOnce();
}

Matrix<float, 4> OBJScreen::getTransformMatrix(const std::wstring& up, const std::wstring& forward, float scale) {
    const std::optional<Axis> upAxis = axisNamed(up);
    const std::optional<Axis> forwardAxis = axisNamed(forward);
    if (!upAxis || !forwardAxis || dot(*upAxis, *forwardAxis) != 0) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"No screen file can be imported with up axis \"" + up + L"\" and forward axis \"" +
                                    forward + L"\": name two different ones of X, Y, Z, each with or without a -");
    }
    requireScale(scale);
    const std::array<Axis, 3> rows = {cross(*forwardAxis, *upAxis), *forwardAxis, *upAxis};
    Matrix<float, 4> world_from_file;
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            // Adding zero turns -0 into 0.
            world_from_file(r, c) = scale * rows[r][c] + 0.0F;
        }
    }
    return world_from_file;
}
