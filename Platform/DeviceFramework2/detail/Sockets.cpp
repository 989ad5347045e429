#include "DeviceFramework2/detail/Sockets.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceException.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace Veltrani::DeviceFramework2Detail {

using DeviceFramework2::DeviceException;

namespace {

/// Keeps the sums below within the range of the clock and of poll.
constexpr std::chrono::milliseconds LONGEST_LIMIT = std::chrono::hours(24);

/// Bytes taken at once: several times the longest line, so that a flood is cut off after little of it.
constexpr std::size_t CHUNK = 512;

[[noreturn]] void fail(const std::wstring& what, int error) {
    throw DeviceException(__FILE__, __LINE__, what + L": " + Socket::reason(error));
}

}  // namespace

Deadline::Deadline(std::chrono::milliseconds limit)
    : m_limit(std::clamp(limit, std::chrono::milliseconds(0), LONGEST_LIMIT)),
      m_end(std::chrono::steady_clock::now() + m_limit) {}

std::chrono::milliseconds Deadline::remaining() const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_end - std::chrono::steady_clock::now());
    return std::max(left, std::chrono::milliseconds(0));
}

Socket::Socket(int family, int kind) : m_descriptor(::socket(family, kind | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    if (m_descriptor < 0) {
        throw DeviceException(__FILE__, __LINE__, L"no socket: " + reason(errno));
    }
}

Socket::~Socket() {
    ::close(m_descriptor);
}

bool Socket::waitFor(short events, const Deadline& deadline) const {
    while (true) {
        pollfd watched{m_descriptor, events, 0};
        const int ready = ::poll(&watched, 1, static_cast<int>(deadline.remaining().count()));
        if (ready > 0) {
            return true;
        }
        if (ready < 0 && errno != EINTR) {
            throw DeviceException(__FILE__, __LINE__, L"the wait failed: " + reason(errno));
        }
        if (deadline.expired()) {
            return false;
        }
    }
}

std::wstring Socket::reason(int error) {
    return fromUtf8OrBytes(std::generic_category().message(error));
}

TcpConnection::TcpConnection(const Endpoint& peer) : m_socket(peer.family(), SOCK_STREAM) {
    // A request is one small packet that must not be held back until more data follow.
    const int on = 1;
    ::setsockopt(m_socket.descriptor(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    // An interrupted attempt continues in the background, as one that was started does.
    if (::connect(m_socket.descriptor(), peer.address(), peer.size()) != 0 && errno != EINPROGRESS && errno != EINTR) {
        fail(L"no connection", errno);
    }
}

void TcpConnection::requireConnected() const {
    int error = 0;
    socklen_t size = sizeof error;
    ::getsockopt(m_socket.descriptor(), SOL_SOCKET, SO_ERROR, &error, &size);
    if (error != 0) {
        fail(L"no connection", error);
    }
}

std::size_t TcpConnection::send(std::string_view bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(m_socket.descriptor(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count >= 0) {
            sent += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN) {
            break;
        } else if (errno != EINTR) {
            fail(L"the command could not be sent", errno);
        }
    }
    return sent;
}

std::optional<std::string> TcpConnection::receive() {
    std::array<char, CHUNK> buffer{};
    const ssize_t count = ::recv(m_socket.descriptor(), buffer.data(), buffer.size(), 0);
    if (count >= 0) {
        return std::string(buffer.data(), static_cast<std::size_t>(count));
    }
    if (errno != EAGAIN && errno != EINTR) {
        fail(L"the connection broke", errno);
    }
    return std::nullopt;
}

}  // namespace Veltrani::DeviceFramework2Detail
