#include "KelvoControl/detail/FisheyeLens.h"

#include "CalibrationText.h"
#include "Common/Utf8.h"
#include "RoundTrip.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using Veltrani::KelvoControlDetail::FisheyeLens;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

class FisheyeLensTest : public testing::Test {
protected:
    FisheyeLens lens(const std::vector<std::string>& coefficients, const std::string& focal) const {
        CalibrationText text;
        text.distortion = coefficients;
        text.camera[0] = text.camera[4] = focal;
        Viewport viewport;
        viewport.position = {2.0, -1.0, 0.5};
        viewport.orientation = m_orientation;
        return {viewport, L"Fisheye", Veltrani::fromUtf8(m_folder.write("lens.xml", text.xml()))};
    }

    TemporaryFolder m_folder;
    P3 m_orientation;
};

TEST_F(FisheyeLensTest, AnglesToTheAxisAreDistancesInThePicture) {
    const FisheyeLens even = lens({"0.", "0.", "0.", "0."}, "500.");
    P3 direction;
    // 250 pixels to the right of the axis and none up: half a radian to the right.
    ASSERT_TRUE(even.unproject({(960.5 + 250) / 1920, 1 - 600.5 / 1200}, direction));
    EXPECT_LE(norm(direction - P3{std::sin(0.5), std::cos(0.5), 0.0}), 1e-14);
    // 250 pixels down.
    ASSERT_TRUE(even.unproject({960.5 / 1920, 1 - (600.5 + 250) / 1200}, direction));
    EXPECT_LE(norm(direction - P3{0.0, std::cos(0.5), -std::sin(0.5)}), 1e-14);
}

TEST_F(FisheyeLensTest, TheWholePictureComesBackForWeakAndStrongLenses) {
    m_orientation = {2.5, 0.4, -0.7};
    for (const auto& coefficients : std::vector<std::vector<std::string>>{{"0.", "0.", "0.", "0."},
                                                                          {"0.05", "-0.01", "0.003", "-0.0004"},
                                                                          {"-0.03", "0.003", "-0.0001", "0."},
                                                                          {"0.3", "0.1", "0.05", "0.01"}}) {
        for (const char* focal : {"500.", "900."}) {
            const RoundTrip trip(lens(coefficients, focal));
            EXPECT_EQ(trip.refused, 0) << coefficients[0] << ", " << focal;
            EXPECT_EQ(trip.mapped, 41 * 41);
            EXPECT_LE(trip.worstPicture, 1e-9) << coefficients[0] << ", " << focal;
            EXPECT_LE(trip.worstDirection, 1e-9) << coefficients[0] << ", " << focal;
        }
    }
}

TEST_F(FisheyeLensTest, AWideLensReachesBehindTheProjectorAsFarAsItsPicture) {
    const FisheyeLens wide = lens({"0.", "0.", "0.", "0."}, "500.");  // 960 pixels to the side: 1.92 radians
    const P3 eye{2.0, -1.0, 0.5};
    P2 found;
    ASSERT_TRUE(wide.projectNormalised(eye + P3{std::sin(1.8), std::cos(1.8), 0.0}, found));
    EXPECT_NEAR(found[0], (960.5 + 900) / 1920, 1e-14);
    P2 out{-7.0, -7.0};
    EXPECT_FALSE(wide.projectNormalised(eye + P3{std::sin(2.5), std::cos(2.5), 0.0}, out));
    EXPECT_FALSE(wide.projectNormalised(eye + P3{0.0, -1.0, 0.0}, out));
    EXPECT_FALSE(wide.projectNormalised(eye, out));
    EXPECT_EQ(out, P2(-7.0, -7.0));
    P3 direction{-7.0, -7.0, -7.0};
    EXPECT_FALSE(wide.unproject({1.2, 0.5}, direction)) << "behind and outside of the picture";
    EXPECT_EQ(direction, P3(-7.0, -7.0, -7.0));
}

TEST_F(FisheyeLensTest, WhatLiesBesideThePictureIsRefusedBehindTheProjectorOnly) {
    const P3 eye{2.0, -1.0, 0.5};
    for (int step = 0; step < 8; ++step) {
        // A thousand pixels from the axis, which is outside of the picture in every direction.
        const double turn = step * 0.25 * std::numbers::pi;
        const double right = 1000 * std::cos(turn);
        const double up = 1000 * std::sin(turn);
        const P2 beside{(960.5 + right) / 1920, 1 - (600.5 - up) / 1200};
        const auto ray = [turn](double angle) {
            return P3{std::sin(angle) * std::cos(turn), std::cos(angle), std::sin(angle) * std::sin(turn)};
        };
        const FisheyeLens narrow = lens({"0.", "0.", "0.", "0."}, "900.");  // 1000 / 900 radians: before the projector
        P3 direction;
        ASSERT_TRUE(narrow.unproject(beside, direction)) << step;
        EXPECT_LE(norm(direction - ray(1000.0 / 900)), 1e-12) << step;
        P2 found;
        ASSERT_TRUE(narrow.projectNormalised(eye + ray(1000.0 / 900), found)) << step;
        EXPECT_LE(norm(found - beside), 1e-12) << step;
        const FisheyeLens wide = lens({"0.", "0.", "0.", "0."}, "500.");  // two radians: behind it
        EXPECT_FALSE(wide.unproject(beside, direction)) << step;
        EXPECT_FALSE(wide.projectNormalised(eye + ray(2.0), found)) << step;
    }
}

TEST_F(FisheyeLensTest, ALensThatFoldsWithinThePictureIsRefusedThereAndExactBefore) {
    const RoundTrip trip(lens({"-0.208333333333", "0.", "0.", "0."}, "900."));
    EXPECT_GT(trip.mapped, 500);
    EXPECT_GT(trip.refused, 200);
    EXPECT_LE(trip.worstPicture, 1e-9);
    EXPECT_LE(trip.worstDirection, 1e-9);
}

TEST_F(FisheyeLensTest, StatesThePictureThatItWasCalibratedWith) {
    EXPECT_EQ(lens({"0.", "0.", "0.", "0."}, "500.").calibratedSize(), (Point<int, 2>{1920, 1200}));
}

}  // namespace
