#include "PictureCommand.h"

#include "Configuration/XMLConfigFile.h"
#include "DisplayFile.h"
#include "DisplayReport/DrawingWriter.h"
#include "DisplayReport/SceneCamera.h"
#include "DisplayReport/ScenePainter.h"
#include "ExitCode.h"
#include "FailureReport.h"
#include "PlanOptions.h"
#include "ResultFile.h"
#include "SceneSource.h"

#include <exception>

namespace {

using namespace Veltrani::DisplayReport;

/// Bounds of the sides of a picture, pixels: smaller ones have no room for the list of channels, larger ones none in
/// the memory of small machines.
constexpr int SMALLEST = 200;
constexpr int LARGEST = 8000;
constexpr long long MOST_PIXELS = 32'000'000;

/// Reads "WIDTHxHEIGHT"; throws the error of CLI11 for anything else.
ColumnsByRows readSize(const std::string& text) {
    const auto size = ColumnsByRows::parse(text);
    if (!size || !size->isWithin(SMALLEST, LARGEST, MOST_PIXELS)) {
        throw CLI::ValidationError("--size", "\"" + text + "\" is not WIDTHxHEIGHT, such as 1600x1000, with " +
                                                 std::to_string(SMALLEST) + " to " + std::to_string(LARGEST) +
                                                 " each and at most " + std::to_string(MOST_PIXELS) + " pixels");
    }
    return *size;
}

std::string formatOf(const PictureCommand::Options& options) {
    if (!options.format.empty()) {
        return options.format;
    }
    return options.output.ends_with(".svg") || options.output.ends_with(".SVG") ? "svg" : "png";
}

/// False when the picture cannot be written, which has been reported then.
bool writePicture(const Drawing& drawing, const PictureCommand::Options& options) {
    ResultFile result(options.output);
    if (!result.open()) {
        return false;
    }
    try {
        DrawingWriter::ofFormat(formatOf(options))->write(drawing, result.stream());
    } catch (...) {
        reportFailure(options.output, std::current_exception());
        return false;
    }
    return result.commit();
}

}  // namespace

CLI::App* PictureCommand::addTo(CLI::App& program, Options& options) {
    CLI::App* const command = program.add_subcommand("picture", "Draw a still of the display");
    command->add_option("FILE", options.file, "Configuration of the display (XML)")->required();
    command->add_option("-o,--output", options.output, "File to write instead of standard output")->type_name("FILE");
    command->add_option("--format", options.format, "png or svg (default: as FILE is named, else png)")
        ->check(CLI::IsMember(DrawingWriter::formats()))
        ->type_name("FORMAT");
    command->add_option("--view", options.view, "Where to look from: home (default), front, side or top")
        ->check(CLI::IsMember(SceneCamera::views()))
        ->type_name("VIEW");
    command
        ->add_option_function<std::string>(
            "--size", [&options](const std::string& text) { options.size = readSize(text); },
            "Of the picture in pixels (default 1600x1000)")
        ->type_name("WIDTHxHEIGHT");
    addPlanOptions(*command, options.plan);
    return command;
}

int PictureCommand::run(const Options& options) {
    const auto config = DisplayFile::read(options.file);
    if (!config) {
        return EXIT_INPUT;
    }
    if (ResultFile::replacesInput(options.output, *config, options.file)) {
        return EXIT_USAGE;
    }
    const auto writer = DrawingWriter::ofFormat(formatOf(options));
    const DisplayScene scene =
        SceneSource::collect(*config, options.file, options.plan, options.verbosity, writer->limits());
    const Drawing drawing = ScenePainter(options.view, options.size.columns, options.size.rows).paint(scene);
    if (!writePicture(drawing, options)) {
        return EXIT_OUTPUT;
    }
    return scene.complete ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}
