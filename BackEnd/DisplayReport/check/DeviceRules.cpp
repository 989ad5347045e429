#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "DeviceFramework2/DeviceSnippet.h"
#include "DeviceFramework2/ProjectorAddress.h"
#include "DisplayReport/check/Judgement.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

using DeviceFramework2::DeviceSnippet;
using DeviceFramework2::ProjectorAddress;
using Bytes = std::vector<unsigned char>;

constexpr std::size_t IPV4 = 4;
constexpr std::size_t IPV6 = 16;

/// An address by its bytes, so that every spelling of one address is the same: also that of an IPv4 address in the
/// form of IPv6, ::ffff:192.0.2.10.
struct NetworkAddress {
    Bytes bytes;
    std::string scope;  ///< of an address that holds on one network, "eth0"
    int port = 0;

    [[nodiscard]] static std::optional<NetworkAddress> of(const ProjectorAddress& address) {
        const std::size_t percent = address.host.find('%');
        const std::string host = address.host.substr(0, percent);
        NetworkAddress found{Bytes(IPV4), {}, address.port};
        if (::inet_pton(AF_INET, host.c_str(), found.bytes.data()) == 1) {
            return found;
        }
        found.bytes.resize(IPV6);
        if (::inet_pton(AF_INET6, host.c_str(), found.bytes.data()) != 1) {
            return std::nullopt;
        }
        constexpr std::array<unsigned char, 12> MAPPED{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
        if (std::equal(MAPPED.begin(), MAPPED.end(), found.bytes.begin())) {
            found.bytes.erase(found.bytes.begin(), found.bytes.begin() + MAPPED.size());
        } else if (percent != std::string::npos) {
            found.scope = address.host.substr(percent);
        }
        return found;
    }

    friend bool operator==(const NetworkAddress&, const NetworkAddress&) = default;
};

std::optional<NetworkAddress> addressOf(const std::wstring& snippet) {
    const auto address = ProjectorAddress::ofText(snippet);
    return address ? NetworkAddress::of(*address) : std::nullopt;
}

bool isFilledWith(const Bytes& bytes, unsigned char value) {
    return std::all_of(bytes.begin(), bytes.end(), [value](unsigned char byte) { return byte == value; });
}

/// What an address means that no projector can have; empty for any other.
std::string meaningOf(const NetworkAddress& address) {
    const Bytes& bytes = address.bytes;
    const bool isIpv4 = bytes.size() == IPV4;
    constexpr unsigned char FULL = 0xff;
    if (isFilledWith(bytes, 0)) {
        return "no machine";
    }
    if (isIpv4 && isFilledWith(bytes, FULL)) {
        return "every machine of a network";
    }
    const bool isLoopback =
        isIpv4 ? bytes.front() == 127 : bytes.back() == 1 && isFilledWith({bytes.begin(), bytes.end() - 1}, 0);
    if (isLoopback) {
        return "this computer itself";
    }
    const bool isMulticast = isIpv4 ? bytes.front() >= 224 && bytes.front() <= 239 : bytes.front() == FULL;
    return isMulticast ? "a group of machines" : "";
}

/// What the commands that contact projectors would report of the entry.
void judgeEntry(const ChannelFacts& channel, FindingList& found) {
    const std::wstring snippet = channel.projector().getDeviceSnippet();
    if (snippet.find_first_not_of(L" \t\r\n") == std::wstring::npos) {
        return;
    }
    try {
        static_cast<void>(DeviceSnippet::parse(snippet));
    } catch (const VeltraniException& fault) {
        // Entries of other types belong to programs that bring devices of their own.
        const bool isMeantForHere = snippet.find(L"PJLink") != std::wstring::npos;
        found.add(Rule::named(isMeantForHere ? "broken-device" : "other-device"), channel.where(), channel.allowed(),
                  "its device cannot be contacted by this program: " + toUtf8(fault.message) +
                      "; correct the Device element of the entry");
        return;
    }
    const auto address = addressOf(snippet);
    if (const std::string meaning = address ? meaningOf(*address) : ""; !meaning.empty()) {
        found.add(Rule::named("other-device"), channel.where(), channel.allowed(),
                  "its device has the address " + ProjectorAddress::ofText(snippet)->text() + ", which means " +
                      meaning + " and no projector: write the address that the menu of the projector shows");
    }
}

void judgePair(const ChannelFacts& first, const ChannelFacts& second, FindingList& found) {
    const std::wstring one = first.projector().getDeviceSnippet();
    const std::wstring other = second.projector().getDeviceSnippet();
    const auto mac = DeviceSnippet::macAddressIn(other);
    const auto address = addressOf(other);
    const auto report = [&](const std::string& what) {
        found.add(Rule::named("same-device"), second.where(), first.allowed() + " " + second.allowed(), what);
    };
    if (mac && DeviceSnippet::macAddressIn(one) == mac) {
        report("its device has the MAC address " + toUtf8(mac->text()) + " of " + first.where() +
               ": give each projector its own, as its label states it");
    } else if (address && addressOf(one) == address) {
        report("its device has the address " + ProjectorAddress::ofText(other)->text() + " of " + first.where() +
               ": give each projector its own, or the port that leads to it");
    }
}

}  // namespace

void judgeDevices(const DisplayFacts& display, FindingList& found) {
    const std::vector<ChannelFacts>& channels = display.channels;
    for (std::size_t second = 0; second < channels.size(); ++second) {
        judgeEntry(channels[second], found);
        for (std::size_t first = 0; first < second; ++first) {
            judgePair(channels[first], channels[second], found);
        }
    }
}

}  // namespace Veltrani::DisplayReport
