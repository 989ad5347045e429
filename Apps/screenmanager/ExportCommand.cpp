#include "ChildJobs.h"
#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "ConsoleLog.h"
#include "DisplayFile.h"
#include "ExportFiles/ExportFolder.h"
#include "ExportFiles/ExportManifest.h"
#include "ExportFiles/ExportViews.h"
#include "ExportOptions.h"
#include "FailureReport.h"
#include "ProgressMeter.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <new>
#include <numeric>
#include <system_error>
#include <utility>

namespace {

using namespace Veltrani::ExportFiles;
using Veltrani::DisplayReport::ReportHead;
using Veltrani::DisplayReport::SourceFile;

/// The targets of the channels that are exported, where test pictures show them.
void placeTargets(XMLConfigFile& config, std::vector<ExportView>& views, const ExportOptions& options) {
    if (!options.request.hasTestPictures) {
        return;
    }
    ProgressMeter meter(options.isTalkative(), "placing targets, channel");
    ExportViews::placeTargets(config, views, meter.callback());
}

/// Between the parts of a record as a child hands it on; a result without the first part is why a file could not be
/// written.
constexpr char BETWEEN = '\t';

/// The parts hold no tabulator, once they are on one line.
std::string joined(const ViewRecord& record) {
    return record.json + BETWEEN + Veltrani::onOneLine(record.summary) + BETWEEN + Veltrani::onOneLine(record.warning);
}

ViewRecord parted(const std::string& joined) {
    const std::size_t first = joined.find(BETWEEN);
    const std::size_t second = joined.find(BETWEEN, first + 1);
    return {joined.substr(0, first), joined.substr(first + 1, second - first - 1), joined.substr(second + 1)};
}

bool isUnwritten(const ChildJobs::Outcome& outcome) {
    return outcome.result.starts_with(BETWEEN);
}

bool endsAll(const ChildJobs::Outcome& outcome) {
    return outcome.lacksMemory || outcome.isEnded || isUnwritten(outcome);
}

std::string written(const ViewExport& exporter, const ExportView& view, const ExportFolder& folder,
                    const Veltrani::DisplayReport::Progress& progress) {
    try {
        return joined(exporter.write(view, folder.file("."), progress));
    } catch (const ViewExport::UnwrittenFile& fault) {
        return BETWEEN + Veltrani::onOneLine(Veltrani::toUtf8(fault.message));
    }
}

/// What the outcomes come to: an exit code, with what is wrong reported.
int judge(const std::vector<ChildJobs::Outcome>& outcomes, const std::vector<ExportView>& views,
          const std::string& output) {
    int code = EXIT_ALL_RIGHT;
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        const ChildJobs::Outcome& outcome = outcomes[i];
        if (outcome.lacksMemory) {
            throw std::bad_alloc();
        }
        if (isUnwritten(outcome)) {
            Console::error(Veltrani::onOneLine(output) + ": " + outcome.result.substr(1));
            return EXIT_OUTPUT;
        }
        if (!outcome.fault.empty()) {
            const std::string channel = Veltrani::onOneLine(views[i].channel.describe());
            const std::string& fault = outcome.fault;
            Console::error(fault.find(channel) == std::string::npos ? channel + ": " + fault : fault);
            code = std::max<int>(code, outcome.isEnded ? EXIT_INTERNAL : EXIT_INPUT);
        }
    }
    return code;
}

/// The views with the most pixels first: one that takes long and begins last would keep its process busy alone.
std::vector<std::size_t> longestFirst(const std::vector<ExportView>& views) {
    std::vector<std::size_t> order(views.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto pixelsOf = [&views](std::size_t i) {
        const ProjectorConfig& projector = *views[i].channel.projector;
        return 1LL * projector.getWidth() * projector.getHeight();
    };
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t one, std::size_t other) { return pixelsOf(one) > pixelsOf(other); });
    return order;
}

/// False when a channel shows nothing; reported then.
bool reportUnmapped(const std::vector<ViewRecord>& records) {
    bool isComplete = true;
    for (const ViewRecord& record : records) {
        if (!record.warning.empty()) {
            Console::error(record.warning);
            isComplete = false;
        }
    }
    return isComplete;
}

std::string unitOf(const XMLConfigFile& config) {
    const IUnitsConfig* const units = config.getNativeUnitsConfig();
    return units == nullptr ? std::string() : Veltrani::toUtf8(units->getUnitName());
}

/// The display with everything that its views need.
struct Work {
    std::unique_ptr<XMLConfigFile> config;
    std::vector<SourceFile> sources;
    std::vector<ExportView> views;
    ExportRequest request;
};

int writeFolder(Work& work, ExportFolder& folder, const ExportOptions& options) {
    ProgressMeter meter(options.isTalkative(), "exporting, part");
    const ViewExport exporter(*work.config, work.request);
    for (const std::string& channel : exporter.withoutLight()) {
        if (options.isTalkative()) {
            Console::say("note: the blends know nothing of the light of " + channel);
        }
    }
    const auto outcomes = ChildJobs::run(
        longestFirst(work.views), options.jobs > 0 ? options.jobs : ChildJobs::usualNumber(),
        [&](std::size_t i, const Veltrani::DisplayReport::Progress& progress) {
            return written(exporter, work.views[i], folder, progress);
        },
        endsAll, meter);
    meter.end();
    if (!outcomes) {
        return EXIT_OUTPUT;
    }
    if (const int fault = judge(*outcomes, work.views, options.output); fault != EXIT_ALL_RIGHT) {
        return fault;
    }
    std::vector<ViewRecord> records;
    std::vector<std::string> views;
    for (const ChildJobs::Outcome& outcome : *outcomes) {
        records.push_back(parted(outcome.result));
        views.push_back(records.back().json);
    }
    const bool areMapped = reportUnmapped(records);
    if (!areMapped &&
        std::all_of(records.begin(), records.end(), [](const ViewRecord& record) { return !record.warning.empty(); })) {
        Console::error("no channel has anything that is mapped, and nothing was written");
        return EXIT_INCOMPLETE;
    }
    folder.writeManifest(manifestOf(work.request, unitOf(*work.config), work.sources, views));
    folder.commit();
    for (const ViewRecord& record : records) {
        if (options.isTalkative()) {
            Console::say(record.summary);
        }
    }
    return areMapped ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}

/// The display and the content; an exit code where one of them cannot be used, which has been reported then.
int readWork(Work& work, const ExportOptions& options) {
    work.config = DisplayFile::read(options.file);
    if (!work.config) {
        return EXIT_INPUT;
    }
    try {
        work.views = ExportViews::of(*work.config, options.channels, options.eyePoints);
    } catch (const VeltraniExceptionBase&) {
        reportFailure("--channel", std::current_exception());
        return EXIT_USAGE;
    }
    if (work.views.empty()) {
        Console::error(options.file +
                       ": the display has no channels, and nothing was written: add some, see "
                       "screenmanager add");
        return EXIT_INCOMPLETE;
    }
    work.request = options.request;
    try {
        work.request.blend = blendRequestOf(*work.config, options.blend);
    } catch (const VeltraniExceptionBase&) {
        reportFailure("--black-level", std::current_exception());
        return EXIT_USAGE;
    }
    // Before the work, which may take minutes: a file that changes meanwhile is not what it was made from.
    work.sources = ReportHead::sourcesOf(options.file);
    if (!options.content.empty()) {
        try {
            work.request.content = std::make_shared<const ContentPicture>(ContentPicture::read(options.content));
        } catch (const VeltraniExceptionBase&) {
            reportFailure("--content", std::current_exception());
            return EXIT_INPUT;
        }
        work.sources.push_back(ReportHead::source(options.content));
    }
    return EXIT_ALL_RIGHT;
}

/// False when the folder cannot be made, or may not be replaced; reported then, before anything is computed.
bool isPossible(const ExportOptions& options) {
    try {
        const HeldSignals held;
        const ExportFolder trial(options.output, options.force);
        return true;
    } catch (const VeltraniExceptionBase&) {
        reportFailure("--output", std::current_exception());
        return false;
    }
}

/// True when the folder that would be replaced holds the content; reported then.
bool replacesContent(const ExportOptions& options) {
    std::error_code unknown;
    const std::filesystem::path folder = std::filesystem::path(options.content).parent_path();
    if (options.content.empty() ||
        !std::filesystem::equivalent(folder.empty() ? "." : folder, options.output, unknown)) {
        return false;
    }
    Console::error(options.content + " lies in the folder that would be replaced: name another one with --output");
    return true;
}

int run(const ExportOptions& options) {
    if (replacesContent(options)) {
        return EXIT_USAGE;
    }
    Work work;
    const int fault = readWork(work, options);
    if (fault != EXIT_ALL_RIGHT) {
        return fault;
    }
    if (!isPossible(options)) {
        return EXIT_OUTPUT;
    }
    if (!DisplayFile::buildScreen(*work.config, options.file, options.verbosity)) {
        return EXIT_INPUT;
    }
    // The library logs every ray that it bends by a table: a million lines.
    const ConsoleLog::ErrorsOnly quieter(options.isTalkative());
    try {
        placeTargets(*work.config, work.views, options);
        const HeldSignals held;
        ExportFolder folder(options.output, options.force);
        return writeFolder(work, folder, options);
    } catch (const VeltraniExceptionBase&) {
        reportFailure("--output", std::current_exception());
        return EXIT_OUTPUT;
    }
}

Command::Run addTo(OptionList& line) {
    const auto options = std::make_shared<ExportOptions>();
    addExportOptions(line, *options);
    return Command::with(options, run);
}

}  // namespace

const Command EXPORT_COMMAND{.name = "export",
                             .summary = "Write what players need of every channel: frusta, warps, test pictures",
                             .example = "screenmanager export display.xml --output player --format obj",
                             .addTo = addTo,
                             .bendsMillionsOfRays = true};
