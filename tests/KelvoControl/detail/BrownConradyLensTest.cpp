#include "KelvoControl/detail/BrownConradyLens.h"

#include "CalibrationText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "RoundTrip.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::KelvoControlDetail::BrownConradyLens;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

class BrownConradyLensTest : public testing::Test {
protected:
    BrownConradyLens lens(const CalibrationText& text, const Viewport& viewport = {}) const {
        return {viewport, L"BrownConrady", Veltrani::fromUtf8(m_folder.write("lens.yml", text.yaml()))};
    }

    TemporaryFolder m_folder;
};

CalibrationText undistorted() {
    CalibrationText text;
    text.distortion = {"0.", "0.", "0.", "0."};
    return text;
}

TEST_F(BrownConradyLensTest, TheFirstPixelOfTheCalibrationPictureIsAtTheTopLeft) {
    // fx = fy = 1500, axis at pixel (960, 600): half a pixel right of and below the middle of 1920 x 1200.
    const BrownConradyLens plain = lens(undistorted());
    P3 topLeft;
    ASSERT_TRUE(plain.unproject({0.5 / 1920, 1 - 0.5 / 1200}, topLeft));
    EXPECT_NEAR(topLeft[0], -960 / 1500.0, 1e-14);
    EXPECT_EQ(topLeft[1], 1);
    EXPECT_NEAR(topLeft[2], 600 / 1500.0, 1e-14);
    P3 axis;
    ASSERT_TRUE(plain.unproject({960.5 / 1920, 1 - 600.5 / 1200}, axis));
    EXPECT_LE(norm(axis - P3{0.0, 1.0, 0.0}), 1e-14);
}

TEST_F(BrownConradyLensTest, ALensFollowsItsFormulaInEveryCorner) {
    const BrownConradyLens strong = lens({});
    // (x, y) = (0.5, -0.3), y down: r2 = 0.34; worked out by hand from the file's coefficients.
    const double r2 = 0.34;
    const double c = 1 - 0.2 * r2 + 0.05 * r2 * r2 - 0.01 * r2 * r2 * r2;
    const double xd = 0.5 * c + 2 * 1e-3 * 0.5 * -0.3 - 5e-4 * (r2 + 2 * 0.25);
    const double yd = -0.3 * c + 1e-3 * (r2 + 2 * 0.09) + 2 * -5e-4 * 0.5 * -0.3;
    P2 found;
    ASSERT_TRUE(strong.projectNormalised({0.5 * 4, 4.0, 0.3 * 4}, found));
    EXPECT_NEAR(found[0], (1500 * xd + 960 + 0.5) / 1920, 1e-14);
    EXPECT_NEAR(found[1], 1 - (1500 * yd + 600 + 0.5) / 1200, 1e-14);
}

TEST_F(BrownConradyLensTest, TheWholePictureComesBackForWeakAndStrongLenses) {
    Viewport viewport;
    viewport.position = {2.0, -1.0, 0.5};
    viewport.orientation = {2.5, 0.4, -0.7};
    const std::vector<std::vector<std::string>> lenses{
        {"0.", "0.", "0.", "0."},
        {"-0.2", "0.05", "1e-03", "-5e-04", "-0.01"},
        {"-0.42", "0.25", "2e-03", "-1e-03", "-0.06"},
        {"0.6", "0.4", "-3e-03", "2e-03", "0.2"},
        {"0.8", "-0.3", "1.5e-03", "-2.5e-03", "0.05", "1.1", "-0.2", "0.04"},
        {"0.8", "-0.3", "1.5e-03", "-2.5e-03", "0.05", "1.1", "-0.2", "0.04", "3e-3", "-1e-3", "-2e-3", "5e-4"},
        {"-0.2", "0.05", "1e-03", "-5e-04", "-0.01", "0.", "0.", "0.", "0.", "0.", "0.", "0.", "0.", "0."},
    };
    for (const auto& coefficients : lenses) {
        CalibrationText text;
        text.distortion = coefficients;
        const RoundTrip trip(lens(text, viewport));
        EXPECT_EQ(trip.refused, 0) << coefficients[0] << ", " << coefficients.size();
        EXPECT_EQ(trip.mapped, 41 * 41);
        EXPECT_LE(trip.worstPicture, 1e-9) << coefficients[0] << ", " << coefficients.size();
        EXPECT_LE(trip.worstDirection, 1e-9) << coefficients[0] << ", " << coefficients.size();
    }
}

TEST_F(BrownConradyLensTest, ALensThatFoldsWithinThePictureIsRefusedThereAndExactBefore) {
    CalibrationText text;
    text.distortion = {"-0.8", "0.", "0.", "0."};  // grows up to r = 0.645, where it arrives at 0.430 = 645 pixels
    const RoundTrip trip(lens(text));
    EXPECT_GT(trip.mapped, 500);
    EXPECT_GT(trip.refused, 200);
    EXPECT_LE(trip.worstPicture, 1e-9);
    EXPECT_LE(trip.worstDirection, 1e-9);
}

TEST_F(BrownConradyLensTest, NothingIsSeenBehindTheProjectorOrBeyondTheFold) {
    CalibrationText text;
    text.distortion = {"-0.8", "0.", "0.", "0."};
    const BrownConradyLens folding = lens(text);
    P2 out{-7.0, -7.0};
    EXPECT_FALSE(folding.projectNormalised({0.1, -1.0, 0.1}, out));
    EXPECT_FALSE(folding.projectNormalised({0.0, 0.0, 0.0}, out));
    EXPECT_FALSE(folding.projectNormalised({0.7, 1.0, 0.0}, out));
    Point<int, 2> pixel{-7, -7};
    EXPECT_FALSE(folding.project({0.7, 1.0, 0.0}, pixel));
    EXPECT_EQ(out, P2(-7.0, -7.0));
    EXPECT_EQ(pixel, (Point<int, 2>{-7, -7}));
}

TEST_F(BrownConradyLensTest, StatesThePictureThatItWasCalibratedWith) {
    Viewport half;
    half.width = 960;
    half.height = 600;
    EXPECT_EQ(lens(undistorted(), half).calibratedSize(), (Point<int, 2>{1920, 1200}));
}

}  // namespace
