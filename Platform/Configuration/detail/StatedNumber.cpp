#include "Configuration/detail/StatedNumber.h"

#include "Configuration/detail/ValueText.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

namespace Veltrani::ConfigurationDetail {

namespace {

using Reading = std::function<double(double)>;

constexpr double LARGEST = std::numeric_limits<double>::max();

/// The place of a double among all of them: neighbours differ by one, and both zeros have the same place.
std::int64_t placeOf(double number) {
    const auto bits = std::bit_cast<std::int64_t>(number);
    return bits >= 0 ? bits : std::numeric_limits<std::int64_t>::min() - bits;
}

double numberAt(std::int64_t place) {
    return std::bit_cast<double>(place >= 0 ? place : std::numeric_limits<std::int64_t>::min() - place);
}

/// Returns the last number that is read as `wanted` or less. The largest one is read as more.
double lastNotAbove(double wanted, const Reading& read) {
    std::int64_t below = placeOf(-LARGEST);
    std::int64_t above = placeOf(LARGEST);
    while (below < above - 1) {
        const std::int64_t middle = std::midpoint(below, above);
        (read(numberAt(middle)) <= wanted ? below : above) = middle;
    }
    return numberAt(below);
}

double nearestNumber(double wanted, const Reading& read) {
    if (read(LARGEST) <= wanted) {
        return LARGEST;
    }
    const double below = lastNotAbove(wanted, read);
    const double above = numberAt(placeOf(below) + 1);
    return wanted - read(below) <= read(above) - wanted ? below : above;
}

double roundedTo(int digits, double number) {
    std::array<char, 32> buffer{};  // a sign, 17 digits, a point and an exponent at most
    const std::to_chars_result end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::scientific, digits - 1);
    return parseNumber({buffer.data(), end.ptr}).value;
}

/// Several neighbours may be read as the same where the unit is the finer one: 30 degrees are not to become
/// 30.000000000000004.
double withFewestDigits(double number, const Reading& read) {
    const double value = read(number);
    for (int digits = 1; digits < std::numeric_limits<double>::max_digits10; ++digits) {
        const double rounded = roundedTo(digits, number);
        if (read(rounded) == value) {
            return rounded;
        }
    }
    return number;
}

}  // namespace

bool isSameNumber(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

std::optional<StatedNumber> nearestStated(double wanted, const Reading& read) {
    if (!std::isfinite(wanted) || wanted < read(-LARGEST) || wanted > read(LARGEST)) {
        return std::nullopt;
    }
    if (wanted == 0.0) {
        return StatedNumber{numberText(wanted), wanted};
    }
    const double number = withFewestDigits(nearestNumber(wanted, read), read);
    return StatedNumber{numberText(number), read(number)};
}

}  // namespace Veltrani::ConfigurationDetail
