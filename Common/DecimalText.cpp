#include "Common/DecimalText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <system_error>

namespace Veltrani {

namespace {

/// Far beyond the exponents of doubles, far within those of an int.
constexpr int LARGEST_EXPONENT = 1'000'000'000;

int exponentOf(std::string_view text) {
    if (!text.empty() && text[0] == '+') {
        text.remove_prefix(1);
    }
    int exponent = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), exponent);
    if (error == std::errc::result_out_of_range) {
        return text[0] == '-' ? -LARGEST_EXPONENT : LARGEST_EXPONENT;
    }
    return std::clamp(exponent, -LARGEST_EXPONENT, LARGEST_EXPONENT);
}

/// A number out of range is either too large or too near to zero: only the latter has a value. The place of its first
/// digit above zero, by its distance from the decimal point and the exponent, decides which.
bool isNearZero(std::string_view number) {
    const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
    const std::string_view digits = number.substr(0, mark);
    const std::size_t first = digits.find_first_of("123456789");
    if (first == std::string_view::npos) {
        return true;
    }
    const auto point = static_cast<std::ptrdiff_t>(std::min(digits.find('.'), digits.size()));
    const std::ptrdiff_t magnitude = point - static_cast<std::ptrdiff_t>(first);
    return magnitude + (mark < number.size() ? exponentOf(number.substr(mark + 1)) : 0) < 0;
}

}  // namespace

std::optional<double> parseFinite(std::string_view text) {
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (end != text.data() + text.size()) {
        return std::nullopt;
    }
    if (error == std::errc::result_out_of_range && isNearZero(text)) {
        return 0.0;
    }
    return error == std::errc() && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<int> parseCount(std::string_view text, int largest) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool good = error == std::errc() && end == text.data() + text.size() && value >= 1 && value <= largest;
    return good ? std::optional(value) : std::nullopt;
}

}  // namespace Veltrani
