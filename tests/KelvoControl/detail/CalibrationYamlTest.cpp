#include "KelvoControl/detail/CalibrationContent.h"

#include "CalibrationText.h"
#include "Common/VeltraniException.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::KelvoControlDetail::CalibrationContent;
using Veltrani::KelvoControlDetail::calibrationFromYaml;

std::wstring refusal(const std::string& text) {
    try {
        static_cast<void>(calibrationFromYaml(text, "lens"));
        return {};
    } catch (const VeltraniParseException& fault) {
        return fault.message;
    }
}

TEST(CalibrationYaml, KeepsTheEntriesAsTheyStandWithTheirLines) {
    const CalibrationContent content = calibrationFromYaml(CalibrationText().yaml(), "lens");
    ASSERT_TRUE(content.imageWidth && content.cameraMatrix && content.distortion);
    EXPECT_EQ(content.imageWidth->text, "1920");
    EXPECT_EQ(content.imageWidth->line, 5);
    EXPECT_EQ(content.cameraMatrix->line, 7);
    EXPECT_EQ(content.cameraMatrix->rows->text, "3");
    EXPECT_EQ(content.cameraMatrix->data.size(), 9U);
    EXPECT_EQ(content.cameraMatrix->data[4].line, 12);
    EXPECT_EQ(content.distortion->data[4].text, "-0.01");
}

TEST(CalibrationYaml, PlainYamlWithoutTheDirectiveIsReadToo) {
    const std::string text = CalibrationText().yaml();
    EXPECT_EQ(refusal(text.substr(text.find('\n') + 1)), L"");
    EXPECT_EQ(refusal("%YAML 1.2\n" + text.substr(text.find('\n') + 1)), L"");
}

TEST(CalibrationYaml, OtherEntriesOfAnyShapeArePassedOver) {
    EXPECT_EQ(refusal("a: [ [ 1, { b: 2 } ], [] ]\nc: &x { d: 3 }\ne: *x\nimage_width: 2\n"), L"");
    EXPECT_EQ(calibrationFromYaml("a: { image_width: 3 }\nimage_width: 2\n", "lens").imageWidth->text, "2");
}

TEST(CalibrationYaml, EntriesNestedWithoutEndAreRefusedAtOnce) {
    const std::wstring refused =
        L"lens:2: x: found lists or groups, one within the other, more than 100 deep, expected an entry of a "
        L"calibration file; remove the entry";
    EXPECT_EQ(refusal("image_width: 2\nx: " + std::string(1'000'000, '[')), refused);
    EXPECT_EQ(refusal("image_width: 2\nx: " + std::string(1'000'000, '{')), refused);
    EXPECT_EQ(refusal("image_width: 2\nx: " + std::string(90, '[') + std::string(90, ']') + "\n"), L"");
}

TEST(CalibrationYaml, AnEntryThatStandsTwiceIsRefused) {
    EXPECT_EQ(refusal("image_width: 2\nimage_width: 2\n"),
              L"lens:2: image_width: found a second entry of this name, expected one; remove one of them");
    EXPECT_NE(refusal("camera_matrix: !!opencv-matrix { rows: 1, rows: 1 }\n").find(L"second entry"),
              std::wstring::npos);
    for (const char* first : {"[ 1 ]", "[ ]"}) {
        const std::string text = std::string("camera_matrix: !!opencv-matrix { data: ") + first + ", data: [ 1 ] }\n";
        EXPECT_NE(refusal(text).find(L"second entry"), std::wstring::npos) << first;
    }
}

TEST(CalibrationYaml, AnEntryOfAnotherShapeIsRefused) {
    EXPECT_NE(refusal("image_width: [ 2 ]\n").find(L"image_width: found a list, expected one value"),
              std::wstring::npos);
    EXPECT_NE(refusal("a: &x 2\nimage_width: *x\n").find(L"found an alias"), std::wstring::npos);
    EXPECT_NE(refusal("camera_matrix: 2\n").find(L"found a value, expected a matrix"), std::wstring::npos);
    EXPECT_NE(refusal("camera_matrix: { rows: 3 }\n").find(L"that is no matrix"), std::wstring::npos);
    EXPECT_NE(refusal("camera_matrix: !no-opencv-matrix { rows: 3 }\n").find(L"that is no matrix"), std::wstring::npos);
    EXPECT_NE(refusal("camera_matrix: !!opencv-matrix { data: [ [ 1 ] ] }\n").find(L"found a list, expected a number"),
              std::wstring::npos);
    EXPECT_NE(refusal("[ 1, 2 ]\n").find(L"found a list, expected entries"), std::wstring::npos);
    EXPECT_NE(refusal("a: 1\n---\nb: 2\n").find(L"found another document"), std::wstring::npos);
    EXPECT_NE(refusal("[ 1 ]: 2\n"), L"");
}

TEST(CalibrationYaml, BrokenTextIsRefusedAtItsLine) {
    EXPECT_EQ(refusal("a: 1\nb: [ 1,\n").find(L"lens:3: text: found broken YAML ("), 0U);
    EXPECT_EQ(refusal("a: 1\nb: \x01\n").find(L"lens:2: text: found broken YAML ("), 0U);
    EXPECT_EQ(refusal("a: 1\nb: \xFF\n").find(L"lens:2: text: found broken YAML ("), 0U);
    EXPECT_NE(refusal(std::string(200'000, '[')), L"") << "no depth exhausts the stack";
}

}  // namespace
