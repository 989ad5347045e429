#include "Bindings.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "DisplayFit/DisplayFitter.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "FitResults.h"
#include "FitSession/ControlCheck.h"
#include "FitSession/FitReport.h"
#include "FitSession/FittedDisplay.h"
#include "FitSession/MeasuredPointReader.h"
#include "MeasuredArrays.h"
#include "Refusals.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace {

using namespace Veltrani::DisplayFit;
using namespace Veltrani::FitSession;
using Names = std::vector<std::string>;

using Veltrani::DisplayReport::ChannelChoice;
using Veltrani::DisplayReport::ReportHead;

/// How a script wants a fit, apart from its measurements.
struct FitPlan {
    Names channels;
    FitOptions options;
    std::optional<RegistrationKind> registration;
    bool hasJson = false;
    std::string path;    ///< of the configuration
    std::string digest;  ///< of its text
};

/// The group of that name in reports.
bool SolvedGroups::*groupNamed(const std::string& name) {
    constexpr std::array GROUPS{&SolvedGroups::position, &SolvedGroups::orientation, &SolvedGroups::frustum,
                                &SolvedGroups::distortion, &SolvedGroups::area};
    std::string names;
    for (bool SolvedGroups::*const group : GROUPS) {
        SolvedGroups one;
        one.*group = true;
        const std::string known = FitReport::namesOf(one).front();
        if (name == known) {
            return group;
        }
        names += (names.empty() ? "" : ", ") + known;
    }
    throw ArgumentFault{"solve: expected some of " + names + ", found " + name};
}

SolvedGroups groupsOf(const Names& names) {
    SolvedGroups groups;
    for (const std::string& name : names) {
        groups.*groupNamed(name) = true;
    }
    return groups;
}

void hold(const Names& names, FitOptions& options) {
    for (const std::string& name : names) {
        if (name == "square-pixels") {
            options.holdsSquarePixels = true;
        } else if (name == "horizontal-shift") {
            options.holdsHorizontalShift = true;
        } else {
            throw ArgumentFault{"hold: expected some of square-pixels, horizontal-shift, found " + name};
        }
    }
}

std::optional<RegistrationKind> registrationOf(const std::string& name) {
    if (name.empty()) {
        return std::nullopt;
    }
    if (name != "rigid" && name != "similarity") {
        throw ArgumentFault{"register: expected rigid or similarity, found " + name};
    }
    return name == "rigid" ? RegistrationKind::RIGID : RegistrationKind::SIMILARITY;
}

FitPlan planOf(const py::tuple& parts) {
    FitPlan plan;
    plan.channels = parts[0].cast<Names>();
    if (!parts[1].is_none()) {
        plan.options.solved = groupsOf(parts[1].cast<Names>());
    }
    hold(parts[2].cast<Names>(), plan.options);
    plan.options.isRobust = parts[3].cast<bool>();
    plan.options.rejection = parts[4].cast<double>();
    plan.registration = registrationOf(parts[5].cast<std::string>());
    plan.hasJson = parts[6].cast<bool>();
    plan.path = parts[7].cast<std::string>();
    plan.digest = parts[8].cast<std::string>();
    return plan;
}

template <class Arrays>
std::vector<Arrays> arraysOf(const py::list& parts, const std::string& argument) {
    std::vector<Arrays> arrays;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        arrays.emplace_back(parts[i].cast<py::tuple>(), argument + '[' + std::to_string(i) + ']');
    }
    return arrays;
}

/// A fit of what was measured. Needs no Python.
FitReport fit(DisplayState& display, const FitPlan& plan, MeasuredPoints measured, const std::string& table) {
    FitReport report;
    report.configuration = plan.path;
    report.table = table;
    report.measured = std::move(measured);
    if (plan.registration) {
        report.frames = FrameRegistration::apply(report.measured, *plan.registration);
    }
    if (report.measured.points.empty()) {
        throw VeltraniException(L"there are no measurements with a place in a picture: add some");
    }
    report.combined = combineRepeated(report.measured.points, Entry::pulse);
    display.requireScreen();
    FitOptions options = plan.options;
    for (const std::string& channel : plan.channels) {
        options.channels.push_back(ChannelChoice::of(display.config(), channel).index);
    }
    if (plan.hasJson) {
        report.files = display.sources(plan.path, plan.digest);
    }
    options.pulse = Entry::pulse;
    const DisplayFitter fitter(options, [](std::size_t, std::size_t) { Entry::pulse(); });
    report.result = fitter.fit(display.config(), report.combined.points);
    ControlCheck::judge(report.measured, report.frames, report.result);
    return report;
}

/// A fit with its reports as text.
struct PrintedFit {
    FitReport report;
    std::string text;
    std::string json;  ///< empty unless it is wanted
};

/// Needs no Python.
PrintedFit printed(FitReport report, const FitPlan& plan) {
    PrintedFit made{std::move(report), {}, {}};
    std::ostringstream text;
    made.report.printText(text);
    made.text = std::move(text).str();
    if (plan.hasJson) {
        std::ostringstream json;
        made.report.printJson(json, Entry::pulse);
        made.json = std::move(json).str();
    }
    return made;
}

/// The records of the script, the report for people, and the one for programs if that is wanted.
py::tuple resultOf(const PrintedFit& made, const FitPlan& plan, std::size_t firstRow) {
    // Paths may hold what is no character.
    return py::make_tuple(tupleOf(made.report, firstRow), py::bytes(made.text),
                          plan.hasJson ? py::object(py::bytes(made.json)) : py::none());
}

py::tuple fitTable(DisplayState& display, const std::string& table, const std::string& unit, bool isFromTop,
                   const py::tuple& settings) {
    const FitPlan plan = planOf(settings);
    const PrintedFit made = inEntry(&display, [&] {
        const MeasuredPointReader reader(display.config(), {unit, isFromTop, Entry::pulse});
        FitReport report = fit(display, plan, reader.readFile(table), table);
        if (plan.hasJson) {
            report.files.push_back(ReportHead::source(table));
        }
        return printed(std::move(report), plan);
    });
    return resultOf(made, plan, 0);
}

py::tuple fitArrays(DisplayState& display, const py::list& measured, const py::list& controls,
                    const py::tuple& settings) {
    const FitPlan plan = planOf(settings);
    const auto arrays = arraysOf<MeasuredArrays>(measured, "measured");
    const auto marks = arraysOf<ControlArrays>(controls, "controls");
    std::size_t count = 0;
    for (const MeasuredArrays& part : arrays) {
        count += part.count();
    }
    if (count > MeasuredPointReader::MOST_POINTS) {
        throw ArgumentFault{"measured: expected " + std::to_string(MeasuredPointReader::MOST_POINTS) +
                            " points at most, found " + std::to_string(count)};
    }
    const PrintedFit made = inEntry(&display, [&] {
        MeasuredPoints points;
        for (const MeasuredArrays& part : arrays) {
            part.addTo(display.config(), points);
        }
        for (const ControlArrays& part : marks) {
            part.addTo(points);
        }
        return printed(fit(display, plan, std::move(points), "arrays"), plan);
    });
    return resultOf(made, plan, 1);
}

/// What a fit has found, as it is put into a display.
ChannelFit foundOf(const py::tuple& parts) {
    ChannelFit found;
    found.projectorId = parts[0].cast<std::string>();
    found.solved = groupsOf(parts[1].cast<Names>());
    found.isSolved = true;
    found.after = valuesFrom(parts[2].cast<py::tuple>());
    return found;
}

/// Refuses a lens for a channel that has none.
void requireLens(const ChannelFit& found, const ProjectorConfig& record) {
    if (found.after.lens && record.getProjectionModelName().empty()) {
        throw VeltraniException(
            Veltrani::fromUtf8OrBytes("the channel \"" + found.projectorId + "\" has no lens any more: fit it again"));
    }
}

/// Puts all of them in, or none; returns the lens files that were written.
Names take(XMLConfigFile& config, const std::string& path, const std::vector<ChannelFit>& fits) {
    // Into a copy first, with the lens files: what can be refused is refused there.
    const auto copy = XMLConfigFile::parse(config.text(), path);
    FittedDisplay trial(*copy, {}, path);
    for (const ChannelFit& found : fits) {
        trial.take(found);
    }
    FittedDisplay fitted(config, {}, path);
    for (ChannelFit found : fits) {
        const std::wstring id = Veltrani::fromUtf8(found.projectorId);
        if (found.after.lens) {
            found.after.lens.reset();
            found.solved.frustum = false;
            config.getProjectorConfig(id)->setProjectionModelName(
                copy->getProjectorConfig(id)->getProjectionModelName());
        }
        fitted.take(found);
    }
    trial.keep();
    return trial.lensFiles();
}

py::list applyFit(DisplayState& display, const std::string& path, const py::list& parts) {
    std::vector<ChannelFit> fits;
    for (const py::handle part : parts) {
        fits.push_back(foundOf(part.cast<py::tuple>()));
    }
    const Names files = inEntry(nullptr, [&] {
        for (const ChannelFit& found : fits) {
            requireLens(found, display.channel(Veltrani::fromUtf8(found.projectorId)));
        }
        display.channelsChanged();
        return take(display.config(), path, fits);
    });
    py::list paths;
    for (const std::string& file : files) {
        paths.append(py::bytes(file));
    }
    return paths;
}

}  // namespace

void bindFits(DisplayClass& display) {
    display.def("fit_table", &fitTable).def("fit_arrays", &fitArrays).def("apply_fit", &applyFit);
}
