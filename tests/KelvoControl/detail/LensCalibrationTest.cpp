#include "KelvoControl/detail/LensCalibration.h"

#include "CalibrationText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "support/ForeignLocale.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using Veltrani::KelvoControlDetail::LensCalibration;
using Veltrani::KelvoControlDetail::LensFamily;

constexpr LensFamily BROWN = LensFamily::BrownConrady;

LensCalibration parsed(const std::string& text, LensFamily family = BROWN) {
    return LensCalibration::parse(text, "lens", family);
}

/// What is said against a text; empty when it is accepted.
std::wstring refusal(const std::string& text, LensFamily family = BROWN) {
    try {
        static_cast<void>(parsed(text, family));
        return {};
    } catch (const VeltraniParseException& fault) {
        return fault.message;
    }
}

void expectTheUsualLens(const LensCalibration& lens) {
    EXPECT_EQ(lens.imageWidth, 1920);
    EXPECT_EQ(lens.imageHeight, 1200);
    EXPECT_EQ(lens.fx, 1500);
    EXPECT_EQ(lens.fy, 1500);
    EXPECT_EQ(lens.cx, 960);
    EXPECT_EQ(lens.cy, 600);
    EXPECT_EQ(lens.distortion, (std::vector<double>{-0.2, 0.05, 1e-3, -5e-4, -0.01}));
}

TEST(LensCalibration, BothLanguagesSayTheSame) {
    expectTheUsualLens(parsed(CalibrationText().yaml()));
    expectTheUsualLens(parsed(CalibrationText().xml()));
}

TEST(LensCalibration, NumbersDoNotDependOnTheLocale) {
    const ForeignLocale foreign;
    expectTheUsualLens(parsed(CalibrationText().yaml()));
    expectTheUsualLens(parsed(CalibrationText().xml()));
}

TEST(LensCalibration, CoefficientsMayStandInARow) {
    CalibrationText text;
    text.distortionRows = "1";
    text.distortionCols = "5";
    expectTheUsualLens(parsed(text.yaml()));
}

TEST(LensCalibration, AFileIsReadWithItsByteOrderMark) {
    const TemporaryFolder folder;
    const auto read = [&](const std::string& name, const std::string& content) {
        return LensCalibration::read(Veltrani::fromUtf8(folder.write(name, content)), BROWN);
    };
    expectTheUsualLens(read("größe.yml", "\xEF\xBB\xBF" + CalibrationText().yaml()));
    expectTheUsualLens(read("lens.xml", "\xEF\xBB\xBF" + CalibrationText().xml()));
}

TEST(LensCalibration, AMissingFileAndAFolderAreMissing) {
    const TemporaryFolder folder;
    EXPECT_THROW(static_cast<void>(LensCalibration::read(Veltrani::fromUtf8(folder.file("none.yml")), BROWN)),
                 VeltraniMissingFileException);
    EXPECT_THROW(static_cast<void>(LensCalibration::read(Veltrani::fromUtf8(folder.path()), BROWN)),
                 VeltraniMissingFileException);
}

TEST(LensCalibration, AHugeFileIsRefusedUnread) {
    const TemporaryFolder folder;
    const std::string file = folder.write("huge.yml", "a: \"" + std::string(2 * 1024 * 1024, 'x') + "\"\n");
    EXPECT_THROW(static_cast<void>(LensCalibration::read(Veltrani::fromUtf8(file), BROWN)), VeltraniParseException);
}

TEST(LensCalibration, AnEmptyTextIsRefused) {
    EXPECT_EQ(refusal(""),
              L"lens:1: file: found an empty text, expected an OpenCV calibration; name an OpenCV "
              L"calibration file");
    EXPECT_EQ(refusal(" \r\n\t"), refusal(""));
}

/// One change of a good file, and a part of what is said against it.
struct Change {
    const char* name;
    std::function<void(CalibrationText&)> make;
    const wchar_t* said;
};

TEST(LensCalibration, EachWrongValueIsNamedWithItsPlace) {
    const std::vector<Change> changes{
        {"no width", [](auto& t) { t.width = "0"; }, L": image_width: found \"0\", expected a whole number from 1 to"},
        {"huge width", [](auto& t) { t.width = "2147483648"; }, L"image_width: found \"2147483648\""},
        {"broken height", [](auto& t) { t.height = "1200.5"; }, L"image_height: found \"1200.5\""},
        {"rows of the camera", [](auto& t) { t.cameraRows = "4"; }, L"camera_matrix: found 4 x 3, expected 3 x 3"},
        {"huge rows", [](auto& t) { t.cameraRows = "1000000000"; }, L"camera_matrix, rows: found \"1000000000\""},
        {"negative columns", [](auto& t) { t.cameraCols = "-3"; }, L"camera_matrix, cols: found \"-3\""},
        {"an element too few", [](auto& t) { t.camera.pop_back(); }, L"found 8 elements, expected 9 for 3 x 3"},
        {"an element too many", [](auto& t) { t.camera.emplace_back("1."); }, L"found 10 elements, expected 9"},
        {"NaN in the camera", [](auto& t) { t.camera[0] = ".Nan"; }, L"camera_matrix: found \".Nan\""},
        {"NaN in the distortion", [](auto& t) { t.distortion[2] = "nan"; }, L"coefficients: found \"nan\""},
        {"infinity", [](auto& t) { t.distortion[0] = "inf"; }, L"found \"inf\""},
        {"out of range", [](auto& t) { t.distortion[0] = "1e13"; }, L"found \"1e13\", expected a number of at most"},
        {"transposed", [](auto& t) { std::swap(t.camera[2], t.camera[6]); }, L"found another form"},
        {"skewed", [](auto& t) { t.camera[1] = "0.1"; }, L"calibrate without skew"},
        {"no focal length", [](auto& t) { t.camera[4] = "0."; }, L"focal length that is not above zero"},
        {"mirrored", [](auto& t) { t.camera[0] = "-1500."; }, L"focal length that is not above zero"},
        {"another type", [](auto& t) { t.type = "2d"; }, L"camera_matrix, dt: found \"2d\", expected d or f"},
        {"six coefficients", [](auto& t) { t.distortion.emplace_back("0."); },
         L"found 6 x 1, expected one row or column"},
        {"no coefficients", [](auto& t) { t.distortion.clear(); }, L"distortion_coefficients, rows: found \"0\""},
        {"a square of them", [](auto& t) { t.distortionRows = t.distortionCols = "2"; }, L"found 2 x 2"},
        {"another count", [](auto& t) { t.distortionRows = "4"; }, L"found 5 elements, expected 4 for 4 x 1"},
        {"too many", [](auto& t) { t.distortion.assign(100, "0."); }, L"more than 64 numbers"},
    };
    for (const Change& change : changes) {
        CalibrationText text;
        change.make(text);
        for (const std::string& content : {text.yaml(), text.xml()}) {
            const std::wstring said = refusal(content);
            EXPECT_NE(said.find(change.said), std::wstring::npos) << change.name << ": " << Veltrani::toUtf8(said);
        }
    }
}

TEST(LensCalibration, FaultsNameTheirLine) {
    CalibrationText text;
    text.width = "x";
    EXPECT_EQ(refusal(text.yaml()).find(L"lens:5: image_width"), 0U);
    EXPECT_EQ(refusal(text.xml()).find(L"lens:4: image_width"), 0U);
    text = {};
    text.camera[4] = "x";  // the first one on the list's second line
    EXPECT_EQ(refusal(text.yaml()).find(L"lens:12: camera_matrix"), 0U);
    EXPECT_EQ(refusal(text.xml()).find(L"lens:12: camera_matrix"), 0U);
}

TEST(LensCalibration, ATiltedSensorIsRefusedAndAnUntiltedOneOfFourteenIsNot) {
    CalibrationText text;
    text.distortion.assign(14, "0.");
    EXPECT_EQ(parsed(text.yaml()).distortion.size(), 12U);
    text.distortion[12] = "0.01";
    EXPECT_NE(refusal(text.yaml()).find(L"tilted sensor"), std::wstring::npos);
    text.distortion[12] = "0.";
    text.distortion[13] = "-0.01";
    EXPECT_NE(refusal(text.yaml()).find(L"tilted sensor"), std::wstring::npos);
}

TEST(LensCalibration, TheCountsAreThoseOfTheFamily) {
    for (const std::size_t count : {4U, 5U, 8U, 12U, 14U}) {
        CalibrationText text;
        text.distortion.assign(count, "0.");
        EXPECT_EQ(refusal(text.yaml()), L"") << count;
        EXPECT_EQ(refusal(text.yaml(), LensFamily::Fisheye).empty(), count == 4) << count;
    }
}

TEST(LensCalibration, AKindOfLensStatesItsOwnCounts) {
    constexpr LensFamily DIVISION{{1, 2}};
    CalibrationText text;
    for (const std::size_t count : {1U, 2U, 3U, 4U, 14U}) {
        text.distortion.assign(count, "0.5");
        const std::wstring said = refusal(text.yaml(), DIVISION);
        EXPECT_EQ(said.empty(), count <= 2) << count;
        EXPECT_EQ(said.find(L"one row or column of 1 or 2") != std::wstring::npos, count > 2) << count;
    }
    EXPECT_FALSE(DIVISION.takes(0));
    EXPECT_EQ(LensFamily::BrownConrady.describeCounts(), "4, 5, 8, 12 or 14");
    EXPECT_EQ(LensFamily::Fisheye.describeCounts(), "4");
}

TEST(LensCalibration, EveryEntryIsNeeded) {
    for (const char* key : {"image_width", "image_height", "camera_matrix", "distortion_coefficients"}) {
        for (std::string content : {CalibrationText().yaml(), CalibrationText().xml()}) {
            for (std::size_t at = content.find(key); at != std::string::npos; at = content.find(key, at)) {
                content[at] = 'X';
            }
            const std::wstring said = refusal(content);
            EXPECT_NE(said.find(Veltrani::fromUtf8(key) + L": found no such entry"), std::wstring::npos)
                << key << ": " << Veltrani::toUtf8(said);
        }
    }
}

TEST(LensCalibration, EveryCutOffFileIsRefused) {
    CalibrationText text;
    const std::string xml = text.xml();
    const std::string yaml = text.yaml();
    // What comes behind the last list is not needed; in XML, not even the last tag may be missing.
    const std::size_t neededYaml = yaml.rfind(']');
    const std::size_t neededXml = xml.rfind('>');
    for (std::size_t size = 0; size <= neededXml; ++size) {
        ASSERT_NE(refusal(xml.substr(0, size)), L"") << "XML of " << size << " bytes";
    }
    for (std::size_t size = 0; size <= neededYaml; ++size) {
        ASSERT_NE(refusal(yaml.substr(0, size)), L"") << "YAML of " << size << " bytes";
    }
    EXPECT_EQ(refusal(yaml.substr(0, neededYaml + 1)), L"");
}

TEST(LensCalibration, PictureAndLensPlaneAreTwoViewsOfOnePoint) {
    const LensCalibration lens = parsed(CalibrationText().yaml());
    const Point<double, 2> onLens = lens.lensFromPicture({0.25, 0.75});
    EXPECT_NEAR(onLens[0], (0.25 * 1920 - 0.5 - 960) / 1500, 1e-15);
    EXPECT_NEAR(onLens[1], (0.25 * 1200 - 0.5 - 600) / 1500, 1e-15) << "down is positive";
    const Point<double, 2> back = lens.pictureFromLens(onLens);
    EXPECT_NEAR(back[0], 0.25, 1e-15);
    EXPECT_NEAR(back[1], 0.75, 1e-15);
}

}  // namespace
