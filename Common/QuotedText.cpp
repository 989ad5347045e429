#include "Common/QuotedText.h"

namespace Veltrani {

namespace {

// Long enough to recognise a value, short enough that a message stays readable.
constexpr std::size_t LONGEST_QUOTE_BYTES = 120;

bool isContinuationByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::string_view cutBetweenCharacters(std::string_view text) {
    if (text.size() <= LONGEST_QUOTE_BYTES) {
        return text;
    }
    std::size_t bytes = LONGEST_QUOTE_BYTES;
    while (bytes > 0 && isContinuationByte(text[bytes])) {
        --bytes;
    }
    return text.substr(0, bytes);
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
    const std::string_view shown = cutBetweenCharacters(text);
    return "\"" + onOneLine(shown) + (shown.size() < text.size() ? "...\"" : "\"");
}

}  // namespace Veltrani
