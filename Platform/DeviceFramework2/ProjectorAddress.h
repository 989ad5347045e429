#pragma once

#include "DeviceFramework2/DeviceSnippet.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace Veltrani::DeviceFramework2 {

/// Where a projector is, as people write it.
struct ProjectorAddress {
    /// "192.0.2.10", "192.0.2.10:4352", "2001:db8::1", "[2001:db8::1]" or "[2001:db8::1]:4352"; nothing for any other
    /// text. Names are not taken, because looking one up has no time limit.
    [[nodiscard]] static std::optional<ProjectorAddress> parse(std::string_view text);

    /// The address that a snippet states; nothing when it states none.
    [[nodiscard]] static std::optional<ProjectorAddress> of(const DeviceSnippet& snippet);
    /// The same of the text of a snippet; nothing also when it is broken.
    [[nodiscard]] static std::optional<ProjectorAddress> ofText(const std::wstring& snippet);

    /// True for the kind of address that a search can ask.
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
