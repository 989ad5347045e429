#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace Veltrani::DeviceFramework2 {

/// The hardware address of a network interface: six bytes. Unlike the IP address it stays with the projector, which is
/// why it serves as identity.
class MacAddress {
public:
    /// "02:00:00:00:00:01", "02-00-00-00-00-01" or "020000000001", digits in either case and nothing else around;
    /// nothing for any other text and for the two addresses that belong to no device, all zero and all ones.
    [[nodiscard]] static std::optional<MacAddress> parse(std::wstring_view text);

    /// Returns the first address in a text, written in pairs with ':' or '-' between them and standing alone: not as a
    /// part of a longer word, of a name with dashes or of an IPv6 address.
    [[nodiscard]] static std::optional<MacAddress> find(std::wstring_view text);

    /// "020000000001": twelve digits in upper case.
    [[nodiscard]] std::wstring uid() const;
    /// "02:00:00:00:00:01": pairs in upper case.
    [[nodiscard]] std::wstring text() const;

    friend bool operator==(const MacAddress&, const MacAddress&) = default;
    friend bool operator<(const MacAddress& a, const MacAddress& b) { return a.m_bytes < b.m_bytes; }

private:
    explicit MacAddress(const std::array<std::uint8_t, 6>& bytes) : m_bytes(bytes) {}

    std::array<std::uint8_t, 6> m_bytes;
};

/// As `text`, UTF-8.
std::ostream& operator<<(std::ostream& out, const MacAddress& address);

}  // namespace Veltrani::DeviceFramework2
