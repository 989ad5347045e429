#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <type_traits>

namespace Veltrani::DisplayReport {

/// The text of bytes in base 64 (RFC 4648, with padding).
[[nodiscard]] std::string base64(std::span<const std::byte> bytes);

/// The same of numbers as this machine holds them.
template <class Number>
[[nodiscard]] std::string base64Of(const Number& numbers) {
    static_assert(std::is_arithmetic_v<typename Number::value_type>);
    return base64(std::as_bytes(std::span(numbers)));
}

}  // namespace Veltrani::DisplayReport
