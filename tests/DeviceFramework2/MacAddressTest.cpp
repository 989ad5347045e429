#include "DeviceFramework2/MacAddress.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::DeviceFramework2::MacAddress;

std::wstring parsed(std::wstring_view text) {
    const auto address = MacAddress::parse(text);
    return address ? address->uid() : L"none";
}

std::wstring found(std::wstring_view text) {
    const auto address = MacAddress::find(text);
    return address ? address->uid() : L"none";
}

TEST(MacAddress, IsReadInEveryUsualForm) {
    EXPECT_EQ(parsed(L"02:00:00:00:00:01"), L"020000000001");
    EXPECT_EQ(parsed(L"02-00-00-00-00-01"), L"020000000001");
    EXPECT_EQ(parsed(L"020000000001"), L"020000000001");
    EXPECT_EQ(parsed(L"aB:cD:eF:01:23:45"), L"ABCDEF012345");
}

TEST(MacAddress, IsWrittenInCapitals) {
    const auto address = MacAddress::parse(L"ab-cd-ef-01-23-45");
    ASSERT_TRUE(address.has_value());
    EXPECT_EQ(address->uid(), L"ABCDEF012345");
    EXPECT_EQ(address->text(), L"AB:CD:EF:01:23:45");
    EXPECT_EQ(MacAddress::parse(address->text()), address);
}

TEST(MacAddress, AnythingElseIsNone) {
    for (const wchar_t* text :
         {L"", L"02", L"02:00:00:00:00", L"02:00:00:00:00:01:", L"02:00:00:00:00:0g", L"02:00-00:00:00:01",
          L"2:0:0:0:0:1", L" 02:00:00:00:00:01", L"02:00:00:00:00:01 ", L"0200.0000.0001", L"02 00 00 00 00 01",
          L"02:00:00:00:00:0\uFF11", L"02000000000", L"0200000000011", L"-2:00:00:00:00:01"}) {
        EXPECT_EQ(parsed(text), L"none") << testing::PrintToString(std::wstring(text));
    }
}

TEST(MacAddress, TheAddressesThatBelongToNoDeviceAreNone) {
    EXPECT_EQ(parsed(L"00:00:00:00:00:00"), L"none");
    EXPECT_EQ(parsed(L"ff:ff:ff:ff:ff:ff"), L"none");
    EXPECT_EQ(parsed(L"00:00:00:00:00:01"), L"000000000001");
}

TEST(MacAddress, TheFirstInATextIsFound) {
    EXPECT_EQ(found(L"02:00:00:00:00:01"), L"020000000001");
    EXPECT_EQ(found(L"<mac>02:00:00:00:00:01</mac><mac>02:00:00:00:00:02</mac>"), L"020000000001");
    EXPECT_EQ(found(L"at (02-00-00-00-00-03), first floor"), L"020000000003");
    EXPECT_EQ(found(L"bad 02:00:00:00:00:zz good 02:00:00:00:00:04"), L"020000000004");
}

TEST(MacAddress, PartsOfOtherThingsAreNotFound) {
    EXPECT_EQ(found(L"serial 020000000001"), L"none") << "twelve digits may be any number";
    EXPECT_EQ(found(L"2001:db8:02:00:00:00:00:01"), L"none") << "IPv6";
    EXPECT_EQ(found(L"02:00:00:00:00:01::"), L"none") << "IPv6";
    EXPECT_EQ(found(L"projector-02-00-00-00-00-01.example"), L"none") << "a host name";
    EXPECT_EQ(found(L"02-00-00-00-00-01.example"), L"none") << "a host name";
    EXPECT_EQ(found(L"192.0.2.10"), L"none");
    EXPECT_EQ(found(L""), L"none");
}

TEST(MacAddress, WhatContinuesAWordOrANameHidesAnAddressBesideIt) {
    const std::wstring address = L"02:00:00:00:00:01";
    for (const wchar_t beside : std::wstring(L"0189AGYZagyz:-._\u0080\u00E9\uFF11")) {
        EXPECT_EQ(found(beside + address), L"none") << "before: " << static_cast<int>(beside);
        EXPECT_EQ(found(address + beside), L"none") << "behind: " << static_cast<int>(beside);
    }
    for (const wchar_t beside : std::wstring(L" /;@[^`{~\x7f\n\"'<>(),=")) {
        EXPECT_EQ(found(beside + address), L"020000000001") << "before: " << static_cast<int>(beside);
        EXPECT_EQ(found(address + beside), L"020000000001") << "behind: " << static_cast<int>(beside);
    }
}

TEST(MacAddress, OrderFollowsTheDigits) {
    const auto first = MacAddress::parse(L"020000000001");
    const auto second = MacAddress::parse(L"020000000002");
    EXPECT_LT(*first, *second);
    EXPECT_FALSE(*second < *first);
    EXPECT_NE(*first, *second);
}

TEST(MacAddress, IsPrintedAsItsText) {
    EXPECT_EQ(testing::PrintToString(*MacAddress::parse(L"02000000000a")), "02:00:00:00:00:0A");
}

}  // namespace
