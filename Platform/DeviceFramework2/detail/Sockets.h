#pragma once

#include "DeviceFramework2/detail/Endpoint.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Sockets that never block: the limit of a wait, an owned socket, and a connection over one.
namespace Veltrani::DeviceFramework2Detail {

/// The end of a wait, on the monotonic clock: setting the time of the machine does not move it.
class Deadline {
public:
    /// The wait begins now; a negative limit has already passed, one above a day counts as a day.
    explicit Deadline(std::chrono::milliseconds limit);

    [[nodiscard]] bool expired() const { return remaining().count() == 0; }
    /// Rounded up to whole milliseconds, so that a wait of that length is not cut into a busy loop; never negative.
    [[nodiscard]] std::chrono::milliseconds remaining() const;
    /// Returns the length of the whole wait, for messages.
    [[nodiscard]] std::chrono::milliseconds limit() const { return m_limit; }

private:
    std::chrono::milliseconds m_limit;
    std::chrono::steady_clock::time_point m_end;
};

/// An owned socket that never blocks and is not inherited by other programs.
class Socket {
public:
    /// @param kind SOCK_STREAM or SOCK_DGRAM. Throws `DeviceException` when the system gives no socket.
    Socket(int family, int kind);
    ~Socket();
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    [[nodiscard]] int descriptor() const { return m_descriptor; }

    /// Waits until the socket is ready for `events` (POLLIN, POLLOUT) or has a fault to report; false when the time is
    /// over first.
    [[nodiscard]] bool waitFor(short events, const Deadline& deadline) const;

    /// Returns the system's words for `errno`.
    [[nodiscard]] static std::wstring reason(int error);

private:
    int m_descriptor;
};

/// A connection to a projector. No operation waits; every fault is a `DeviceException` with the cause alone: the caller
/// knows which projector it is.
class TcpConnection {
public:
    /// Begins to connect. The connection is made, or has failed, when the socket is ready to be written to.
    explicit TcpConnection(const Endpoint& peer);

    /// Throws when the connection has failed. May be called only once the socket is ready to be written to.
    void requireConnected() const;

    /// Sends as much as the system takes. Returns how many bytes that is.
    [[nodiscard]] std::size_t send(std::string_view bytes);

    /// Returns the bytes that are there; nothing when there are none, empty when the other side has finished sending.
    [[nodiscard]] std::optional<std::string> receive();

    [[nodiscard]] const Socket& socket() const { return m_socket; }

private:
    Socket m_socket;
};

}  // namespace Veltrani::DeviceFramework2Detail
