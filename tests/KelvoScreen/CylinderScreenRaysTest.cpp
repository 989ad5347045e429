#include "Configuration/BaseConfig.h"
#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/RoundRays.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace {

using Vector = Point<double, 3>;

constexpr double PI = std::numbers::pi;
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr int RAYS = 400;

ScreenConfigDouble tiltedWall() {
    ScreenConfigDouble config;
    config.shape = BaseConfig::SHAPE_CYLINDER;
    config.centre = {1.0, -2.0, 3.0};
    config.orientation = {0.4, -0.3, 0.2};
    config.radius = 5;
    config.height = 3;
    config.azimuthMin = -2;
    config.azimuthMax = 1.5;
    return config;
}

/// Radius 1, height 2, a whole turn around the upright axis through the origin.
CylinderScreen ring() {
    ScreenConfigDouble config;
    config.shape = BaseConfig::SHAPE_CYLINDER;
    config.radius = 1;
    config.height = 2;
    config.azimuthMin = -PI;
    config.azimuthMax = PI;
    return CylinderScreen(&config);
}

TEST(CylinderScreenRays, AgreeWithExtendedPrecisionOnAWideWall) {
    const ScreenConfigDouble config = tiltedWall();
    roundrays::expectAgreement(CylinderScreen(&config), config, RAYS);
}

TEST(CylinderScreenRays, AgreeWithExtendedPrecisionOnANarrowHighStrip) {
    ScreenConfigDouble config = tiltedWall();
    config.azimuthMin = 3;
    config.azimuthMax = 3.5;
    config.height = 50;
    roundrays::expectAgreement(CylinderScreen(&config), config, RAYS);
}

TEST(CylinderScreenRays, AgreeWithExtendedPrecisionOnALowRing) {
    ScreenConfigDouble config = tiltedWall();
    config.azimuthMin = -PI;
    config.azimuthMax = PI;
    config.height = 0.1;
    roundrays::expectAgreement(CylinderScreen(&config), config, RAYS);
}

TEST(CylinderScreenRays, AgreeWithExtendedPrecisionAtEverySize) {
    for (const double factor : {1e-6, 1e-3, 1e3, 1e6}) {
        SCOPED_TRACE(factor);
        const ScreenConfigDouble config = roundrays::scaled(tiltedWall(), factor);
        roundrays::expectAgreement(CylinderScreen(&config), config, RAYS / 4);
    }
}

TEST(CylinderScreenRays, FromInsideTheWallAheadIsHitAndNotTheOneBehind) {
    const ScreenConfigDouble config = [] {
        ScreenConfigDouble half = tiltedWall();
        half.centre = {};
        half.orientation = {};
        half.azimuthMin = -PI / 2;
        half.azimuthMax = PI / 2;
        return half;
    }();
    const CylinderScreen frontHalf(&config);
    const Vector eye{0.0, -1.0, 1.0};
    EXPECT_EQ(frontHalf.intersect(eye, {0.0, 0.0, 1.0}).first().point, (Vector{0.0, 5.0, 1.0}));
    EXPECT_TRUE(frontHalf.intersect(eye, {0.0, -2.0, 1.0}).empty());
}

TEST(CylinderScreenRays, ThroughTheOpenTopOnlyTheFarWallIsHit) {
    const IntersectionSet hits = ring().intersect({0.0, -3.0, 3.0}, {0.0, 1.0, 0.0});
    ASSERT_EQ(hits.size(), 1U);
    EXPECT_LE(norm(hits.first().point - Vector{0.0, 1.0, 0.0}), 1e-15);
}

TEST(CylinderScreenRays, ParallelToTheAxisNothingIsHit) {
    const CylinderScreen wall = ring();
    for (const double x : {0.0, 0.5, 1.0, 2.0}) {
        const Vector from{x, 0.0, -5.0};
        const Vector to{x, 0.0, 5.0};
        EXPECT_TRUE(wall.intersect(from, to).empty()) << x;
        for (const int sign : {-1, 0, 1}) {
            EXPECT_TRUE(wall.intersectExtrapolatedWithSpecifiedNormal(from, to, sign).empty()) << x;
        }
    }
}

TEST(CylinderScreenRays, RunningAlmostAlongTheAxisTheyAgreeWithExtendedPrecision) {
    const ScreenConfigDouble config = tiltedWall();
    const CylinderScreen wall(&config);
    const oracle::RoundOracle truth(config);
    oracle::Random random(27);
    int hitting = 0;
    for (int i = 0; i < 4000; ++i) {
        Vector aim;
        ASSERT_TRUE(wall.mapInto3D({random.uniform(0, 1), random.uniform(0, 1)}, aim, false));
        const double slope = std::pow(10.0, random.uniform(-9, -1));
        const oracle::Exact axis = oracle::turned(config.orientation, {0.0L, 0.0L, 1.0L});
        const Vector direction =
            Vector{static_cast<double>(axis[0]), static_cast<double>(axis[1]), static_cast<double>(axis[2])} +
            slope * random.inCube();
        const Vector from = aim - random.uniform(0.1, 10) * direction;
        const IntersectionSet hits = wall.intersect(from, from + direction);
        ASSERT_EQ(truth.faultOf(hits, from, from + direction, false), "") << "ray " << i << ", slope " << slope;
        hitting += hits.empty() ? 0 : 1;
    }
    EXPECT_GT(hitting, 3900);
}

TEST(CylinderScreenRays, ATouchingRayHitsOnceAcrossTheNormal) {
    const CylinderScreen wall = ring();
    const Vector from{-2.0, 1.0, 0.0};
    const Vector to{2.0, 1.0, 0.5};
    const IntersectionSet hits = wall.intersect(from, to);
    ASSERT_EQ(hits.size(), 1U);
    EXPECT_EQ(hits.first().point, (Vector{0.0, 1.0, 0.25}));
    EXPECT_EQ(hits.first().t, 0.5);
    EXPECT_EQ(sideOfSurface(to - from, wall.getScreenNormal(hits.first().point)), 0);
    EXPECT_TRUE(wall.intersect({-2.0, 1 + 1e-13, 0.0}, {2.0, 1 + 1e-13, 0.0}).empty());
}

TEST(CylinderScreenRays, WhateverRoundingSaysAMappedOriginIsAHitAtZero) {
    const ScreenConfigDouble config = tiltedWall();
    const CylinderScreen wall(&config);
    oracle::Random random(28);
    for (int i = 0; i < 2000; ++i) {
        Vector from;
        ASSERT_TRUE(wall.mapInto3D({random.uniform(0, 1), random.uniform(0, 1)}, from, false));
        const Vector direction = random.inCube();
        const IntersectionSet hits = wall.intersect(from, from + direction);
        ASSERT_FALSE(hits.empty()) << "ray " << i;
        const double cosine = std::abs(dot(direction, wall.getScreenNormal(from))) / norm(direction);
        EXPECT_LE(hits.first().t * norm(direction), 1e-13 / cosine) << "ray " << i;
    }
}

TEST(CylinderScreenRays, AWholeTurnHasNoGapAtTheSeam) {
    const CylinderScreen wall = ring();
    int count = 0;
    for (const double tiny : {0.0, 1e-300, -1e-300, 1e-17, -1e-17, 1e-16, -1e-16, 1e-12, -1e-12}) {
        EXPECT_EQ(wall.intersect({0.0, 0.0, 0.0}, {tiny, -1.0, 0.3}).size(), 1U) << tiny;
        EXPECT_EQ(wall.intersect({0.3, -0.2, 0.1}, {tiny, -1.0, 0.3}).size(), 1U) << tiny;
        ++count;
    }
    EXPECT_EQ(count, 9);
}

TEST(CylinderScreenRays, MeetTheMappedEdgeUnderGrazingAngles) {
    const ScreenConfigDouble config = tiltedWall();
    const CylinderScreen wall(&config);
    oracle::Random random(29);
    for (int i = 0; i < 4000; ++i) {
        const double along = random.uniform(0, 1);
        const double end = i % 4 < 2 ? 0 : 1;
        Vector aim;
        ASSERT_TRUE(
            wall.mapInto3D(i % 2 == 0 ? Point<double, 2>{end, along} : Point<double, 2>{along, end}, aim, false));
        const Vector normal = wall.getScreenNormal(aim);
        const Vector across = cross(normal, random.inCube());
        const double cosine = std::pow(10.0, random.uniform(-12, 0));
        const Vector from = aim + across * (5 / norm(across)) + 5 * cosine * normal;
        ASSERT_FALSE(wall.intersect(from, aim).empty()) << "ray " << i << ", cosine " << cosine;
    }
}

TEST(CylinderScreenRays, JustPastAnEdgeTheyMiss) {
    const CylinderScreen wall = ring();
    EXPECT_EQ(wall.intersect({0.0, 0.0, 0.0}, {0.0, 1.0, 1.0}).size(), 1U);
    EXPECT_TRUE(wall.intersect({0.0, 0.0, 0.0}, {0.0, 1.0, 1 + 1e-12}).empty());
    EXPECT_TRUE(wall.intersect({0.0, 0.0, 0.0}, {0.0, 1.0, -1 - 1e-12}).empty());
}

TEST(CylinderScreenRays, AWallThatIsLostInTheRoundingOfItsCentreIsNotValid) {
    ScreenConfigDouble config = tiltedWall();
    config.orientation = {};
    config.centre = {1e16, 0.0, 0.0};
    config.radius = 1;
    const CylinderScreen lost(&config);
    EXPECT_FALSE(lost.isValid());
    EXPECT_TRUE(lost.intersect(config.centre, {1e16, 1e6, 0.0}).empty());
    config.centre = {1e6, 0.0, 0.0};
    config.radius = 1e-7;
    const CylinderScreen small(&config);
    ASSERT_TRUE(small.isValid());
    const IntersectionSet hits = small.intersect(config.centre, {1e6, 1.0, 0.0});
    ASSERT_EQ(hits.size(), 1U);
    EXPECT_LE(norm(hits.first().point - Vector{1e6, 1e-7, 0.0}), 1e-9);
}

TEST(CylinderScreenRays, PastEverySquareARayMisses) {
    EXPECT_TRUE(ring().intersect({1e170, -1e170, 0.0}, {1e170, 0.0, 0.0}).empty());
}

TEST(CylinderScreenRays, ARayThatIsNoneMisses) {
    const CylinderScreen wall = ring();
    EXPECT_TRUE(wall.intersect({0.5, 0.0, 0.0}, {0.5, 0.0, 0.0}).empty()) << "no length";
    for (std::size_t i = 0; i < 3; ++i) {
        for (const double bad : {NOT_A_NUMBER, INFINITE, -INFINITE}) {
            Vector broken{0.1, 0.2, 0.3};
            broken[i] = bad;
            EXPECT_TRUE(wall.intersect(broken, {0.0, 1.0, 0.0}).empty());
            EXPECT_TRUE(wall.intersect({0.0, 1.0, 0.0}, broken).empty());
            EXPECT_TRUE(wall.intersectExtrapolatedWithSpecifiedNormal(broken, {0.0, 1.0, 0.0}, 1).empty());
        }
    }
}

TEST(CylinderScreenRays, AHitFurtherAlongThanEveryNumberIsLeftOutAndTheStartIsKept) {
    EXPECT_TRUE(ring().intersect({0.0, 0.0, 0.0}, {0.0, 1e-310, 0.0}).empty());
    ScreenConfigDouble config = tiltedWall();
    config.orientation = {};
    config.centre = {0.0, -config.radius, 0.0};
    const CylinderScreen throughOrigin(&config);
    for (const double length : {1e-310, 5e-324}) {
        const IntersectionSet hits = throughOrigin.intersect({0.0, 0.0, 0.0}, {0.0, length, 0.0});
        ASSERT_EQ(hits.size(), 1U) << length;
        EXPECT_EQ(hits.first().t, 0);
    }
}

TEST(CylinderScreenRays, TheContinuationIsTheEndlessCylinderSeenFromTheWantedSide) {
    const CylinderScreen wall = ring();
    const Vector eye{0.0, 0.0, 0.0};
    const Vector up{0.0, 1.0, 10.0};
    EXPECT_TRUE(wall.intersect(eye, up).empty());
    const IntersectionSet hits = wall.intersectExtrapolatedWithSpecifiedNormal(eye, up, 1);
    ASSERT_EQ(hits.size(), 1U);
    EXPECT_EQ(hits.first().point, (Vector{0.0, 1.0, 10.0}));
    EXPECT_TRUE(wall.intersectExtrapolatedWithSpecifiedNormal(eye, up, -1).empty());
    EXPECT_TRUE(wall.intersectExtrapolatedWithSpecifiedNormal(eye, up, 0).empty());
}

}  // namespace
