#include "MapGrid.h"

#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "ConsoleLog.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayFile.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/maps/InputProjection.h"
#include "DisplayReport/maps/LayoutMapper.h"
#include "DisplayReport/maps/PictureWarp.h"
#include "DisplayReport/maps/WarpWriter.h"
#include "ExportFiles/WarpFile.h"
#include "ProgressMeter.h"
#include "ResultFile.h"
#include "ScreenManager/DisplayKinds.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <optional>

namespace {

using namespace Veltrani::DisplayExport;
using namespace Veltrani::ExportFiles;
using Veltrani::DisplayReport::ChannelChoice;
using Veltrani::DisplayReport::InputProjection;
using Veltrani::DisplayReport::LayoutMapper;
using Veltrani::DisplayReport::Panorama;
using Veltrani::DisplayReport::PictureWarp;
using Veltrani::DisplayReport::significantText;
using Veltrani::DisplayReport::WarpMeshSize;
using Veltrani::DisplayReport::WarpWriter;

/// A picture for people, which no player reads.
constexpr const char* PICTURE = "png";

bool isOfNodes(const std::string& format) {
    const auto known = warpFormatOf(format);
    return known && isOfNodes(*known);
}

/// The nodes of a mesh; those that are searched for are few.
Point<int, 2> nodesOf(const ChannelChoice& channel, const MapOptions& options) {
    return options.input.nodes.value_or(channel.pictureSize() + Point<int, 2>{1, 1});
}

std::string sizeText(const Point<int, 2>& size, const char* cross) {
    return std::to_string(size[0]) + cross + std::to_string(size[1]);
}

/// Places all over a picture.
std::vector<Point<double, 2>> latticeOfPicture() {
    constexpr int PER_SIDE = 33;
    std::vector<Point<double, 2>> picture;
    for (int row = 0; row < PER_SIDE; ++row) {
        for (int column = 0; column < PER_SIDE; ++column) {
            picture.emplace_back((column + 0.5) / PER_SIDE, (row + 0.5) / PER_SIDE);
        }
    }
    return picture;
}

int reportNothingMapped(const ChannelChoice& channel, const std::string& remedy) {
    Console::error(channel.describe() + ": nothing of its picture is mapped, and nothing was written: " + remedy);
    return EXIT_INCOMPLETE;
}

/// By the layout map of the display.
class LayoutGrid {
public:
    LayoutGrid(XMLConfigFile& config, const ChannelChoice& channel, const MapOptions& options)
        : m_channel(channel),
          m_options(options),
          m_map(config, channel, options.useCache),
          m_input(config,
                  options.input.kind == InputKind::EQUIRECTANGULAR ? Panorama::EQUIRECTANGULAR : Panorama::FISHEYE) {}

    int write() {
        const auto writer = WarpWriter::ofFormat(m_options.format);
        ResultFile result(m_options.output);
        if (!result.open()) {
            return EXIT_OUTPUT;
        }
        PictureWarp warp = warpOf(writer->hasNodes());
        if (warp.mapped() == 0) {
            return reportNothingMapped(m_channel, remedy());
        }
        const std::size_t missed = warp.missed();
        const std::size_t cut = writer->hasNodes() && m_input.wrapsAround() ? warp.cutAtSeam() : 0;
        writer->write(warp, result.stream());
        if (!result.commit()) {
            return EXIT_OUTPUT;
        }
        if (m_options.isTalkative()) {
            Console::say(m_channel.describe() + ": " + std::to_string(warp.columns()) + " x " +
                         std::to_string(warp.rows()) + (writer->hasNodes() ? " nodes, " : " pixels, ") +
                         std::to_string(missed) + " not mapped" +
                         (cut > 0 ? ", " + std::to_string(cut) + " left out at the seam of the input" : ""));
        }
        return EXIT_ALL_RIGHT;
    }

private:
    [[nodiscard]] PictureWarp warpOf(bool hasNodes) {
        ProgressMeter meter(m_options.isTalkative(), "mapping the picture, row");
        const Point<int, 2> pixels = m_channel.pictureSize();
        if (!hasNodes) {
            return PictureWarp::atPixels(m_map, m_input, pixels, meter.callback());
        }
        return PictureWarp::atNodes(m_map, m_input, pixels, nodesOf(m_channel, m_options), meter.callback());
    }

    /// True when places of the picture have layout points, though none that the input holds.
    [[nodiscard]] bool isBesideInput() {
        const std::vector<Point<double, 2>> picture = latticeOfPicture();
        std::vector<LayoutPoint> layout(picture.size());
        m_map.toLayout(picture, layout);
        return std::any_of(layout.begin(), layout.end(), [](const LayoutPoint& point) { return point.isMapped; });
    }

    /// Only the fisheye leaves a part of the world out.
    [[nodiscard]] std::string remedy() {
        return m_input.leavesOutBehind() && isBesideInput()
                   ? "what it shows lies behind the viewer, where a fisheye has no picture: state --input "
                     "equirectangular"
                   : ContentInput::REMEDY_UNLIT;
    }

    const ChannelChoice& m_channel;
    const MapOptions& m_options;
    LayoutMapper m_map;
    InputProjection m_input;
};

/// The input of a display that none is stated for: that of its layout map.
InputKind usualInput(const XMLConfigFile& config) {
    const DisplayKind* const kind = DisplayKind::of(config);
    if (kind != nullptr && kind->layout == DisplayKind::Layout::PLANE) {
        return InputKind::LAYOUT;
    }
    return InputProjection::hasPanorama(config) ? InputKind::FISHEYE : InputKind::SCREEN;
}

/// By what is seen of the channel.
class SeenGrid {
public:
    SeenGrid(const XMLConfigFile& config, const ChannelChoice& channel, const MapOptions& options)
        : m_options(options),
          m_sight(config, channel, options.eye.empty() ? std::nullopt : std::optional(eyeOf(options.eye))),
          m_input(config, m_sight, options.input.choice(usualInput(config))) {}

    int write() const {
        ResultFile result(m_options.output);
        if (!result.open()) {
            return EXIT_OUTPUT;
        }
        const ChannelWarp warp = warpOf();
        if (warp.count(WarpNode::State::MAPPED) == 0) {
            return reportNothingMapped(m_sight.channel(), m_input.remedyForNothing(m_sight));
        }
        const std::size_t broken = write(warp, result.stream());
        if (!result.commit()) {
            return EXIT_OUTPUT;
        }
        if (m_options.isTalkative()) {
            Console::say(m_sight.channel().describe() + ": " +
                         summaryOf(warp, broken, warpFormatOf(m_options.format) == WarpFormat::MESH));
            sayFrustum();
        }
        return EXIT_ALL_RIGHT;
    }

private:
    [[nodiscard]] ChannelWarp warpOf() const {
        ProgressMeter meter(m_options.isTalkative(), "mapping the picture, row");
        const InputOptions& options = m_options.input;
        WarpRequest request;
        request.places = !isOfNodes(m_options.format) ? WarpRequest::Places::PIXELS
                         : options.hasAutoNodes       ? WarpRequest::Places::AUTO
                                                      : WarpRequest::Places::NODES;
        request.nodes = nodesOf(m_sight.channel(), m_options);
        request.error = options.allowedError();
        request.forGrids = warpFormatOf(m_options.format) == WarpFormat::MESH;
        request.seam = options.seam();
        request.withPoints = warpFormatOf(m_options.format) == WarpFormat::PFM_3D;
        request.progress = meter.callback();
        return ChannelWarp::of(m_sight, m_input, request);
    }

    /// @return the cells that the format leaves out
    std::size_t write(const ChannelWarp& warp, std::ostream& out) const {
        const ContentStrip strip{m_input.faces(), m_input.wrapsAround()};
        if (const auto format = warpFormatOf(m_options.format)) {
            return writeWarp(*format, warp, strip, out);
        }
        WarpWriter::ofFormat(m_options.format)->write(ChannelWarpGrid(warp, warp.nodes(), strip), out);
        return 0;
    }

    /// What an engine renders, without which a warp of it is of no use.
    void sayFrustum() const {
        const std::optional<RenderFrustum> frustum = m_input.frustum();
        if (!frustum) {
            return;
        }
        const auto degrees = [](double radians) {
            // No rounding instead of zero, nor a zero with a sign.
            constexpr double LEAST = 1e-9;
            const double angle = radians * 180 / std::numbers::pi;
            return significantText(std::abs(angle) < LEAST ? 0.0 : angle);
        };
        const auto side = [&degrees](double tangent) { return degrees(std::atan(tangent)); };
        const Point<double, 3>& eye = frustum->view.eye;
        const Point<double, 3> angles = frustum->view.angles();
        Console::say("its frustum: from " + significantText(eye[0]) + ',' + significantText(eye[1]) + ',' +
                     significantText(eye[2]) + ", orientation z " + degrees(angles[0]) + ", x " + degrees(angles[1]) +
                     ", y " + degrees(angles[2]) + ", left " + side(frustum->left) + ", right " + side(frustum->right) +
                     ", bottom " + side(frustum->bottom) + ", top " + side(frustum->top) +
                     " degrees; exact and as matrices in the manifest of export");
    }

    const MapOptions& m_options;
    ChannelSight m_sight;
    ContentInput m_input;
};

/// Whether the layout map of the display has what is requested.
bool isOfLayoutMap(const XMLConfigFile& config, const MapOptions& options) {
    const std::optional<InputKind> kind = options.input.kind;
    const bool isPanorama = kind == InputKind::FISHEYE || kind == InputKind::EQUIRECTANGULAR;
    return WarpWriter::ofFormat(options.format) != nullptr && options.eye.empty() && !options.input.hasMore() &&
           (!kind || (isPanorama && InputProjection::hasPanorama(config)));
}

}  // namespace

std::vector<std::string> gridFormats() {
    std::vector<std::string> formats = warpFormatNames();
    formats.push_back(PICTURE);
    return formats;
}

bool isGridOfText(const std::string& format) {
    return isOfNodes(format);
}

void requireHeeded(const MapOptions& options) {
    const InputOptions& input = options.input;
    input.requireHeeded(std::nullopt, !options.eye.empty());
    if (!options.eye.empty()) {
        (void)eyeOf(options.eye);
    }
    if (input.isCut && options.format == nameOf(WarpFormat::MESH)) {
        OptionList::refuse("--wrap", "a mesh of rows and columns has no cut cells: choose --format obj");
    }
    if (isOfNodes(options.format)) {
        input.requireErrorHeeded(false);
        return;
    }
    const auto refuse = [&options](bool isGiven, const char* option) {
        if (isGiven) {
            OptionList::refuse(option, options.format + " has one value per pixel: leave it out");
        }
    };
    refuse(input.nodes.has_value() || input.hasAutoNodes, "--nodes");
    refuse(input.error.has_value(), "--error");
    refuse(input.pixels.has_value(), "--size");
    refuse(input.isCut, "--wrap");
}

bool isTooLargeMesh(const ChannelChoice& channel, const MapOptions& options) {
    // A picture without pixels is reported by the map, which says what is missing.
    const bool hasPicture = std::min(channel.projector->getWidth(), channel.projector->getHeight()) > 0;
    if (!hasPicture || options.format != nameOf(WarpFormat::MESH) || options.input.hasAutoNodes) {
        return false;
    }
    const WarpMeshSize mesh{channel.pictureSize(), nodesOf(channel, options)};
    if (mesh.isReadable()) {
        return false;
    }
    constexpr std::uintmax_t BYTES_PER_MEGABYTE = 1'000'000;
    const auto most = WarpMeshSize::mostNodes(mesh.pixels);
    Console::error(channel.describe() + ": a mesh of " + sizeText(mesh.nodes, " x ") + " nodes for a picture of " +
                   sizeText(mesh.pixels, " x ") + " pixels, up to " +
                   std::to_string(mesh.mostBytes() / BYTES_PER_MEGABYTE) + " MB, is more than a map file may be: " +
                   (most ? "state --nodes " + sizeText(*most, "x") + " or fewer, or choose" : "choose") +
                   " --format pfm or png");
    return true;
}

int mapGrid(XMLConfigFile& config, const ChannelChoice& channel, const MapOptions& options) {
    if (isOfLayoutMap(config, options)) {
        if (LayoutMapper::needsScreen(config) && !DisplayFile::buildScreen(config, options.file, options.verbosity)) {
            return EXIT_INPUT;
        }
        return LayoutGrid(config, channel, options).write();
    }
    if (!DisplayFile::buildScreen(config, options.file, options.verbosity)) {
        return EXIT_INPUT;
    }
    // Every ray that it bends by a table is logged: a million lines.
    ConsoleLog::showOnlyFatal("Dravix.ScreenManager.SphereTargetLocator");
    return SeenGrid(config, channel, options).write();
}
