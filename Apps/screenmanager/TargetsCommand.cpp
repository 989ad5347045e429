#include "TargetsCommand.h"

#include "Common/AtomicFile.h"
#include "Common/Utf8.h"
#include "Configuration/XMLConfigFile.h"
#include "ConsoleLog.h"
#include "DisplayReport/NamedFiles.h"
#include "DisplayReport/ScreenLoader.h"
#include "DisplayReport/TargetPlacer.h"
#include "DisplayReport/TargetSummary.h"
#include "DisplayReport/TargetWriter.h"
#include "ExitCode.h"
#include "FailureReport.h"
#include "ProgressMeter.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <system_error>
#include <vector>

namespace {

using namespace Veltrani::DisplayReport;

/// Null when the configuration cannot be read, which has been reported then.
std::unique_ptr<XMLConfigFile> readConfiguration(const TargetsCommand::Options& options) {
    try {
        return XMLConfigFile::load(options.file);
    } catch (...) {
        reportFailure(options.file, std::current_exception());
        return nullptr;
    }
}

/// False when the screen or a file of it cannot be used, which has been reported then.
bool buildScreen(XMLConfigFile& config, const TargetsCommand::Options& options) {
    std::vector<Fault> faults;
    {
        ProgressMeter progress(options.verbosity != Verbosity::QUIET, "building the screen");
        progress.begin();
        // Every fault is reported below; the library's warning of the first would only repeat it.
        const ConsoleLog::ErrorsOnly quieter(options.verbosity == Verbosity::NORMAL);
        faults = ScreenLoader::load(config);
    }
    for (const Fault& fault : faults) {
        reportFault(options.file, fault);
    }
    return faults.empty();
}

TargetSurvey placeTargets(const XMLConfigFile& config, const TargetsCommand::Options& options) {
    ProgressMeter progress(options.verbosity != Verbosity::QUIET, "placing targets, channel");
    return TargetPlacer(options.plan,
                        [&progress](std::size_t done, std::size_t total) { progress.update(done, total); })
        .place(config);
}

bool isSameFile(const std::string& a, const std::string& b) {
    std::error_code unknown;
    return std::filesystem::equivalent(a, b, unknown);
}

/// True when writing to `output` would replace a file that the display is described by; reported then.
bool replacesInput(const std::string& output, const XMLConfigFile& config, const std::string& configurationFile) {
    if (output.empty()) {
        return false;
    }
    std::string what = isSameFile(output, configurationFile) ? "the configuration itself" : "";
    for (const std::wstring& file : filesOf(config)) {
        if (isSameFile(output, Veltrani::toUtf8(file))) {
            what = "a file that the configuration names";
        }
    }
    if (!what.empty()) {
        std::cerr << "error: " + output + " is " + what + ": name another file with --output\n";
    }
    return !what.empty();
}

/// True for what exists and cannot be replaced as a whole: a pipe, a device, and whatever an open descriptor leads to.
bool isSpecialFile(const std::string& path) {
    std::error_code unknown;
    return path.starts_with("/dev/") || path.starts_with("/proc/") ||
           std::filesystem::is_other(std::filesystem::status(path, unknown));
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
            // Appending keeps what a redirected descriptor has been given before.
            std::ofstream special(options.output, std::ios::binary | std::ios::app);
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
    const auto config = readConfiguration(options);
    if (!config) {
        return EXIT_INPUT;
    }
    if (replacesInput(options.output, *config, options.file)) {
        return EXIT_USAGE;
    }
    if (!buildScreen(*config, options)) {
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
