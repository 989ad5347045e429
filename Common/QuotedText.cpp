#include "Common/QuotedText.h"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <utility>

namespace Veltrani {

namespace {

// Long enough to recognise a value, short enough that a message stays readable.
constexpr std::size_t LONGEST_QUOTE_BYTES = 120;

using Range = std::pair<char32_t, char32_t>;

/// First and last of the characters that move the cursor, end a line, turn the direction of writing or are not seen.
constexpr std::array<Range, 9> STEERING{{{0x00, 0x1F},
                                         {0x7F, 0x9F},
                                         {0x061C, 0x061C},
                                         {0x200B, 0x200F},
                                         {0x2028, 0x202E},
                                         {0x2060, 0x206F},
                                         {0xFEFF, 0xFEFF},
                                         {0xFFF9, 0xFFFB},
                                         {0xE0000, 0xE007F}}};

bool steersATerminal(char32_t character) {
    return std::any_of(STEERING.begin(), STEERING.end(), [character](const Range& range) {
        return character >= range.first && character <= range.second;
    });
}

/// Returns a backslash, the letter, and that many digits.
std::string spelledOut(char letter, char32_t number, int digits) {
    static constexpr std::string_view DIGITS = "0123456789abcdef";
    constexpr int BITS = 4;
    std::string text{'\\', letter};
    for (int shift = BITS * (digits - 1); shift >= 0; shift -= BITS) {
        text += DIGITS[(number >> static_cast<unsigned>(shift)) & 0xFU];
    }
    return text;
}

std::string spelledOut(char32_t character) {
    constexpr char32_t LAST_OF_ASCII = 0x7F;
    constexpr char32_t LAST_OF_FOUR_DIGITS = 0xFFFF;
    if (character == U'\n') {
        return "\\n";
    }
    if (character <= LAST_OF_ASCII) {
        return spelledOut('x', character, 2);
    }
    return character <= LAST_OF_FOUR_DIGITS ? spelledOut('u', character, 4) : spelledOut('U', character, 8);
}

/// Takes the first character of a text that is not empty; what it is shown as.
std::string takeShown(std::string_view& text) {
    const char* const begin = text.data();
    const char* at = begin;
    std::string shown;
    try {
        const auto character = static_cast<char32_t>(utf8::next(at, begin + text.size()));
        shown = steersATerminal(character) ? spelledOut(character) : std::string(begin, at);
    } catch (const utf8::exception&) {
        at = begin + 1;
        shown = spelledOut('x', static_cast<unsigned char>(*begin), 2);
    }
    text.remove_prefix(static_cast<std::size_t>(at - begin));
    return shown;
}

}  // namespace

std::string onOneLine(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        shown += takeShown(text);
    }
    return shown;
}

std::string inQuotes(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        // A character that is spelled out is longer than in the text.
        const std::string character = takeShown(text);
        if (shown.size() + character.size() > LONGEST_QUOTE_BYTES) {
            return "\"" + shown + "...\"";
        }
        shown += character;
    }
    return "\"" + shown + "\"";
}

}  // namespace Veltrani
