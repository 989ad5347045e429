#include "DisplayReport/basics/JsonText.h"

#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "DisplayReport/basics/NumberText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace Veltrani::DisplayReport {

namespace {

constexpr wchar_t LAST_SAFE_OF_ASCII = 0x7E;

std::string escaped(unsigned int unit) {
    std::array<char, 7> text{};
    std::snprintf(text.data(), text.size(), "\\u%04x", unit & 0xFFFFU);
    return text.data();
}

/// The character as one unit of UTF-16 or as two, which is how JSON counts.
std::string escapedCharacter(unsigned int character) {
    constexpr unsigned int FIRST_OF_TWO_UNITS = 0x10000;
    if (character < FIRST_OF_TWO_UNITS) {
        return escaped(character);
    }
    const unsigned int rest = character - FIRST_OF_TWO_UNITS;
    return escaped(0xD800U + (rest >> 10U)) + escaped(0xDC00U + (rest & 0x3FFU));
}

}  // namespace

std::string safeForTerminals(std::string json) {
    const auto isSafe = [](char byte) { return byte >= 0 && byte <= LAST_SAFE_OF_ASCII; };
    if (std::all_of(json.begin(), json.end(), isSafe)) {
        return json;
    }
    std::string safe;
    safe.reserve(json.size());
    for (const wchar_t character : fromUtf8(json)) {
        const std::string text = toUtf8(std::wstring(1, character));
        const bool isPlain = character <= LAST_SAFE_OF_ASCII || onOneLine(text) == text;
        safe += isPlain ? text : escapedCharacter(static_cast<unsigned int>(character));
    }
    return safe;
}

std::string jsonOf(const std::string& utf8) {
    using Json = nlohmann::json;
    return safeForTerminals(Json(utf8).dump(-1, ' ', false, Json::error_handler_t::replace));
}

std::string jsonOf(double number) {
    return std::isfinite(number) ? exactText(number) : "null";
}

}  // namespace Veltrani::DisplayReport
