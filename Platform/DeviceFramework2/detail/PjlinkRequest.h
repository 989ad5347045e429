#pragma once

#include <string>

namespace Veltrani::DeviceFramework2 {

/// One command of the PJLink standard.
struct PjlinkRequest {
    /// Longest request in bytes with its line end, without the login digest.
    static constexpr std::size_t LONGEST_REQUEST = 136;

    char commandClass = '1';  ///< '1' or '2'
    std::string body;         ///< four capitals, such as "POWR"
    std::string parameter;    ///< "?" asks

    /// "%1POWR ?" and a carriage return. Throws `DeviceException` for one that is too long or holds a line end, which
    /// would smuggle in a second command.
    [[nodiscard]] std::string line() const;

    /// "POWR ?", for messages.
    [[nodiscard]] std::wstring text() const;
};

}  // namespace Veltrani::DeviceFramework2
