#include "DeviceFramework2/VirtualProjectorSnippet.h"

#include "DeviceTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using device_testing::faultOf;
using testing::HasSubstr;
using testing::StartsWith;
using Veltrani::DeviceFramework2::VirtualProjectorSnippet;

const std::wstring REAL = L"<Device type='PJLink' mac='02:00:00:00:00:01' host='192.0.2.10' port='4352'/>";

std::wstring wrap(const std::wstring& inside, const std::wstring& attributes = L" Width='1920' Height='1200'") {
    return L"<Wrapper><Projector" + attributes + L">" + inside + L"</Projector></Wrapper>";
}

std::string refusal(const std::wstring& text) {
    return faultOf([&] { static_cast<void>(VirtualProjectorSnippet::parse(text)); });
}

TEST(VirtualProjectorSnippet, IsRead) {
    const auto snippet = VirtualProjectorSnippet::parse(wrap(REAL));
    EXPECT_EQ(snippet.width, 1920);
    EXPECT_EQ(snippet.height, 1200);
    EXPECT_EQ(snippet.input, 0);
    EXPECT_EQ(snippet.wrapped, REAL);
    EXPECT_EQ(VirtualProjectorSnippet::parse(wrap(L"", L" Width='0' Height='0' Input='2'")).input, 2);
}

TEST(VirtualProjectorSnippet, TheWrappedTextIsKeptCharacterByCharacter) {
    const std::vector<std::wstring> texts{L"",
                                          L"\r\n  " + REAL + L"\n\t",
                                          L"<Device  mac = \"02:00:00:00:00:01\"   ></Device >",
                                          L"<a><!-- </Projector> --><![CDATA[</Projector></Wrapper>]]></a>",
                                          L"<Projector Width='1'><Projector/></Projector>",
                                          L"<v:Device v:x='&#x41;&amp;'>B\u00fchne \U0001F4FD</v:Device>",
                                          L"only text &gt; <b/> more > text"};
    for (const std::wstring& text : texts) {
        EXPECT_EQ(VirtualProjectorSnippet::parse(wrap(text)).wrapped, text);
    }
}

TEST(VirtualProjectorSnippet, TagsMayBeWrittenInAnyWay) {
    EXPECT_EQ(VirtualProjectorSnippet::parse(L"<Wrapper ><Projector Width=\"1\" Height='2' />\n</Wrapper>").wrapped,
              L"");
    EXPECT_EQ(VirtualProjectorSnippet::parse(L"<?xml version='1.0'?>\n<Wrapper> <Projector Width='1' Height='2' "
                                             L"xmlns:n='a>b' n:note='>'>in</Projector >\n"
                                             L"</Wrapper >\n")
                  .wrapped,
              L"in");
}

TEST(VirtualProjectorSnippet, FaultsNameTheSnippetAndWhatWasFound) {
    const std::string name = "Device snippet of 02:00:00:00:00:01: ";
    EXPECT_EQ(refusal(wrap(REAL, L" Width='1920'")), name + "the attribute Height is missing");
    EXPECT_EQ(refusal(wrap(REAL, L" Height='1920'")), name + "the attribute Width is missing");
    EXPECT_EQ(refusal(wrap(REAL, L" Width='-1' Height='1'")),
              name + "attribute Width: found \"-1\", expected a whole number of 0 or more");
    EXPECT_EQ(refusal(wrap(REAL, L" Width='1' Height='1,200'")),
              name + "attribute Height: found \"1,200\", expected a whole number of 0 or more");
    EXPECT_EQ(refusal(wrap(REAL, L" Width='1' Height='1' Depth='1'")),
              name + "found attribute \"Depth\", expected only Width, Height and Input");
    EXPECT_EQ(refusal(REAL), name + "found element \"Device\", expected Wrapper");
    EXPECT_EQ(refusal(L"<Wrapper>" + REAL + L"</Wrapper>"), name + "found element \"Device\", expected Projector");
    EXPECT_EQ(refusal(L"<Wrapper> </Wrapper>"),
              "Device snippet without a MAC address: the element Projector is missing in Wrapper");
}

TEST(VirtualProjectorSnippet, NothingButBlanksMayStandAround) {
    const std::wstring projector = L"<Projector Width='1' Height='1'>" + REAL + L"</Projector>";
    for (const std::wstring& text :
         {L"<!-- </Projector> --><Wrapper>" + projector + L"</Wrapper>",
          L"<Wrapper>" + projector + L"</Wrapper><!-- </Projector> -->",
          L"<Wrapper><!-- <Projector> -->" + projector + L"</Wrapper>",
          L"<Wrapper>" + projector + L"<?note </Projector>?></Wrapper>", L"<Wrapper>text" + projector + L"</Wrapper>",
          L"<Wrapper>" + projector + projector + L"</Wrapper>"}) {
        EXPECT_THAT(refusal(text), HasSubstr("only blanks are allowed around")) << testing::PrintToString(text);
    }
    EXPECT_THAT(refusal(L"<Wrapper a='1'>" + projector + L"</Wrapper>"), HasSubstr("takes no attributes"));
}

TEST(VirtualProjectorSnippet, ABrokenWrappedSnippetIsRefused) {
    EXPECT_THAT(refusal(wrap(L"<Device mac='02:00:00:00:00:01'")),
                StartsWith("Device snippet of 02:00:00:00:00:01: line 1: "));
    EXPECT_THAT(refusal(wrap(L"</Projector></Wrapper>")), HasSubstr("line 1: "));
    EXPECT_THAT(refusal(wrap(L"&unknown;")), HasSubstr("Entity 'unknown' not defined"));
}

TEST(VirtualProjectorSnippet, EveryPrefixIsRefused) {
    const std::wstring text = wrap(REAL);
    for (std::size_t length = 0; length < text.size(); ++length) {
        EXPECT_THAT(refusal(text.substr(0, length)), StartsWith("Device snippet ")) << length;
    }
}

}  // namespace
