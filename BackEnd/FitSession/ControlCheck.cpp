#include "FitSession/ControlCheck.h"

#include "Common/QuotedText.h"
#include "DisplayReport/basics/NumberText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <string>

namespace Veltrani::FitSession {

namespace {

using DisplayFit::DisplayFitResult;
using DisplayFit::FitFinding;
using DisplayFit::FitOutcome;
using DisplayReport::significantText;
using Kind = FitFinding::Kind;

/// The part of the points at either end that may be wrong, and say nothing of what the others span.
constexpr double ENDS = 0.05;

constexpr std::size_t FEWEST_FOR_FRAME = 3;

std::string ofSet(const std::string& set) {
    return set.empty() ? "" : " of set " + inQuotes(set);
}

std::string lengthText(double length, const DisplayFitResult& result) {
    return significantText(length) + (result.unit.empty() ? "" : " " + result.unit);
}

/// The diagonal of the box around places, but for some at its ends.
double diagonalOf(const std::vector<Point<double, 3>>& places, double ends) {
    Point<double, 3> box;
    for (std::size_t k = 0; k < 3 && !places.empty(); ++k) {
        std::vector<double> numbers;
        for (const Point<double, 3>& place : places) {
            numbers.push_back(place[k]);
        }
        std::sort(numbers.begin(), numbers.end());
        const auto skipped = static_cast<std::size_t>(ends * static_cast<double>(numbers.size()));
        box[k] = numbers[numbers.size() - 1 - skipped] - numbers[skipped];
    }
    return norm(box);
}

double limitOf(const MeasuredPoints& measured) {
    std::vector<Point<double, 3>> points;
    std::vector<Point<double, 3>> known;
    for (const MeasuredPoint& point : measured.points) {
        points.push_back(point.world);
    }
    for (const ControlPoint& control : measured.controls) {
        known.push_back(control.known);
    }
    return ControlCheck::LARGEST_UNUSED_DEVIATION * std::max(diagonalOf(points, ENDS), diagonalOf(known, 0));
}

/// The control points of one station that no registration used.
struct Unused {
    std::size_t count = 0;
    std::size_t off = 0;
    double limit = 0;
    double worst = 0;   ///< the largest deviation
    int worstLine = 0;  ///< where it is
    double second = 0;  ///< the second largest deviation

    void add(const ControlPoint& control) {
        const double distance = norm(control.measured - control.known);
        ++count;
        off += static_cast<std::size_t>(!(distance <= limit));
        if (count == 1 || distance > worst) {
            second = worst;
            worst = distance;
            worstLine = control.line;
        } else {
            second = std::max(second, distance);
        }
    }
};

void judgeUnused(const std::string& set, const Unused& unused, DisplayFitResult& result) {
    const std::string way = lengthText(unused.worst, result) + " ";
    const std::string line = "(line " + std::to_string(unused.worstLine) + ") ";
    if (unused.off == 1 && unused.count > 2) {
        result.findings.push_back({Kind::CONTROL_POINT_OFF, FitOutcome::DOUBTFUL,
                                   "one control point" + ofSet(set) + " lies " + way + line +
                                       "from where it should be, the other " + std::to_string(unused.count - 1) +
                                       " no farther than " + lengthText(unused.second, result),
                                   "measure it again, correct its X, Y, Z, or remove the row"});
        return;
    }
    const std::string what = unused.count == 1 ? "the control point" + ofSet(set) + " lies " + way + line +
                                                     "from where it should be, and was not used: it is wrong, or "
                                               : "control points" + ofSet(set) + " lie up to " + way + line +
                                                     "from where they should be, " + std::to_string(unused.off) +
                                                     " of " + std::to_string(unused.count) + ", and were not used: ";
    result.findings.push_back({Kind::FRAME_NOT_REGISTERED, FitOutcome::DOUBTFUL,
                               what + "the measurement is not in the frame of the display",
                               unused.count < FEWEST_FOR_FRAME
                                   ? "correct X, Y, Z, or measure at least 3 control points and state --register rigid"
                                   : "state --register rigid, which moves it there by its control points"});
}

void checkUnused(const MeasuredPoints& measured, DisplayFitResult& result) {
    const double limit = limitOf(measured);
    std::map<std::string, Unused> sets;
    Unused all;
    for (const ControlPoint& control : measured.controls) {
        Unused& unused = sets[control.set];
        unused.limit = all.limit = limit;
        unused.add(control);
        all.add(control);
    }
    for (const auto& [set, unused] : sets) {
        if (unused.off > 0) {
            judgeUnused(set, unused, result);
        }
    }
    if (all.off == 0) {
        result.findings.push_back({Kind::FRAME_NOT_REGISTERED, FitOutcome::GOOD,
                                   "the control points were not used: they are where they should be to within " +
                                       lengthText(all.worst, result) + " (line " + std::to_string(all.worstLine) +
                                       "), so that the measurement is in the frame of the display",
                                   ""});
    }
}

void checkFrame(const Registration& frame, DisplayFitResult& result) {
    if (const auto& one = frame.contradiction) {
        result.findings.push_back({Kind::CONTROL_POINT_OFF, FitOutcome::DOUBTFUL,
                                   "the control point" + ofSet(frame.set) + " of line " + std::to_string(one->line) +
                                       " lies " + lengthText(one->distance, result) +
                                       " from where the others place it, which agree to " +
                                       lengthText(one->rmsOfOthers, result) + " (RMS)",
                                   "measure it again, correct its X, Y, Z, or remove the row"});
    } else if (frame.rms > ControlCheck::LARGEST_REGISTERED_DEVIATION * frame.span) {
        result.findings.push_back({Kind::CONTROL_POINT_OFF, FitOutcome::DOUBTFUL,
                                   "the control points" + ofSet(frame.set) + " contradict each other by " +
                                       lengthText(frame.rms, result) + " (RMS)",
                                   "check which mark is which, and their X, Y, Z; add control points to see which "
                                   "is wrong"});
    }
}

}  // namespace

void ControlCheck::judge(const MeasuredPoints& measured, const std::vector<Registration>& frames,
                         DisplayFitResult& result) {
    if (measured.controls.empty()) {
        return;
    }
    if (frames.empty()) {
        checkUnused(measured, result);
        return;
    }
    for (FitFinding& finding : result.findings) {
        if (finding.kind == Kind::FRAME_MOVED) {
            finding.remedy =
                "check that the control points of this set were measured by the station that measured its points, and "
                "their X, Y, Z; where all projectors were moved together indeed, nothing is to be done";
        }
    }
    for (const Registration& frame : frames) {
        checkFrame(frame, result);
    }
}

}  // namespace Veltrani::FitSession
