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
#include "DisplayReport/scene/SceneResiduals.h"
#include "DisplayReport/still/ChannelPicturePainter.h"
#include "DisplayReport/still/DrawingWriter.h"
#include "DisplayReport/still/ScenePainter.h"
#include "DisplayReport/targets/TargetPlacer.h"
#include "FailureReport.h"
#include "FitSession/ResidualReader.h"
#include "LitPictures.h"
#include "OutputFormats.h"
#include "ProgressMeter.h"
#include "ResultFile.h"

#include <algorithm>
#include <optional>

namespace {

using namespace Veltrani::DisplayReport;

/// Bounds of the sides of a picture, pixels: smaller ones have no room for the list of channels, larger ones none in
/// the memory of small machines.
constexpr int SMALLEST = 200;
constexpr int LARGEST = 8000;
constexpr long long MOST_PIXELS = 32'000'000;

struct Options : CommandOptions {
    std::string file;              ///< the configuration
    std::string output;            ///< file to write; empty for standard output
    std::string report;            ///< of a fit, whose residuals are drawn; empty for none
    std::optional<double> factor;  ///< times which they are drawn; empty: chosen by their lengths
    TargetPlan plan;
    LitOptions lit;
};

struct PictureOptions : Options {
    std::string format;              ///< one of `DrawingWriter::formats`
    std::string view;                ///< one of `SceneCamera::views`; empty for "home"
    ColumnsByRows size{1600, 1000};  ///< of the picture, pixels
    bool axes = false;               ///< whether what the numbers of the file are measured from is drawn
    std::string channel;             ///< name or id of the one whose axes or residuals are drawn; empty for all
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
    } else if (!options.output.empty() && !options.report.empty() &&
               ResultFile::isSamePlace(options.output, options.report)) {
        Console::error(options.output + " is the report of the fit: name another file");
        code = EXIT_USAGE;
        config.reset();
    }
    return config;
}

/// False when the report cannot be used, which has been reported then. Empty without a report.
bool readResiduals(const XMLConfigFile& config, const Options& options, std::optional<DisplayResiduals>& residuals) {
    if (options.report.empty()) {
        return true;
    }
    try {
        residuals = Veltrani::FitSession::ResidualReader(config).readFile(options.report);
        return true;
    } catch (...) {
        reportFailure(options.report, std::current_exception());
        return false;
    }
}

Option addResidualOptions(OptionList& line, Options& options) {
    Option report =
        line.add("--residuals", options.report, "Draw what a fit left of its measured points: its report in JSON")
            .typeName("FILE");
    line.addNumber(
            "--exaggerate",
            [&options](double factor) {
                if (!(factor > 0) || factor > ResidualCollector::LARGEST_FACTOR) {
                    OptionList::refuse("--exaggerate", "must be above 0 and at most 1e6, such as 100");
                }
                options.factor = factor;
            },
            "Draw residuals so many times as long as they are (default: by the longest of a point that is no outlier)")
        .needs(report)
        .typeName("FACTOR");
    return report;
}

/// @param triangles of the light at the most, about
void addLight(DisplayScene& scene, const XMLConfigFile& config, const Options& options, std::size_t triangles) {
    ProgressMeter progress(options.isTalkative(), "measuring the light, step");
    // The library logs at info every ray that it bends by a table: a million lines.
    const ConsoleLog::ErrorsOnly quieter(options.isTalkative());
    SceneLighter(triangles, progress.callback()).addTo(scene, config);
}

void sayNotes(const DisplayScene& scene, const Options& options) {
    if (options.isTalkative()) {
        for (const std::string& note : scene.notes) {
            Console::say("note: " + note);
        }
    }
}

/// Places the targets and collects everything, with progress on a terminal.
/// @param faults of the screen, which has been built
DisplayScene collectScene(XMLConfigFile& config, const Options& options, const SceneCollector::Limits& limits,
                          std::size_t trianglesOfLight, const std::optional<DisplayResiduals>& residuals,
                          const std::vector<Fault>& faults) {
    ProgressMeter progress(options.isTalkative(), "placing targets, channel");
    const TargetSurvey survey = TargetPlacer(options.plan, progress.callback()).place(config);
    DisplayScene scene = SceneCollector(limits).collect(options.file, config, survey, faults);
    progress.end();
    addLight(scene, config, options, trianglesOfLight);
    if (residuals) {
        ResidualCollector(options.factor).addTo(scene, *residuals);
    }
    return scene;
}

/// Builds the screen before that. What cannot be loaded is missing in the scene, whose notes state it; they are shown
/// on standard error too, unless quiet.
DisplayScene loadScene(XMLConfigFile& config, const Options& options, const SceneCollector::Limits& limits,
                       std::size_t trianglesOfLight, const std::optional<DisplayResiduals>& residuals) {
    const std::vector<Fault> faults = DisplayFile::loadScreen(config, options.verbosity);
    DisplayScene scene = collectScene(config, options, limits, trianglesOfLight, residuals, faults);
    sayNotes(scene, options);
    return scene;
}

/// The scene with the light of an export. Empty when that cannot be shown, which has been reported then; `code` says
/// why.
std::optional<DisplayScene> loadLitScene(XMLConfigFile& config, const Options& options,
                                         const SceneCollector::Limits& limits,
                                         const std::optional<DisplayResiduals>& residuals, ExitCode& code) {
    const LitScene lit(options.lit, options.output, config, options.file, options.verbosity);
    code = lit.code();
    if (code != EXIT_ALL_RIGHT) {
        return std::nullopt;
    }
    code = EXIT_INPUT;
    if (!DisplayFile::buildScreen(config, options.file, options.verbosity)) {
        return std::nullopt;
    }
    DisplayScene scene = collectScene(config, options, limits, limits.triangles, residuals, {});
    if (!lit.addTo(scene)) {
        return std::nullopt;
    }
    code = EXIT_ALL_RIGHT;
    sayNotes(scene, options);
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
    std::optional<DisplayResiduals> residuals;
    if (!readResiduals(*config, options, residuals)) {
        return EXIT_INPUT;
    }
    const SceneCollector::Limits limits;
    // Not more than of the screen: without a graphics processor a page that is turned draws each of them for each
    // frame.
    const std::optional<DisplayScene> scene = options.lit.isWanted()
                                                  ? loadLitScene(*config, options, limits, residuals, fault)
                                                  : loadScene(*config, options, limits, limits.triangles, residuals);
    if (!scene) {
        return fault;
    }
    if (!ResultFile::write(options.output, [&](std::ostream& out) { ScenePage::write(*scene, out); })) {
        return EXIT_OUTPUT;
    }
    return scene->complete ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}

Command::Run addView(OptionList& line) {
    const auto options = std::make_shared<Options>();
    addDisplayFile(line, options->file);
    addOutput(line, options->output, "Page to write instead of standard output (HTML)");
    addResidualOptions(line, *options);
    addPlan(line, options->plan);
    addLitOption(line, options->lit, "Show the light of an export on the screen, and how far it is off: its folder");
    line.whenComplete([&said = *options] { static_cast<void>(OutputFormats{{"html"}}.chosen({}, said.output)); });
    return Command::with(options, runView);
}

/// False when the display has no such channel, which has been reported then. Empty where none is named.
bool chooseChannel(const XMLConfigFile& config, const PictureOptions& options, std::optional<ChannelChoice>& channel) {
    try {
        if (!options.channel.empty()) {
            channel = ChannelChoice::of(config, options.channel);
        }
        return true;
    } catch (...) {
        reportFailure("--channel", std::current_exception());
        return false;
    }
}

/// The screen, or the picture of the channel whose residuals are drawn.
Drawing paint(const DisplayScene& scene, const PictureOptions& options, const std::optional<ChannelChoice>& channel) {
    if (scene.residuals && channel) {
        return ChannelPicturePainter(options.size.columns, options.size.rows).paint(scene, channel->index);
    }
    return ScenePainter(options.view.empty() ? "home" : options.view, options.size.columns, options.size.rows)
        .paint(scene);
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
    std::optional<ChannelChoice> channel;
    if (!chooseChannel(*config, options, channel)) {
        return EXIT_USAGE;
    }
    std::optional<DisplayResiduals> residuals;
    if (!readResiduals(*config, options, residuals)) {
        return EXIT_INPUT;
    }
    const auto writer = DrawingWriter::ofFormat(options.format);
    const SceneCollector::Limits limits = writer->limits();
    DisplayScene scene = loadScene(*config, options, limits, 2 * limits.triangles, residuals);
    if (options.axes) {
        MarkCollector(*config, channel ? channel->projector : nullptr).addTo(scene);
    }
    // Texts are measured while the scene is painted: what draws them may be missing already there.
    if (!ResultFile::write(options.output,
                           [&](std::ostream& out) { writer->write(paint(scene, options, channel), out); })) {
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
    const Option residuals = addResidualOptions(line, *options).excludes(axes);
    line.add("--channel", options->channel,
             "The axes of this channel alone; with --residuals, those in its own picture: its name or its id")
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
    addLitOptions(line, options->lit).excludes(view).excludes(axes).excludes(residuals);
    line.whenComplete([&said = *options, formats] {
        if (!said.channel.empty() && !said.axes && said.report.empty()) {
            OptionList::refuse("--channel", "needs --axes or --residuals");
        }
        if (!said.channel.empty() && !said.report.empty() && !said.view.empty()) {
            OptionList::refuse("--view",
                               "the picture of a channel is seen from nowhere else: leave it or --channel out");
        }
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
