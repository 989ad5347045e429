#include "DisplayReport/CoveragePrinter.h"

#include "Common/QuotedText.h"
#include "DisplayReport/CoverageReport.h"
#include "DisplayReport/NumberText.h"
#include "DisplayReport/TextTable.h"

#include <array>
#include <cmath>
#include <ostream>
#include <string>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

const char* const NOTHING = "-";

/// Two decimals: a part in ten thousand is what the numbers are right to.
std::string percent(double part) {
    return roundedText(std::round(1e4 * part) / 100) + " %";
}

std::string withUnit(const std::string& what, const std::string& unit) {
    return unit.empty() ? what : what + " (" + unit + ")";
}

std::string squared(const std::string& unit) {
    return unit.empty() ? unit : unit + "^2";
}

/// Of a channel's picture: "230400 (10 %)".
std::string pixelText(const ChannelCoverage& channel, double part) {
    return channel.pixels() > 0 ? roundedText(std::round(part * channel.pixels())) + " (" + percent(part) + ")"
                                : percent(part);
}

void addChannel(const ChannelCoverage& channel, const CoverageReport& report, TextTable& table) {
    const bool hasPixels = channel.pixels() > 0;
    const std::string size = std::to_string(channel.width) + " x " + std::to_string(channel.height);
    std::vector<std::string> cells{channel.name, hasPixels ? size : NOTHING};
    if (channel.isLighting) {
        cells.insert(cells.end(), {significantText(channel.area), percent(report.partOfScreen(channel.area)),
                                   percent(channel.missed())});
        const bool hasPitch = channel.pitch.measured > 0;
        cells.push_back(hasPitch ? significantText(channel.pitch.least) : NOTHING);
        cells.push_back(hasPixels ? significantText(channel.meanPitch()) : NOTHING);
        cells.push_back(hasPitch ? significantText(channel.pitch.most) : NOTHING);
    } else {
        cells.insert(cells.end(), 6, NOTHING);
    }
    table.add(std::move(cells));
}

void printChannels(const CoverageReport& report, std::ostream& out) {
    TextTable table({"channel", "resolution", withUnit("area", squared(report.unit)), "of the screen", "missed",
                     withUnit("pixel least", report.unit), "mean", "most"});
    for (const ChannelCoverage& channel : report.channels) {
        addChannel(channel, report, table);
    }
    table.print(out);
}

void printCounts(const CoverageReport& report, std::ostream& out) {
    TextTable table({"lit by", withUnit("area", squared(report.unit)), "of the screen"});
    constexpr std::array<const char*, 3> EXACTLY{"no projector", "1 projector", "2 projectors"};
    const auto add = [&](const char* who, double area) {
        table.add({who, significantText(area), percent(report.partOfScreen(area))});
    };
    for (std::size_t count = 0; count < EXACTLY.size(); ++count) {
        add(EXACTLY[count], report.areaLitBy(count));
    }
    add("3 and more", report.areaLitByAtLeast(EXACTLY.size()));
    add("the screen", report.screenArea);
    table.print(out);
}

void printOverlaps(const CoverageReport& report, std::ostream& out) {
    if (report.overlaps.empty()) {
        out << "no two channels overlap\n";
        return;
    }
    TextTable table(
        {"overlap of", "and", withUnit("area", squared(report.unit)), "pixels of the first", "pixels of the second"});
    for (const ChannelOverlap& overlap : report.overlaps) {
        const ChannelCoverage& first = report.channels[overlap.first];
        const ChannelCoverage& second = report.channels[overlap.second];
        table.add({first.name, second.name, significantText(overlap.area), pixelText(first, overlap.partOfFirst),
                   pixelText(second, overlap.partOfSecond)});
    }
    table.print(out);
}

}  // namespace

void print(const CoverageReport& report, std::ostream& out) {
    if (!report.fault.empty()) {
        out << onOneLine(report.fault) << '\n';
        return;
    }
    if (!report.channels.empty()) {
        printChannels(report, out);
        out << '\n';
    }
    printCounts(report, out);
    if (report.channels.empty()) {
        out << "\nthe configuration has no projectors\n";
        return;
    }
    out << '\n';
    printOverlaps(report, out);
    for (const ChannelCoverage& channel : report.channels) {
        if (!channel.fault.empty()) {
            out << "channel " << onOneLine(channel.name) << ": " << onOneLine(channel.fault) << '\n';
        }
    }
}

}  // namespace Veltrani::DisplayReport
