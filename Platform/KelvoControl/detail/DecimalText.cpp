#include "KelvoControl/detail/DecimalText.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace KelvoControlDetail {

namespace {

/// A number out of range is either too large or too near to zero: only the latter has a value.
bool isNearZero(std::string_view number) {
    const std::size_t exponent = number.find_first_of("eE");
    if (exponent != std::string_view::npos) {
        return number[exponent + 1] == '-';
    }
    const char first = number[number[0] == '-' ? 1 : 0];
    return first == '0' || first == '.';
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

}  // namespace KelvoControlDetail
