#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace Veltrani::DeviceFramework2Detail {

/// ASCII letters in capitals, whatever the locale; all other bytes as they are.
[[nodiscard]] std::string capitals(std::string_view text);

[[nodiscard]] bool isHexDigit(char character);

/// Bytes of a device as readable text: UTF-8 where they are that, else byte by byte; control characters become blanks.
[[nodiscard]] std::wstring readable(const std::string& bytes);

/// Reads a text that is a non-negative whole number in decimal digits and nothing else; returns nothing for any other
/// text and for a number that does not fit.
[[nodiscard]] inline std::optional<int> wholeNumber(std::string_view text) {
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, fault] = std::from_chars(text.data(), end, value);
    if (text.empty() || text.front() == '-' || fault != std::errc() || stop != end) {
        return std::nullopt;
    }
    return value;
}

}  // namespace Veltrani::DeviceFramework2Detail
