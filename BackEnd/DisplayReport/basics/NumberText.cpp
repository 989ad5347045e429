#include "DisplayReport/basics/NumberText.h"

#include <array>
#include <charconv>

namespace Veltrani::DisplayReport {

namespace {

/// Room for any double in either notation: 309 digits before the point, sign, point and decimals.
using Buffer = std::array<char, 400>;

}  // namespace

std::string exactText(double value) {
    Buffer buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return {buffer.data(), end};
}

std::string significantText(double value) {
    constexpr int DIGITS = 5;
    Buffer buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, DIGITS).ptr;
    return {buffer.data(), end};
}

std::string fixedText(double value, int decimals) {
    Buffer buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, decimals).ptr;
    return {buffer.data(), end};
}

std::string roundedText(double value) {
    constexpr int DECIMALS = 3;
    std::string text = fixedText(value, DECIMALS);
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.') {
            text.pop_back();
        }
    }
    return text == "-0" ? "0" : text;
}

}  // namespace Veltrani::DisplayReport
