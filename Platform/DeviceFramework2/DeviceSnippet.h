#pragma once

#include "DeviceFramework2/MacAddress.h"

#include <optional>
#include <string>

namespace Veltrani::DeviceFramework2 {

/// What a configuration stores of a real device:
///
///     <Device type='PJLink' mac='02:00:00:00:00:01' host='192.0.2.10' port='4352'/>
///
/// | Attribute | Meaning |
/// |---|---|
/// | `type` | required: "PJLink" |
/// | `mac` | required: the identity of the projector |
/// | `host` | IPv4 or IPv6 address; without it the projector is searched for by its MAC address |
/// | `port` | 1 to 65535; 4352 when absent |
///
/// Blanks and comments around it and in it are allowed, and so are attributes in a namespace (notes of other programs).
struct DeviceSnippet {
    static constexpr int STANDARD_PORT = 4352;

    /// Throws `DeviceException` naming the snippet by its MAC address, what was found and what was expected.
    [[nodiscard]] static DeviceSnippet parse(const std::wstring& text);

    /// Returns the MAC address of a snippet or of any other text: in well-formed XML the first attribute `mac`, in
    /// document order; else the first address that stands alone in the text. Returns nothing when there is none or it
    /// is malformed.
    [[nodiscard]] static std::optional<MacAddress> macAddressIn(const std::wstring& text);

    /// Returns the snippet in one line, with the attributes in the order above.
    [[nodiscard]] std::wstring text() const;

    std::wstring type;
    MacAddress mac;
    std::string host;  ///< empty when not given
    int port = STANDARD_PORT;
};

}  // namespace Veltrani::DeviceFramework2
