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

void printChannels(const std::vector<ChannelDescription>& channels, std::ostream& out) {
    TextTable table({"channel", "projector", "picture", "targets by", "device"});
    for (const ChannelDescription& channel : channels) {
        table.add({channel.name, channel.projectorId, channel.resolution, channel.locator, channel.device});
    }
    if (!table.empty()) {
        out << '\n';
        table.print(out);
    }
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

void print(const DisplayDescription& description, std::ostream& out) {
    printFacts(description.facts, out);
    printChannels(description.channels, out);
    printFaults(description.faults, out);
}

}  // namespace Veltrani::DisplayReport
