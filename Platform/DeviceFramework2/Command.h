#pragma once

#include <string>

namespace Veltrani::DeviceFramework2 {

/// Something that a device can be asked to do or to tell. A command object carries its parameter, if it has one, and
/// takes the answer, if there is one; the device interprets it (`AbstractDevice`).
class Command {
public:
    Command() = default;
    Command(const Command&) = default;
    Command(Command&&) = default;
    Command& operator=(const Command&) = default;
    Command& operator=(Command&&) = default;
    virtual ~Command() = default;

    /// The name of the command class without its scope, such as "RunFillBlackTo": for messages.
    [[nodiscard]] virtual std::string typeName() const = 0;
};

}  // namespace Veltrani::DeviceFramework2
