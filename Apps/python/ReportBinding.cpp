#include "Arrays.h"
#include "Bindings.h"
#include "DisplayReport/check/DisplayCheck.h"
#include "DisplayReport/check/Rule.h"
#include "DisplayReport/coverage/CoverageSurvey.h"
#include "Refusals.h"

#include <pybind11/stl.h>

#include <cstdint>
#include <string>
#include <vector>

namespace py = pybind11;

namespace {

using namespace Veltrani::DisplayReport;

py::list channelsOf(const CoverageReport& report) {
    py::list channels;
    for (const ChannelCoverage& channel : report.channels) {
        channels.append(py::make_tuple(channel.name, channel.projectorId, py::make_tuple(channel.width, channel.height),
                                       channel.area, channel.landed, channel.missed(), channel.pitch.least,
                                       channel.meanPitch(), channel.pitch.most, channel.pitch.measured, channel.fault,
                                       channel.isLighting));
    }
    return channels;
}

py::list overlapsOf(const CoverageReport& report) {
    py::list overlaps;
    for (const ChannelOverlap& overlap : report.overlaps) {
        overlaps.append(
            py::make_tuple(overlap.first, overlap.second, overlap.area, overlap.partOfFirst, overlap.partOfSecond));
    }
    return overlaps;
}

py::tuple piecesOf(const std::vector<CoveredPiece>& pieces) {
    const Shape shape{static_cast<py::ssize_t>(pieces.size())};
    ResultRows<double> corners(extended(extended(shape, 3), 3));
    ResultRows<std::int64_t> counts(shape);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        for (std::size_t k = 0; k < pieces[i].corners.size(); ++k) {
            corners.set(3 * i + k, pieces[i].corners[k]);
        }
        *counts.at(i) = static_cast<std::int64_t>(pieces[i].channels);
    }
    return py::make_tuple(corners.array(), counts.array());
}

py::tuple coverage(DisplayState& display, bool keepPieces) {
    std::vector<CoveredPiece> pieces;
    const CoverageReport report = inEntry(&display, [&] {
        display.requireScreen();
        CoverageSurvey survey([](std::size_t, std::size_t) { Entry::pulse(); });
        if (keepPieces) {
            survey.keepPieces(pieces);
        }
        return survey.of(display.config());
    });
    const py::object parts = keepPieces ? py::object(piecesOf(pieces)) : py::none();
    return py::make_tuple(report.unit, report.fault, report.screenArea, py::cast(report.areaByCount),
                          channelsOf(report), overlapsOf(report), parts);
}

py::list faultsOf(const DisplayDescription& description) {
    py::list faults;
    for (const Fault& fault : description.faults) {
        faults.append(py::make_tuple(fault.where, fault.what, py::tuple(py::cast(fault.causes))));
    }
    return faults;
}

py::list findingsOf(const DisplayDescription& description) {
    py::list findings;
    for (const Finding& finding : description.findings) {
        findings.append(py::make_tuple(std::string(nameOf(finding.severity)), finding.rule, finding.where, finding.what,
                                       py::tuple(py::cast(finding.causes))));
    }
    return findings;
}

py::dict factsOf(const std::vector<DisplayFact>& facts) {
    py::dict values;
    for (const DisplayFact& fact : facts) {
        values[py::cast(fact.label)] = fact.value;
    }
    return values;
}

void requireRules(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (!Rule::canBeAllowed(name)) {
            throw ArgumentFault{"allowed: no rule that can be allowed is called " + name + ", expected one of " +
                                Rule::namesToAllow()};
        }
    }
}

py::tuple check(DisplayState& display, bool quick, const std::vector<std::string>& allowed) {
    requireRules(allowed);
    const DisplayDescription description = inEntry(&display, [&] {
        // The check builds the screens anew, in place of those that are current.
        display.screenChanged();
        DisplayDescription found = DisplayCheck::ofConfiguration(display.config(), {quick, allowed});
        if (found.faults.empty()) {
            display.adoptScreen();
        }
        return found;
    });
    py::list channels;
    for (const ChannelDescription& channel : description.channels) {
        channels.append(py::make_tuple(channel.name, channel.projectorId, factsOf(channel.facts)));
    }
    return py::make_tuple(factsOf(description.facts), channels, faultsOf(description), findingsOf(description),
                          py::tuple(py::cast(description.leftOut)));
}

}  // namespace

void bindReports(DisplayClass& display) {
    display.def("coverage", &coverage).def("check", &check);
}
