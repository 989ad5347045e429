#include "KelvoControl/detail/FileFault.h"

#include "Common/RegularFile.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

namespace KelvoControlDetail {

namespace {

// Long enough to recognise a value, short enough that a message stays readable.
constexpr std::size_t LONGEST_QUOTE_BYTES = 60;
constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

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

std::string onOneLine(std::string_view text) {
    static constexpr std::string_view DIGITS = "0123456789abcdef";
    std::string shown;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x20U || code == 0x7FU) {
            shown += {'\\', 'x', DIGITS[code >> 4U], DIGITS[code & 0xFU]};
        } else {
            shown += character;
        }
    }
    return shown;
}

}  // namespace

void throwFault(const std::string& document, const FileFault& fault) {
    std::string text = onOneLine(document) + ":" + std::to_string(fault.line) + ": ";
    text += fault.element + ": found " + fault.found + ", expected " + fault.expected + "; " + fault.remedy;
    throw VeltraniParseException(Veltrani::fromUtf8OrBytes(text));
}

std::string inQuotes(std::string_view text) {
    const std::string_view shown = cutBetweenCharacters(text);
    return "\"" + onOneLine(shown) + (shown.size() < text.size() ? "...\"" : "\"");
}

std::string contentOf(const std::string& utf8Path, std::size_t largest) {
    std::string content = Veltrani::RegularFile(utf8Path).readAll(largest);
    if (content.size() > largest) {
        throwFault(utf8Path, {1, "file", "more than " + std::to_string(largest) + " bytes", "at most that many",
                              "check that this is the file that was meant"});
    }
    if (content.compare(0, BYTE_ORDER_MARK.size(), BYTE_ORDER_MARK) == 0) {
        content.erase(0, BYTE_ORDER_MARK.size());
    }
    return content;
}

}  // namespace KelvoControlDetail
