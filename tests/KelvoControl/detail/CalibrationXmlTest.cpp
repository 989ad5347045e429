#include "KelvoControl/detail/CalibrationContent.h"

#include "CalibrationText.h"
#include "Common/VeltraniException.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::KelvoControlDetail::CalibrationContent;
using Veltrani::KelvoControlDetail::calibrationFromXml;

std::wstring refusal(const std::string& text) {
    try {
        static_cast<void>(calibrationFromXml(text, "lens"));
        return {};
    } catch (const VeltraniParseException& fault) {
        return fault.message;
    }
}

std::string storage(const std::string& content) {
    return "<opencv_storage>\n" + content + "\n</opencv_storage>\n";
}

TEST(CalibrationXml, KeepsTheEntriesAsTheyStandWithTheirLines) {
    const CalibrationContent content = calibrationFromXml(CalibrationText().xml(), "lens");
    ASSERT_TRUE(content.imageWidth && content.cameraMatrix && content.distortion);
    EXPECT_EQ(content.imageWidth->text, "1920");
    EXPECT_EQ(content.imageWidth->line, 4);
    EXPECT_EQ(content.cameraMatrix->line, 6);
    EXPECT_EQ(content.cameraMatrix->rows->text, "3");
    EXPECT_EQ(content.cameraMatrix->data.size(), 9U);
    EXPECT_EQ(content.cameraMatrix->data[4].line, 12);
    EXPECT_EQ(content.distortion->data[4].text, "-0.01");
}

TEST(CalibrationXml, CommentsAndOtherElementsArePassedOver) {
    const CalibrationContent content = calibrationFromXml(
        storage("<!-- a --><a><image_width>3</image_width></a>\n<image_width> 2<!-- b -->\n</image_width>"), "lens");
    ASSERT_TRUE(content.imageWidth);
    EXPECT_EQ(content.imageWidth->text, "2");
}

TEST(CalibrationXml, AnEntryThatStandsTwiceIsRefused) {
    EXPECT_EQ(refusal(storage("<image_width>2</image_width>\n<image_width>2</image_width>")),
              L"lens:3: image_width: found a second element of this name, expected one; remove one of them");
}

TEST(CalibrationXml, AnEntryOfAnotherShapeIsRefused) {
    EXPECT_NE(refusal(storage("<image_width><b/></image_width>")).find(L"found \"b\", expected text alone"),
              std::wstring::npos);
    EXPECT_NE(refusal(storage("<camera_matrix>2</camera_matrix>")).find(L"that is no matrix"), std::wstring::npos);
    EXPECT_NE(refusal("<storage/>").find(L"found the element \"storage\", expected the element opencv_storage"),
              std::wstring::npos);
}

TEST(CalibrationXml, ADocumentTypeIsRefused) {
    EXPECT_NE(refusal("<!DOCTYPE a [<!ENTITY b \"c\">]>\n" + storage("&b;")).find(L"document type"),
              std::wstring::npos);
}

TEST(CalibrationXml, BrokenTextIsRefusedAtItsLine) {
    EXPECT_EQ(refusal("<opencv_storage>\n<a></b>\n").find(L"lens:2: text: found broken XML ("), 0U);
    EXPECT_NE(refusal("<"), L"");
    EXPECT_NE(refusal(storage("&undefined;")), L"");
    std::string deep;
    for (int i = 0; i < 100'000; ++i) {
        deep += "<a>";
    }
    EXPECT_NE(refusal(deep), L"") << "no depth exhausts the stack";
}

}  // namespace
