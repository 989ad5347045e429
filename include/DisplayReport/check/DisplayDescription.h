#pragma once

#include "DisplayReport/basics/Fault.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// One line of the description of a display.
struct DisplayFact {
    std::string label;  ///< "screen", "size", "units", ...
    std::string value;
};

/// What one channel will use.
struct ChannelDescription {
    std::string name;
    std::string projectorId;
    std::string resolution;  ///< "1920 x 1200"
    std::string locator;     ///< kind of target locator and what it is built from
    std::string device;      ///< type and address of the device
};

/// A display as its configuration and the files that it names describe it, with everything that is wrong. UTF-8.
struct DisplayDescription {
    std::string file;
    bool readable = true;  ///< false when the configuration itself cannot be used
    std::vector<DisplayFact> facts;
    std::vector<ChannelDescription> channels;
    std::vector<Fault> faults;
};

/// Prints a description for people: the facts, the table of channels, then the faults with their causes or "No faults."
void print(const DisplayDescription& description, std::ostream& out);

}  // namespace Veltrani::DisplayReport
