#include "DisplayReport/basics/JsonText.h"
#include "FitSession/FitReport.h"

#include <ostream>

namespace Veltrani::FitSession {

namespace {

using DisplayFit::ChannelFit;
using DisplayFit::FitFinding;
using DisplayFit::FittedValue;
using DisplayFit::PointResidual;
using DisplayFit::ResidualSummary;
using DisplayFit::WorstCombination;
using DisplayReport::jsonList;
using DisplayReport::JsonObject;
using DisplayReport::jsonOf;

std::string jsonOfText(const std::string& text) {
    return jsonOf(text);
}

template <class Number>
std::string jsonOfNumber(Number number) {
    return jsonOf(number);
}

template <std::size_t N>
std::string jsonOfPoint(const Point<double, N>& point) {
    std::string json;
    for (std::size_t i = 0; i < N; ++i) {
        json += (i == 0 ? "[" : ",") + jsonOf(point[i]);
    }
    return json + ']';
}

std::string jsonOfFinding(const FitFinding& finding) {
    return JsonObject()
        .add("kind", FitFinding::nameOf(finding.kind))
        .add("outcome", FitReport::nameOf(finding.outcome))
        .add("text", finding.text)
        .add("remedy", finding.remedy)
        .text();
}

std::string jsonOfValue(const FittedValue& value) {
    return JsonObject()
        .add("name", value.name)
        .add("quantity", FittedValue::nameOf(value.quantity))
        .add("before", value.before)
        .add("after", value.after)
        .addJson("deviation", value.deviation ? jsonOf(*value.deviation) : "null")
        .text();
}

std::string jsonOfSummary(const ResidualSummary& summary) {
    return JsonObject()
        .add("rms", summary.rms)
        .add("median", summary.median)
        .add("largest", summary.largest)
        .add("unmapped", summary.unmapped)
        .text();
}

std::string jsonOfSummaries(const ResidualSummary& before, const ResidualSummary& after) {
    return JsonObject().addJson("before", jsonOfSummary(before)).addJson("after", jsonOfSummary(after)).text();
}

std::string jsonOfWorst(const WorstCombination& worst) {
    return JsonObject()
        .add("text", worst.text)
        .add("remedy", worst.remedy)
        .add("value", worst.deviatingName)
        .add("quantity", FittedValue::nameOf(worst.quantity))
        .add("deviation", worst.deviation)
        .add("scaledCondition", worst.scaledCondition)
        .addJson("names", jsonList(worst.solvedNames, jsonOfText))
        .addJson("weights", jsonList(worst.weights, jsonOfNumber<double>))
        .text();
}

std::string jsonOfFrame(const Registration& frame) {
    std::vector<double> rotation(frame.rotation.data(), frame.rotation.data() + 9);
    return JsonObject()
        .add("set", frame.set)
        .add("scale", frame.scale)
        .addJson("rotation", jsonList(rotation, jsonOfNumber<double>))
        .addJson("translation", jsonOfPoint(frame.translation))
        .add("rms", frame.rms)
        .addJson(
            "deviations",
            jsonList(frame.deviations,
                     [](const Registration::Deviation& deviation) {
                         return JsonObject().add("line", deviation.line).add("distance", deviation.distance).text();
                     }))
        .addJson("remarks", jsonList(frame.remarks, jsonOfText))
        .text();
}

std::string jsonOfResidual(const FitReport& report, const PointResidual& residual) {
    const MeasuredPoint& point = report.combined.points.at(residual.point);
    return JsonObject()
        .addJson("lines", jsonList(report.combined.lines.at(residual.point), jsonOfNumber<std::size_t>))
        .add("set", point.set)
        .addJson("picture", jsonOfPoint(point.picture))
        .addJson("point", jsonOfPoint(point.world))
        .addJson("pixelsBefore", jsonOfPoint(residual.pixelsBefore))
        .addJson("pixelsAfter", jsonOfPoint(residual.pixelsAfter))
        .addJson("screenBefore", jsonOfPoint(residual.screenBefore))
        .addJson("screenAfter", jsonOfPoint(residual.screenAfter))
        .add("deviations", residual.size)
        .add("outlier", residual.isOutlier)
        .text();
}

/// All members but the residuals.
std::string membersOf(const ChannelFit& fit) {
    return JsonObject()
        .add("name", fit.name)
        .add("projector", fit.projectorId)
        .add("outcome", FitReport::nameOf(fit.outcome))
        .add("isSolved", fit.isSolved)
        .addJson("solved", jsonList(FitReport::namesOf(fit.solved), jsonOfText))
        .add("holdsSquarePixels", fit.holdsSquarePixels)
        .add("holdsHorizontalShift", fit.holdsHorizontalShift)
        .add("outliers", fit.outliers)
        .add("degreesOfFreedom", fit.degreesOfFreedom)
        .add("residualFactor", fit.residualFactor)
        .add("hasStatedDeviations", fit.hasStatedDeviations)
        .add("iterations", fit.iterations)
        .addJson("pixels", jsonOfSummaries(fit.pixelsBefore, fit.pixelsAfter))
        .addJson("screen", jsonOfSummaries(fit.screenBefore, fit.screenAfter))
        .addJson("values", jsonList(fit.values, jsonOfValue))
        .addJson("covariance", jsonList(fit.covariance, jsonOfNumber<double>))
        .addJson("worst", fit.isSolved ? jsonOfWorst(fit.worst) : "null")
        .addJson("findings", jsonList(fit.findings, jsonOfFinding))
        .members();
}

/// Residual by residual: a million of them are too long a text to be copied.
void printChannel(const FitReport& report, const ChannelFit& fit, const std::function<void()>& pulse,
                  std::ostream& out) {
    constexpr std::size_t POINTS = 1024;
    out << '{' << membersOf(fit) << ",\"residuals\":[";
    for (std::size_t i = 0; i < fit.residuals.size(); ++i) {
        if (pulse && i % POINTS == 0) {
            pulse();
        }
        out << (i == 0 ? "" : ",") << jsonOfResidual(report, fit.residuals[i]);
    }
    out << "]}";
}

std::string jsonOfMeasurement(const FitReport& report) {
    return JsonObject()
        .add("table", report.table)
        .add("rows", report.measured.rows)
        .add("points", report.combined.points.size())
        .add("repeated", report.measured.points.size() - report.combined.points.size())
        .add("controls", report.measured.controls.size())
        .add("unmapped", report.measured.unmapped)
        .add("withoutPicture", report.measured.withoutPicture)
        .addJson("ignoredColumns", jsonList(report.measured.ignored, jsonOfText))
        .addJson("frames", jsonList(report.frames, jsonOfFrame))
        .text();
}

std::string jsonOfWritten(const FitReport& report) {
    return report.written.empty() ? "null"
                                  : JsonObject()
                                        .add("configuration", report.written)
                                        .addJson("lensFiles", jsonList(report.lensFiles, jsonOfText))
                                        .text();
}

}  // namespace

void FitReport::printJson(std::ostream& out, const std::function<void()>& pulse) const {
    DisplayReport::ReportHead head{"fit", result.unit};
    head.files = files;
    out << '{'
        << JsonObject(head.members())
               .add("outcome", nameOf(result.outcome()))
               .addJson("measurement", jsonOfMeasurement(*this))
               .addJson("findings", jsonList(result.findings, jsonOfFinding))
               .members()
        << ",\"channels\":[";
    for (const ChannelFit& fit : result.channels) {
        out << (&fit == &result.channels.front() ? "" : ",");
        printChannel(*this, fit, pulse, out);
    }
    out << "],\"written\":" << jsonOfWritten(*this) << "}\n";
}

}  // namespace Veltrani::FitSession
