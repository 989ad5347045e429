#pragma once

#include "Common/VeltraniException.h"

#include <string>

namespace Veltrani::DeviceFramework2 {

/// A device cannot be made, cannot be reached or did not do what it was told.
struct DeviceException : VeltraniException {
    explicit DeviceException(std::wstring text);
    DeviceException(std::string throwingFile, int throwingLine, std::wstring text);
};

}  // namespace Veltrani::DeviceFramework2
