#pragma once

#include <sys/socket.h>

#include <optional>
#include <string>
#include <vector>

namespace Veltrani::DeviceFramework2Detail {

/// A numeric network address with a port. Names are not looked up: that would be a wait without a limit.
class Endpoint {
public:
    static constexpr int LARGEST_PORT = 65535;

    /// @param host "192.0.2.10", "2001:db8::1" or "fe80::1%eth0"
    /// @param port 0 to 65535
    [[nodiscard]] static std::optional<Endpoint> parse(const std::string& host, int port);
    [[nodiscard]] static Endpoint of(const sockaddr_storage& address);

    [[nodiscard]] const sockaddr* address() const { return reinterpret_cast<const sockaddr*>(&m_address); }
    [[nodiscard]] socklen_t size() const;
    [[nodiscard]] int family() const { return m_address.ss_family; }

    /// "192.0.2.10"
    [[nodiscard]] std::string host() const;
    /// "192.0.2.10:4352", "[2001:db8::1]:4352"
    [[nodiscard]] std::string text() const;

private:
    explicit Endpoint(const sockaddr_storage& address) : m_address(address) {}

    sockaddr_storage m_address;
};

/// Returns the IPv4 broadcast addresses of the networks that this machine is on, each once; the general one,
/// 255.255.255.255, where there are none.
[[nodiscard]] std::vector<std::string> broadcastAddresses();

}  // namespace Veltrani::DeviceFramework2Detail
