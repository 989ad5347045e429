#include "Configuration/detail/XmlText.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <algorithm>
#include <cstdint>

namespace Veltrani {

namespace {

/// The production `Char` of XML 1.0.
bool isXmlCharacter(wchar_t character) {
    const auto code = static_cast<std::uint32_t>(character);
    return code == 0x9U || code == 0xAU || code == 0xDU || (code >= 0x20U && code <= 0xD7FFU) ||
           (code >= 0xE000U && code <= 0xFFFDU) || (code >= 0x10000U && code <= 0x10FFFFU);
}

}  // namespace

std::string xmlText(const std::wstring& text, const std::wstring& what) {
    if (!std::all_of(text.begin(), text.end(), isXmlCharacter)) {
        throw VeltraniException(__FILE__, __LINE__,
                                what + L" holds a character that a configuration file cannot store");
    }
    return toUtf8(text);
}

}  // namespace Veltrani
