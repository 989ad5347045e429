#pragma once

#include "DeviceFramework2/Command.h"

#include <memory>

namespace Veltrani::DeviceFramework2 {

/// An object that carries out commands.
class AbstractDevice {
public:
    AbstractDevice() = default;
    AbstractDevice(const AbstractDevice&) = delete;
    AbstractDevice& operator=(const AbstractDevice&) = delete;
    virtual ~AbstractDevice() = default;

    /// Returns true when the device can carry the command out. Does not contact the hardware.
    [[nodiscard]] virtual bool supports(const Command& command) const = 0;

    /// Carries the command out and stores its result in it. Throws `DeviceException` when that fails; the command then
    /// has no new result.
    virtual void execute(const std::shared_ptr<Command>& command) = 0;
};

}  // namespace Veltrani::DeviceFramework2
