#include "DeviceFramework2/detail/Socket.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceException.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace Veltrani::DeviceFramework2 {

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

}  // namespace Veltrani::DeviceFramework2
