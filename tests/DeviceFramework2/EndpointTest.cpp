#include "DeviceFramework2/detail/Endpoint.h"

#include <gtest/gtest.h>
#include <netinet/in.h>

#include <set>

namespace {

using Veltrani::DeviceFramework2Detail::broadcastAddresses;
using Veltrani::DeviceFramework2Detail::Endpoint;

std::string text(const std::string& host, int port) {
    const auto endpoint = Endpoint::parse(host, port);
    return endpoint ? endpoint->text() : "none";
}

TEST(Endpoint, NumericAddressesAreRead) {
    EXPECT_EQ(text("192.0.2.10", 4352), "192.0.2.10:4352");
    EXPECT_EQ(text("127.0.0.1", 65535), "127.0.0.1:65535");
    EXPECT_EQ(text("2001:DB8:0:0::1", 4352), "[2001:db8::1]:4352");
    EXPECT_EQ(text("::1", 0), "[::1]:0");
}

TEST(Endpoint, TheSameAddressHasTheSameText) {
    EXPECT_EQ(text("2001:db8:0::1", 1), text("2001:DB8::0001", 1)) << "duplicates are found by this text";
}

TEST(Endpoint, FamilyAndSizeFitTheAddress) {
    const auto ipv4 = Endpoint::parse("192.0.2.10", 1);
    const auto ipv6 = Endpoint::parse("::1", 1);
    EXPECT_EQ(ipv4->family(), AF_INET);
    EXPECT_EQ(ipv4->size(), sizeof(sockaddr_in));
    EXPECT_EQ(ipv6->family(), AF_INET6);
    EXPECT_EQ(ipv6->size(), sizeof(sockaddr_in6));
    EXPECT_EQ(ipv4->host(), "192.0.2.10");
}

TEST(Endpoint, NamesShortFormsAndBadPortsAreNone) {
    for (const char* host : {"", "localhost", "projector.example", "127.1", "0x7f.0.0.1", "0177.0.0.01", "192.0.2.256",
                             "192.0.2.10 ", " 192.0.2.10", "192.0.2.10:4352", "[::1]", ":::", "1:2:3"}) {
        EXPECT_EQ(text(host, 4352), "none") << host;
    }
    EXPECT_EQ(text(std::string("127.0.0.1\0x", 11), 1), "none");
    EXPECT_EQ(text("127.0.0.1", -1), "none");
    EXPECT_EQ(text("127.0.0.1", 65536), "none");
}

TEST(BroadcastAddresses, AreIPv4EachOnce) {
    const auto addresses = broadcastAddresses();
    ASSERT_FALSE(addresses.empty());
    EXPECT_EQ(std::set<std::string>(addresses.begin(), addresses.end()).size(), addresses.size());
    for (const std::string& address : addresses) {
        const auto endpoint = Endpoint::parse(address, 4352);
        ASSERT_TRUE(endpoint.has_value()) << address;
        EXPECT_EQ(endpoint->family(), AF_INET);
    }
}

}  // namespace
