#include "OutputFormats.h"
#include "ProgressMeter.h"
#include "ProjectorSession/ProjectorDiscovery.h"
#include "ProjectorSession/SessionJson.h"
#include "Projectors.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>

using Veltrani::ProjectorSession::DiscoveredProjector;
using Veltrani::ProjectorSession::Discovery;
using Veltrani::ProjectorSession::ProjectorDiscovery;

namespace {

struct Options : DeviceOptions {
    std::string format;  ///< "text" or "json"
};

/// What is missing, in one line each. False when anything is.
bool reportMissing(const Discovery& found) {
    for (const DiscoveredProjector& projector : found.projectors) {
        if (!projector.fault.empty()) {
            Console::error(projector.fault);
        }
    }
    for (const std::string& line : found.leftOut) {
        Console::error(line);
    }
    return found.leftOut.empty() &&
           std::all_of(found.projectors.begin(), found.projectors.end(),
                       [](const DiscoveredProjector& projector) { return projector.fault.empty(); });
}

int run(const Options& options) {
    const auto settings = options.settings();
    if (options.isTalkative()) {
        std::ostringstream text;
        text << "searching for " << std::chrono::duration<double>(settings.search.duration).count() << " s";
        Console::say(text.str());
    }
    ProgressMeter progress(options.isTalkative(), "querying projectors", ProgressMeter::Pieces::SIDE_BY_SIDE);
    Discovery found;
    try {
        found = ProjectorDiscovery(settings, progress.callback()).run();
    } catch (...) {
        progress.end();
        reportDeviceFailure("discover", std::current_exception());
        return EXIT_INCOMPLETE;
    }
    progress.end();
    if (found.projectors.empty()) {
        Console::error("no projector replied; projectors of PJLink class 1 never do: use their address");
    }
    if (options.format == "json") {
        printJson(found, std::cout);
    } else if (!found.projectors.empty()) {
        ProjectorDiscovery::print(found.projectors, std::cout);
    }
    if (const ExitCode code = Console::finishOutput(); code != EXIT_ALL_RIGHT) {
        return code;
    }
    return !found.projectors.empty() && reportMissing(found) ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}

Command::Run addTo(OptionList& line) {
    const auto options = std::make_shared<Options>();
    addFormat(line, options->format, OutputFormats{{"text", "json"}}, false);
    addTimeout(line, *options);
    addBroadcast(line, *options);
    return Command::with(options, run);
}

}  // namespace

const Command DISCOVER_COMMAND{.name = "discover",
                               .summary = "Search the network for projectors and print those that reply",
                               .example = "screenmanager discover --timeout 10",
                               .addTo = addTo};
