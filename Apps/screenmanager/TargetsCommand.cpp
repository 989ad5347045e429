#include "Command.h"
#include "DisplayFile.h"
#include "DisplayReport/targets/TargetPlacer.h"
#include "DisplayReport/targets/TargetWriter.h"
#include "OutputFormats.h"
#include "ProgressMeter.h"
#include "ResultFile.h"

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;

struct Options : CommandOptions {
    std::string file;    ///< the configuration
    std::string format;  ///< one of `TargetWriter::formats`
    std::string output;  ///< file to write; empty for standard output
    TargetPlan plan;
};

int run(const Options& options) {
    const auto config = DisplayFile::read(options.file);
    if (!config) {
        return EXIT_INPUT;
    }
    if (ResultFile::replacesInput(options.output, *config, options.file)) {
        return EXIT_USAGE;
    }
    if (!DisplayFile::buildScreen(*config, options.file, options.verbosity)) {
        return EXIT_INPUT;
    }
    const auto writer = TargetWriter::ofFormat(options.format);
    writer->setSources(sourcesFor(options.format, options.file));
    ProgressMeter progress(options.isTalkative(), "placing targets, channel");
    const TargetSurvey survey = TargetPlacer(options.plan, progress.callback()).place(*config);
    progress.end();
    if (!ResultFile::write(options.output, [&](std::ostream& out) { writer->write(survey, out); })) {
        return EXIT_OUTPUT;
    }
    if (options.isTalkative()) {
        std::ostringstream summary;
        printSummary(survey, summary);
        Console::sayLines(summary.str());
    }
    return survey.complete() && !survey.channels.empty() ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}

Command::Run addTo(OptionList& line) {
    const auto options = std::make_shared<Options>();
    addDisplayFile(line, options->file);
    const OutputFormats formats{TargetWriter::formats()};
    addFormat(line, options->format, formats, true);
    addOutput(line, options->output);
    addPlan(line, options->plan);
    line.whenComplete([&said = *options, formats] { said.format = formats.chosen(said.format, said.output); });
    return Command::with(options, run);
}

}  // namespace

const Command TARGETS_COMMAND{.name = "targets",
                              .summary = "Place a grid of targets and an outline for every channel",
                              .example = "screenmanager targets display.xml --grid 32x20 -o targets.csv",
                              .addTo = addTo};
