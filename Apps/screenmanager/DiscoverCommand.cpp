#include "DiscoverCommand.h"

#include "DisplayReport/ProjectorDiscovery.h"
#include "DisplayReport/TextTable.h"
#include "ExitCode.h"
#include "ProgressMeter.h"
#include "ProjectorReport.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <vector>

using Veltrani::DisplayReport::DiscoveredProjector;
using Veltrani::DisplayReport::ProjectorDiscovery;

int DiscoverCommand::run(const DeviceOptions& options) {
    const auto settings = options.settings();
    if (options.talkative()) {
        const double seconds = std::chrono::duration<double>(settings.search.duration).count();
        std::cerr << "searching for " << seconds << " s\n";
    }
    ProgressMeter progress(options.talkative(), "asking projectors");
    std::vector<DiscoveredProjector> found;
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
    if (found.empty()) {
        std::cerr << "error: no projector answered; projectors of PJLink class 1 never do: use their address\n";
        return EXIT_INCOMPLETE;
    }
    ProjectorDiscovery::print(found, std::cout);
    if (!std::cout.flush()) {
        std::cerr << "error: standard output cannot be written\n";
        return EXIT_OUTPUT;
    }
    int code = EXIT_ALL_RIGHT;
    for (const DiscoveredProjector& projector : found) {
        if (!projector.fault.empty()) {
            std::cerr << "error: " + projector.fault + '\n';
            code = EXIT_INCOMPLETE;
        }
    }
    return code;
}
