#pragma once

#include "DisplayReport/basics/Fault.h"

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::ProjectorSession {

class ProjectorRun;

/// One line of the table of channels. All texts UTF-8; "-" stands for what is not known.
struct ChannelLine {
    std::string name;
    std::string id;      ///< of the configuration entry
    std::string device;  ///< where it is, or where the configuration has it
    std::string state;   ///< "on", "standby", "cooling", "warming up", "reachable", "simulated" or "missing"
    /// What the device replied beside its state, in the order of the columns.
    std::vector<std::string> answers;

    /// The reply in a column: "resolution" ("1920 x 1200"), "input" (number in the projector's own list, 0 is the
    /// first), "firmware". Throws `std::out_of_range` for a column that there is not.
    [[nodiscard]] const std::string& answer(std::string_view column) const;
};

/// The channels of a display with what their projectors report of themselves.
struct ChannelListing {
    std::vector<ChannelLine> lines;
    /// Questions that a projector which is on did not reply to.
    std::vector<DisplayReport::Fault> faults;

    /// Before there are channels: the entries of the configuration, with those that were not found.
    [[nodiscard]] static ChannelListing ofEntries(const ProjectorRun& run);
    /// The channels, once they were built.
    [[nodiscard]] static ChannelListing ofChannels(ProjectorRun& run);

    void print(std::ostream& out) const;
};

}  // namespace Veltrani::ProjectorSession
