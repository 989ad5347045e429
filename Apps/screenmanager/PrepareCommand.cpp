#include "Common/ExceptionCause.h"
#include "Common/QuotedText.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayFile.h"
#include "OutputFormats.h"
#include "ProgressMeter.h"
#include "ProjectorSession/ProjectorRun.h"
#include "ProjectorSession/SessionJson.h"
#include "Projectors.h"

#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <iterator>

namespace {

using namespace Veltrani::ProjectorSession;
using Veltrani::onOneLine;
using Veltrani::DeviceFramework2::DeviceManager;

struct State {
    const char* name;
    const char* picture;
    ProjectorNeed need;
    IChannelManager::ProjectorState state;
};

constexpr std::array<State, 3> STATES{{{"black", "black", ProjectorNeed::BLACK, IChannelManager::Black},
                                       {"gray50", "half grey", ProjectorNeed::GRAY50, IChannelManager::Gray50},
                                       {"clear", "their input", ProjectorNeed::CLEAR, IChannelManager::Clear}}};

struct Options : DeviceOptions {
    std::string file;      ///< the configuration, which is not changed
    std::string state;     ///< the name of one of `STATES`
    std::string format;    ///< "text" or "json"
    bool offline = false;  ///< virtual projectors in place of those that are not ready
};

const State& stateNamed(const std::string& name) {
    return *std::find_if(STATES.begin(), STATES.end() - 1, [&](const State& state) { return name == state.name; });
}

/// What reached the projectors before a fault: they keep it until it is changed. A command that failed may have been
/// carried out all the same, when only its reply was lost.
void reportSent(const ProjectorRun& run, const std::string& file) {
    std::string text;
    for (const CommandRecord& record : run.records()) {
        text += "  " + std::string(record.failed ? "failed: " : "sent: ") + record.command + " to channel " +
                onOneLine(run.nameOf(record.uid));
        text += run.isSimulated(record.uid) ? " (simulated)" : "";
        text += record.failed ? "; it may have taken effect there\n" : "\n";
    }
    const bool changed = std::any_of(run.records().begin(), run.records().end(), [&](const CommandRecord& record) {
        return !record.failed && !run.isSimulated(record.uid);
    });
    text += changed ? "  what was sent stays in effect" : "  no other projector was sent anything";
    Console::sayLines(text + "; undo it with: screenmanager prepare " + onOneLine(shellWord(file)) +
                      " clear\n  (with --offline when a projector does not reply any more)\n");
}

void printSummary(ProjectorRun& run, const State& state) {
    const auto all = static_cast<std::size_t>(run.channels().getNumberOfChannels());
    const std::size_t simulated = run.simulatedChannels();
    Console::print("channels that show " + std::string(state.picture) + ": " + std::to_string(all - simulated) +
                   " of " + std::to_string(all) +
                   (simulated > 0 ? ", " + std::to_string(simulated) + " simulated" : ""));
}

/// False when a projector failed, which has been reported then.
bool send(ProjectorRun& run, const State& state, const Options& options) {
    const auto total = static_cast<std::size_t>(run.channels().getNumberOfChannels());
    ProgressMeter progress(options.isTalkative(), "sending to projectors");
    run.setObserver([&](const CommandRecord&) { progress.update(std::min(run.records().size(), total), total); });
    bool complete = false;
    std::exception_ptr fault;
    try {
        run.channels().setupProjectorState(state.state);
        // The last step of a preparation ends without an exception whatever happens in it.
        complete = std::none_of(run.records().begin(), run.records().end(),
                                [](const CommandRecord& record) { return record.failed; });
    } catch (...) {
        fault = std::current_exception();
    }
    run.setObserver({});
    progress.end();
    if (fault && !Veltrani::isOutOfMemory(fault)) {
        reportDeviceFailure(options.file, fault);
    }
    if (!complete) {
        reportSent(run, options.file);
    }
    if (fault && Veltrani::isOutOfMemory(fault)) {
        std::rethrow_exception(fault);
    }
    return complete;
}

/// Prints what has come of it, and for people only that it is complete: the rest has been reported. Returns the exit
/// code.
ExitCode finish(ProjectorRun& run, const State& state, bool isComplete, const Options& options) {
    if (options.format == "json") {
        printJson(run, state.name, isComplete, Veltrani::DisplayReport::ReportHead::sourcesOf(options.file), std::cout);
    } else if (isComplete) {
        printSummary(run, state);
    }
    const ExitCode code = Console::finishOutput();
    return code == EXIT_ALL_RIGHT && !isComplete ? EXIT_INCOMPLETE : code;
}

int prepare(XMLConfigFile& config, const State& state, const Options& options) {
    DeviceManager devices(options.settings());
    ProgressMeter progress(options.isTalkative(), "querying projectors", ProgressMeter::Pieces::SIDE_BY_SIDE);
    ProjectorRun run(config, devices, state.need, progress.callback());
    progress.end();
    if (reportNone(run.findings(), options.file)) {
        return finish(run, state, false, options);
    }
    if (reportConflicts(run.findings())) {
        return EXIT_INPUT;
    }
    const bool replace = options.offline && !run.complete();
    if (!replace || options.isTalkative()) {
        reportUnusable(run.findings(), replace);
    }
    if (!run.complete() && !replace) {
        Console::error("nothing was sent; mend this, or let virtual projectors stand in with --offline");
        return finish(run, state, false, options);
    }
    try {
        run.buildChannels();
    } catch (...) {
        reportDeviceFailure(options.file, std::current_exception());
        return EXIT_INPUT;
    }
    const bool isComplete = send(run, state, options);
    return finish(run, state, isComplete, options);
}

int run(const Options& options) {
    const auto config = DisplayFile::read(options.file);
    return config ? prepare(*config, stateNamed(options.state), options) : EXIT_INPUT;
}

Command::Run addTo(OptionList& line) {
    const auto options = std::make_shared<Options>();
    std::vector<std::string> names;
    std::transform(STATES.begin(), STATES.end(), std::back_inserter(names),
                   [](const State& state) { return state.name; });
    addDisplayFile(line, options->file);
    addFormat(line, options->format, OutputFormats{{"text", "json"}}, false);
    line.add("STATE", options->state, "black, gray50 or clear").required().oneOf(names);
    line.addFlag("--offline", options->offline, "Put virtual projectors in place of those that are not ready");
    addTimeout(line, *options);
    return Command::with(options, run);
}

}  // namespace

const Command PREPARE_COMMAND{.name = "prepare",
                              .summary = "Make every projector show black, half grey or its input; or none",
                              .example = "screenmanager prepare display.xml black",
                              .addTo = addTo};
