#pragma once

#include "DeviceFramework2/detail/Deadline.h"
#include "DeviceFramework2/detail/Endpoint.h"
#include "DeviceFramework2/detail/Socket.h"

#include <optional>
#include <string>
#include <string_view>

namespace Veltrani::DeviceFramework2 {

/// A connection to a projector. No operation waits longer than its deadline; every fault is a `DeviceException` with
/// the cause alone: the caller knows which projector it is.
class TcpConnection {
public:
    TcpConnection(const Endpoint& peer, const Deadline& deadline);

    /// Sends everything or throws.
    void send(std::string_view bytes, const Deadline& deadline);

    /// Waits for the next bytes; empty when the other side has finished sending.
    [[nodiscard]] std::string receive(const Deadline& deadline);

    /// The bytes that are already there, without waiting; nothing when there are none, empty at the end.
    [[nodiscard]] std::optional<std::string> receiveNow();

    void close() { m_socket.close(); }

private:
    Socket m_socket;
};

}  // namespace Veltrani::DeviceFramework2
