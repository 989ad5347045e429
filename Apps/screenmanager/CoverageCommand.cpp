#include "CoverageCommand.h"

#include "Console.h"
#include "ConsoleLog.h"
#include "DisplayFile.h"
#include "DisplayReport/CoveragePrinter.h"
#include "DisplayReport/CoverageSurvey.h"
#include "DisplayReport/JsonCoverageWriter.h"
#include "DisplayReport/PlyCoverageWriter.h"
#include "ExitCode.h"
#include "ProgressMeter.h"
#include "ResultFile.h"

#include <functional>
#include <vector>

namespace {

using namespace Veltrani::DisplayReport;
using Options = CoverageCommand::Options;

CoverageReport measure(const XMLConfigFile& config, std::vector<CoveredPiece>& pieces, const Options& options) {
    ProgressMeter progress(options.verbosity != Verbosity::QUIET, "measuring the coverage, step");
    // The library tells at info of every ray that it bends by a table: a million lines.
    const ConsoleLog::ErrorsOnly quieter(options.verbosity != Verbosity::QUIET);
    CoverageSurvey survey([&progress](std::size_t done, std::size_t total) { progress.update(done, total); });
    if (!options.ply.empty()) {
        survey.keepPieces(pieces);
    }
    return survey.of(config);
}

/// False when not everything could be written, which has been reported then.
bool write(const std::string& path, const std::function<void(std::ostream&)>& writer) {
    ResultFile result(path);
    if (!result.open()) {
        return false;
    }
    writer(result.stream());
    return result.commit();
}

bool writeReport(const CoverageReport& report, const Options& options) {
    return write(options.output, [&](std::ostream& out) {
        if (options.isJson) {
            JsonCoverageWriter::write(report, out);
        } else {
            print(report, out);
        }
    });
}

bool writeSurface(const CoverageReport& report, const std::vector<CoveredPiece>& pieces, const Options& options) {
    return options.ply.empty() || !report.fault.empty() ||
           write(options.ply, [&](std::ostream& out) { PlyCoverageWriter::write(report, pieces, out); });
}

/// True when a file would be written twice, or an input would be replaced; reported then.
bool isMisused(const XMLConfigFile& config, const Options& options) {
    if (!options.ply.empty() && !options.output.empty() && ResultFile::isSamePlace(options.ply, options.output)) {
        Console::say("error: --ply and --output name the same file, " + options.ply + ": name two");
        return true;
    }
    return ResultFile::replacesInput(options.output, config, options.file) ||
           ResultFile::replacesInput(options.ply, config, options.file);
}

}  // namespace

int CoverageCommand::run(const Options& options) {
    const auto config = DisplayFile::read(options.file);
    if (!config) {
        return EXIT_INPUT;
    }
    if (isMisused(*config, options)) {
        return EXIT_USAGE;
    }
    if (!DisplayFile::buildScreen(*config, options.file, options.verbosity)) {
        return EXIT_INPUT;
    }
    std::vector<CoveredPiece> pieces;
    const CoverageReport report = measure(*config, pieces, options);
    if (!writeReport(report, options) || !writeSurface(report, pieces, options)) {
        return EXIT_OUTPUT;
    }
    if (!report.fault.empty()) {
        Console::say("error: " + options.file + ": " + report.fault);
        return EXIT_INPUT;
    }
    return report.complete() && !report.channels.empty() ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}
