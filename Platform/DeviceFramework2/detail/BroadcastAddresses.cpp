#include "DeviceFramework2/detail/BroadcastAddresses.h"

#include "DeviceFramework2/detail/Endpoint.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace Veltrani::DeviceFramework2 {

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

}  // namespace Veltrani::DeviceFramework2
