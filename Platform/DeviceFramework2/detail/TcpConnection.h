#pragma once

#include "DeviceFramework2/detail/Endpoint.h"
#include "DeviceFramework2/detail/Socket.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Veltrani::DeviceFramework2 {

/// A connection to a projector. No operation waits; every fault is a `DeviceException` with the cause alone: the caller
/// knows which projector it is.
class TcpConnection {
public:
    /// Begins to connect. The connection is made, or has failed, when the socket is ready to be written to.
    explicit TcpConnection(const Endpoint& peer);

    /// Throws when the connection has failed. Only once the socket is ready to be written to.
    void requireConnected() const;

    /// Sends as much as the system takes. Returns how many bytes that is.
    [[nodiscard]] std::size_t send(std::string_view bytes);

    /// The bytes that are there; nothing when there are none, empty when the other side has finished sending.
    [[nodiscard]] std::optional<std::string> receive();

    [[nodiscard]] const Socket& socket() const { return m_socket; }

private:
    Socket m_socket;
};

}  // namespace Veltrani::DeviceFramework2
