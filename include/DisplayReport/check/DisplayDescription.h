#pragma once

#include "DisplayReport/basics/Fault.h"

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::DisplayReport {

/// One line of the description of a display, or one cell of the table of its channels.
struct DisplayFact {
    std::string label;  ///< "screen", "size", "units", ...
    std::string value;
};

/// What one channel will use.
struct ChannelDescription {
    std::string name;
    std::string projectorId;
    /// "picture", "targets by", "device", "note": the same labels in the same order for every channel of a display.
    std::vector<DisplayFact> facts;

    /// The value with this label; empty when there is none.
    [[nodiscard]] std::string fact(std::string_view label) const;
};

/// A display as its configuration and the files that it names describe it, with everything that is wrong. UTF-8.
struct DisplayDescription {
    std::string file;
    bool readable = true;  ///< false when the configuration itself cannot be used
    std::vector<DisplayFact> facts;
    std::vector<ChannelDescription> channels;
    std::vector<Fault> faults;
};

/// Prints a description for people: the facts, the table of channels without the
/// columns that are empty for all of them, then the faults with their causes or "No faults."
void print(const DisplayDescription& description, std::ostream& out);

}  // namespace Veltrani::DisplayReport
