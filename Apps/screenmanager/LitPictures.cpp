#include "LitPictures.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "ConsoleLog.h"
#include "DisplayFile.h"
#include "DisplayLight/LightSum.h"
#include "DisplayLight/LitReport.h"
#include "DisplayReport/scene/DisplayScene.h"
#include "FailureReport.h"
#include "OutputFormats.h"
#include "ProgressMeter.h"
#include "ResultFile.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace {

using Veltrani::DisplayLight::LightRequest;
using Veltrani::DisplayLight::LightSum;
using Veltrani::DisplayLight::LitPicture;
using Veltrani::DisplayLight::LitReport;
using Veltrani::DisplayReport::Progress;
using Veltrani::DisplayReport::ReportHead;
using Veltrani::DisplayReport::SourceFile;
using Veltrani::ExportFiles::ExportedDisplay;

constexpr const char* LIT = "--lit";
constexpr const char* LIT_ERROR = "--lit-error";

std::string formatOfErrors(const std::string& file) {
    return OutputFormats{{"png", "text", "json"}}.chosen({}, file, LIT_ERROR);
}

/// Of each side of a page's surface: pictures that every browser takes, in a page of some megabytes.
constexpr std::size_t MOST_PLACES = 1'000'000;

/// The work of one run.
struct LitWork {
    XMLConfigFile& config;
    const std::string& file;
    const LitOptions& options;
    const std::string& output;
    Verbosity verbosity;

    [[nodiscard]] bool isTalkative() const { return verbosity != Verbosity::QUIET; }
    [[nodiscard]] std::vector<std::string> outputs() const {
        std::vector<std::string> all{output};
        all.insert(all.end(), options.errors.begin(), options.errors.end());
        return all;
    }
};

/// True when a result would replace a file of the export or of the display, or show on a terminal what people cannot
/// read there; reported then.
bool isMisused(const LitWork& work, const ExportedDisplay& exported) {
    for (const std::string& output : work.outputs()) {
        if (ResultFile::replacesInput(output, work.config, work.file)) {
            return true;
        }
        bool isPart = !ResultFile::isStandardOutput(output) && ResultFile::isSameFile(output, exported.manifestPath());
        for (const auto& view : exported.views()) {
            for (const auto& one : view.files) {
                isPart = isPart || (!ResultFile::isStandardOutput(output) &&
                                    ResultFile::isSameFile(output, exported.pathOf(one)));
            }
        }
        if (isPart) {
            Console::error(output + " is a file of the export that --lit reads: name another one");
            return true;
        }
    }
    for (const std::string& error : work.options.errors) {
        if (formatOfErrors(error) == "png" && ResultFile::wouldFloodTerminal(error, "PNG", LIT_ERROR)) {
            return true;
        }
    }
    return false;
}

/// Null when the folder cannot be read; reported then.
std::unique_ptr<const ExportedDisplay> readExport(const std::string& folder) {
    try {
        return std::make_unique<const ExportedDisplay>(ExportedDisplay::read(folder));
    } catch (const VeltraniExceptionBase&) {
        reportFailure(LIT, std::current_exception());
        return nullptr;
    }
}

/// Null when the light cannot be added up; reported then.
/// @param sum receives what adds up, and what counts the channels
template <class Sum>
auto addUp(XMLConfigFile& config, const ExportedDisplay& exported, bool isTalkative, const Sum& sum) {
    using Result = decltype(sum(std::declval<const LightSum&>(), Progress()));
    ProgressMeter meter(isTalkative, "adding up the light, channel");
    // The library logs every ray that it bends by a table: a million lines.
    const ConsoleLog::ErrorsOnly quieter(isTalkative);
    try {
        return std::make_unique<const Result>(sum(LightSum(config, exported), meter.callback()));
    } catch (const VeltraniExceptionBase&) {
        meter.end();
        reportFailure(LIT, std::current_exception());
        return std::unique_ptr<const Result>();
    }
}

std::unique_ptr<const LitPicture> addUpPicture(const LitWork& work, const ExportedDisplay& exported,
                                               const ColumnsByRows& size) {
    return addUp(work.config, exported, work.isTalkative(), [&](const LightSum& sum, const Progress& progress) {
        LightRequest request;
        request.width = static_cast<std::size_t>(size.columns);
        request.height = static_cast<std::size_t>(size.rows);
        request.hasErrors = !work.options.errors.empty();
        request.progress = progress;
        return sum.picture(request);
    });
}

std::string changedText(const std::string& file) {
    return file + " has changed since the export: its geometry is the one of now";
}

/// Whether the configuration is another one than that which the export was made from.
bool isChanged(const std::vector<SourceFile>& sources, const ExportedDisplay& exported) {
    return !sources.empty() && !exported.sources().empty() &&
           sources.front().sha256 != exported.sources().front().sha256;
}

bool writeErrors(const LitWork& work, const LitPicture& picture, const std::vector<SourceFile>& sources) {
    const IUnitsConfig* const units = work.config.getNativeUnitsConfig();
    const LitReport report(picture, units == nullptr ? std::string() : Veltrani::toUtf8(units->getUnitName()));
    for (const std::string& error : work.options.errors) {
        const std::string format = formatOfErrors(error);
        const bool isWritten = ResultFile::write(error, [&](std::ostream& out) {
            if (format == "png") {
                picture.errors().write(out);
            } else if (format == "json") {
                report.writeJson(sources, out);
            } else {
                report.writeText(out);
            }
        });
        if (!isWritten) {
            return false;
        }
    }
    return true;
}

}  // namespace

Option addLitOption(OptionList& line, LitOptions& options, const char* help) {
    return line.add(LIT, options.folder, help).typeName("FOLDER");
}

Option addLitOptions(OptionList& line, LitOptions& options) {
    const Option lit =
        addLitOption(line, options, "Show the light of an export instead, from the eye point: its folder");
    line.add(LIT_ERROR, options.errors,
             "File for how far the light is off: a map (.png), figures (.txt, .json); may be given several times")
        .oneValueEach()
        .typeName("FILE");
    return lit;
}

void checkLitOptions(const LitOptions& options, const std::string& output) {
    if (!options.errors.empty() && !options.isWanted()) {
        OptionList::refuse(LIT_ERROR, "needs --lit, the folder of an export");
    }
    for (std::size_t i = 0; i < options.errors.size(); ++i) {
        const std::string& error = options.errors[i];
        static_cast<void>(formatOfErrors(error));
        for (std::size_t k = 0; k <= i; ++k) {
            const std::string& other = k < i ? options.errors[k] : output;
            const bool isStandard = ResultFile::isStandardOutput(error) && ResultFile::isStandardOutput(other);
            if (isStandard || (!ResultFile::isStandardOutput(error) && !ResultFile::isStandardOutput(other) &&
                               ResultFile::isSamePlace(error, other))) {
                OptionList::refuse(LIT_ERROR, "two results would go to " + (isStandard ? "standard output" : error) +
                                                  ": name a file for each");
            }
        }
    }
}

int writeLitPicture(XMLConfigFile& config, const std::string& file, const LitOptions& options,
                    const std::string& output, const ColumnsByRows& size, Verbosity verbosity) {
    const LitWork work{config, file, options, output, verbosity};
    const auto exported = readExport(options.folder);
    if (!exported) {
        return EXIT_INPUT;
    }
    if (isMisused(work, *exported)) {
        return EXIT_USAGE;
    }
    // Before the work, which may take long: a file that changes meanwhile is not what it was made from.
    std::vector<SourceFile> sources = ReportHead::sourcesOf(file);
    const bool isOther = isChanged(sources, *exported);
    sources.push_back(ReportHead::source(exported->manifestPath()));
    if (!DisplayFile::buildScreen(config, file, verbosity)) {
        return EXIT_INPUT;
    }
    const auto picture = addUpPicture(work, *exported, size);
    if (!picture) {
        return EXIT_INPUT;
    }
    if (work.isTalkative()) {
        if (isOther) {
            Console::say("note: " + changedText(file));
        }
        for (const std::string& note : picture->notes) {
            Console::say("note: " + note);
        }
    }
    if (!ResultFile::write(output, [&](std::ostream& out) { picture->shown().write(out); }) ||
        !writeErrors(work, *picture, sources)) {
        return EXIT_OUTPUT;
    }
    return EXIT_ALL_RIGHT;
}

LitScene::LitScene(const LitOptions& options, const std::string& output, XMLConfigFile& config, std::string file,
                   Verbosity verbosity)
    : m_config(config), m_file(std::move(file)), m_verbosity(verbosity), m_exported(readExport(options.folder)) {
    if (!m_exported) {
        m_code = EXIT_INPUT;
    } else if (isMisused({config, m_file, options, output, verbosity}, *m_exported)) {
        m_code = EXIT_USAGE;
    } else {
        m_isChanged = isChanged(ReportHead::sourcesOf(m_file), *m_exported);
    }
}

LitScene::~LitScene() = default;

bool LitScene::addTo(Veltrani::DisplayReport::DisplayScene& scene) const {
    const bool isTalkative = m_verbosity != Verbosity::QUIET;
    const auto surface = addUp(m_config, *m_exported, isTalkative, [](const LightSum& sum, const Progress& progress) {
        return sum.surface(MOST_PLACES, progress);
    });
    if (!surface) {
        return false;
    }
    if (m_isChanged) {
        scene.notes.push_back(changedText(m_file));
    }
    scene.notes.insert(scene.notes.end(), surface->notes.begin(), surface->notes.end());
    scene.light = surface->scene(scene.unit);
    return true;
}
