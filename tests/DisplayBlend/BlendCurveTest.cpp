#include "DisplayBlend/BlendCurve.h"

#include "Common/VeltraniException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

using Veltrani::DisplayBlend::BlendCurve;

// Values of the formulas, evaluated in another language.
TEST(BlendCurveTest, KnownPointsLieOnTheCurves) {
    EXPECT_NEAR(BlendCurve::ofGamma(2.2).lightOf(0.5), 0.217637640824031, 1e-14);
    EXPECT_NEAR(BlendCurve::ofGamma(2.2).codeOf(0.5), 0.7297400528407231, 1e-14);
    EXPECT_NEAR(BlendCurve::srgb().lightOf(0.5), 0.21404114048223255, 1e-14);
    EXPECT_NEAR(BlendCurve::srgb().codeOf(0.5), 0.7353569830524495, 1e-13);
    EXPECT_NEAR(BlendCurve::srgb().lightOf(0.04), 0.04 / 12.92, 1e-15);
    EXPECT_EQ(BlendCurve::ofGamma(1).codeOf(0.3), 0.3);
}

TEST(BlendCurveTest, CodesComeBackFromLight) {
    for (const BlendCurve& curve : {BlendCurve::srgb(), BlendCurve::ofGamma(1), BlendCurve::ofGamma(2.2)}) {
        for (int i = 0; i <= 1000; ++i) {
            EXPECT_NEAR(curve.codeOf(curve.lightOf(i / 1000.0)), i / 1000.0, 1e-7) << curve.name();
        }
        EXPECT_EQ(curve.lightOf(1), 1);
        EXPECT_EQ(curve.lightOf(0), 0);
        EXPECT_EQ(curve.codeOf(1.5), 1);
        EXPECT_EQ(curve.codeOf(-0.5), 0);
    }
}

TEST(BlendCurveTest, NamesAreReadAsTheyAreWritten) {
    for (const std::string name : {"srgb", "1", "2.2", "0.2", "5", "1.8"}) {
        EXPECT_EQ(BlendCurve::named(name).name(), name);
    }
    EXPECT_EQ(BlendCurve::ofGamma(BlendCurve::USUAL_GAMMA).name(), "2.2");
}

TEST(BlendCurveTest, OtherNamesAreRefused) {
    for (const std::string name : {"", "sRGB", "2,2", "0.19", "5.1", "nan", "inf", "-2.2", "2.2x", " 2.2"}) {
        try {
            static_cast<void>(BlendCurve::named(name));
            ADD_FAILURE() << name;
        } catch (const VeltraniException& fault) {
            EXPECT_EQ(fault.message, L"The gamma of a blend is \"" + std::wstring(name.begin(), name.end()) +
                                         L"\": expected a number from 0.2 to 5, 1 for linear, or srgb");
        }
    }
    EXPECT_THROW(static_cast<void>(BlendCurve::ofGamma(std::numeric_limits<double>::quiet_NaN())), VeltraniException);
}

}  // namespace
