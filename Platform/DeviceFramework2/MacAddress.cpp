#include "DeviceFramework2/MacAddress.h"

#include "Common/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <ostream>

namespace Veltrani::DeviceFramework2 {

namespace {

constexpr std::size_t BYTES = 6;
constexpr std::size_t PLAIN_LENGTH = 2 * BYTES;       // 020000000001
constexpr std::size_t PAIRED_LENGTH = 3 * BYTES - 1;  // 02:00:00:00:00:01
constexpr std::wstring_view DIGITS = L"0123456789ABCDEF";

int digitOf(wchar_t character) {
    if (character >= L'0' && character <= L'9') {
        return character - L'0';
    }
    if (character >= L'A' && character <= L'F') {
        return character - L'A' + 10;
    }
    if (character >= L'a' && character <= L'f') {
        return character - L'a' + 10;
    }
    return -1;
}

/// Reads six pairs of digits, `stride` characters from one to the next.
std::optional<std::array<std::uint8_t, BYTES>> pairs(std::wstring_view text, std::size_t stride) {
    std::array<std::uint8_t, BYTES> bytes{};
    for (std::size_t i = 0; i < BYTES; ++i) {
        const int high = digitOf(text[i * stride]);
        const int low = digitOf(text[i * stride + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return bytes;
}

bool hasSeparators(std::wstring_view text) {
    const wchar_t separator = text[2];
    if (separator != L':' && separator != L'-') {
        return false;
    }
    for (std::size_t i = 2; i < PAIRED_LENGTH; i += 3) {
        if (text[i] != separator) {
            return false;
        }
    }
    return true;
}

/// Returns true for a character that cannot stand beside an address: one that continues a word, a host name or an IPv6
/// address.
bool continues(wchar_t character) {
    return (character >= L'0' && character <= L'9') || (character >= L'A' && character <= L'Z') ||
           (character >= L'a' && character <= L'z') || character == L':' || character == L'-' || character == L'.' ||
           character == L'_' || character > L'\x7f';
}

}  // namespace

std::optional<MacAddress> MacAddress::parse(std::wstring_view text) {
    const bool paired = text.size() == PAIRED_LENGTH && hasSeparators(text);
    if (!paired && text.size() != PLAIN_LENGTH) {
        return std::nullopt;
    }
    const auto bytes = pairs(text, paired ? 3 : 2);
    const auto isAll = [&](std::uint8_t value) {
        return std::all_of(bytes->begin(), bytes->end(), [value](std::uint8_t byte) { return byte == value; });
    };
    if (!bytes || isAll(0x00) || isAll(0xFF)) {
        return std::nullopt;
    }
    return MacAddress(*bytes);
}

std::optional<MacAddress> MacAddress::find(std::wstring_view text) {
    for (std::size_t i = 0; i + PAIRED_LENGTH <= text.size(); ++i) {
        const std::size_t end = i + PAIRED_LENGTH;
        if ((i > 0 && continues(text[i - 1])) || (end < text.size() && continues(text[end]))) {
            continue;
        }
        if (const auto found = parse(text.substr(i, PAIRED_LENGTH))) {
            return found;
        }
    }
    return std::nullopt;
}

std::wstring MacAddress::uid() const {
    std::wstring digits;
    for (const std::uint8_t byte : m_bytes) {
        digits += DIGITS[byte / 16];
        digits += DIGITS[byte % 16];
    }
    return digits;
}

std::wstring MacAddress::text() const {
    std::wstring pairText = uid();
    for (std::size_t i = PLAIN_LENGTH - 2; i > 0; i -= 2) {
        pairText.insert(i, 1, L':');
    }
    return pairText;
}

std::ostream& operator<<(std::ostream& out, const MacAddress& address) {
    return out << toUtf8(address.text());
}

}  // namespace Veltrani::DeviceFramework2
