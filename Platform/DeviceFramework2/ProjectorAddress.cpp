#include "DeviceFramework2/ProjectorAddress.h"

#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/detail/AsciiText.h"
#include "DeviceFramework2/detail/Endpoint.h"

#include <algorithm>
#include <ostream>

namespace Veltrani::DeviceFramework2 {

using DeviceFramework2Detail::Endpoint;
using DeviceFramework2Detail::wholeNumber;

namespace {

struct Parts {
    std::string_view host;
    std::string_view port;  ///< empty when none was written
};

/// The port follows the only colon, or the one behind a bracket; an address with more colons has none.
std::optional<Parts> split(std::string_view text) {
    const std::size_t bracket = text.find(']');
    if (text.starts_with('[') && bracket != std::string_view::npos) {
        const std::string_view rest = text.substr(bracket + 1);
        const std::string_view host = text.substr(1, bracket - 1);
        if (host.find(':') == std::string_view::npos || (!rest.empty() && (rest[0] != ':' || rest.size() == 1))) {
            return std::nullopt;
        }
        return Parts{host, rest.empty() ? rest : rest.substr(1)};
    }
    const std::size_t colon = text.find(':');
    if (std::count(text.begin(), text.end(), ':') != 1) {
        return Parts{text, {}};
    }
    return colon + 1 == text.size() ? std::nullopt
                                    : std::optional(Parts{text.substr(0, colon), text.substr(colon + 1)});
}

}  // namespace

std::optional<ProjectorAddress> ProjectorAddress::parse(std::string_view text) {
    const auto parts = split(text);
    if (!parts) {
        return std::nullopt;
    }
    const auto port = parts->port.empty() ? std::optional(DeviceSnippet::STANDARD_PORT) : wholeNumber(parts->port);
    if (!port || *port < 1) {
        return std::nullopt;
    }
    const auto endpoint = Endpoint::parse(std::string(parts->host), *port);
    return endpoint ? std::optional(ProjectorAddress{endpoint->host(), *port}) : std::nullopt;
}

std::optional<ProjectorAddress> ProjectorAddress::of(const DeviceSnippet& snippet) {
    const auto endpoint = Endpoint::parse(snippet.host, snippet.port);
    return endpoint ? std::optional(ProjectorAddress{endpoint->host(), snippet.port}) : std::nullopt;
}

std::optional<ProjectorAddress> ProjectorAddress::ofText(const std::wstring& snippet) {
    try {
        return of(DeviceSnippet::parse(snippet));
    } catch (const DeviceException&) {
        return std::nullopt;
    }
}

std::string ProjectorAddress::text() const {
    return (isIpv4() ? host : "[" + host + "]") + ":" + std::to_string(port);
}

std::ostream& operator<<(std::ostream& out, const ProjectorAddress& address) {
    return out << address.text();
}

}  // namespace Veltrani::DeviceFramework2
