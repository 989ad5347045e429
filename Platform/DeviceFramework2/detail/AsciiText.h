#pragma once

#include <string>
#include <string_view>

namespace Veltrani::DeviceFramework2 {

/// ASCII letters in capitals, whatever the locale; all other bytes as they are.
[[nodiscard]] std::string capitals(std::string_view text);

[[nodiscard]] bool isHexDigit(char character);

/// Bytes of a device as readable text: UTF-8 where they are that, else byte by byte; control characters become blanks.
[[nodiscard]] std::wstring readable(const std::string& bytes);

}  // namespace Veltrani::DeviceFramework2
