#include "DeviceFramework2/CmdResultNotAvailableException.h"

#include "Common/Utf8.h"

namespace Veltrani::DeviceFramework2 {

CmdResultNotAvailableException::CmdResultNotAvailableException(const std::string& typeName)
    : DeviceException(L"The command " + fromUtf8OrBytes(typeName) + L" has no result") {}

}  // namespace Veltrani::DeviceFramework2
