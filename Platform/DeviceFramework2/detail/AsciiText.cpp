#include "DeviceFramework2/detail/AsciiText.h"

#include "Common/Utf8.h"

#include <algorithm>

namespace Veltrani::DeviceFramework2Detail {

std::string capitals(std::string_view text) {
    std::string result(text);
    for (char& character : result) {
        if (character >= 'a' && character <= 'z') {
            character = static_cast<char>(character - 'a' + 'A');
        }
    }
    return result;
}

bool isHexDigit(char character) {
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f') ||
           (character >= 'A' && character <= 'F');
}

std::wstring readable(const std::string& bytes) {
    std::wstring text = fromUtf8OrBytes(bytes);
    const auto isControl = [](wchar_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); };
    std::replace_if(text.begin(), text.end(), isControl, L' ');
    return text;
}

}  // namespace Veltrani::DeviceFramework2Detail
