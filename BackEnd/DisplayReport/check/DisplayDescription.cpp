#include "DisplayReport/check/DisplayDescription.h"

#include "Common/QuotedText.h"
#include "DisplayReport/basics/TextTable.h"

#include <algorithm>
#include <ostream>

namespace Veltrani::DisplayReport {

namespace {

void printFacts(const std::vector<DisplayFact>& facts, std::ostream& out) {
    std::size_t width = 0;
    for (const DisplayFact& fact : facts) {
        width = std::max(width, fact.label.size());
    }
    for (const DisplayFact& fact : facts) {
        out << fact.label << std::string(width - fact.label.size() + 2, ' ') << onOneLine(fact.value) << '\n';
    }
}

/// The labels of the channels, without those that have no value on any of them.
std::vector<std::string> columnsOf(const std::vector<ChannelDescription>& channels) {
    std::vector<std::string> columns;
    for (const DisplayFact& fact : channels.front().facts) {
        const bool isUsed = std::any_of(channels.begin(), channels.end(), [&fact](const ChannelDescription& channel) {
            return !channel.fact(fact.label).empty();
        });
        if (isUsed) {
            columns.push_back(fact.label);
        }
    }
    return columns;
}

void printChannels(const std::vector<ChannelDescription>& channels, std::ostream& out) {
    if (channels.empty()) {
        return;
    }
    const std::vector<std::string> columns = columnsOf(channels);
    std::vector<std::string> headings{"channel", "projector"};
    headings.insert(headings.end(), columns.begin(), columns.end());
    TextTable table(headings);
    for (const ChannelDescription& channel : channels) {
        std::vector<std::string> cells{channel.name, channel.projectorId};
        for (const std::string& column : columns) {
            cells.push_back(channel.fact(column));
        }
        table.add(cells);
    }
    out << '\n';
    table.print(out);
}

void printFaults(const std::vector<Fault>& faults, std::ostream& out) {
    out << '\n';
    if (faults.empty()) {
        out << "No faults.\n";
        return;
    }
    out << faults.size() << (faults.size() == 1 ? " fault:" : " faults:") << '\n';
    for (const Fault& fault : faults) {
        out << "  - " << onOneLine(fault.where + ": " + fault.what) << '\n';
        for (const std::string& cause : fault.causes) {
            out << "      because: " << onOneLine(cause) << '\n';
        }
    }
}

}  // namespace

std::string ChannelDescription::fact(std::string_view label) const {
    const auto found =
        std::find_if(facts.begin(), facts.end(), [label](const DisplayFact& fact) { return fact.label == label; });
    return found == facts.end() ? std::string() : found->value;
}

void print(const DisplayDescription& description, std::ostream& out) {
    printFacts(description.facts, out);
    printChannels(description.channels, out);
    printFaults(description.faults, out);
}

}  // namespace Veltrani::DisplayReport
