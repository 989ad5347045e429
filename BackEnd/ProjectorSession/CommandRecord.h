#pragma once

#include <string>
#include <vector>

namespace Veltrani::ProjectorSession {

/// A command that was sent to a projector.
struct CommandRecord {
    std::wstring uid;     ///< of the projector
    std::string command;  ///< the name of its class
    bool failed = false;

    friend bool operator==(const CommandRecord&, const CommandRecord&) = default;
};

/// In the order of sending.
using CommandRecords = std::vector<CommandRecord>;

}  // namespace Veltrani::ProjectorSession
