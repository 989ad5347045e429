#include "ScreenManager/detail/PcdText.h"

#include "Common/DecimalText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <system_error>

namespace Veltrani {

namespace {

constexpr std::string_view SEPARATORS = " \t\r";

/// Without regard to case; `lower` in small letters of ASCII.
bool startsWith(std::string_view word, std::string_view lower) {
    return word.size() >= lower.size() && std::equal(lower.begin(), lower.end(), word.begin(), [](char a, char b) {
               return a == (b >= 'A' && b <= 'Z' ? b - 'A' + 'a' : b);
           });
}

/// What may stand between the brackets of "nan(...)".
bool isPayload(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    });
}

/// Shortened, and without bytes that would break a line of a log.
std::string printable(std::string_view text) {
    constexpr std::size_t LONGEST = 60;
    std::string shown(text.substr(0, LONGEST));
    std::replace_if(
        shown.begin(), shown.end(), [](unsigned char c) { return c < 0x20 || c > 0x7e; }, '?');
    return text.size() > LONGEST ? shown + "..." : shown;
}

}  // namespace

std::vector<std::string_view> PcdText::split(std::string_view line) {
    std::vector<std::string_view> words;
    std::size_t start = line.find_first_not_of(SEPARATORS);
    while (start != std::string_view::npos) {
        const std::size_t end = std::min(line.find_first_of(SEPARATORS, start), line.size());
        words.push_back(line.substr(start, end - start));
        start = line.find_first_not_of(SEPARATORS, end);
    }
    return words;
}

bool PcdText::isNumber(std::string_view word) {
    return isNotFinite(word) || parseFinite(word).has_value();
}

bool PcdText::isCoordinate(std::string_view word) {
    const std::optional<double> number = parseFinite(word);
    return number ? fitsSinglePrecision(*number) : isNotFinite(word);
}

bool PcdText::fitsSinglePrecision(double number) {
    // Half-way between FLT_MAX and the power of two above it; from there on, rounding to the even one of two, up.
    constexpr double LEAST_INFINITE = 0x1.ffffffp127;
    return !(std::isfinite(number) && std::abs(number) >= LEAST_INFINITE);
}

bool PcdText::isNotFinite(std::string_view word) {
    if (word.starts_with('+') || word.starts_with('-')) {
        word.remove_prefix(1);
    }
    if (isSame(word, "nan") || isSame(word, "inf") || isSame(word, "infinity")) {
        return true;
    }
    constexpr std::string_view OPENING = "nan(";
    return startsWith(word, OPENING) && word.ends_with(')') &&
           isPayload(word.substr(OPENING.size(), word.size() - OPENING.size() - 1));
}

bool PcdText::isSame(std::string_view word, std::string_view lower) {
    return word.size() == lower.size() && startsWith(word, lower);
}

bool PcdText::readWhole(std::string_view word, std::uint64_t& number) {
    if (word.starts_with('+')) {
        word.remove_prefix(1);
    }
    const auto [end, fault] = std::from_chars(word.data(), word.data() + word.size(), number);
    return fault == std::errc() && end == word.data() + word.size();
}

void PcdText::fail(std::size_t line, std::string_view found, const std::string& expected, const std::string& remedy) {
    throw VeltraniParseException(fromUtf8("line " + std::to_string(line) + ": found \"" + printable(found) +
                                          "\", expected " + expected + "; " + remedy));
}

void PcdText::fail(const std::string& found, const std::string& expected, const std::string& remedy) {
    throw VeltraniParseException(fromUtf8("found " + found + ", expected " + expected + "; " + remedy));
}

}  // namespace Veltrani
