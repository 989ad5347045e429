#pragma once

#include "DisplayReport/basics/Fault.h"
#include "DisplayReport/check/Finding.h"

#include <cstddef>
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
    /// "picture", "targets by", "position", "looks", "field of view", "throw", "on screen", "device", "note": the same
    /// labels in the same order for every channel of a display.
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
    std::vector<Fault> faults;      ///< what could not be loaded or built
    std::vector<Finding> findings;  ///< what the rules found, of every severity
    /// The rules that a quick check did not judge by, because they need light; empty for a whole check.
    std::vector<std::string> leftOut;

    /// How many findings have a severity; what could not be loaded or built counts among the faults.
    [[nodiscard]] std::size_t count(Severity severity) const;
};

/// Prints a description for people: the facts, the table of channels without the columns that are empty for all of
/// them, the faults with their causes, the warnings and the remarks, each behind its number. "No faults." is printed
/// where there are neither faults nor warnings, and behind all the rules that a quick check left out.
void print(const DisplayDescription& description, std::ostream& out);

}  // namespace Veltrani::DisplayReport
