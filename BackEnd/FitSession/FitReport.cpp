#include "FitSession/FitReport.h"

#include "Common/QuotedText.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/basics/TextTable.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <ostream>

namespace Veltrani::FitSession {

namespace {

using DisplayFit::ChannelFit;
using DisplayFit::FitFinding;
using DisplayFit::FitOutcome;
using DisplayFit::FittedValue;
using DisplayFit::PointResidual;
using DisplayFit::ResidualSummary;
using DisplayReport::fixedText;
using DisplayReport::significantText;

/// More outliers of a channel are counted only; the JSON report has all of them.
constexpr std::size_t MOST_OUTLIERS_SHOWN = 20;
constexpr double DEGREES_PER_RADIAN = 180 / std::numbers::pi;
/// Of a value of which all digits down to its deviation shall be seen.
constexpr int VALUE_DECIMALS = 6;
constexpr double SHOWN_AS_ZERO = 0.5e-6;

std::string numberText(double number) {
    return std::isnan(number) ? "-" : significantText(number);
}

std::string pairText(double before, double after) {
    return numberText(before) + " -> " + numberText(after);
}

std::string joined(const std::vector<std::string>& parts, const char* separator = ", ") {
    std::string text;
    for (const std::string& part : parts) {
        text += (text.empty() ? "" : separator) + part;
    }
    return text;
}

std::string linesText(const std::vector<std::size_t>& lines) {
    std::vector<std::string> texts;
    std::transform(lines.begin(), lines.end(), std::back_inserter(texts),
                   [](std::size_t line) { return std::to_string(line); });
    return (texts.size() == 1 ? "line " : "lines ") + joined(texts);
}

std::string unitOf(FittedValue::Quantity quantity, const std::string& lengths) {
    switch (quantity) {
        case FittedValue::Quantity::LENGTH:
            return lengths;
        case FittedValue::Quantity::ANGLE:
            return "deg";
        case FittedValue::Quantity::PIXELS:
            return "px";
        case FittedValue::Quantity::NUMBER:
            return "";
    }
    return "";
}

/// "0.25 m"; the number alone where there is no unit.
std::string withUnit(const std::string& number, const std::string& unit) {
    return unit.empty() ? number : number + " " + unit;
}

double shown(double value, FittedValue::Quantity quantity) {
    return quantity == FittedValue::Quantity::ANGLE ? value * DEGREES_PER_RADIAN : value;
}

void printFinding(const FitFinding& finding, int indent, std::ostream& out) {
    out << std::string(static_cast<std::size_t>(indent), ' ')
        << (finding.outcome == FitOutcome::GOOD ? "note: " : FitReport::nameOf(finding.outcome) + ": ")
        << onOneLine(finding.text) << (finding.remedy.empty() ? "" : "; " + onOneLine(finding.remedy)) << '\n';
}

/// A row for each channel: how far its points were off, and are.
void printSummary(const FitReport& report, std::ostream& out) {
    const std::string unit = report.result.unit;
    DisplayReport::TextTable table({"channel", "points", "outliers", "RMS px", "median px", "largest px",
                                    withUnit("RMS on screen", unit), withUnit("largest", unit), "result"});
    for (const ChannelFit& fit : report.result.channels) {
        const auto pair = [&fit](const ResidualSummary& before, const ResidualSummary& after,
                                 double ResidualSummary::*number) {
            return fit.isSolved ? pairText(before.*number, after.*number) : numberText(before.*number);
        };
        table.add({fit.name, std::to_string(fit.residuals.size()), std::to_string(fit.outliers),
                   pair(fit.pixelsBefore, fit.pixelsAfter, &ResidualSummary::rms),
                   pair(fit.pixelsBefore, fit.pixelsAfter, &ResidualSummary::median),
                   pair(fit.pixelsBefore, fit.pixelsAfter, &ResidualSummary::largest),
                   pair(fit.screenBefore, fit.screenAfter, &ResidualSummary::rms),
                   pair(fit.screenBefore, fit.screenAfter, &ResidualSummary::largest), FitReport::nameOf(fit.outcome)});
    }
    table.print(out);
}

void printValues(const ChannelFit& fit, const std::string& lengths, std::ostream& out) {
    DisplayReport::TextTable table({"value", "before", "after", "deviation", "unit"});
    for (const FittedValue& value : fit.values) {
        const auto text = [&value](double number) -> std::string {
            const double inUnit = shown(number, value.quantity);
            // What is rounded to zero has no sign.
            return !std::isfinite(number) ? "-"
                                          : fixedText(std::abs(inUnit) < SHOWN_AS_ZERO ? 0 : inUnit, VALUE_DECIMALS);
        };
        table.add({value.name, text(value.before), value.deviation ? text(value.after) : "held",
                   value.deviation ? significantText(shown(*value.deviation, value.quantity)) : "",
                   unitOf(value.quantity, lengths)});
    }
    if (!table.empty()) {
        table.print(out, 2);
    }
}

void printOutliers(const FitReport& report, const ChannelFit& fit, std::ostream& out) {
    std::size_t count = 0;
    for (const PointResidual& residual : fit.residuals) {
        // Which points are wrong is not known where nothing explains the others.
        if (!residual.isOutlier || fit.outcome == FitOutcome::UNUSABLE) {
            continue;
        }
        if (++count > MOST_OUTLIERS_SHOWN) {
            continue;
        }
        out << "  outlier: " << linesText(report.combined.lines.at(residual.point)) << ", "
            << numberText(norm(residual.pixelsAfter)) << " px, "
            << withUnit(numberText(norm(residual.screenAfter)), report.result.unit) << " on the screen, "
            << numberText(residual.size) << " deviations\n";
    }
    if (count > MOST_OUTLIERS_SHOWN) {
        out << "  and " << count - MOST_OUTLIERS_SHOWN << " more outliers\n";
    }
}

/// What of the solved groups was held nevertheless: ", held: square pixels, horizontal shift".
std::string heldText(const ChannelFit& fit) {
    std::string text = fit.holdsSquarePixels ? "square pixels" : "";
    if (fit.holdsHorizontalShift) {
        text += (text.empty() ? "" : ", ") + std::string("horizontal shift");
    }
    return text.empty() ? "" : "; held: " + text;
}

void printChannel(const FitReport& report, const ChannelFit& fit, std::ostream& out) {
    const std::vector<std::string> solved = FitReport::namesOf(fit.solved);
    out << "\nchannel " << onOneLine(fit.name) << " (" << onOneLine(fit.projectorId)
        << "): " << (fit.isSolved ? "solved " + joined(solved) + heldText(fit) : "not solved") << '\n';
    if (fit.isSolved) {
        printValues(fit, report.result.unit, out);
        out << "  residual factor " << numberText(fit.residualFactor)
            << (fit.hasStatedDeviations ? " (1 expected by the stated deviations), " : ", ") << fit.degreesOfFreedom
            << " degrees of freedom\n";
        if (!fit.worst.text.empty()) {
            out << "  worst determined: " << onOneLine(fit.worst.text) << ", deviation "
                << withUnit(numberText(shown(fit.worst.deviation, fit.worst.quantity)),
                            unitOf(fit.worst.quantity, report.result.unit))
                << " of " << onOneLine(fit.worst.deviatingName)
                << (fit.worst.remedy.empty() ? "" : "; " + onOneLine(fit.worst.remedy)) << '\n';
        }
    }
    printOutliers(report, fit, out);
    for (const FitFinding& finding : fit.findings) {
        printFinding(finding, 2, out);
    }
}

void printFrames(const FitReport& report, std::ostream& out) {
    for (const Registration& frame : report.frames) {
        const auto worst = std::max_element(frame.deviations.begin(), frame.deviations.end(),
                                            [](const auto& a, const auto& b) { return a.distance < b.distance; });
        out << "frame        " << (frame.set.empty() ? "of the measurement" : onOneLine(frame.set)) << ": "
            << frame.deviations.size() << " control points, RMS "
            << withUnit(significantText(frame.rms), report.result.unit) << ", largest "
            << withUnit(significantText(worst->distance), report.result.unit) << " (line " << worst->line << ")"
            << (frame.scale == 1 ? "" : ", scale " + DisplayReport::exactText(frame.scale)) << '\n';
        for (const std::string& remark : frame.remarks) {
            out << "  note: " << remark << '\n';
        }
    }
}

}  // namespace

std::string FitReport::nameOf(FitOutcome outcome) {
    switch (outcome) {
        case FitOutcome::GOOD:
            return "good";
        case FitOutcome::DOUBTFUL:
            return "doubtful";
        case FitOutcome::UNUSABLE:
            return "unusable";
    }
    return "";
}

std::vector<std::string> FitReport::namesOf(const DisplayFit::SolvedGroups& groups) {
    std::vector<std::string> names;
    for (const auto& [isSolved, name] :
         {std::pair(groups.position, "position"), std::pair(groups.orientation, "orientation"),
          std::pair(groups.frustum, "frustum"), std::pair(groups.distortion, "distortion"),
          std::pair(groups.area, "area")}) {
        if (isSolved) {
            names.emplace_back(name);
        }
    }
    return names;
}

void FitReport::printText(std::ostream& out) const {
    out << "display      " << onOneLine(configuration) << '\n'
        << "measured     " << onOneLine(table) << ": " << combined.points.size()
        << (combined.points.size() == 1 ? " point of " : " points of ") << measured.rows
        << (measured.rows == 1 ? " row" : " rows");
    const auto count = [&out](std::size_t rows, const char* what) {
        if (rows > 0) {
            out << ", " << rows << what;
        }
    };
    count(measured.controls.size(), " control points");
    count(measured.unmapped, " not mapped");
    count(measured.withoutPicture, " without a place in a picture");
    count(measured.points.size() - combined.points.size(), " repeated");
    out << '\n';
    printFrames(*this, out);
    out << "result       " << nameOf(result.outcome()) << "\n\n";
    printSummary(*this, out);
    for (const FitFinding& finding : result.findings) {
        printFinding(finding, 0, out);
    }
    for (const ChannelFit& fit : result.channels) {
        printChannel(*this, fit, out);
    }
    out << '\n'
        << (isUnchanged ? "No number of the configuration changes.\n" : "")
        << (written.empty() ? "Nothing was written." : "Written: " + onOneLine(written));
    for (const std::string& file : lensFiles) {
        out << ", " << onOneLine(file);
    }
    out << '\n';
}

}  // namespace Veltrani::FitSession
