#include "KelvoScreen/detail/DecimalNumber.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace Veltrani::KelvoScreenDetail {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Far beyond any exponent of a double, and far from the end of the integer range.
constexpr std::int64_t EXPONENT_LIMIT = 1'000'000'000;

/// Returns the exponent that a number such as "1.5e-400" ends in; held within the limit.
std::int64_t statedExponent(const char* at, const char* last) {
    if (at == last) {
        return 0;
    }
    ++at;
    const bool negative = at != last && *at == '-';
    std::int64_t exponent = 0;
    for (; at != last; ++at) {
        if (isDigit(*at)) {
            exponent = std::min(exponent * 10 + (*at - '0'), EXPONENT_LIMIT);
        }
    }
    return negative ? -exponent : exponent;
}

/// Returns whether a number that no double can hold is too near to zero, not too far from it: by the decimal place of
/// its first significant digit.
bool isTooNearToZero(const char* first, const char* last) {
    const char* const exponent = std::find_if(first, last, [](char c) { return c == 'e' || c == 'E'; });
    const char* const point = std::find(first, exponent, '.');
    const char* const significant = std::find_if(first, exponent, [](char c) { return c >= '1' && c <= '9'; });
    return (point - significant) + statedExponent(exponent, last) < 0;
}

}  // namespace

const char* DecimalNumber::parseAny(const char* first, const char* last, double& value) {
    // std::from_chars takes no plus sign, but it takes "nan", "inf" and their relatives.
    const char* const begin = first != last && *first == '+' ? first + 1 : first;
    const bool negative = begin == first && first != last && *first == '-';
    const char* const digits = negative ? begin + 1 : begin;
    if (digits == last || !(isDigit(*digits) || *digits == '.')) {
        return first;
    }
    const auto [end, error] = std::from_chars(begin, last, value);
    if (error == std::errc{}) {
        return end;
    }
    if (error == std::errc::result_out_of_range && isTooNearToZero(digits, end)) {
        value = negative ? -0.0 : 0.0;
        return end;
    }
    return first;
}

}  // namespace Veltrani::KelvoScreenDetail
