#include "DisplayReport/targets/TargetSurvey.h"

#include "Common/QuotedText.h"
#include "DisplayReport/basics/GeometryText.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/basics/TextTable.h"

#include <algorithm>
#include <ostream>

namespace Veltrani::DisplayReport {

namespace {

void addTargets(const ChannelTargets& channel, Extent& extent) {
    for (const GridTarget& target : channel.grid) {
        extent.add(target.point);
    }
    for (const Point<double, 3>& point : channel.boundary) {
        extent.add(point);
    }
}

/// "-2 .. 2" per axis.
std::string rangeText(const Extent& extent, std::size_t axis) {
    if (extent.empty()) {
        return "-";
    }
    return roundedText(extent.minimum()[axis]) + " .. " + roundedText(extent.maximum()[axis]);
}

/// "132 of 160": as pages and pictures of the display have it.
std::string partText(std::size_t placed, std::size_t missed) {
    return std::to_string(placed) + " of " + std::to_string(placed + missed);
}

std::string inUnit(const std::string& axis, const std::string& unit) {
    return unit.empty() ? axis : axis + " (" + unit + ")";
}

}  // namespace

std::size_t TargetSurvey::placed() const {
    std::size_t count = 0;
    for (const ChannelTargets& channel : channels) {
        count += channel.grid.size() + channel.boundary.size();
    }
    return count;
}

std::size_t TargetSurvey::missed() const {
    std::size_t count = 0;
    for (const ChannelTargets& channel : channels) {
        count += channel.gridMissed + channel.boundaryMissed;
    }
    return count;
}

Extent TargetSurvey::extent() const {
    Extent extent;
    for (const ChannelTargets& channel : channels) {
        addTargets(channel, extent);
    }
    return extent;
}

bool TargetSurvey::complete() const {
    return std::all_of(channels.begin(), channels.end(),
                       [](const ChannelTargets& channel) { return channel.fault.empty(); });
}

Extent extentOf(const ChannelTargets& channel) {
    Extent extent;
    addTargets(channel, extent);
    return extent;
}

void printSummary(const TargetSurvey& survey, std::ostream& out) {
    TextTable table({"channel", "targets", "outline", inUnit("x", survey.unit), inUnit("y", survey.unit),
                     inUnit("z", survey.unit)});
    std::size_t grid = 0;
    std::size_t gridMissed = 0;
    for (const ChannelTargets& channel : survey.channels) {
        const Extent extent = extentOf(channel);
        table.add({channel.name, partText(channel.grid.size(), channel.gridMissed),
                   partText(channel.boundary.size(), channel.boundaryMissed), rangeText(extent, 0),
                   rangeText(extent, 1), rangeText(extent, 2)});
        grid += channel.grid.size();
        gridMissed += channel.gridMissed;
    }
    table.print(out);
    out << partText(grid, gridMissed) << " targets placed, "
        << partText(survey.placed() - grid, survey.missed() - gridMissed) << " samples of outlines";
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
