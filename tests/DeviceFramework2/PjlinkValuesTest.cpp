#include "DeviceFramework2/detail/PjlinkValues.h"

#include "DeviceFramework2/detail/AsciiText.h"
#include "DeviceFramework2/detail/PjlinkMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DeviceFramework2;
using namespace Veltrani::DeviceFramework2Detail;
using testing::ElementsAre;
using testing::Optional;

TEST(PjlinkValues, TheClassIsReadInBothSpellings) {
    EXPECT_EQ(PjlinkValues::commandClass("1"), 1);
    EXPECT_EQ(PjlinkValues::commandClass("2"), 2);
    EXPECT_EQ(PjlinkValues::commandClass("Class 1"), 1);
    EXPECT_EQ(PjlinkValues::commandClass("CLASS 2"), 2);
    for (const char* value : {"", "0", "12", " 1", "x", "Class1", "Class 0", "Class ", "Class 12"}) {
        EXPECT_EQ(PjlinkValues::commandClass(value), std::nullopt) << value;
    }
}

TEST(PjlinkValues, AClassAboveTwoCountsAsTwo) {
    for (const char* value : {"3", "9", "Class 3", "CLASS 4"}) {
        EXPECT_EQ(PjlinkValues::commandClass(value), 2) << value;
    }
}

TEST(PjlinkValues, AResolutionIsTwoPositiveNumbers) {
    EXPECT_EQ(PjlinkValues::resolution("1920x1200"), (Point<int, 2>{1920, 1200}));
    EXPECT_EQ(PjlinkValues::resolution("4096X2160"), (Point<int, 2>{4096, 2160}));
    for (const char* value : {"", "x", "1920", "1920x", "x1200", "1920x0", "0x1200", "-1920x1200", "1920x-1",
                              "1920 x 1200", "1920x1200x1", "1920x1200 ", "1.9e3x1200", "99999999999x1", "+1x1", "-"}) {
        EXPECT_EQ(PjlinkValues::resolution(value), std::nullopt) << value;
    }
}

TEST(PjlinkValues, ThePowerIsOneOfFourDigits) {
    EXPECT_EQ(PjlinkValues::power("0"), PowerState::STANDBY);
    EXPECT_EQ(PjlinkValues::power("1"), PowerState::ON);
    EXPECT_EQ(PjlinkValues::power("2"), PowerState::COOLING);
    EXPECT_EQ(PjlinkValues::power("3"), PowerState::WARMING_UP);
    for (const char* value : {"", "4", "-1", "01", "1 ", "on"}) {
        EXPECT_EQ(PjlinkValues::power(value), std::nullopt) << value;
    }
}

TEST(PjlinkValues, OnlyThePictureCountsAsMuted) {
    for (const char* value : {"11", "31"}) {
        EXPECT_EQ(PjlinkValues::pictureMute(value), true) << value;
    }
    for (const char* value : {"10", "20", "21", "30"}) {
        EXPECT_EQ(PjlinkValues::pictureMute(value), false) << value;
    }
    for (const char* value : {"", "1", "12", "41", "111", "1 1"}) {
        EXPECT_EQ(PjlinkValues::pictureMute(value), std::nullopt) << value;
    }
}

TEST(PjlinkValues, AnInputIsAKindAndANumber) {
    EXPECT_EQ(PjlinkValues::input("11"), "11");
    EXPECT_EQ(PjlinkValues::input("69"), "69");
    EXPECT_EQ(PjlinkValues::input("5a"), "5A");
    EXPECT_EQ(PjlinkValues::input("3Z"), "3Z");
    for (const char* value : {"", "1", "111", "01", "71", "10", "1!", "A1", " 1", "1\xc3"}) {
        EXPECT_EQ(PjlinkValues::input(value), std::nullopt) << value;
    }
}

TEST(PjlinkValues, AListKeepsItsOrder) {
    EXPECT_THAT(PjlinkValues::inputs("31 11 5a"), Optional(ElementsAre("31", "11", "5A")));
    EXPECT_THAT(PjlinkValues::inputs("  11   12 "), Optional(ElementsAre("11", "12")));
    for (const char* value : {"", " ", "11,12", "11 1", "11 12 99", "1112"}) {
        EXPECT_EQ(PjlinkValues::inputs(value), std::nullopt) << value;
    }
}

TEST(PjlinkSearchReply, IsTheMacAddressOfTheSender) {
    const auto expected = MacAddress::parse(L"02:00:00:00:ab:01");
    EXPECT_EQ(parsePjlinkSearchReply("%2ACKN=02:00:00:00:ab:01\r"), expected);
    EXPECT_EQ(parsePjlinkSearchReply("%2ackn=02:00:00:00:AB:01\r\n"), expected);
    EXPECT_EQ(parsePjlinkSearchReply("%2ACKN=02:00:00:00:ab:01"), expected);
}

TEST(PjlinkSearchReply, OtherDatagramsAreNone) {
    for (const char* datagram : {"", "\r", "%2SRCH\r", "%2ACKN\r", "%2ACKN=\r", "%1ACKN=02:00:00:00:ab:01\r",
                                 "%2ACKN=02:00:00:00:ab:0\r", "%2ACKN=00:00:00:00:00:00\r", "%2ACKN=\xff\xfe\r",
                                 "%2ACKN=02:00:00:00:ab:01 and more\r", "x%2ACKN=02:00:00:00:ab:01\r"}) {
        EXPECT_EQ(parsePjlinkSearchReply(datagram), std::nullopt) << datagram;
    }
}

TEST(AsciiText, CapitalsTouchOnlyAsciiLetters) {
    EXPECT_EQ(capitals("azAZ09{}`\xc3\xa9"), "AZAZ09{}`\xc3\xa9");
}

TEST(AsciiText, BytesOfADeviceBecomeReadable) {
    EXPECT_EQ(readable("1.0\t2\x1b[31m\x7f"), L"1.0 2 [31m ");
    EXPECT_EQ(readable("B\xc3\xbchne"), L"B\u00fchne");
    EXPECT_EQ(readable("\xffname"), L"\u00ffname") << "not UTF-8: byte by byte";
    EXPECT_EQ(readable("\xff\x85"), L"\u00ff ");
}

}  // namespace
