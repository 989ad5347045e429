#pragma once

#include "DeviceFramework2/DeviceException.h"

#include <string>

namespace Veltrani::DeviceFramework2 {

/// The result of a command was read although no device has stored one.
struct CmdResultNotAvailableException : DeviceException {
    /// @param typeName the command's `Command::typeName`, UTF-8
    explicit CmdResultNotAvailableException(const std::string& typeName);
};

}  // namespace Veltrani::DeviceFramework2
