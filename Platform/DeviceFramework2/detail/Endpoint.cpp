#include "DeviceFramework2/detail/Endpoint.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace Veltrani::DeviceFramework2Detail {

namespace {

// The kinds of address are copied out of and into the general one, never viewed through a cast pointer: that would
// break the aliasing rules of the language.

/// IPv4 in four decimal numbers: the shorter and octal forms that other functions accept are typing errors here.
bool parseIpv4(const std::string& host, int port, sockaddr_storage& address) {
    sockaddr_in ipv4{};
    if (::inet_pton(AF_INET, host.c_str(), &ipv4.sin_addr) != 1) {
        return false;
    }
    ipv4.sin_family = AF_INET;
    ipv4.sin_port = htons(static_cast<std::uint16_t>(port));
    std::memcpy(&address, &ipv4, sizeof ipv4);
    return true;
}

bool parseIpv6(const std::string& host, int port, sockaddr_storage& address) {
    if (host.find(':') == std::string::npos) {
        return false;
    }
    addrinfo hints{};
    hints.ai_family = AF_INET6;
    hints.ai_flags = AI_NUMERICHOST;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) {
        return false;
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, &::freeaddrinfo);
    sockaddr_in6 ipv6{};
    std::memcpy(&ipv6, found->ai_addr, sizeof ipv6);
    ipv6.sin6_port = htons(static_cast<std::uint16_t>(port));
    std::memcpy(&address, &ipv6, sizeof ipv6);
    return true;
}

int portOf(const sockaddr_storage& address) {
    if (address.ss_family == AF_INET6) {
        sockaddr_in6 ipv6{};
        std::memcpy(&ipv6, &address, sizeof ipv6);
        return ntohs(ipv6.sin6_port);
    }
    sockaddr_in ipv4{};
    std::memcpy(&ipv4, &address, sizeof ipv4);
    return ntohs(ipv4.sin_port);
}

}  // namespace

std::optional<Endpoint> Endpoint::parse(const std::string& host, int port) {
    sockaddr_storage address{};
    if (port < 0 || port > LARGEST_PORT || host.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    if (!parseIpv4(host, port, address) && !parseIpv6(host, port, address)) {
        return std::nullopt;
    }
    return Endpoint(address);
}

Endpoint Endpoint::of(const sockaddr_storage& address) {
    return Endpoint(address);
}

socklen_t Endpoint::size() const {
    return family() == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
}

std::string Endpoint::host() const {
    char name[NI_MAXHOST] = "";
    ::getnameinfo(address(), size(), name, sizeof name, nullptr, 0, NI_NUMERICHOST);
    return name;
}

std::string Endpoint::text() const {
    const bool ipv6 = family() == AF_INET6;
    std::string name = ipv6 ? "[" : "";
    name += host();
    name += ipv6 ? "]:" : ":";
    return name + std::to_string(portOf(m_address));
}

std::vector<std::string> broadcastAddresses() {
    std::vector<std::string> found;
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0) {
        first = nullptr;
    }
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(first, &::freeifaddrs);
    for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
        constexpr unsigned int NEEDED = IFF_UP | IFF_BROADCAST;
        if ((entry->ifa_flags & NEEDED) != NEEDED || entry->ifa_broadaddr == nullptr || entry->ifa_addr == nullptr ||
            entry->ifa_addr->sa_family != AF_INET) {
            continue;
        }
        sockaddr_storage address{};
        std::memcpy(&address, entry->ifa_broadaddr, sizeof(sockaddr_in));
        std::string host = Endpoint::of(address).host();
        if (std::find(found.begin(), found.end(), host) == found.end()) {
            found.push_back(std::move(host));
        }
    }
    if (found.empty()) {
        found.emplace_back("255.255.255.255");
    }
    return found;
}

}  // namespace Veltrani::DeviceFramework2Detail
