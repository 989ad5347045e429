#pragma once

#include <string>

namespace Veltrani::DeviceFramework2 {

/// An action or a query that a device can carry out. A command object holds its parameter, if it has one, and receives
/// the result, if there is one; the device interprets it (`AbstractDevice`).
class Command {
public:
    Command() = default;
    Command(const Command&) = default;
    Command(Command&&) = default;
    Command& operator=(const Command&) = default;
    Command& operator=(Command&&) = default;
    virtual ~Command() = default;

    /// Returns the name of the command class without its scope, such as "RunFillBlackTo": for messages.
    [[nodiscard]] virtual std::string typeName() const = 0;
};

}  // namespace Veltrani::DeviceFramework2
