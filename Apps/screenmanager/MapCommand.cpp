#include "Common/VeltraniException.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayFile.h"
#include "FailureReport.h"
#include "MapGrid.h"
#include "MapPoints.h"
#include "OutputFormats.h"
#include "ResultFile.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayReport;

/// Of tables of points, or with --grid of the whole picture.
OutputFormats formatsOf(const MapOptions& options) {
    return options.grid ? OutputFormats{gridFormats()} : OutputFormats{{"csv", "json"}};
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
    if (options.grid && isTooLargeMesh(channel, options)) {
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
    const bool isText = isGridOfText(options.format);
    const auto& nodes = options.input.nodes;
    const bool isShort = nodes && 1LL * (*nodes)[0] * (*nodes)[1] <= FEW;
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
        return options.grid ? mapGrid(*config, *channel, options) : mapPoints(*config, *channel, options);
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
    std::vector<Option> added = addInputOptions(line, options.input,
                                                "What feeds the display: fisheye, equirectangular, layout, screen, "
                                                "cube, or frustum, which feeds the channel (default: that of its "
                                                "layout, else fisheye)");
    added.push_back(
        line.add("--eye", options.eye, "Where it is seen from, native units (default: the eye point of the display)")
            .typeName("X,Y,Z"));
    const std::vector<Option> ofWarps = addWarpOptions(
        line, options.input,
        "Nodes of mesh and obj; auto: the fewest that keep the error (default: the corners of all pixels)");
    added.insert(added.end(), ofWarps.begin(), ofWarps.end());
    std::for_each(added.begin(), added.end(), [&grid](Option& option) { option.needs(grid); });
}

/// Refuses one that is for points or for pictures alone by naming the option that it depends on.
std::string chosenFormat(const MapOptions& options) {
    const OutputFormats formats = formatsOf(options);
    const std::vector<std::string> ofGrids = gridFormats();
    if (!options.grid && std::find(ofGrids.begin(), ofGrids.end(), options.format) != ofGrids.end()) {
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
    std::vector<std::string> formats = gridFormats();
    formats.insert(formats.begin(), {"csv", "json"});
    addFormat(
        line, options->format,
        "csv or json, with --grid mesh, obj, pfm, pfm3d, png16 or png (default: as FILE is named, else the first)")
        .oneOf(formats);
    line.whenComplete([&said = *options] {
        said.format = chosenFormat(said);
        if (said.grid) {
            requireHeeded(said);
        }
    });
    return Command::with(options, run);
}

}  // namespace

const Command MAP_COMMAND{.name = "map",
                          .summary = "Map points between a channel and the layout, or write the map of its picture",
                          .example = "screenmanager map display.xml --channel Left --point 0.5,0.5",
                          .addTo = addTo};
