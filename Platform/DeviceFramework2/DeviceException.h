#pragma once

#include "Common/VeltraniException.h"

#include <string>

namespace Veltrani::DeviceFramework2 {

/// A device cannot be made, cannot be reached or did not carry out a command.
struct DeviceException : VeltraniException {
    /// What a caller may have to distinguish; the message is for people alone.
    enum class Cause {
        DEVICE,        ///< the device, its address or the network
        NOT_NOW,       ///< the device refused the command for the moment because it is not on
        THIS_MACHINE,  ///< a password, a password file or a port of this machine; the message states the remedy
    };

    explicit DeviceException(std::wstring text);
    DeviceException(std::string throwingFile, int throwingLine, std::wstring text, Cause kind = Cause::DEVICE);

    Cause cause = Cause::DEVICE;
};

}  // namespace Veltrani::DeviceFramework2
