#pragma once

#include "Common/VeltraniException.h"

#include <string>

namespace Veltrani {

/// What a setter of a configuration record does unless the record implements it: throws `VeltraniException`.
/// @param value what was to be changed, for the message
[[noreturn]] inline void refuseChangeOfFixedRecord(const wchar_t* value) {
    throw VeltraniException(
        __FILE__, __LINE__,
        std::wstring(value) + L" of this configuration record cannot be changed: change that of an XMLConfigFile");
}

}  // namespace Veltrani
