#include "DeviceFramework2/DeviceException.h"

#include <utility>

namespace Veltrani::DeviceFramework2 {

DeviceException::DeviceException(std::wstring text) : VeltraniException(std::move(text)) {}

DeviceException::DeviceException(std::string throwingFile, int throwingLine, std::wstring text, Cause kind)
    : VeltraniException(std::move(throwingFile), throwingLine, std::move(text)), cause(kind) {}

}  // namespace Veltrani::DeviceFramework2
