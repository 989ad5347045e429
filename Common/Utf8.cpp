#include "Common/Utf8.h"

#include <utf8.h>

#include <iterator>

static_assert(sizeof(wchar_t) == 4, "wide text is taken to be UTF-32");

namespace Veltrani {

std::string toUtf8(const std::wstring& text) {
    std::string encoded;
    encoded.reserve(text.size());
    try {
        utf8::utf32to8(text.begin(), text.end(), std::back_inserter(encoded));
    } catch (const utf8::exception&) {
        return {};
    }
    return encoded;
}

std::wstring fromUtf8(const std::string& text) {
    std::wstring decoded;
    decoded.reserve(text.size());
    try {
        utf8::utf8to32(text.begin(), text.end(), std::back_inserter(decoded));
    } catch (const utf8::exception&) {
        return {};
    }
    return decoded;
}

std::wstring fromUtf8OrBytes(const std::string& text) {
    std::wstring decoded = fromUtf8(text);
    if (decoded.empty()) {
        for (const char byte : text) {
            decoded.push_back(static_cast<wchar_t>(static_cast<unsigned char>(byte)));
        }
    }
    return decoded;
}

}  // namespace Veltrani
