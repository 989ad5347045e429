#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Veltrani::KelvoScreenDetail {

/// Decimal numbers in text, read as `std::from_chars` reads them, bit for bit, and faster for those that mesh files
/// hold: up to nineteen digits without an exponent.
///
/// The short cut is exact: a whole number up to 2^53 and a power of ten up to 10^22 are both doubles, so that their
/// quotient is rounded once, to the nearest double. Everything else is left to `std::from_chars`.
class DecimalNumber {
public:
    /// Reads the longest number that starts at `first`: an optional sign, digits with at most one decimal point in,
    /// before or after them, an optional exponent. Independent of the locale.
    ///
    /// Returns where the number ends; `first` when none starts there or when it exceeds the range of a double. A number
    /// that is nearer to zero than any double is zero with its sign. `value` is set only when a number is found.
    [[nodiscard]] static const char* parse(const char* first, const char* last, double& value);

private:
    static constexpr std::uint64_t MAX_EXACT_DIGITS_VALUE = std::uint64_t{1} << 53;
    static constexpr std::ptrdiff_t MAX_DIGITS = 19;  ///< any nineteen digits fit into 64 bits
    static constexpr std::ptrdiff_t MAX_EXACT_POWER = 22;
    static constexpr std::array<double, MAX_EXACT_POWER + 1> POWERS_OF_TEN = {
        1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
        1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

    [[nodiscard]] static const char* parseAny(const char* first, const char* last, double& value);

    /// Appends the digits at `at` to `digits` and returns where they end; more than nineteen overflow silently.
    [[nodiscard]] static const char* takeDigits(const char* at, const char* last, std::uint64_t& digits) {
        for (; at != last && static_cast<unsigned char>(*at - '0') <= 9; ++at) {
            digits = digits * 10 + static_cast<unsigned char>(*at - '0');
        }
        return at;
    }
};

inline const char* DecimalNumber::parse(const char* first, const char* last, double& value) {
    const bool negative = first != last && *first == '-';
    const bool isSigned = negative || (first != last && *first == '+');
    const char* const whole = first + (isSigned ? 1 : 0);
    std::uint64_t digits = 0;
    const char* at = takeDigits(whole, last, digits);
    std::ptrdiff_t count = at - whole;
    std::ptrdiff_t decimals = 0;
    if (at != last && *at == '.') {
        const char* const fraction = at + 1;
        at = takeDigits(fraction, last, digits);
        decimals = at - fraction;
        count += decimals;
    }
    const bool hasExponent = at != last && (*at == 'e' || *at == 'E');
    if (count == 0 || count > MAX_DIGITS || digits > MAX_EXACT_DIGITS_VALUE || hasExponent) {
        return parseAny(first, last, value);
    }
    const double magnitude = static_cast<double>(digits) / POWERS_OF_TEN[static_cast<std::size_t>(decimals)];
    value = negative ? -magnitude : magnitude;
    return at;
}

}  // namespace Veltrani::KelvoScreenDetail
