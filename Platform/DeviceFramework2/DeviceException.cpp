#include "DeviceFramework2/DeviceException.h"

#include <utility>

namespace Veltrani::DeviceFramework2 {

DeviceException::DeviceException(std::wstring text) : VeltraniException(std::move(text)) {}

DeviceException::DeviceException(std::string throwingFile, int throwingLine, std::wstring text)
    : VeltraniException(std::move(throwingFile), throwingLine, std::move(text)) {}

}  // namespace Veltrani::DeviceFramework2
