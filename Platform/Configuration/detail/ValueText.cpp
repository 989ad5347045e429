#include "Configuration/detail/ValueText.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <system_error>

namespace Veltrani::ConfigurationDetail {

namespace {

constexpr std::string_view WHITE_SPACE = " \t\r\n";

bool startsWithDigit(std::string_view text) {
    return !text.empty() && text.front() >= '0' && text.front() <= '9';
}

template <class T>
ParsedNumber<T> parseWhole(std::string_view text) {
    T value{};
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, value);
    if (result.ec == std::errc::invalid_argument || result.ptr != end) {
        return {};
    }
    if (result.ec == std::errc::result_out_of_range) {
        return {T{}, NumberState::OUT_OF_RANGE};
    }
    return {value, NumberState::GOOD};
}

/// Returns the next run of characters that are not white space, taken off the front of `text`; empty at the end.
std::string_view takeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(WHITE_SPACE), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(WHITE_SPACE));
    text.remove_prefix(word.size());
    return word;
}

/// The production `Char` of XML 1.0.
bool isXmlCharacter(wchar_t character) {
    const auto code = static_cast<std::uint32_t>(character);
    return code == 0x9U || code == 0xAU || code == 0xDU || (code >= 0x20U && code <= 0xD7FFU) ||
           (code >= 0xE000U && code <= 0xFFFDU) || (code >= 0x10000U && code <= 0x10FFFFU);
}

}  // namespace

ParsedNumber<double> parseNumber(std::string_view text) {
    const ParsedNumber<double> parsed = parseWhole<double>(text);
    if (!std::isfinite(parsed.value)) {
        return {};
    }
    return parsed;
}

ParsedNumber<int> parsePixelCount(std::string_view text) {
    const ParsedNumber<int> parsed = parseWhole<int>(text);
    if (!startsWithDigit(text) || (parsed.state == NumberState::GOOD && parsed.value == 0)) {
        return {};
    }
    return parsed;
}

std::optional<std::array<unsigned char, 4>> parseFourBytes(std::string_view text) {
    std::array<unsigned char, 4> bytes{};
    for (unsigned char& byte : bytes) {
        const ParsedNumber<unsigned char> parsed = parseWhole<unsigned char>(takeWord(text));
        if (parsed.state != NumberState::GOOD) {
            return std::nullopt;
        }
        byte = parsed.value;
    }
    if (!takeWord(text).empty()) {
        return std::nullopt;
    }
    return bytes;
}

std::string numberText(int value) {
    std::array<char, 16> buffer{};  // a sign and ten digits at most
    const std::to_chars_result result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), result.ptr};
}

std::string numberText(double value) {
    std::array<char, 32> buffer{};  // a sign, 17 digits, a point and an exponent at most
    const std::to_chars_result result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), result.ptr};
}

std::string fourBytesText(const std::array<unsigned char, 4>& bytes) {
    std::string text;
    for (const unsigned char byte : bytes) {
        text += text.empty() ? "" : " ";
        text += numberText(byte);
    }
    return text;
}

std::string xmlText(const std::wstring& text, const std::wstring& what) {
    if (!std::all_of(text.begin(), text.end(), isXmlCharacter)) {
        throw VeltraniException(__FILE__, __LINE__,
                                what + L" holds a character that a configuration file cannot store");
    }
    return toUtf8(text);
}

}  // namespace Veltrani::ConfigurationDetail
