#include "ChannelsCommand.h"

#include "Configuration/XMLConfigFile.h"
#include "Console.h"
#include "DisplayReport/ChannelListing.h"
#include "DisplayReport/ProjectorRun.h"
#include "ExitCode.h"
#include "FailureReport.h"
#include "ProgressMeter.h"
#include "ProjectorReport.h"

#include <iostream>
#include <memory>

namespace {

using namespace Veltrani::DisplayReport;
using Veltrani::DeviceFramework2::DeviceManager;

/// False when standard output does not take everything, which has been reported then.
bool printListing(const ChannelListing& listing) {
    listing.print(std::cout);
    if (!std::cout.flush()) {
        Console::say("error: standard output cannot be written");
        return false;
    }
    for (const Fault& fault : listing.faults) {
        Console::say("error: " + fault.where + ": " + fault.what);
    }
    return true;
}

int list(XMLConfigFile& config, const ChannelsCommand::Options& options) {
    DeviceManager devices(options.devices.settings());
    ProgressMeter progress(options.devices.talkative(), "asking projectors");
    ProjectorRun run(config, devices, ProjectorNeed::ANSWER,
                     [&progress](std::size_t done, std::size_t total) { progress.update(done, total); });
    if (reportNone(run.findings(), options.file)) {
        return EXIT_INCOMPLETE;
    }
    if (reportConflicts(run.findings())) {
        return EXIT_INPUT;
    }
    const bool replace = options.offline && !run.complete();
    const bool channels = replace || run.complete();
    if (channels) {
        try {
            run.buildChannels();
        } catch (...) {
            reportDeviceFailure(options.file, std::current_exception());
            return EXIT_INPUT;
        }
    }
    const ChannelListing listing = channels ? ChannelListing::ofChannels(run) : ChannelListing::ofEntries(run);
    progress.end();
    if (!printListing(listing)) {
        return EXIT_OUTPUT;
    }
    if (!replace || options.devices.talkative()) {
        reportUnusable(run.findings(), replace);
    }
    return channels && listing.faults.empty() ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}

}  // namespace

int ChannelsCommand::run(const Options& options) {
    std::unique_ptr<XMLConfigFile> config;
    try {
        config = XMLConfigFile::load(options.file);
    } catch (...) {
        reportConfigurationFailure(options.file, std::current_exception());
        return EXIT_INPUT;
    }
    return list(*config, options);
}
