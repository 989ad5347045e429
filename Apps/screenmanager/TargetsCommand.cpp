#include "TargetsCommand.h"

#include "Console.h"
#include "DisplayFile.h"
#include "DisplayReport/TargetPlacer.h"
#include "DisplayReport/TargetSummary.h"
#include "DisplayReport/TargetWriter.h"
#include "ExitCode.h"
#include "FailureReport.h"
#include "ProgressMeter.h"
#include "ResultFile.h"

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;

TargetSurvey placeTargets(const XMLConfigFile& config, const TargetsCommand::Options& options) {
    ProgressMeter progress(options.verbosity != Verbosity::QUIET, "placing targets, channel");
    return TargetPlacer(options.plan,
                        [&progress](std::size_t done, std::size_t total) { progress.update(done, total); })
        .place(config);
}

/// False when the result cannot be written, which has been reported then.
bool writeTargets(const TargetSurvey& survey, const TargetsCommand::Options& options) {
    ResultFile result(options.output);
    if (!result.open()) {
        return false;
    }
    try {
        TargetWriter::ofFormat(options.format)->write(survey, result.stream());
    } catch (...) {
        reportFailure(options.output, std::current_exception());
        return false;
    }
    return result.commit();
}

}  // namespace

int TargetsCommand::run(const Options& options) {
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
    const TargetSurvey survey = placeTargets(*config, options);
    if (!writeTargets(survey, options)) {
        return EXIT_OUTPUT;
    }
    if (options.verbosity != Verbosity::QUIET) {
        std::ostringstream summary;
        printSummary(survey, summary);
        Console::sayLines(summary.str());
    }
    return survey.complete() && !survey.channels.empty() ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}
