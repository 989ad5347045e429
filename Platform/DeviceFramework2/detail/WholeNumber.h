#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace Veltrani::DeviceFramework2 {

/// A text that is a non-negative whole number in decimal digits and nothing else; nothing for any other text and for a
/// number that does not fit.
[[nodiscard]] inline std::optional<int> wholeNumber(std::string_view text) {
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, fault] = std::from_chars(text.data(), end, value);
    if (text.empty() || text.front() == '-' || fault != std::errc() || stop != end) {
        return std::nullopt;
    }
    return value;
}

}  // namespace Veltrani::DeviceFramework2
