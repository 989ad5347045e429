#include "KelvoControl/LensNumbers.h"

#include "CalibrationText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "KelvoControl/Blend.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Veltrani::LensNumbers;

class LensNumbersTest : public testing::Test {
protected:
    [[nodiscard]] std::wstring written(const CalibrationText& text, const std::string& name = "lens.yml") const {
        return Veltrani::fromUtf8(m_folder.write(name, text.yaml()));
    }

    TemporaryFolder m_folder;
};

// Oracle: the text of the file.
TEST_F(LensNumbersTest, AreThoseOfTheFile) {
    CalibrationText text;
    text.width = "1280";
    text.height = "800";
    text.camera = {"1.5e+03", "0.", "641.25", "0.", "1499.5", "3.995e+02", "0.", "0.", "1."};
    const auto lens = LensNumbers::of(L"BrownConrady:" + written(text));
    ASSERT_TRUE(lens);
    EXPECT_EQ(lens->kind, LensNumbers::Kind::BROWN_CONRADY);
    EXPECT_EQ(lens->imageWidth, 1280);
    EXPECT_EQ(lens->imageHeight, 800);
    EXPECT_EQ(lens->fx, 1500);
    EXPECT_EQ(lens->fy, 1499.5);
    EXPECT_EQ(lens->cx, 641.25);
    EXPECT_EQ(lens->cy, 399.5);
    EXPECT_THAT(lens->distortion, ElementsAre(-0.2, 0.05, 1e-3, -5e-4, -0.01));
}

TEST_F(LensNumbersTest, TheNameOfTheModelStatesWhatCoefficientsMean) {
    CalibrationText text;
    text.distortion = {"0.1", "0.02", "0.003", "0.0004"};
    const std::wstring file = written(text,
                                      "Objektiv: gr\xc3\xb6\xc3\x9f"
                                      "e.yml");
    EXPECT_EQ(LensNumbers::of(L"BrownConrady:" + file)->kind, LensNumbers::Kind::BROWN_CONRADY);
    EXPECT_EQ(LensNumbers::of(L"Fisheye:" + file)->kind, LensNumbers::Kind::FISHEYE);
    EXPECT_NE(LensNumbers::of(L"BrownConrady:" + file), LensNumbers::of(L"Fisheye:" + file));
}

TEST_F(LensNumbersTest, EveryCountOfCoefficientsIsRead) {
    for (const std::size_t count : {4U, 5U, 8U, 12U, 14U}) {
        CalibrationText text;
        text.distortion.assign(count, "0.001");
        if (count == 14) {
            text.distortion[12] = text.distortion[13] = "0.";  // a tilted sensor is no projector
        }
        EXPECT_EQ(LensNumbers::of(L"BrownConrady:" + written(text))->distortion.size(), count == 14 ? 12U : count);
    }
}

TEST_F(LensNumbersTest, AModelWithoutAFileHasNone) {
    EXPECT_FALSE(LensNumbers::of(L"Rectilinear"));
    EXPECT_FALSE(LensNumbers::of(L"Equidistant"));
}

// Oracle: the model of the file.
TEST_F(LensNumbersTest, MakeTheModelOfTheirFile) {
    Viewport viewport;
    viewport.position = {1, -2, 0.5};
    viewport.orientation = {0.3, -0.1, 0.05};
    for (const std::wstring kind : {L"BrownConrady", L"Fisheye"}) {
        CalibrationText text;
        text.distortion = {"-0.1", "0.02", "0.003", "0.0004"};
        const std::wstring name = kind + L":" + written(text);
        const auto ofFile = Blend::createProjectionModel(viewport, name, L"");
        const auto ofNumbers = LensNumbers::of(name)->model(viewport);
        EXPECT_EQ(ofNumbers->firstName(), kind);
        EXPECT_EQ(ofNumbers->secondName(), L"");
        for (int i = 0; i <= 40; ++i) {
            const Point<double, 2> place{0.1 * (i % 11), 0.3 * (i % 4)};
            Point<double, 3> expected;
            Point<double, 3> direction;
            ASSERT_TRUE(ofFile->unproject(place, expected));
            ASSERT_TRUE(ofNumbers->unproject(place, direction));
            EXPECT_EQ(direction, expected);
        }
    }
}

TEST_F(LensNumbersTest, WhatNoFileMayHaveMakesNoModel) {
    CalibrationText text;
    const LensNumbers sound = *LensNumbers::of(L"BrownConrady:" + written(text));
    const auto isRefused = [&sound](auto change) {
        LensNumbers numbers = sound;
        change(numbers);
        try {
            static_cast<void>(numbers.model({}));
            return false;
        } catch (const VeltraniException& fault) {
            EXPECT_THAT(Veltrani::toUtf8(fault.message), HasSubstr("numbers of no calibration, expected"));
            return true;
        }
    };
    EXPECT_FALSE(isRefused([](LensNumbers&) {}));
    EXPECT_TRUE(isRefused([](LensNumbers& n) { n.fx = 0; }));
    EXPECT_TRUE(isRefused([](LensNumbers& n) { n.fy = -1; }));
    EXPECT_TRUE(isRefused([](LensNumbers& n) { n.cx = std::nan(""); }));
    EXPECT_TRUE(isRefused([](LensNumbers& n) { n.distortion[1] = HUGE_VAL; }));
    EXPECT_TRUE(isRefused([](LensNumbers& n) { n.distortion.resize(6); }));
    EXPECT_TRUE(isRefused([](LensNumbers& n) { n.distortion.resize(14); }));
    EXPECT_TRUE(isRefused([](LensNumbers& n) { n.imageWidth = 0; }));
    EXPECT_TRUE(isRefused([](LensNumbers& n) { n.kind = LensNumbers::Kind::FISHEYE; })) << "five are no fisheye";
}

TEST_F(LensNumbersTest, WhatMakesNoModelHasNoNumbers) {
    const auto refusal = [](const std::wstring& name) -> std::string {
        try {
            static_cast<void>(LensNumbers::of(name));
            return "read";
        } catch (const VeltraniException& fault) {
            return Veltrani::toUtf8(fault.message);
        }
    };
    EXPECT_THAT(refusal(L"Rectilinaer"), HasSubstr("Unknown projection model \"Rectilinaer\", expected one of: "));
    EXPECT_NE(refusal(L""), "read");
    EXPECT_NE(refusal(L"BrownConrady"), "read") << "without its file";
    EXPECT_NE(refusal(L"Rectilinear:lens.yml"), "read") << "has no file";
    EXPECT_THROW(static_cast<void>(LensNumbers::of(L"BrownConrady:" + Veltrani::fromUtf8(m_folder.file("gone.yml")))),
                 VeltraniMissingFileException);
    CalibrationText five;
    EXPECT_THROW(static_cast<void>(LensNumbers::of(L"Fisheye:" + written(five))), VeltraniParseException);
}

TEST_F(LensNumbersTest, AreEqualWhereEachIs) {
    const LensNumbers lens = *LensNumbers::of(L"BrownConrady:" + written(CalibrationText()));
    LensNumbers other = lens;
    EXPECT_EQ(other, lens);
    other.cy += 1e-12 * other.cy;
    EXPECT_NE(other, lens);
    other = lens;
    other.distortion.push_back(0);
    EXPECT_NE(other, lens);
}

}  // namespace
