#include "ColumnsByRows.h"
#include "Command.h"
#include "ConsoleLog.h"
#include "DisplayFile.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "DisplayReport/scene/SceneCamera.h"
#include "DisplayReport/scene/SceneCollector.h"
#include "DisplayReport/scene/SceneLighter.h"
#include "DisplayReport/scene/SceneMarks.h"
#include "DisplayReport/scene/ScenePage.h"
#include "DisplayReport/still/DrawingWriter.h"
#include "DisplayReport/still/ScenePainter.h"
#include "DisplayReport/targets/TargetPlacer.h"
#include "FailureReport.h"
#include "LitPictures.h"
#include "OutputFormats.h"
#include "ProgressMeter.h"
#include "ResultFile.h"

#include <algorithm>

namespace {

using namespace Veltrani::DisplayReport;

/// Bounds of the sides of a picture, pixels: smaller ones have no room for the list of channels, larger ones none in
/// the memory of small machines.
constexpr int SMALLEST = 200;
constexpr int LARGEST = 8000;
constexpr long long MOST_PIXELS = 32'000'000;

struct Options : CommandOptions {
    std::string file;    ///< the configuration
    std::string output;  ///< file to write; empty for standard output
    TargetPlan plan;
};

struct PictureOptions : Options {
    std::string format;              ///< one of `DrawingWriter::formats`
    std::string view = "home";       ///< one of `SceneCamera::views`
    ColumnsByRows size{1600, 1000};  ///< of the picture, pixels
    bool axes = false;               ///< whether what the numbers of the file are measured from is drawn
    std::string channel;             ///< name or id of the one whose axes are drawn; empty for all
    LitOptions lit;
};

/// Null when the configuration cannot be read or the output would replace a file of it, which has been reported then;
/// `code` says which.
std::unique_ptr<XMLConfigFile> readInput(const Options& options, ExitCode& code) {
    auto config = DisplayFile::read(options.file);
    if (!config) {
        code = EXIT_INPUT;
    } else if (ResultFile::replacesInput(options.output, *config, options.file)) {
        code = EXIT_USAGE;
        config.reset();
    }
    return config;
}

/// @param triangles of the light at the most, about
void addLight(DisplayScene& scene, const XMLConfigFile& config, const Options& options, std::size_t triangles) {
    ProgressMeter progress(options.isTalkative(), "measuring the light, step");
    // The library logs at info every ray that it bends by a table: a million lines.
    const ConsoleLog::ErrorsOnly quieter(options.isTalkative());
    SceneLighter(triangles, progress.callback()).addTo(scene, config);
}

/// Builds the screen, places the targets and collects everything, with progress on a terminal. What cannot be loaded is
/// missing in the scene, whose notes state it; they are shown on standard error too, unless quiet.
DisplayScene collectScene(XMLConfigFile& config, const Options& options, const SceneCollector::Limits& limits,
                          std::size_t trianglesOfLight) {
    const std::vector<Fault> faults = DisplayFile::loadScreen(config, options.verbosity);
    ProgressMeter progress(options.isTalkative(), "placing targets, channel");
    const TargetSurvey survey = TargetPlacer(options.plan, progress.callback()).place(config);
    DisplayScene scene = SceneCollector(limits).collect(options.file, config, survey, faults);
    progress.end();
    addLight(scene, config, options, trianglesOfLight);
    if (options.isTalkative()) {
        for (const std::string& note : scene.notes) {
            Console::say("note: " + note);
        }
    }
    return scene;
}

int runView(const Options& options) {
    if (ResultFile::wouldFloodTerminal(options.output, "a page of several megabytes")) {
        return EXIT_USAGE;
    }
    ExitCode fault = EXIT_ALL_RIGHT;
    const auto config = readInput(options, fault);
    if (!config) {
        return fault;
    }
    const SceneCollector::Limits limits;
    // Not more than of the screen: without a graphics processor a page that is turned draws each of them for each
    // frame.
    const DisplayScene scene = collectScene(*config, options, limits, limits.triangles);
    if (!ResultFile::write(options.output, [&](std::ostream& out) { ScenePage::write(scene, out); })) {
        return EXIT_OUTPUT;
    }
    return scene.complete ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}

Command::Run addView(OptionList& line) {
    const auto options = std::make_shared<Options>();
    addDisplayFile(line, options->file);
    addOutput(line, options->output, "Page to write instead of standard output (HTML)");
    addPlan(line, options->plan);
    line.whenComplete([&said = *options] { static_cast<void>(OutputFormats{{"html"}}.chosen({}, said.output)); });
    return Command::with(options, runView);
}

/// False when the display has no such channel, which has been reported then. `channel` stays null where none is named.
bool chooseChannel(const XMLConfigFile& config, const PictureOptions& options, const ProjectorConfig*& channel) {
    try {
        if (!options.channel.empty()) {
            channel = ChannelChoice::of(config, options.channel).projector;
        }
        return true;
    } catch (...) {
        reportFailure("--channel", std::current_exception());
        return false;
    }
}

int runPicture(const PictureOptions& options) {
    if (ResultFile::wouldFloodTerminal(options.output, options.format)) {
        return EXIT_USAGE;
    }
    ExitCode fault = EXIT_ALL_RIGHT;
    const auto config = readInput(options, fault);
    if (!config) {
        return fault;
    }
    if (options.lit.isWanted()) {
        return writeLitPicture(*config, options.file, options.lit, options.output, options.size, options.verbosity);
    }
    const ProjectorConfig* channel = nullptr;
    if (!chooseChannel(*config, options, channel)) {
        return EXIT_USAGE;
    }
    const auto writer = DrawingWriter::ofFormat(options.format);
    const SceneCollector::Limits limits = writer->limits();
    DisplayScene scene = collectScene(*config, options, limits, 2 * limits.triangles);
    if (options.axes) {
        MarkCollector(*config, channel).addTo(scene);
    }
    const ScenePainter painter(options.view, options.size.columns, options.size.rows);
    // Texts are measured while the scene is painted: what draws them may be missing already there.
    if (!ResultFile::write(options.output, [&](std::ostream& out) { writer->write(painter.paint(scene), out); })) {
        return EXIT_OUTPUT;
    }
    return scene.complete ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}

Command::Run addPicture(OptionList& line) {
    const auto options = std::make_shared<PictureOptions>();
    addDisplayFile(line, options->file);
    addOutput(line, options->output);
    const OutputFormats formats{DrawingWriter::formats()};
    addFormat(line, options->format, formats, true);
    const Option view = line.add("--view", options->view, "Where to look from: home (default), front, side or top")
                            .oneOf(SceneCamera::views())
                            .typeName("VIEW");
    const Option axes =
        line.addFlag("--axes", options->axes,
                     "Draw what the numbers of FILE are measured from: axes, turns, angles, (s, t), (u, v)");
    line.add("--channel", options->channel, "The axes of this channel alone: its name or its id")
        .needs(axes)
        .typeName("NAME|ID");
    addGridOption(line,
                  {.name = "--size",
                   .help = "Of the picture in pixels (default 1600x1000)",
                   .form = "WIDTHxHEIGHT",
                   .example = "1600x1000",
                   .things = "pixels",
                   .fewest = SMALLEST,
                   .most = LARGEST,
                   .mostTogether = MOST_PIXELS},
                  [target = options.get()](const ColumnsByRows& size) { target->size = size; });
    addPlan(line, options->plan);
    addLitOptions(line, options->lit).excludes(view).excludes(axes);
    line.whenComplete([&said = *options, formats] {
        said.format = formats.chosen(said.format, said.output);
        if (said.lit.isWanted() && said.format != "png") {
            OptionList::refuse("--lit", "is written as png alone: end the name of the output in .png");
        }
        checkLitOptions(said.lit, said.output);
    });
    return Command::with(options, runPicture);
}

}  // namespace

const Command VIEW_COMMAND{.name = "view",
                           .summary = "Write a page that shows the display in three dimensions",
                           .example = "screenmanager view display.xml -o display.html",
                           .addTo = addView,
                           .bendsMillionsOfRays = true};

const Command PICTURE_COMMAND{.name = "picture",
                              .summary = "Draw a still of the display",
                              .example = "screenmanager picture display.xml --view top -o display.png",
                              .addTo = addPicture,
                              .bendsMillionsOfRays = true};
