#pragma once

#include "DeviceFramework2/detail/Endpoint.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace device_testing {

/// A listening socket on loopback that accepts only when told to, with room for `backlog` connections.
class Listener {
public:
    explicit Listener(int backlog) : m_descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        ::listen(m_descriptor, backlog);
    }
    ~Listener() { ::close(m_descriptor); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    [[nodiscard]] Veltrani::DeviceFramework2Detail::Endpoint endpoint() const {
        sockaddr_storage address{};
        socklen_t size = sizeof address;
        ::getsockname(m_descriptor, reinterpret_cast<sockaddr*>(&address), &size);
        return Veltrani::DeviceFramework2Detail::Endpoint::of(address);
    }
    [[nodiscard]] int accept() const { return ::accept(m_descriptor, nullptr, nullptr); }

private:
    int m_descriptor;
};

}  // namespace device_testing
