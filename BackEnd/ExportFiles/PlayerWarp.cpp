#include "ExportFiles/PlayerWarp.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "ExportFiles/ContentPicture.h"
#include "ExportFiles/PixelWarp.h"
#include "ExportFiles/PngReader.h"
#include "ExportFiles/TriangleWarp.h"
#include "KelvoControl/CustomPlanarScreenToChannelMap.h"
#include "KelvoScreen/ObjLoadException.h"
#include "KelvoScreen/ObjReader.h"

#include <array>
#include <cstddef>
#include <utility>

namespace Veltrani::ExportFiles {

namespace {

using P2 = Point<double, 2>;

[[noreturn]] void refuseWarp(const std::string& path, const std::string& what) {
    throw VeltraniParseException(fromUtf8OrBytes(path + ": " + what + ": export the display again"));
}

/// A grid of nodes with bilinear cells.
class MeshWarp : public PlayerWarp {
public:
    MeshWarp(std::string_view bytes, const std::string& path, const ExportedChannelView& view)
        : m_map(CustomPlanarScreenToChannelMap::parse(bytes, path, nullptr)), m_size(m_map.pictureSize()) {
        const P2 expected{static_cast<double>(view.pixels[0]), static_cast<double>(view.pixels[1])};
        if (!(m_size == expected)) {
            refuseWarp(path, "is of another picture than the channel's");
        }
    }

    [[nodiscard]] std::optional<Shown> shownAt(const P2& picture) const override {
        Shown shown;
        if (!map(picture, shown.content) || !slope(picture, {STEP / m_size[0], 0.0}, shown.content, shown.alongU) ||
            !slope(picture, {0.0, STEP / m_size[1]}, shown.content, shown.alongV)) {
            return std::nullopt;
        }
        return shown;
    }

private:
    /// Pixels, for the slopes.
    static constexpr double STEP = 0.25;

    [[nodiscard]] bool map(const P2& picture, P2& content) const {
        return m_map.mapChannel2DToScreen2D({picture[0] * m_size[0], picture[1] * m_size[1]}, content);
    }

    /// At the edge of the mesh from behind.
    [[nodiscard]] bool slope(const P2& picture, const P2& step, const P2& here, P2& along) const {
        const double length = norm(step);
        if (map(picture + step, along)) {
            along = (along - here) * (1 / length);
            return true;
        }
        const bool isThere = map(picture - step, along);
        along = (here - along) * (1 / length);
        return isThere;
    }

    CustomPlanarScreenToChannelMap m_map;
    P2 m_size;
};

std::unique_ptr<const PlayerWarp> parseObj(std::string_view bytes, const std::string& path,
                                           const ExportedChannelView& view) {
    try {
        TriangleMesh mesh = ObjReader::read(bytes);
        if (mesh.textureTriangles.size() != mesh.triangles.size()) {
            refuseWarp(path, "has triangles without a place in the input");
        }
        return std::make_unique<TriangleWarp>(mesh, view.pixels);
    } catch (const ObjLoadException& fault) {
        refuseWarp(path, fault.what());
    }
}

}  // namespace

PlayerWarp::~PlayerWarp() = default;

std::unique_ptr<const PlayerWarp> PlayerWarp::read(const ExportedDisplay& display, const ExportedChannelView& view) {
    constexpr std::array<const char*, 4> FORMATS{"obj", "mesh", "pfm", "png16"};
    for (const char* const format : FORMATS) {
        const ExportedFile* const file = view.fileOf(format);
        if (file != nullptr) {
            return parse(display.bytesOf(*file), display.pathOf(*file), format, view);
        }
    }
    return nullptr;
}

std::unique_ptr<const PlayerWarp> PlayerWarp::parse(std::string_view bytes, const std::string& path,
                                                    const std::string& format, const ExportedChannelView& view) {
    if (format == "obj") {
        return parseObj(bytes, path, view);
    }
    if (format == "mesh") {
        return std::make_unique<MeshWarp>(bytes, path, view);
    }
    auto warp = format == "pfm" ? PixelWarp::ofPfm(bytes, path, view.wrapsAround)
                                : PixelWarp::ofPng(bytes, path, view.wrapsAround);
    if (warp->pixels() != view.pixels) {
        refuseWarp(path, "is of another picture than the channel's");
    }
    return warp;
}

}  // namespace Veltrani::ExportFiles
