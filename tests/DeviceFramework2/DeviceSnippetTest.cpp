#include "DeviceFramework2/DeviceSnippet.h"

#include "DeviceTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using device_testing::faultOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Veltrani::DeviceFramework2::DeviceSnippet;

const std::wstring GOOD = L"<Device type='PJLink' mac='02:00:00:00:00:01' host='192.0.2.10' port='4353'/>";

std::string refusal(const std::wstring& text) {
    return faultOf([&] { static_cast<void>(DeviceSnippet::parse(text)); });
}

std::wstring replaced(const std::wstring& from, const std::wstring& to) {
    std::wstring text = GOOD;
    return text.replace(text.find(from), from.size(), to);
}

TEST(DeviceSnippet, IsRead) {
    const DeviceSnippet snippet = DeviceSnippet::parse(GOOD);
    EXPECT_EQ(snippet.type, L"PJLink");
    EXPECT_EQ(snippet.mac.text(), L"02:00:00:00:00:01");
    EXPECT_EQ(snippet.host, "192.0.2.10");
    EXPECT_EQ(snippet.port, 4353);
}

TEST(DeviceSnippet, HostAndPortMayBeAbsent) {
    const DeviceSnippet snippet = DeviceSnippet::parse(L"<Device mac='02-00-00-00-00-01' type='PJLink'></Device>");
    EXPECT_EQ(snippet.host, "");
    EXPECT_EQ(snippet.port, 4352);
}

TEST(DeviceSnippet, TheFirstAndTheLastPortAreRead) {
    EXPECT_EQ(DeviceSnippet::parse(replaced(L"4353", L"1")).port, 1);
    EXPECT_EQ(DeviceSnippet::parse(replaced(L"4353", L"65535")).port, 65535);
}

TEST(DeviceSnippet, BlanksCommentsAndNotesOfOtherProgramsAreAllowed) {
    const DeviceSnippet snippet = DeviceSnippet::parse(
        L"\n  <!-- left --><Device type='PJLink' mac='02:00:00:00:00:01' xmlns:x='urn:x' x:note='&lt;3'>"
        L"<!-- no more --> </Device>\r\n");
    EXPECT_EQ(snippet.mac.uid(), L"020000000001");
}

TEST(DeviceSnippet, IPv6HostsAreRead) {
    EXPECT_EQ(DeviceSnippet::parse(replaced(L"192.0.2.10", L"2001:db8::1")).host, "2001:db8::1");
}

TEST(DeviceSnippet, TextIsReadBackAsTheSame) {
    EXPECT_EQ(DeviceSnippet::parse(GOOD).text(), GOOD);
    const std::wstring withoutHost = L"<Device type='PJLink' mac='02:00:00:00:00:01' port='4352'/>";
    EXPECT_EQ(DeviceSnippet::parse(withoutHost).text(), withoutHost);
}

struct Refused {
    const wchar_t* from;
    const wchar_t* to;
    const char* message;

    friend void PrintTo(const Refused& refused, std::ostream* out) {
        *out << Veltrani::toUtf8(refused.from) << " -> " << Veltrani::toUtf8(refused.to);
    }
};

class RefusedSnippetTest : public testing::TestWithParam<Refused> {};

TEST_P(RefusedSnippetTest, SaysWhatWasFoundAndWhatWasExpected) {
    EXPECT_EQ(refusal(replaced(GetParam().from, GetParam().to)),
              std::string("Device snippet of 02:00:00:00:00:01: ") + GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    DeviceSnippet, RefusedSnippetTest,
    testing::Values(
        Refused{L"PJLink", L"pjlink", "attribute type: found \"pjlink\", expected PJLink"},
        Refused{L"type='PJLink'", L"", "the attribute type is missing"},
        Refused{L" mac='", L" m='", "found attribute \"m\", expected only type, mac, host and port"},
        Refused{L"192.0.2.10", L"projector.example",
                "attribute host: found \"projector.example\", expected an IPv4 or IPv6 address (looking a name up has "
                "no time limit)"},
        Refused{L"192.0.2.10", L"127.1",
                "attribute host: found \"127.1\", expected an IPv4 or IPv6 address (looking a name up has no time "
                "limit)"},
        Refused{L"192.0.2.10", L"",
                "attribute host: found \"\", expected an IPv4 or IPv6 address (looking a name up has no time limit)"},
        Refused{L"4353", L"0", "attribute port: found \"0\", expected a whole number from 1 to 65535"},
        Refused{L"4353", L"65536", "attribute port: found \"65536\", expected a whole number from 1 to 65535"},
        Refused{L"4353", L"-1", "attribute port: found \"-1\", expected a whole number from 1 to 65535"},
        Refused{L"4353", L"4352 ", "attribute port: found \"4352 \", expected a whole number from 1 to 65535"},
        Refused{L"4353", L"99999999999999999999",
                "attribute port: found \"99999999999999999999\", expected a whole number from 1 to 65535"},
        Refused{L"/>", L">text</Device>", "the element Device has content, expected attributes only"},
        Refused{L"/>", L"><Other/></Device>", "the element Device has content, expected attributes only"},
        Refused{L"<Device", L"<Projector", "found element \"Projector\", expected Device"},
        Refused{L"<Device", L"<Device xmlns='urn:other'", "found element \"Device\", expected Device"},
        Refused{L" port", L" password='hunter2' port",
                "a password is not allowed here: it belongs into an environment variable or a file"}));

TEST(DeviceSnippet, AMalformedMacAddressIsShown) {
    EXPECT_EQ(
        refusal(replaced(L"02:00:00:00:00:01", L"02:00:00:00:00:0x")),
        "Device snippet without a MAC address: attribute mac: found \"02:00:00:00:00:0x\", expected a MAC address "
        "such as 02:00:00:00:00:01");
}

TEST(DeviceSnippet, AMissingMacAddressIsAFault) {
    EXPECT_EQ(refusal(replaced(L"mac='02:00:00:00:00:01'", L"")),
              "Device snippet without a MAC address: the attribute mac is missing");
}

TEST(DeviceSnippet, AnEmptyOneSaysThatTheEntryNamesNoDevice) {
    for (const wchar_t* text : {L"", L" \n\t"}) {
        EXPECT_EQ(refusal(text), "Device snippet without a MAC address: it is empty: the entry names no device");
    }
}

TEST(DeviceSnippet, NoPasswordEntersAMessage) {
    for (const wchar_t* attribute : {L" password='hunter2'", L" pass='hunter2'", L" secret=\"hunter2\" <"}) {
        EXPECT_THAT(refusal(replaced(L" port", std::wstring(attribute) + L" port")), Not(HasSubstr("hunter2")));
    }
}

TEST(DeviceSnippet, FoundValuesAreShortenedAndCleaned) {
    EXPECT_THAT(refusal(replaced(L"4353", std::wstring(5000, L'9'))), HasSubstr("\"" + std::string(40, '9') + "...\""));
    EXPECT_THAT(refusal(replaced(L"4353", L"1&#10;2")), HasSubstr("\"1 2\""));
}

TEST(DeviceSnippet, EveryPrefixIsRefused) {
    for (std::size_t length = 0; length < GOOD.size(); ++length) {
        EXPECT_THAT(refusal(GOOD.substr(0, length)), StartsWith("Device snippet ")) << length;
    }
    EXPECT_EQ(refusal(GOOD), "no fault");
}

TEST(DeviceSnippet, EveryChangedCharacterIsReadOrRefused) {
    int read = 0;
    int refused = 0;
    for (std::size_t i = 0; i < GOOD.size(); ++i) {
        for (const wchar_t character :
             {L'<', L'&', L'\'', L'\0', L'9', L'\u00e9', wchar_t(0xDFFF), wchar_t(0x110000)}) {
            std::wstring text = GOOD;
            text[i] = character;
            const std::string outcome = refusal(text);
            ++(outcome == "no fault" ? read : refused);
            EXPECT_THAT(outcome, testing::AnyOf("no fault", StartsWith("Device snippet "))) << i;
        }
    }
    EXPECT_GT(read, 10) << "digits exchanged for 9";
    EXPECT_GT(refused, 500);
}

TEST(DeviceSnippet, DocumentTypesAreRefusedBeforeTheyAreRead) {
    const std::wstring bomb = L"<!DOCTYPE Device [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;'>]>" + GOOD;
    EXPECT_EQ(refusal(bomb), "Device snippet of 02:00:00:00:00:01: line 1: a document type is not allowed");
    const std::wstring external = L"\n<!DOCTYPE Device SYSTEM 'file:///etc/passwd'>" + GOOD;
    EXPECT_EQ(refusal(external), "Device snippet of 02:00:00:00:00:01: line 2: a document type is not allowed");
    EXPECT_THAT(refusal(L"<!DOCTYPE Device>" + GOOD), HasSubstr("a document type is not allowed"));
}

TEST(DeviceSnippet, UnknownEntitiesAreRefused) {
    EXPECT_THAT(refusal(replaced(L"192.0.2.10", L"&host;")), HasSubstr("Entity 'host' not defined"));
}

TEST(DeviceSnippet, ADeclaredEncodingChangesNothing) {
    EXPECT_EQ(refusal(L"<?xml version='1.0' encoding='UTF-16'?>" + GOOD), "no fault");
    EXPECT_EQ(refusal(L"<?xml version='1.0' encoding='no-such'?>" + GOOD), "no fault");
}

TEST(DeviceSnippet, MonstersAreRefusedQuickly) {
    EXPECT_THAT(refusal(std::wstring(2'000'000, L' ') + GOOD), HasSubstr("it is longer than 1048576 bytes"));
    std::wstring deep;
    for (int i = 0; i < 50'000; ++i) {
        deep += L"<a>";
    }
    EXPECT_THAT(refusal(deep), HasSubstr("line 1: "));
    EXPECT_THAT(refusal(L"<Device type='PJLink' type='PJLink'/>"), HasSubstr("redefined"));
}

}  // namespace
