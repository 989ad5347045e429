#include "DiscoverCommand.h"

#include "Console.h"
#include "DisplayReport/ProjectorDiscovery.h"
#include "ExitCode.h"
#include "ProgressMeter.h"
#include "ProjectorReport.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>

using Veltrani::DisplayReport::DiscoveredProjector;
using Veltrani::DisplayReport::Discovery;
using Veltrani::DisplayReport::ProjectorDiscovery;

namespace {

/// What is missing, in one line each. False when anything is.
bool reportMissing(const Discovery& found) {
    for (const DiscoveredProjector& projector : found.projectors) {
        if (!projector.fault.empty()) {
            Console::say("error: " + projector.fault);
        }
    }
    for (const std::string& line : found.leftOut) {
        Console::say("error: " + line);
    }
    return found.leftOut.empty() &&
           std::all_of(found.projectors.begin(), found.projectors.end(),
                       [](const DiscoveredProjector& projector) { return projector.fault.empty(); });
}

}  // namespace

int DiscoverCommand::run(const DeviceOptions& options) {
    const auto settings = options.settings();
    if (options.talkative()) {
        std::ostringstream text;
        text << "searching for " << std::chrono::duration<double>(settings.search.duration).count() << " s";
        Console::say(text.str());
    }
    ProgressMeter progress(options.talkative(), "asking projectors");
    Discovery found;
    try {
        found = ProjectorDiscovery(settings, [&progress](std::size_t done, std::size_t total) {
                    progress.update(done, total);
                }).run();
    } catch (...) {
        progress.end();
        reportDeviceFailure("discover", std::current_exception());
        return EXIT_INCOMPLETE;
    }
    progress.end();
    if (found.projectors.empty()) {
        Console::say("error: no projector answered; projectors of PJLink class 1 never do: use their address");
        return EXIT_INCOMPLETE;
    }
    ProjectorDiscovery::print(found.projectors, std::cout);
    if (!std::cout.flush()) {
        Console::say("error: standard output cannot be written");
        return EXIT_OUTPUT;
    }
    return reportMissing(found) ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}
