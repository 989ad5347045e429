#include "ScreenManager/detail/PcdText.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace Veltrani {

namespace {

constexpr std::string_view SEPARATORS = " \t\r";

/// std::from_chars takes no plus sign, which other writers put.
std::string_view withoutPlus(std::string_view word) {
    return word.size() > 1 && word[0] == '+' && word[1] != '-' ? word.substr(1) : word;
}

/// False unless the whole word is a number that a double holds.
bool readDouble(std::string_view word, double& number) {
    word = withoutPlus(word);
    const auto [end, fault] = std::from_chars(word.data(), word.data() + word.size(), number);
    return fault == std::errc() && end == word.data() + word.size();
}

bool isNan(std::string_view word) {
    constexpr std::string_view NAN_TEXT = "nan";
    return std::equal(word.begin(), word.end(), NAN_TEXT.begin(), NAN_TEXT.end(),
                      [](char a, char b) { return static_cast<char>(a | 0x20) == b; });
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
    double number = 0;
    return readDouble(word, number);
}

bool PcdText::isCoordinate(std::string_view word) {
    double number = 0;
    return isNan(word) || (readDouble(word, number) && std::abs(number) <= std::numeric_limits<float>::max());
}

bool PcdText::readWhole(std::string_view word, std::uint64_t& number) {
    const auto [end, fault] = std::from_chars(word.data(), word.data() + word.size(), number);
    return fault == std::errc() && end == word.data() + word.size();
}

void PcdText::fail(std::size_t line, std::string_view found, const std::string& expected) {
    throw VeltraniParseException(
        fromUtf8("line " + std::to_string(line) + ": found \"" + printable(found) + "\", expected " + expected));
}

}  // namespace Veltrani
