#include "Command.h"
#include "Common/Utf8.h"
#include "Configuration/UnitConversionTable.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayFile.h"
#include "DisplayFit/DisplayFitter.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "FailureReport.h"
#include "FitSession/ControlCheck.h"
#include "FitSession/FitReport.h"
#include "FitSession/FittedDisplay.h"
#include "FitSession/MeasuredPointReader.h"
#include "OutputFormats.h"
#include "ProgressMeter.h"
#include "ResultFile.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <utility>

namespace {

using namespace Veltrani::FitSession;
using Veltrani::DisplayFit::DisplayFitter;
using Veltrani::DisplayFit::FitOptions;
using Veltrani::DisplayFit::FitOutcome;
using Veltrani::DisplayFit::SolvedGroups;
using Veltrani::DisplayReport::ChannelChoice;
using Veltrani::DisplayReport::ReportHead;

struct Options : CommandOptions {
    std::string file;                   ///< the configuration
    std::string points;                 ///< the table of measurements
    std::string output;                 ///< the configuration to be written; empty in place
    bool isInPlace = false;             ///< the configuration itself is replaced
    bool isForced = false;              ///< write what is unusable, too
    std::vector<std::string> channels;  ///< names or ids; empty for all that have points
    std::string report;                 ///< its file; empty for standard output
    std::string format;                 ///< "text" or "json"
    MeasuredPointReader::Options table;
    std::optional<RegistrationKind> registration;
    FitOptions fit;
};

/// The words between commas.
std::vector<std::string> wordsOf(const std::string& list) {
    std::vector<std::string> words(1);
    for (const char character : list) {
        if (character == ',') {
            words.emplace_back();
        } else {
            words.back() += character;
        }
    }
    return words;
}

/// Sets the member of each word of a list; refuses the command line for a word that is none.
template <class Target>
void readWords(const char* option, const std::string& list, Target& target,
               const std::vector<std::pair<std::string, bool Target::*>>& known) {
    for (const std::string& word : wordsOf(list)) {
        bool Target::*member = nullptr;
        std::string names;
        for (const auto& [name, of] : known) {
            names += (names.empty() ? "" : ", ") + name;
            member = word == name ? of : member;
        }
        if (member == nullptr) {
            OptionList::refuse(option, "\"" + word + "\" is none of " + names + "; write some of them with commas");
        }
        target.*member = true;
    }
}

SolvedGroups groupsOf(const std::string& list) {
    SolvedGroups groups;
    readWords("--solve", list, groups,
              {{"position", &SolvedGroups::position},
               {"orientation", &SolvedGroups::orientation},
               {"frustum", &SolvedGroups::frustum},
               {"distortion", &SolvedGroups::distortion},
               {"area", &SolvedGroups::area}});
    return groups;
}

/// False when one of them is no channel, which has been reported then.
bool chooseChannels(const XMLConfigFile& config, const Options& options, FitOptions& fit) {
    for (const std::string& name : options.channels) {
        try {
            fit.channels.push_back(ChannelChoice::of(config, name).index);
        } catch (...) {
            reportFailure("--channel", std::current_exception());
            return false;
        }
    }
    return true;
}

/// True when an output is an input; reported then.
bool isMisused(const XMLConfigFile& config, const Options& options) {
    for (const std::string& output : {options.output, options.report}) {
        if (output.empty()) {
            continue;
        }
        if (ResultFile::isSamePlace(output, options.points)) {
            Console::error(output + " is the table of measurements: name another file");
            return true;
        }
        if (ResultFile::replacesInput(output, config, options.file)) {
            return true;
        }
    }
    if (!options.output.empty() && !options.report.empty() && ResultFile::isSamePlace(options.output, options.report)) {
        Console::error("--output and --report name the same file, " + options.report + ": name two");
        return true;
    }
    return false;
}

/// True when something is to be held that no channel has; reported then.
bool holdsNothing(const XMLConfigFile& config, const FitOptions& fit) {
    const auto ids = config.getProjectorConfigIds();
    if (ids.empty() || (!fit.holdsSquarePixels && !fit.holdsHorizontalShift)) {
        return false;
    }
    const SolvedGroups groups =
        fit.solved.value_or(DisplayFitter::defaultGroups(config, *config.getProjectorConfig(ids.front())));
    if (groups.frustum) {
        return false;
    }
    Console::error("--hold: its numbers belong to the frustum, and no frustum is solved" +
                   std::string(fit.solved ? " with this --solve" : " on this type of display") + ": leave it out");
    return true;
}

/// What somebody would expect to be done, and was not.
void remarkOnFrames(const FitReport& report, const Options& options) {
    const auto& points = report.measured.points;
    if (!options.registration && options.isTalkative() && report.measured.controls.empty() &&
        std::any_of(points.begin(), points.end(),
                    [&points](const auto& point) { return point.set != points.front().set; })) {
        Console::say("note: the measurements of all sets are taken as in the frame of the display");
    }
}

/// False when the table cannot be used, which has been reported then.
bool readPoints(const XMLConfigFile& config, const Options& options, FitReport& report) {
    try {
        report.measured = MeasuredPointReader(config, options.table).readFile(options.points);
        if (options.registration) {
            report.frames = FrameRegistration::apply(report.measured, *options.registration);
        }
    } catch (...) {
        reportFailure(options.points, std::current_exception());
        return false;
    }
    if (report.measured.points.empty()) {
        Console::error(options.points + ": there are no measurements with a place in a picture: add rows with u, v");
        return false;
    }
    remarkOnFrames(report, options);
    report.combined = combineRepeated(report.measured.points);
    return true;
}

/// False when there was no fit at all, which has been reported then.
bool fitPoints(const XMLConfigFile& config, const Options& options, FitOptions fit, FitReport& report) {
    try {
        ProgressMeter progress(options.isTalkative(), "fitting, channel");
        report.result = DisplayFitter(std::move(fit), progress.callback()).fit(config, report.combined.points);
        ControlCheck::judge(report.measured, report.frames, report.result);
        return true;
    } catch (...) {
        reportFailure(options.file, std::current_exception());
        return false;
    }
}

/// False when the new set of files cannot be written, which has been reported then; the old one is there.
bool write(XMLConfigFile& config, const Options& options, FitReport& report) {
    try {
        FittedDisplay fitted(config, options.output, options.file);
        for (const auto& channel : report.result.channels) {
            fitted.take(channel);
        }
        report.isUnchanged = !fitted.isChanged();
        if (report.isUnchanged && options.isInPlace) {
            return true;
        }
        fitted.save();
        report.written = fitted.path();
        report.lensFiles = fitted.lensFiles();
        return true;
    } catch (...) {
        reportFailure(options.isInPlace ? options.file : options.output, std::current_exception());
        return false;
    }
}

bool printReport(const FitReport& report, const Options& options) {
    return ResultFile::write(options.report, [&](std::ostream& out) {
        if (options.format == "json") {
            report.printJson(out);
        } else {
            report.printText(out);
        }
    });
}

/// False when a folder or a file with several names is to be written, which has been reported then: found before
/// anything is computed in vain.
bool isReplaceable(const Options& options) {
    std::error_code unknown;
    for (const auto& [output, example] :
         {std::pair(options.output, "fitted.xml"), std::pair(options.report, "report.txt")}) {
        if (!output.empty() && std::filesystem::is_directory(output, unknown)) {
            Console::error(output + " is a folder: name a file in it, such as " +
                           (std::filesystem::path(output) / example).string());
            return false;
        }
    }
    try {
        XMLConfigFile::requireOneName(options.isInPlace ? options.file : options.output);
        return true;
    } catch (...) {
        reportFailure(options.isInPlace ? options.file : options.output, std::current_exception());
        return false;
    }
}

int run(const Options& options) {
    const auto config = DisplayFile::read(options.file);
    if (!config) {
        return EXIT_INPUT;
    }
    FitOptions fit = options.fit;
    if (isMisused(*config, options) || !chooseChannels(*config, options, fit) || holdsNothing(*config, fit)) {
        return EXIT_USAGE;
    }
    if (!isReplaceable(options)) {
        return EXIT_OUTPUT;
    }
    FitReport report;
    report.configuration = options.file;
    report.table = options.points;
    if (!readPoints(*config, options, report) || !DisplayFile::buildScreen(*config, options.file, options.verbosity)) {
        return EXIT_INPUT;
    }
    // Before anything is written: in place, the configuration is another one afterwards.
    report.files = sourcesFor(options.format, options.file);
    if (!report.files.empty()) {
        report.files.push_back(ReportHead::source(options.points));
    }
    if (!fitPoints(*config, options, std::move(fit), report)) {
        return EXIT_INPUT;
    }
    const FitOutcome outcome = report.result.outcome();
    const bool isToBeWritten = outcome != FitOutcome::UNUSABLE || options.isForced;
    const bool isWritten = !isToBeWritten || write(*config, options, report);
    if (!printReport(report, options) || !isWritten) {
        return EXIT_OUTPUT;
    }
    if (!isToBeWritten) {
        Console::error(options.file + ": the fit is unusable and nothing was written: see the report");
    }
    return static_cast<int>(outcome);
}

void addPointOptions(OptionList& line, Options& options) {
    line.add("--points", options.points, "Table of measurements (CSV)").required().typeName("FILE");
    line.add("--unit", options.table.unit, "Unit of its lengths, unless it states one")
        .oneOf({"mm", "cm", "m", "in", "ft"})
        .typeName("UNIT");
    line.addRead(
            "--origin", [&options](const std::string& corner) { options.table.isFromTop = corner == "top-left"; },
            "Corner from which u, v and px, py count: bottom-left (default) or top-left, as cameras give them")
        .oneOf({"bottom-left", "top-left"})
        .typeName("CORNER");
    line.addRead(
            "--register",
            [&options](const std::string& kind) {
                options.registration = kind == "rigid" ? RegistrationKind::RIGID : RegistrationKind::SIMILARITY;
            },
            "Move the measurement into the frame of the display by its control points: rigid or similarity")
        .oneOf({"rigid", "similarity"})
        .typeName("KIND");
}

void addFitOptions(OptionList& line, Options& options) {
    line.add("--channel", options.channels, "Fit this channel only; may be given several times (default: all)")
        .oneValueEach()
        .typeName("NAME|ID");
    line.addRead(
            "--solve", [&options](const std::string& list) { options.fit.solved = groupsOf(list); },
            "What is solved, of position, orientation, frustum, distortion, area (default: by the type of display)")
        .typeName("LIST");
    line.addRead(
            "--hold",
            [&options](const std::string& list) {
                readWords("--hold", list, options.fit,
                          {{"square-pixels", &FitOptions::holdsSquarePixels},
                           {"horizontal-shift", &FitOptions::holdsHorizontalShift}});
            },
            "What is held although it belongs to the frustum: square-pixels, horizontal-shift")
        .typeName("LIST");
}

Command::Run addTo(OptionList& line) {
    const auto options = std::make_shared<Options>();
    addDisplayFile(line, options->file);
    addPointOptions(line, *options);
    addFitOptions(line, *options);
    addOutput(line, options->output, "Configuration to write, with lens files beside it");
    line.addFlag("--in-place", options->isInPlace, "Replace FILE instead");
    line.addFlag("--force", options->isForced, "Write a fit that is unusable, too");
    line.add("--report", options->report, "File for the report (default: standard output)").typeName("FILE");
    const OutputFormats formats{{"text", "json"}};
    addFormat(line, options->format, "of the report: text (default) or json").oneOf(formats.names);
    line.whenComplete([&said = *options, formats] {
        if (said.isInPlace == !said.output.empty()) {
            OptionList::refuse("--output", said.isInPlace ? "it excludes --in-place: leave one of them out"
                                                          : "name the configuration to write, or state --in-place");
        }
        if (ResultFile::isStandardOutput(said.output) && !said.isInPlace) {
            OptionList::refuse("--output", "the configuration is written to a file: name one");
        }
        static_cast<void>(OutputFormats{{"xml"}}.chosen("", said.output));
        said.format = formats.chosen(said.format, said.report, "--report");
    });
    return Command::with(options, run);
}

}  // namespace

const Command FIT_COMMAND{.name = "fit",
                          .summary = "Fit channels to measured points, and write the configuration that agrees",
                          .example = "screenmanager fit display.xml --points measured.csv --unit mm -o fitted.xml",
                          .addTo = addTo};
