#include "Configuration/XMLConfigFile.h"
#include "DisplayFile.h"
#include "OutputFormats.h"
#include "ProgressMeter.h"
#include "ProjectorSession/ChannelListing.h"
#include "ProjectorSession/ProjectorRun.h"
#include "ProjectorSession/SessionJson.h"
#include "Projectors.h"

#include <iostream>

namespace {

using namespace Veltrani::ProjectorSession;
using Veltrani::DeviceFramework2::DeviceManager;

struct Options : DeviceOptions {
    std::string file;      ///< the configuration, which is not changed
    std::string format;    ///< "text" or "json"
    bool offline = false;  ///< virtual projectors in place of those that cannot be reached
};

/// False when standard output does not take everything, which has been reported then.
bool printListing(const ChannelListing& listing, const ProjectorRun& run, const Options& options) {
    if (options.format == "json") {
        printJson(listing, run.findings(), Veltrani::DisplayReport::ReportHead::sourcesOf(options.file), std::cout);
    } else {
        listing.print(std::cout);
    }
    if (Console::finishOutput() != EXIT_ALL_RIGHT) {
        return false;
    }
    for (const Veltrani::DisplayReport::Fault& fault : listing.faults) {
        Console::error(fault.where + ": " + fault.what);
    }
    return true;
}

int list(XMLConfigFile& config, const Options& options) {
    DeviceManager devices(options.settings());
    ProgressMeter progress(options.isTalkative(), "querying projectors", ProgressMeter::Pieces::SIDE_BY_SIDE);
    ProjectorRun run(config, devices, ProjectorNeed::ANSWER, progress.callback());
    if (reportNone(run.findings(), options.file)) {
        return options.format == "json" && !printListing({}, run, options) ? EXIT_OUTPUT : EXIT_INCOMPLETE;
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
    if (!printListing(listing, run, options)) {
        return EXIT_OUTPUT;
    }
    if (!replace || options.isTalkative()) {
        reportUnusable(run.findings(), replace);
    }
    return channels && listing.faults.empty() ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}

int run(const Options& options) {
    const auto config = DisplayFile::read(options.file);
    return config ? list(*config, options) : EXIT_INPUT;
}

Command::Run addTo(OptionList& line) {
    const auto options = std::make_shared<Options>();
    addDisplayFile(line, options->file);
    addFormat(line, options->format, OutputFormats{{"text", "json"}}, false);
    line.addFlag("--offline", options->offline, "Put virtual projectors in place of those that cannot be reached");
    addTimeout(line, *options);
    return Command::with(options, run);
}

}  // namespace

const Command CHANNELS_COMMAND{.name = "channels",
                               .summary = "Query every projector; print the channels and what they report",
                               .example = "screenmanager channels display.xml",
                               .addTo = addTo};
