#include "Common/QuotedText.h"

namespace Veltrani {

namespace {

// Long enough to recognise a value, short enough that a message stays readable.
constexpr std::size_t LONGEST_QUOTE_BYTES = 120;

bool isContinuationByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

std::string onOneLine(std::string_view text) {
    static constexpr std::string_view DIGITS = "0123456789abcdef";
    std::string shown;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '\n') {
            shown += "\\n";
        } else if (code < 0x20U || code == 0x7FU) {
            shown += {'\\', 'x', DIGITS[code >> 4U], DIGITS[code & 0xFU]};
        } else {
            shown += character;
        }
    }
    return shown;
}

std::string inQuotes(std::string_view text) {
    std::string shown;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t end = i + 1;
        while (end < text.size() && isContinuationByte(text[end])) {
            ++end;
        }
        // What is spelled out is longer than what stands in the text.
        const std::string character = onOneLine(text.substr(i, end - i));
        if (shown.size() + character.size() > LONGEST_QUOTE_BYTES) {
            return "\"" + shown + "...\"";
        }
        shown += character;
        i = end;
    }
    return "\"" + shown + "\"";
}

}  // namespace Veltrani
