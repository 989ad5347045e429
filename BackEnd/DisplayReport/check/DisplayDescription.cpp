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

void printOne(const std::string& text, const std::vector<std::string>& causes, std::ostream& out) {
    out << "  - " << onOneLine(text) << '\n';
    for (const std::string& cause : causes) {
        out << "      because: " << onOneLine(cause) << '\n';
    }
}

void printFindings(const DisplayDescription& description, Severity severity, std::ostream& out) {
    const std::size_t count = description.count(severity);
    if (count == 0) {
        return;
    }
    out << '\n' << count << ' ' << nameOf(severity) << (count == 1 ? ":" : "s:") << '\n';
    if (severity == Severity::FAULT) {
        for (const Fault& fault : description.faults) {
            printOne(fault.where + ": " + fault.what, fault.causes, out);
        }
    }
    for (const Finding& finding : description.findings) {
        if (finding.severity == severity) {
            printOne(finding.where + ": " + finding.what + " [" + finding.rule + "]", finding.causes, out);
        }
    }
}

void printLeftOut(const std::vector<std::string>& rules, std::ostream& out) {
    if (rules.empty()) {
        return;
    }
    out << "\nNot judged: " << rules.size() << " rules that need light, left out by --quick (";
    for (std::size_t i = 0; i < rules.size(); ++i) {
        out << (i == 0 ? "" : ", ") << rules[i];
    }
    out << "); check without --quick to judge by them.\n";
}

}  // namespace

std::string ChannelDescription::fact(std::string_view label) const {
    const auto found =
        std::find_if(facts.begin(), facts.end(), [label](const DisplayFact& fact) { return fact.label == label; });
    return found == facts.end() ? std::string() : found->value;
}

std::size_t DisplayDescription::count(Severity severity) const {
    const auto found = std::count_if(findings.begin(), findings.end(),
                                     [severity](const Finding& finding) { return finding.severity == severity; });
    return static_cast<std::size_t>(found) + (severity == Severity::FAULT ? faults.size() : 0U);
}

void print(const DisplayDescription& description, std::ostream& out) {
    printFacts(description.facts, out);
    printChannels(description.channels, out);
    if (description.count(Severity::FAULT) + description.count(Severity::WARNING) == 0) {
        out << "\nNo faults.\n";
    }
    for (const Severity severity : {Severity::FAULT, Severity::WARNING, Severity::REMARK}) {
        printFindings(description, severity, out);
    }
    printLeftOut(description.leftOut, out);
}

}  // namespace Veltrani::DisplayReport
