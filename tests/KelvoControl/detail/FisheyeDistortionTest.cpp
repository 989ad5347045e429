#include "KelvoControl/detail/FisheyeDistortion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace {

using Veltrani::KelvoControlDetail::FisheyeDistortion;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

constexpr std::array<double, 4> WIDE{0.05, -0.01, 0.003, -0.0004};

P2 distorted(const FisheyeDistortion& lens, const P3& ray) {
    P2 result;
    EXPECT_TRUE(lens.distort(ray, result));
    return result;
}

// The values come from scripts/lens_values.py.
TEST(FisheyeDistortion, DistortsAsPublished) {
    const FisheyeDistortion lens(WIDE);
    const auto expectNear = [&](const P3& ray, const P2& expected) {
        const P2 found = distorted(lens, ray);
        EXPECT_NEAR(found[0], expected[0], 2e-15);
        EXPECT_NEAR(found[1], expected[1], 2e-15);
    };
    expectNear({0.3, -0.4, 1.0}, {0.281058160061516635, -0.374744213415355514});
    expectNear({2.0, 1.0, 0.5}, {1.29486509677515031, 0.647432548387575157});
    expectNear({1.0, 0.0, 0.0}, {1.71645416822313375, 0.0});
    expectNear({-1.0, 2.0, -0.25}, {-0.830313764642752992, 1.66062752928550598});
}

TEST(FisheyeDistortion, TheLengthOfARayDoesNotMatter) {
    const FisheyeDistortion lens(WIDE);
    const P2 expected = distorted(lens, {0.3, -0.4, 1.0});
    for (const double length : {1e-200, 1e-9, 7.0, 1e150}) {
        const P2 found = distorted(lens, P3{0.3, -0.4, 1.0} * length);
        EXPECT_NEAR(found[0], expected[0], 1e-15) << length;
        EXPECT_NEAR(found[1], expected[1], 1e-15) << length;
    }
}

TEST(FisheyeDistortion, StraightAheadIsTheCentreAndStraightBehindNothing) {
    const FisheyeDistortion lens({0, 0, 0, 0});
    EXPECT_EQ(lens.foldAngle(), std::numbers::pi);
    EXPECT_EQ(distorted(lens, {0.0, 0.0, 2.0}), P2(0.0, 0.0));
    P3 ray;
    ASSERT_TRUE(lens.undistort({0.0, 0.0}, ray));
    EXPECT_EQ(ray, P3(0.0, 0.0, 1.0));
    P2 out{-7.0, -7.0};
    EXPECT_FALSE(lens.distort({0.0, 0.0, -1.0}, out));
    EXPECT_FALSE(lens.distort({0.0, 0.0, 0.0}, out));
    EXPECT_EQ(out, P2(-7.0, -7.0));
}

TEST(FisheyeDistortion, FoldsWhereTheAngleStopsGrowing) {
    // theta (1 - theta^2 / 4.8) grows up to theta^2 = 1.6.
    const FisheyeDistortion lens({-1 / 4.8, 0, 0, 0});
    EXPECT_NEAR(lens.foldAngle(), std::sqrt(1.6), 1e-3);
    P2 out{-7.0, -7.0};
    const double beyond = std::sqrt(1.6) + 0.001;
    EXPECT_FALSE(lens.distort({std::sin(beyond), 0.0, std::cos(beyond)}, out));
    EXPECT_EQ(out, P2(-7.0, -7.0));
    P3 ray{-7.0, -7.0, -7.0};
    const double farthest = std::sqrt(1.6) * (2.0 / 3.0);
    EXPECT_FALSE(lens.undistort({farthest + 1e-6, 0.0}, ray));
    EXPECT_EQ(ray, P3(-7.0, -7.0, -7.0));
    EXPECT_TRUE(lens.undistort({farthest - 1e-6, 0.0}, ray));
}

TEST(FisheyeDistortion, EveryRayWithinTheFoldComesBack) {
    double worst = 0;
    for (const auto& k : {WIDE, std::array<double, 4>{}, std::array<double, 4>{-0.2, 0.02, 0, 0},
                          std::array<double, 4>{0.3, 0.1, 0.05, 0.01}}) {
        const FisheyeDistortion lens(k);
        for (int i = 1; i < 1000; ++i) {
            const double theta = std::min(lens.foldAngle() - 1e-3, 3.1) * i / 1000;
            const double turn = 0.37 * i;
            const P3 ray{std::sin(theta) * std::cos(turn), std::sin(theta) * std::sin(turn), std::cos(theta)};
            P3 back;
            ASSERT_TRUE(lens.undistort(distorted(lens, ray), back));
            worst = std::max(worst, norm(back - ray));
        }
    }
    EXPECT_LE(worst, 1e-9);
}

TEST(FisheyeDistortion, WhatIsDistortedComesBackUpToTheFold) {
    for (const double k : {-0.05, -0.2, -1.0, -8.0, -40.0}) {
        const FisheyeDistortion lens({k, 0.02 * k, 0, 0});
        ASSERT_LT(lens.foldAngle(), 3.1);
        for (double distance = 1e-1; distance > 1e-16; distance *= 0.1) {
            const double theta = lens.foldAngle() * (1 - distance);
            const P3 ray{0.6 * std::sin(theta), -0.8 * std::sin(theta), std::cos(theta)};
            P2 there;
            if (lens.distort(ray, there)) {
                P3 back;
                ASSERT_TRUE(lens.undistort(there, back)) << k << ", " << distance;
                EXPECT_LE(norm(back - ray), 1e-9) << k << ", " << distance;
            }
        }
    }
}

TEST(FisheyeDistortion, WhatIsNoNumberIsRefused) {
    const FisheyeDistortion lens(WIDE);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    P2 out{-7.0, -7.0};
    EXPECT_FALSE(lens.distort({nan, 0.0, 1.0}, out));
    EXPECT_FALSE(lens.distort({0.1, 0.0, nan}, out));
    EXPECT_EQ(out, P2(-7.0, -7.0));
    P3 ray{-7.0, -7.0, -7.0};
    EXPECT_FALSE(lens.undistort({nan, 0.0}, ray));
    EXPECT_FALSE(lens.undistort({0.0, std::numeric_limits<double>::infinity()}, ray));
    EXPECT_EQ(ray, P3(-7.0, -7.0, -7.0));
}

}  // namespace
