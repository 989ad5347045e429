// The devices of a display beside each other.
#include "CheckedDisplays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

/// What is found in a wall of three whose first two projectors have these addresses.
std::vector<std::string> foundWith(const std::string& first, const std::string& second) {
    sound::Display display = sound::named("wall");
    display.text = changed(display.text, "192.0.2.1'", first + "'");
    display.text = changed(display.text, "192.0.2.2'", second + "'");
    DisplayFolder folder;
    return reported(folder.checked(display));
}

TEST(DeviceRules, OneAddressIsFoundHoweverItIsSpelled) {
    for (const auto& [first, second] :
         {std::pair("192.0.2.11", "::ffff:192.0.2.11"), std::pair("::ffff:192.0.2.11", "192.0.2.11"),
          std::pair("::FFFF:c000:020b", "192.0.2.11"), std::pair("0:0:0:0:0:ffff:192.0.2.11", "::ffff:c000:20b"),
          std::pair("2001:db8::1", "2001:0DB8:0:0:0:0:0:1"), std::pair("2001:db8:0:0:1::1", "2001:db8::1:0:0:1")}) {
        EXPECT_THAT(foundWith(first, second),
                    Contains(testing::AllOf(HasSubstr("channel Centre: its device has the address "),
                                            HasSubstr(":4352 of channel Left: give each projector its own, or the port "
                                                      "that leads to it [same-device]"))))
            << first << " and " << second;
    }
    EXPECT_THAT(foundWith("192.0.2.11", "::ffff:192.0.2.11"),
                Contains(HasSubstr("its device has the address [::ffff:192.0.2.11]:4352 of channel Left")));
}

TEST(DeviceRules, OtherAddressesAreOtherProjectors) {
    for (const auto& [first, second] :
         {std::pair("192.0.2.11", "::ffff:192.0.2.12"), std::pair("2001:db8::1", "2001:db8::1:1"),
          std::pair("192.0.2.11", "2001:db8::c000:20b"), std::pair("fe80::1", "fe80::2")}) {
        EXPECT_THAT(foundWith(first, second), IsEmpty()) << first << " and " << second;
    }
}

TEST(DeviceRules, AddressesThatNoProjectorHasAreReported) {
    EXPECT_THAT(foundWith("0.0.0.0", "192.0.2.9"),
                Contains("channel Left: its device has the address 0.0.0.0:4352, which means no machine and no "
                         "projector: write the address that the menu of the projector shows [other-device]"));
    for (const auto& [address, meaning] :
         {std::pair("255.255.255.255", "every machine of a network"), std::pair("127.0.0.1", "this computer itself"),
          std::pair("127.1.2.3", "this computer itself"), std::pair("::1", "this computer itself"),
          std::pair("::", "no machine"), std::pair("::ffff:127.0.0.1", "this computer itself"),
          std::pair("224.0.0.1", "a group of machines"), std::pair("ff02::1", "a group of machines")}) {
        EXPECT_THAT(foundWith(address, "192.0.2.9"),
                    Contains(HasSubstr(std::string("which means ") + meaning + " and no projector")))
            << address;
    }
    for (const char* address :
         {"10.0.0.1", "223.255.255.255", "240.0.0.1", "126.0.0.1", "128.0.0.1", "::2", "fe80::1"}) {
        EXPECT_THAT(foundWith(address, "192.0.2.9"), IsEmpty()) << address;
    }
}

}  // namespace
