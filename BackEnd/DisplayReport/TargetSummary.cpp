#include "DisplayReport/TargetSummary.h"

#include "Common/QuotedText.h"
#include "DisplayReport/GeometryText.h"
#include "DisplayReport/NumberText.h"
#include "DisplayReport/TargetSurvey.h"
#include "DisplayReport/TextTable.h"

#include <ostream>
#include <string>

namespace Veltrani::DisplayReport {

namespace {

/// "-2 .. 2" per axis.
std::string rangeText(const Extent& extent, std::size_t axis) {
    if (extent.empty()) {
        return "-";
    }
    return roundedText(extent.minimum()[axis]) + " .. " + roundedText(extent.maximum()[axis]);
}

std::string inUnit(const std::string& axis, const std::string& unit) {
    return unit.empty() ? axis : axis + " (" + unit + ")";
}

}  // namespace

void printSummary(const TargetSurvey& survey, std::ostream& out) {
    TextTable table(
        {"channel", "placed", "missed", inUnit("x", survey.unit), inUnit("y", survey.unit), inUnit("z", survey.unit)});
    for (const ChannelTargets& channel : survey.channels) {
        const Extent extent = extentOf(channel);
        table.add({channel.name, std::to_string(channel.grid.size() + channel.boundary.size()),
                   std::to_string(channel.gridMissed + channel.boundaryMissed), rangeText(extent, 0),
                   rangeText(extent, 1), rangeText(extent, 2)});
    }
    table.print(out);
    out << survey.placed() << " targets placed, " << survey.missed() << " missed";
    if (const Extent extent = survey.extent(); !extent.empty()) {
        out << ", on " << sizeText(extent, survey.unit);
    }
    out << '\n';
    for (const ChannelTargets& channel : survey.channels) {
        if (!channel.fault.empty()) {
            const char* const what = channel.gridMissed > 0 ? " has no grid of targets: " : " has no targets: ";
            out << "channel " << onOneLine(channel.name) << what << onOneLine(channel.fault) << '\n';
        } else if (!channel.remark.empty()) {
            out << "note: channel " << onOneLine(channel.name) << ": " << onOneLine(channel.remark) << '\n';
        }
    }
    if (survey.channels.empty()) {
        out << "the configuration has no projectors\n";
    }
}

}  // namespace Veltrani::DisplayReport
