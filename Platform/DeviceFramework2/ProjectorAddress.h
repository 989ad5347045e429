#pragma once

#include "DeviceFramework2/DeviceSnippet.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace Veltrani::DeviceFramework2 {

/// The address of a projector, as people write it.
struct ProjectorAddress {
    /// "192.0.2.10", "192.0.2.10:4352", "2001:db8::1", "[2001:db8::1]" or "[2001:db8::1]:4352"; nothing for any other
    /// text. Names are not accepted, because looking one up has no time limit.
    [[nodiscard]] static std::optional<ProjectorAddress> parse(std::string_view text);

    /// Returns the address that a snippet states; nothing when it states none.
    [[nodiscard]] static std::optional<ProjectorAddress> of(const DeviceSnippet& snippet);
    /// Returns the address that the text of a snippet states; nothing also when the text is broken.
    [[nodiscard]] static std::optional<ProjectorAddress> ofText(const std::wstring& snippet);

    /// Returns true for the kind of address that a search can send requests to.
    [[nodiscard]] bool isIpv4() const { return host.find(':') == std::string::npos; }
    /// "192.0.2.10:4352", "[2001:db8::1]:4352"
    [[nodiscard]] std::string text() const;

    friend bool operator==(const ProjectorAddress&, const ProjectorAddress&) = default;

    std::string host;  ///< in the shortest spelling of the address
    int port = DeviceSnippet::STANDARD_PORT;
};

/// As `text`, UTF-8.
std::ostream& operator<<(std::ostream& out, const ProjectorAddress& address);

}  // namespace Veltrani::DeviceFramework2
