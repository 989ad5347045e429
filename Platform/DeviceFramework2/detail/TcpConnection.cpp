#include "DeviceFramework2/detail/TcpConnection.h"

#include "DeviceFramework2/DeviceException.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>

namespace Veltrani::DeviceFramework2 {

namespace {

/// Bytes taken at once: several times the longest line, so that a flood is cut off after little of it.
constexpr std::size_t CHUNK = 512;

[[noreturn]] void fail(const std::wstring& what, int error) {
    throw DeviceException(__FILE__, __LINE__, what + L": " + Socket::reason(error));
}

}  // namespace

TcpConnection::TcpConnection(const Endpoint& peer) : m_socket(peer.family(), SOCK_STREAM) {
    // A request is one small packet that must not wait for company.
    const int on = 1;
    ::setsockopt(m_socket.descriptor(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    // An interrupted attempt goes on in the background, as one that was started does.
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

}  // namespace Veltrani::DeviceFramework2
