#include "DeviceFramework2/ProjectorAddress.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::DeviceFramework2::ProjectorAddress;

TEST(ProjectorAddress, TheStandardPortNeedNotBeWritten) {
    EXPECT_EQ(ProjectorAddress::parse("192.0.2.10"), (ProjectorAddress{"192.0.2.10", 4352}));
    EXPECT_EQ(ProjectorAddress::parse("192.0.2.10:14351"), (ProjectorAddress{"192.0.2.10", 14351}));
    EXPECT_EQ(ProjectorAddress::parse("192.0.2.10:1"), (ProjectorAddress{"192.0.2.10", 1}));
    EXPECT_EQ(ProjectorAddress::parse("192.0.2.10:65535"), (ProjectorAddress{"192.0.2.10", 65535}));
}

TEST(ProjectorAddress, APortBehindAnIpv6AddressNeedsBrackets) {
    EXPECT_EQ(ProjectorAddress::parse("2001:db8::1"), (ProjectorAddress{"2001:db8::1", 4352}));
    EXPECT_EQ(ProjectorAddress::parse("[2001:db8::1]"), (ProjectorAddress{"2001:db8::1", 4352}));
    EXPECT_EQ(ProjectorAddress::parse("[2001:db8::1]:14351"), (ProjectorAddress{"2001:db8::1", 14351}));
    EXPECT_EQ(ProjectorAddress::parse("2001:0DB8:0:0::1"), (ProjectorAddress{"2001:db8::1", 4352}))
        << "one spelling, so that the same projector is recognised";
}

TEST(ProjectorAddress, OtherTextsAreNone) {
    for (const char* text : {"",
                             ":",
                             "projector",
                             "projector.example:4352",
                             "192.0.2",
                             "192.0.2.256",
                             "192.0.2.10:",
                             "192.0.2.10:0",
                             "192.0.2.10:65536",
                             "192.0.2.10:-1",
                             "192.0.2.10:x",
                             "192.0.2.10:4352:1",
                             "192.0.2.10 ",
                             " 192.0.2.10",
                             "192.0.2.10:99999999999",
                             "[192.0.2.10]:4352",
                             "[2001:db8::1",
                             "2001:db8::1]",
                             "[2001:db8::1]:",
                             "[2001:db8::1]4352",
                             "[]:4352",
                             "[]",
                             "[:]",
                             "02:00:00:00:00:01",
                             "1:2:3:4:5:6:7:8:9",
                             "'192.0.2.10"}) {
        EXPECT_EQ(ProjectorAddress::parse(text), std::nullopt) << text;
    }
    EXPECT_EQ(ProjectorAddress::parse(std::string_view("192.0.2.10\0", 11)), std::nullopt);
}

TEST(ProjectorAddress, OfATextThatIsNoSnippetOrStatesNoneIsNone) {
    EXPECT_EQ(ProjectorAddress::ofText(L"<Device type='PJLink' mac='02:00:00:00:00:01' host='192.0.2.10'/>"),
              (ProjectorAddress{"192.0.2.10", 4352}));
    for (const wchar_t* snippet : {L"", L"<Device", L"<Device type='PJLink' mac='02:00:00:00:00:01'/>"}) {
        EXPECT_EQ(ProjectorAddress::ofText(snippet), std::nullopt) << snippet;
    }
}

TEST(ProjectorAddress, ItsTextReadsBack) {
    for (const char* text : {"192.0.2.10:4352", "[2001:db8::1]:14351"}) {
        const auto address = ProjectorAddress::parse(text);
        ASSERT_TRUE(address) << text;
        EXPECT_EQ(address->text(), text);
    }
    EXPECT_TRUE(ProjectorAddress::parse("192.0.2.10")->isIpv4());
    EXPECT_FALSE(ProjectorAddress::parse("::1")->isIpv4());
}

TEST(ProjectorAddress, IsReadFromASnippet) {
    using Veltrani::DeviceFramework2::DeviceSnippet;
    const auto address = ProjectorAddress::of(
        DeviceSnippet::parse(L"<Device type='PJLink' mac='02:00:00:00:00:01' host='2001:DB8::0:1' port='5'/>"));
    EXPECT_EQ(address, (ProjectorAddress{"2001:db8::1", 5}));
    EXPECT_EQ(ProjectorAddress::of(DeviceSnippet::parse(L"<Device type='PJLink' mac='02:00:00:00:00:01'/>")),
              std::nullopt);
}

TEST(ProjectorAddress, IsPrintedAsItsText) {
    EXPECT_EQ(testing::PrintToString(*ProjectorAddress::parse("192.0.2.10")), "192.0.2.10:4352");
}

}  // namespace
