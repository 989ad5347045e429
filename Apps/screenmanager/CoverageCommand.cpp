#include "Command.h"
#include "ConsoleLog.h"
#include "DisplayFile.h"
#include "DisplayReport/coverage/CoverageSurvey.h"
#include "DisplayReport/coverage/CoverageWriter.h"
#include "OutputFormats.h"
#include "ProgressMeter.h"
#include "ResultFile.h"

#include <utility>
#include <vector>

namespace {

using namespace Veltrani::DisplayReport;

struct Options : CommandOptions {
    std::string file;     ///< the configuration
    bool isJson = false;  ///< the older way to name this format
    std::string format;   ///< "text" or "json"
    std::string output;   ///< file for the report; empty for standard output
    std::string ply;      ///< file for the coloured surface; empty for none
};

CoverageReport measure(const XMLConfigFile& config, std::vector<CoveredPiece>& pieces, const Options& options) {
    ProgressMeter progress(options.isTalkative(), "measuring the coverage, step");
    // The library logs at info every ray that it bends by a table: a million lines.
    const ConsoleLog::ErrorsOnly quieter(options.isTalkative());
    CoverageSurvey survey(progress.callback());
    if (!options.ply.empty()) {
        survey.keepPieces(pieces);
    }
    return survey.of(config);
}

bool writeReport(const CoverageReport& report, std::vector<SourceFile> sources, const Options& options) {
    const auto writer = CoverageWriter::ofFormat(options.format);
    writer->setSources(std::move(sources));
    return ResultFile::write(options.output, [&](std::ostream& out) { writer->write(report, {}, out); });
}

bool writeSurface(const CoverageReport& report, const std::vector<CoveredPiece>& pieces, const Options& options) {
    if (options.ply.empty() || !report.fault.empty()) {
        return true;
    }
    const auto writer = CoverageWriter::ofFormat("ply");
    return ResultFile::write(options.ply, [&](std::ostream& out) { writer->write(report, pieces, out); });
}

/// True when the report and the surface would be written into each other; reported then.
bool isOneFileForBoth(const Options& options) {
    if (options.ply.empty()) {
        return false;
    }
    if (ResultFile::isStandardOutput(options.ply) && ResultFile::isStandardOutput(options.output)) {
        Console::error("the report and the surface would both go to standard output: name a file for one of them");
        return true;
    }
    if (!options.output.empty() && ResultFile::isSamePlace(options.ply, options.output)) {
        Console::error("--ply and --output name the same file, " + options.ply + ": name two");
        return true;
    }
    return false;
}

/// True when an output is none, or an input would be replaced; reported then.
bool isMisused(const XMLConfigFile& config, const Options& options) {
    const bool isPlyShown = !options.ply.empty() && ResultFile::wouldFloodTerminal(options.ply, "a mesh", "--ply");
    return isPlyShown || isOneFileForBoth(options) || ResultFile::replacesInput(options.output, config, options.file) ||
           ResultFile::replacesInput(options.ply, config, options.file);
}

int run(const Options& options) {
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
    // Before the measurement, which may take minutes: a file that changes meanwhile is not what it was made from.
    std::vector<SourceFile> sources = sourcesFor(options.format, options.file);
    std::vector<CoveredPiece> pieces;
    const CoverageReport report = measure(*config, pieces, options);
    if (!writeReport(report, std::move(sources), options) || !writeSurface(report, pieces, options)) {
        return EXIT_OUTPUT;
    }
    if (!report.fault.empty()) {
        Console::error(options.file + ": " + report.fault);
        return EXIT_INPUT;
    }
    return report.complete() && !report.channels.empty() ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}

Command::Run addTo(OptionList& line) {
    const auto options = std::make_shared<Options>();
    addDisplayFile(line, options->file);
    const OutputFormats formats{{"text", "json"}};
    const Option format = addFormat(line, options->format, formats, true);
    line.addFlag("--json", options->isJson, "The same as --format json").excludes(format);
    line.add("--ply", options->ply, "File for the screen, coloured by number of projectors").typeName("FILE");
    addOutput(line, options->output);
    line.whenComplete([&said = *options, formats] {
        said.format = formats.chosen(said.isJson ? "json" : said.format, said.output);
        static_cast<void>(OutputFormats{{"ply"}}.chosen({}, said.ply, "--ply"));
    });
    return Command::with(options, run);
}

}  // namespace

const Command COVERAGE_COMMAND{.name = "coverage",
                               .summary = "Measure what part of the screen each channel lights, and overlaps",
                               .example = "screenmanager coverage display.xml --ply screen.ply",
                               .addTo = addTo,
                               .bendsMillionsOfRays = true};
