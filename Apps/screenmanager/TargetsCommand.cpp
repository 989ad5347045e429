#include "TargetsCommand.h"

#include "Common/AtomicFile.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayReport/TargetPlacer.h"
#include "DisplayReport/TargetSummary.h"
#include "DisplayReport/TargetWriter.h"
#include "ExitCode.h"
#include "FailureReport.h"
#include "ProgressMeter.h"
#include "ScreenManager/ScreenManager.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <system_error>

namespace {

using namespace Veltrani::DisplayReport;

/// Reads the configuration and builds its screen; null when that fails, which has been reported then.
std::unique_ptr<XMLConfigFile> prepareDisplay(const TargetsCommand::Options& options) {
    try {
        auto config = XMLConfigFile::load(options.file);
        ProgressMeter progress(options.verbosity != Verbosity::QUIET, "building the screen");
        ScreenManager::getInstance()->disableDiagnostics();
        ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
        return config;
    } catch (...) {
        reportFailure(options.file, std::current_exception());
        return nullptr;
    }
}

TargetSurvey placeTargets(const XMLConfigFile& config, const TargetsCommand::Options& options) {
    ProgressMeter progress(options.verbosity != Verbosity::QUIET, "placing targets, channel");
    return TargetPlacer(options.plan,
                        [&progress](std::size_t done, std::size_t total) { progress.update(done, total); })
        .place(config);
}

/// True when writing to `output` would replace the configuration that is being read.
bool isSameFile(const std::string& output, const std::string& configuration) {
    std::error_code unknown;
    return std::filesystem::equivalent(output, configuration, unknown);
}

/// True for what exists and cannot be replaced as a whole: a pipe, a device.
bool isSpecialFile(const std::string& path) {
    std::error_code unknown;
    return std::filesystem::is_other(std::filesystem::status(path, unknown));
}

/// False when the stream did not take everything, which has been reported then.
bool writeToStream(const TargetSurvey& survey, const TargetWriter& writer, std::ostream& out, const std::string& name) {
    writer.write(survey, out);
    if (out.flush()) {
        return true;
    }
    std::cerr << "error: " + name + " cannot be written\n";
    return false;
}

/// False when the result cannot be written, which has been reported then.
bool writeTargets(const TargetSurvey& survey, const TargetsCommand::Options& options) {
    try {
        const auto writer = TargetWriter::ofFormat(options.format);
        if (options.output.empty()) {
            return writeToStream(survey, *writer, std::cout, "standard output");
        }
        if (isSpecialFile(options.output)) {
            std::ofstream special(options.output, std::ios::binary);
            return writeToStream(survey, *writer, special, options.output);
        }
        std::ostringstream text;
        writer->write(survey, text);
        Veltrani::AtomicFile file(options.output);
        file.write(text.view());
        file.commit();
        return true;
    } catch (...) {
        reportFailure(options.output, std::current_exception());
        return false;
    }
}

}  // namespace

int TargetsCommand::run(const Options& options) {
    if (!options.output.empty() && isSameFile(options.output, options.file)) {
        std::cerr << "error: " + options.output + " is the configuration itself: name another file with --output\n";
        return EXIT_USAGE;
    }
    const auto config = prepareDisplay(options);
    if (!config) {
        return EXIT_INPUT;
    }
    const TargetSurvey survey = placeTargets(*config, options);
    if (!writeTargets(survey, options)) {
        return EXIT_OUTPUT;
    }
    if (options.verbosity != Verbosity::QUIET) {
        printSummary(survey, std::cerr);
    }
    return survey.complete() && !survey.channels.empty() ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}
