#include "DisplayReport/basics/Base64.h"

namespace Veltrani::DisplayReport {

std::string base64(std::span<const std::byte> bytes) {
    constexpr const char* DIGITS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t GROUP = 3;
    constexpr unsigned BITS = 6;
    constexpr unsigned MASK = 63;
    std::string text;
    text.reserve((bytes.size() + GROUP - 1) / GROUP * 4);
    for (std::size_t i = 0; i < bytes.size(); i += GROUP) {
        unsigned bits = 0;
        for (std::size_t k = 0; k < GROUP; ++k) {
            bits = bits << 8U | (i + k < bytes.size() ? std::to_integer<unsigned>(bytes[i + k]) : 0U);
        }
        text += DIGITS[bits >> 3 * BITS];
        text += DIGITS[bits >> 2 * BITS & MASK];
        text += i + 1 < bytes.size() ? DIGITS[bits >> BITS & MASK] : '=';
        text += i + 2 < bytes.size() ? DIGITS[bits & MASK] : '=';
    }
    return text;
}

}  // namespace Veltrani::DisplayReport
