#include "MapOptions.h"

#include "DisplayReport/PictureWarp.h"
#include "DisplayReport/WarpWriter.h"

#include <string>

namespace {

using namespace Veltrani::DisplayReport;

/// As many as a reader of warp meshes takes in one row.
constexpr int MOST_NODES_IN_ROW = 1'000'000;

/// Reads "COLUMNSxROWS"; throws the error of CLI11 for anything else.
ColumnsByRows readNodes(const std::string& text) {
    constexpr auto MOST = static_cast<long long>(PictureWarp::MOST_SAMPLES);
    const auto nodes = ColumnsByRows::parse(text);
    if (!nodes || !nodes->isWithin(2, MOST_NODES_IN_ROW, MOST)) {
        throw CLI::ValidationError("--nodes", "\"" + text + "\" is not COLUMNSxROWS, such as 97x61, with 2 to " +
                                                  std::to_string(MOST_NODES_IN_ROW) + " each and at most " +
                                                  std::to_string(MOST) + " nodes");
    }
    return *nodes;
}

void addPointOptions(CLI::App& command, MapCommand::Options& options, CLI::Option& grid) {
    command
        .add_option_function<std::string>(
            "--to", [&options](const std::string& side) { options.toChannel = side == "channel"; },
            "layout (default): from picture points; channel: from layout points")
        ->check(CLI::IsMember({"layout", "channel"}))
        ->type_name("SIDE")
        ->excludes(&grid);
    auto* const point = command.add_option("--point", options.points, "A point to map; may be given several times")
                            ->allow_extra_args(false)
                            ->type_name("U,V|X,Y,Z")
                            ->excludes(&grid);
    command.add_option("--points", options.pointFile, "File of points, one per line; - for standard input (default)")
        ->type_name("FILE")
        ->excludes(&grid)
        ->excludes(point);
    command
        .add_flag("--cache", options.useCache,
                  "Remember the pixels of a collimated display: faster for many points to the channel")
        ->excludes(&grid);
}

void addGridOptions(CLI::App& command, MapCommand::Options& options, CLI::Option& grid) {
    command.add_option("--format", options.format, "mesh (default), pfm or png")
        ->check(CLI::IsMember(WarpWriter::formats()))
        ->type_name("FORMAT")
        ->needs(&grid);
    command
        .add_option_function<std::string>(
            "--nodes", [&options](const std::string& text) { options.nodes = readNodes(text); },
            "Nodes of a mesh (default: the corners of all pixels)")
        ->type_name("COLUMNSxROWS")
        ->needs(&grid);
    command
        .add_option_function<std::string>(
            "--input", [&options](const std::string& name) { options.panorama = panoramaOf(name); },
            "Panorama that feeds the display: fisheye (default) or equirectangular")
        ->check(CLI::IsMember(panoramaNames()))
        ->type_name("PANORAMA")
        ->needs(&grid);
}

}  // namespace

CLI::App* addMapCommand(CLI::App& program, MapCommand::Options& options) {
    CLI::App* const command =
        program.add_subcommand("map", "Map points between a channel and the layout, or write the map of its picture");
    command->add_option("FILE", options.file, "Configuration of the display (XML)")->required();
    command->add_option("--channel", options.channel, "The channel")->required()->type_name("NAME|ID");
    command->add_option("-o,--output", options.output, "File to write instead of standard output")->type_name("FILE");
    CLI::Option* const grid =
        command->add_flag("--grid", options.grid, "The whole picture: which part of the input each place shows");
    addPointOptions(*command, options, *grid);
    addGridOptions(*command, options, *grid);
    command->parse_complete_callback([&options] {
        if (options.nodes && !WarpWriter::ofFormat(options.format)->hasNodes()) {
            throw CLI::ValidationError("--nodes", options.format + " has one value per pixel: leave it out");
        }
    });
    return command;
}
