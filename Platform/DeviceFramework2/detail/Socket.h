#pragma once

#include "DeviceFramework2/detail/Deadline.h"

#include <string>

namespace Veltrani::DeviceFramework2 {

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

    /// The system's words for `errno`.
    [[nodiscard]] static std::wstring reason(int error);

private:
    int m_descriptor;
};

}  // namespace Veltrani::DeviceFramework2
