#include "ColumnsByRows.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayFile.h"
#include "DisplayReport/maps/LayoutMapper.h"
#include "DisplayReport/maps/PictureWarp.h"
#include "DisplayReport/maps/WarpWriter.h"
#include "FailureReport.h"
#include "MapPoints.h"
#include "OutputFormats.h"
#include "ProgressMeter.h"
#include "ResultFile.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayReport;

/// As many as a reader of warp meshes takes in one row.
constexpr int MOST_NODES_IN_ROW = 1'000'000;

/// Of tables of points, or with --grid of the whole picture.
OutputFormats formatsOf(const MapOptions& options) {
    return options.grid ? OutputFormats{WarpWriter::formats()} : OutputFormats{{"csv", "json"}};
}

/// The nodes of a mesh.
Point<int, 2> nodesOf(const ChannelChoice& channel, const MapOptions& options) {
    return options.nodes ? Point<int, 2>{options.nodes->columns, options.nodes->rows}
                         : channel.pictureSize() + Point<int, 2>{1, 1};
}

std::string sizeText(const Point<int, 2>& size, const char* cross) {
    return std::to_string(size[0]) + cross + std::to_string(size[1]);
}

/// True when the mesh could not be read again; reported then, with what could.
bool isTooLarge(const ChannelChoice& channel, const MapOptions& options) {
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

PictureWarp warpOf(LayoutMapper& map, const InputProjection& input, const ChannelChoice& channel, bool hasNodes,
                   const MapOptions& options) {
    ProgressMeter meter(options.isTalkative(), "mapping the picture, row");
    const Point<int, 2> pixels = channel.pictureSize();
    if (!hasNodes) {
        return PictureWarp::atPixels(map, input, pixels, meter.callback());
    }
    return PictureWarp::atNodes(map, input, pixels, nodesOf(channel, options), meter.callback());
}

/// True when places of the picture have layout points, though none that the input holds.
bool isBesideInput(LayoutMapper& map) {
    constexpr int PER_SIDE = 33;
    std::vector<Point<double, 2>> picture;
    for (int row = 0; row < PER_SIDE; ++row) {
        for (int column = 0; column < PER_SIDE; ++column) {
            picture.emplace_back((column + 0.5) / PER_SIDE, (row + 0.5) / PER_SIDE);
        }
    }
    std::vector<LayoutPoint> layout(picture.size());
    map.toLayout(picture, layout);
    return std::any_of(layout.begin(), layout.end(), [](const LayoutPoint& point) { return point.isMapped; });
}

/// Only the fisheye leaves a part of the world out.
void reportNothingMapped(LayoutMapper& map, const InputProjection& input, const ChannelChoice& channel) {
    Console::error(channel.describe() + ": nothing of its picture is mapped, and nothing was written: " +
                   (input.leavesOutBehind() && isBesideInput(map)
                        ? "what it shows lies behind the viewer, where a fisheye has no picture: state --input "
                          "equirectangular"
                        : "check its position, orientation and frustum, or its map, against the screen"));
}

int mapGrid(LayoutMapper& map, const InputProjection& input, const ChannelChoice& channel, const MapOptions& options) {
    const auto writer = WarpWriter::ofFormat(options.format);
    ResultFile result(options.output);
    if (!result.open()) {
        return EXIT_OUTPUT;
    }
    PictureWarp warp = warpOf(map, input, channel, writer->hasNodes(), options);
    if (warp.mapped() == 0) {
        reportNothingMapped(map, input, channel);
        return EXIT_INCOMPLETE;
    }
    const std::size_t missed = warp.missed();
    const std::size_t cut = writer->hasNodes() && input.wrapsAround() ? warp.cutAtSeam() : 0;
    writer->write(warp, result.stream());
    if (!result.commit()) {
        return EXIT_OUTPUT;
    }
    if (options.isTalkative()) {
        Console::say(channel.describe() + ": " + std::to_string(warp.columns()) + " x " + std::to_string(warp.rows()) +
                     (writer->hasNodes() ? " nodes, " : " pixels, ") + std::to_string(missed) + " not mapped" +
                     (cut > 0 ? ", " + std::to_string(cut) + " left out at the seam of the input" : ""));
    }
    return EXIT_ALL_RIGHT;
}

/// None when the display has no such channel, which has been reported then.
std::optional<ChannelChoice> chooseChannel(const XMLConfigFile& config, const MapOptions& options) {
    try {
        return ChannelChoice::of(config, options.channel);
    } catch (...) {
        reportFailure("--channel", std::current_exception());
        return std::nullopt;
    }
}

/// True when the command line does not fit the display; reported then.
bool isMisused(const XMLConfigFile& config, const ChannelChoice& channel, const MapOptions& options) {
    // A picture without pixels is reported by the map, which says what is missing.
    const bool hasPicture = std::min(channel.projector->getWidth(), channel.projector->getHeight()) > 0;
    if (options.grid && hasPicture && WarpWriter::ofFormat(options.format)->hasNodes() &&
        isTooLarge(channel, options)) {
        return true;
    }
    if (options.panorama && !InputProjection::hasPanorama(config)) {
        Console::error("--input chooses a panorama, and the input of this display is flat: leave it out");
        return true;
    }
    if (!options.output.empty() && !options.pointFile.empty() &&
        ResultFile::isSameFile(options.output, options.pointFile)) {
        Console::error(options.output + " is the file of points: name another file with --output");
        return true;
    }
    return ResultFile::replacesInput(options.output, config, options.file);
}

/// True when the output would fill a terminal; reported then. A mesh of few nodes may be looked at.
bool isTooMuchForTerminal(const MapOptions& options) {
    if (!options.grid) {
        return false;
    }
    constexpr long long FEW = 1000;
    const bool isText = WarpWriter::ofFormat(options.format)->isText();
    const bool isShort = options.nodes && 1LL * options.nodes->columns * options.nodes->rows <= FEW;
    return !(isText && isShort) &&
           ResultFile::wouldFloodTerminal(options.output, isText ? "the nodes of a whole picture" : options.format);
}

int run(const MapOptions& options) {
    if (isTooMuchForTerminal(options)) {
        return EXIT_USAGE;
    }
    const auto config = DisplayFile::read(options.file);
    if (!config) {
        return EXIT_INPUT;
    }
    const auto channel = chooseChannel(*config, options);
    if (!channel || isMisused(*config, *channel, options)) {
        return EXIT_USAGE;
    }
    try {
        if (!options.grid) {
            return mapPoints(*config, *channel, options);
        }
        if (LayoutMapper::needsScreen(*config) && !DisplayFile::buildScreen(*config, options.file, options.verbosity)) {
            return EXIT_INPUT;
        }
        LayoutMapper map(*config, *channel, options.useCache);
        return mapGrid(map, InputProjection(*config, options.panorama.value_or(Panorama::FISHEYE)), *channel, options);
    } catch (const VeltraniExceptionBase&) {
        reportFailure(options.file, std::current_exception());
        return EXIT_INPUT;
    }
}

void addPointOptions(OptionList& line, MapOptions& options, const Option& grid) {
    line.addRead(
            "--to", [&options](const std::string& side) { options.toChannel = side == "channel"; },
            "layout (default): from picture points; channel: from points in space, see --xyz")
        .oneOf({"layout", "channel"})
        .typeName("SIDE")
        .excludes(grid);
    line.addRead(
            "--xyz",
            [&options](const std::string& space) {
                options.space = space == "screen" ? PointSpace::SCREEN : PointSpace::LAYOUT;
            },
            "What x, y, z are: layout, points of the layout; screen, places on the screen as targets prints them "
            "(default: what the file of points states, else layout)")
        .oneOf({"layout", "screen"})
        .typeName("SPACE")
        .excludes(grid);
    const Option point = line.add("--point", options.points, "A point to map; may be given several times")
                             .oneValueEach()
                             .typeName("U,V|X,Y,Z")
                             .excludes(grid);
    line.add("--points", options.pointFile,
             "File of points, one per line, or table with such columns; - for standard input (default)")
        .typeName("FILE")
        .excludes(grid)
        .excludes(point);
    line.addFlag("--cache", options.useCache,
                 "Remember the pixels of a collimated display: faster for many points to the channel")
        .excludes(grid);
}

void addGridOptions(OptionList& line, MapOptions& options, const Option& grid) {
    addGridOption(line,
                  {.name = "--nodes",
                   .help = "Nodes of a mesh (default: the corners of all pixels)",
                   .example = "97x61",
                   .things = "nodes",
                   .fewest = 2,
                   .most = MOST_NODES_IN_ROW,
                   .mostTogether = static_cast<long long>(PictureWarp::MOST_SAMPLES)},
                  [&options](const ColumnsByRows& nodes) { options.nodes = nodes; })
        .needs(grid);
    line.addRead(
            "--input", [&options](const std::string& name) { options.panorama = panoramaOf(name); },
            "Panorama that feeds the display: fisheye (default) or equirectangular")
        .oneOf(panoramaNames())
        .typeName("PANORAMA")
        .needs(grid);
}

/// Refuses one that is for points or for pictures alone by naming the option that it depends on.
std::string chosenFormat(const MapOptions& options) {
    const OutputFormats formats = formatsOf(options);
    if (!options.grid && WarpWriter::ofFormat(options.format)) {
        OptionList::refuse("--format", options.format + " needs --grid: points are " + formats.list());
    }
    return formats.chosen(options.format, options.output);
}

Command::Run addTo(OptionList& line) {
    const auto options = std::make_shared<MapOptions>();
    addDisplayFile(line, options->file);
    line.add("--channel", options->channel, "The channel").required().typeName("NAME|ID");
    addOutput(line, options->output);
    const Option grid =
        line.addFlag("--grid", options->grid, "The whole picture: which part of the input each place shows");
    addPointOptions(line, *options, grid);
    addGridOptions(line, *options, grid);
    addFormat(line, options->format,
              "csv or json, with --grid mesh, pfm, png16 or png (default: as FILE is named, else the first)")
        .oneOf({"csv", "json", "mesh", "pfm", "png16", "png"});
    line.whenComplete([&said = *options] {
        said.format = chosenFormat(said);
        if (said.nodes && !WarpWriter::ofFormat(said.format)->hasNodes()) {
            OptionList::refuse("--nodes", said.format + " has one value per pixel: leave it out");
        }
    });
    return Command::with(options, run);
}

}  // namespace

const Command MAP_COMMAND{.name = "map",
                          .summary = "Map points between a channel and the layout, or write the map of its picture",
                          .example = "screenmanager map display.xml --channel Left --point 0.5,0.5",
                          .addTo = addTo};
