#include "Configuration/BaseConfig.h"
#include "KelvoScreen/RoundRays.h"
#include "KelvoScreen/SphericalScreen.h"

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

ScreenConfigDouble tiltedDome() {
    ScreenConfigDouble config;
    config.shape = BaseConfig::SHAPE_SPHERE;
    config.centre = {1.0, -2.0, 3.0};
    config.orientation = {0.4, -0.3, 0.2};
    config.radius = 5;
    config.azimuthMin = -2;
    config.azimuthMax = 1.5;
    config.elevationMin = -0.35;
    config.elevationMax = 1.2;
    return config;
}

SphericalScreen wholeSphere(double radius = 1) {
    return {Vector{}, radius, -PI, PI, -PI / 2, PI / 2};
}

TEST(SphericalScreenRays, AgreeWithExtendedPrecisionOnADome) {
    const ScreenConfigDouble config = tiltedDome();
    roundrays::expectAgreement(SphericalScreen(&config), config, RAYS);
}

TEST(SphericalScreenRays, AgreeWithExtendedPrecisionOnANarrowStrip) {
    ScreenConfigDouble config = tiltedDome();
    config.azimuthMin = 3;
    config.azimuthMax = 3.5;
    config.elevationMin = -0.2;
    config.elevationMax = 0.2;
    roundrays::expectAgreement(SphericalScreen(&config), config, RAYS);
}

TEST(SphericalScreenRays, AgreeWithExtendedPrecisionOnTheWholeSphere) {
    ScreenConfigDouble config = tiltedDome();
    config.azimuthMin = -PI;
    config.azimuthMax = PI;
    config.elevationMin = -PI / 2;
    config.elevationMax = PI / 2;
    roundrays::expectAgreement(SphericalScreen(&config), config, RAYS);
}

TEST(SphericalScreenRays, AgreeWithExtendedPrecisionAtEverySize) {
    for (const double factor : {1e-6, 1e-3, 1e3, 1e6}) {
        SCOPED_TRACE(factor);
        const ScreenConfigDouble config = roundrays::scaled(tiltedDome(), factor);
        roundrays::expectAgreement(SphericalScreen(&config), config, RAYS / 4);
    }
}

TEST(SphericalScreenRays, FromInsideTheWallAheadIsHitAndNotTheOneBehind) {
    const SphericalScreen frontHalf(Vector{}, 5, -PI / 2, PI / 2, -PI / 2, PI / 2);
    const Vector eye{0.0, -1.0, 0.0};
    EXPECT_EQ(frontHalf.intersect(eye, {0.0, 0.0, 0.0}).first().point, (Vector{0.0, 5.0, 0.0}));
    EXPECT_TRUE(frontHalf.intersect(eye, {0.0, -2.0, 0.0}).empty());
}

TEST(SphericalScreenRays, FromOutsideTheNearSideComesFirst) {
    const IntersectionSet hits = wholeSphere().intersect({0.0, -3.0, 0.0}, {0.0, -2.0, 0.0});
    ASSERT_EQ(hits.size(), 2U);
    EXPECT_EQ(hits[0].point, (Vector{0.0, -1.0, 0.0}));
    EXPECT_EQ(hits[0].t, 2);
    EXPECT_EQ(hits[1].point, (Vector{0.0, 1.0, 0.0}));
    EXPECT_EQ(hits[1].t, 4);
}

TEST(SphericalScreenRays, ATouchingRayHitsOnceAcrossTheNormal) {
    const SphericalScreen sphere = wholeSphere();
    const Vector from{-2.0, 0.0, 1.0};
    const Vector to{2.0, 0.0, 1.0};
    const IntersectionSet hits = sphere.intersect(from, to);
    ASSERT_EQ(hits.size(), 1U);
    EXPECT_EQ(hits.first().point, (Vector{0.0, 0.0, 1.0}));
    EXPECT_EQ(hits.first().t, 0.5);
    EXPECT_EQ(sideOfSurface(to - from, sphere.getScreenNormal(hits.first().point)), 0);
    EXPECT_EQ(sphere.intersectExtrapolatedWithSpecifiedNormal(from, to, 0).size(), 1U);
    EXPECT_TRUE(sphere.intersectExtrapolatedWithSpecifiedNormal(from, to, 1).empty());
}

TEST(SphericalScreenRays, ARayPastTheSphereMisses) {
    const SphericalScreen sphere = wholeSphere();
    EXPECT_TRUE(sphere.intersect({-2.0, 0.0, 1 + 1e-13}, {2.0, 0.0, 1 + 1e-13}).empty());
    EXPECT_TRUE(sphere.intersect({-2.0, 0.0, 0.0}, {-3.0, 0.0, 0.0}).empty()) << "behind";
}

TEST(SphericalScreenRays, AnOriginOnTheSurfaceIsAHitAtZero) {
    const SphericalScreen sphere = wholeSphere();
    const IntersectionSet inward = sphere.intersect({1.0, 0.0, 0.0}, {0.0, 0.0, 0.0});
    ASSERT_EQ(inward.size(), 2U);
    EXPECT_EQ(inward[0].t, 0);
    EXPECT_EQ(inward[1].t, 2);
    const IntersectionSet outward = sphere.intersect({1.0, 0.0, 0.0}, {2.0, 0.0, 0.0});
    ASSERT_EQ(outward.size(), 1U);
    EXPECT_EQ(outward.first().t, 0);
    const IntersectionSet along = sphere.intersect({1.0, 0.0, 0.0}, {1.0, 1.0, 0.0});
    ASSERT_EQ(along.size(), 1U);
    EXPECT_EQ(along.first().point, (Vector{1.0, 0.0, 0.0}));
}

TEST(SphericalScreenRays, WhateverRoundingSaysAMappedOriginIsAHitAtZero) {
    const ScreenConfigDouble config = tiltedDome();
    const SphericalScreen dome(&config);
    oracle::Random random(24);
    for (int i = 0; i < 2000; ++i) {
        Vector from;
        ASSERT_TRUE(dome.mapInto3D({random.uniform(0, 1), random.uniform(0, 1)}, from, false));
        const Vector direction = random.inCube();
        const IntersectionSet hits = dome.intersect(from, from + direction);
        ASSERT_FALSE(hits.empty()) << "ray " << i;
        const double cosine = std::abs(dot(direction, dome.getScreenNormal(from))) / norm(direction);
        EXPECT_LE(hits.first().t * norm(direction), 1e-13 / cosine) << "ray " << i;
        EXPECT_LE(norm(hits.first().point - from), 1e-13 / cosine) << "ray " << i;
    }
}

TEST(SphericalScreenRays, TheWholeSphereHasNoGapAtSeamAndPoles) {
    const SphericalScreen sphere = wholeSphere(3);
    oracle::Random random(21);
    int count = 0;
    for (const double sign : {-1.0, 1.0}) {
        for (const double tiny : {0.0, 1e-300, 1e-17, 1e-16, 1e-12}) {
            for (const Vector& direction : {Vector{sign * tiny, -1.0, 0.0}, Vector{sign * tiny, -0.5, 0.5},
                                            Vector{sign * tiny, tiny, 1.0}, Vector{tiny, sign * tiny, -1.0}}) {
                const Vector from = 0.5 * random.inCube();
                EXPECT_EQ(sphere.intersect(from, 3.0 * direction).size(), 1U) << "from a place inside";
                EXPECT_EQ(sphere.intersect({0.0, 0.0, 0.0}, direction).size(), 1U) << "from the centre";
                ++count;
            }
        }
    }
    EXPECT_EQ(count, 40);
}

TEST(SphericalScreenRays, LimitsAreInclusive) {
    const SphericalScreen octant(Vector{}, 2, 0, PI / 2, 0, PI / 2);
    const Vector eye{0.0, 0.0, 0.0};
    for (const Vector& aim : {Vector{0.0, 1.0, 0.0}, Vector{1.0, 0.0, 0.0}, Vector{0.0, 0.0, 1.0},
                              Vector{1.0, 1.0, 0.0}, Vector{0.0, 1.0, 1.0}, Vector{1.0, 0.0, 1.0}}) {
        EXPECT_EQ(octant.intersect(eye, aim).size(), 1U);
    }
    for (const Vector& aim : {Vector{-1e-9, 1.0, 0.0}, Vector{1.0, -1e-9, 0.0}, Vector{1.0, 1.0, -1e-9}}) {
        EXPECT_TRUE(octant.intersect(eye, aim).empty());
    }
}

TEST(SphericalScreenRays, ALimitNearAPoleIsAsSharpAsAnyOther) {
    for (const double gap : {1e-2, 1e-5, 1e-7, 2e-9}) {
        const SphericalScreen withoutCaps(Vector{}, 2, -PI, PI, gap - PI / 2, PI / 2 - gap);
        for (const double pole : {-1.0, 1.0}) {
            for (int i = 0; i < 36; ++i) {
                const auto aim = [&](double fromPole) {
                    return Vector{std::sin(fromPole) * std::sin(i / 5.7), std::sin(fromPole) * std::cos(i / 5.7),
                                  pole * std::cos(fromPole)};
                };
                EXPECT_EQ(withoutCaps.intersect({0.0, 0.0, 0.0}, aim(gap + 1e-12)).size(), 1U) << gap << ' ' << i;
                EXPECT_TRUE(withoutCaps.intersect({0.0, 0.0, 0.0}, aim(gap - 1e-12)).empty()) << gap << ' ' << i;
            }
        }
    }
}

TEST(SphericalScreenRays, MeetTheMappedPointFromAnywhereEvenAtTheEdges) {
    const ScreenConfigDouble config = tiltedDome();
    const SphericalScreen dome(&config);
    oracle::Random random(22);
    int count = 0;
    for (const double s : {0.0, 0.1, 0.5, 1.0}) {
        for (const double t : {0.0, 0.3, 0.8, 1.0}) {
            Vector aim;
            ASSERT_TRUE(dome.mapInto3D({s, t}, aim, false));
            for (int i = 0; i < 200; ++i, ++count) {
                const double distance = std::pow(10.0, random.uniform(-3, 4));
                const Vector from = aim + distance * random.inCube();
                const IntersectionSet hits = dome.intersect(from, aim);
                double nearest = INFINITE;
                for (std::size_t j = 0; j < hits.size(); ++j) {
                    nearest = std::min(nearest, norm(hits[j].point - aim));
                }
                const Vector direction = (aim - from) * (1 / norm(aim - from));
                const double cosine = std::abs(dot(direction, dome.getScreenNormal(aim)));
                ASSERT_LE(nearest, 1e-12 * (distance + 10) / cosine) << s << ' ' << t << " ray " << i;
            }
        }
    }
    EXPECT_EQ(count, 3200);
}

TEST(SphericalScreenRays, MeetTheMappedEdgeUnderGrazingAngles) {
    const ScreenConfigDouble config = tiltedDome();
    const SphericalScreen dome(&config);
    oracle::Random random(23);
    for (int i = 0; i < 4000; ++i) {
        const double along = random.uniform(0, 1);
        const double end = i % 4 < 2 ? 0 : 1;
        Vector aim;
        ASSERT_TRUE(
            dome.mapInto3D(i % 2 == 0 ? Point<double, 2>{end, along} : Point<double, 2>{along, end}, aim, false));
        const Vector normal = dome.getScreenNormal(aim);
        const Vector across = cross(normal, random.inCube());
        const double cosine = std::pow(10.0, random.uniform(-12, -1));
        const Vector from = aim + across * (5 / norm(across)) + 5 * cosine * normal;
        ASSERT_FALSE(dome.intersect(from, aim).empty()) << "ray " << i << ", cosine " << cosine;
    }
}

TEST(SphericalScreenRays, ARayThatIsNoneMisses) {
    const SphericalScreen sphere = wholeSphere();
    EXPECT_TRUE(sphere.intersect({0.5, 0.0, 0.0}, {0.5, 0.0, 0.0}).empty()) << "no length";
    for (std::size_t i = 0; i < 3; ++i) {
        for (const double bad : {NOT_A_NUMBER, INFINITE, -INFINITE}) {
            Vector broken{0.1, 0.2, 0.3};
            broken[i] = bad;
            EXPECT_TRUE(sphere.intersect(broken, {0.0, 1.0, 0.0}).empty());
            EXPECT_TRUE(sphere.intersect({0.0, 1.0, 0.0}, broken).empty());
            EXPECT_TRUE(sphere.intersectExtrapolatedWithSpecifiedNormal(broken, {0.0, 1.0, 0.0}, 1).empty());
        }
    }
}

TEST(SphericalScreenRays, ASphereThatIsLostInTheRoundingOfItsCentreIsNotValid) {
    const auto at = [](double centre, double radius) {
        return SphericalScreen({centre, 0.0, 0.0}, radius, -PI, PI, -PI / 2, PI / 2);
    };
    for (const auto& [centre, radius] : {std::pair{1e16, 1.0}, std::pair{1e6, 1e-9}, std::pair{-1e6, 1e-8}}) {
        EXPECT_FALSE(at(centre, radius).isValid()) << centre;
        EXPECT_TRUE(at(centre, radius).intersect({centre, 0.0, 0.0}, {centre, 1e6, 0.0}).empty());
    }
    const SphericalScreen small = at(1e6, 1e-7);
    ASSERT_TRUE(small.isValid());
    const IntersectionSet hits = small.intersect({1e6, 0.0, 0.0}, {1e6, 1.0, 0.0});
    ASSERT_EQ(hits.size(), 1U);
    EXPECT_LE(norm(hits.first().point - Vector{1e6, 1e-7, 0.0}), 1e-9);
}

TEST(SphericalScreenRays, PastEverySquareARayMisses) {
    EXPECT_TRUE(wholeSphere().intersect({1e170, -1e170, 0.0}, {1e170, 0.0, 0.0}).empty());
}

TEST(SphericalScreenRays, ExtremelyShortAndLongRaysHitLikeOthers) {
    const SphericalScreen sphere = wholeSphere();
    for (const double length : {1e-300, 1e-200, 1e-120, 1e120, 1e200, 1e300}) {
        const IntersectionSet hits = sphere.intersect({0.0, 0.0, 0.0}, {0.0, length, 0.0});
        ASSERT_EQ(hits.size(), 1U) << length;
        EXPECT_EQ(hits.first().point, (Vector{0.0, 1.0, 0.0}));
        EXPECT_DOUBLE_EQ(hits.first().t, 1 / length);
    }
    EXPECT_TRUE(sphere.intersect({0.0, -1e308, 0.0}, {0.0, 1e308, 0.0}).empty()) << "a length past every double";
}

TEST(SphericalScreenRays, AHitFurtherAlongThanEveryNumberIsLeftOutAndTheStartIsKept) {
    EXPECT_TRUE(wholeSphere().intersect({0.0, 0.0, 0.0}, {0.0, 1e-310, 0.0}).empty());
    const SphericalScreen throughOrigin({0.0, 1.0, 0.0}, 1, -PI, PI, -PI / 2, PI / 2);
    for (const double length : {1e-310, 5e-324}) {
        const IntersectionSet hits = throughOrigin.intersect({0.0, 0.0, 0.0}, {0.0, length, 0.0});
        ASSERT_EQ(hits.size(), 1U) << length;
        EXPECT_EQ(hits.first().t, 0);
    }
}

TEST(SphericalScreenRays, TheContinuationIsTheWholeSphereSeenFromTheWantedSide) {
    const SphericalScreen upperHalf(Vector{}, 2, -PI, PI, 0, PI / 2);
    const Vector eye{0.0, 0.0, 1.0};
    const Vector down{0.0, 0.0, 0.0};
    EXPECT_TRUE(upperHalf.intersect(eye, down).empty());
    const IntersectionSet hits = upperHalf.intersectExtrapolatedWithSpecifiedNormal(eye, down, 1);
    ASSERT_EQ(hits.size(), 1U);
    EXPECT_EQ(hits.first().point, (Vector{0.0, 0.0, -2.0}));
    EXPECT_EQ(hits.first().t, 3);
    EXPECT_TRUE(upperHalf.intersectExtrapolatedWithSpecifiedNormal(eye, down, -1).empty());
    const IntersectionSet entry = upperHalf.intersectExtrapolatedWithSpecifiedNormal({0.0, 0.0, -5.0}, down, -1);
    ASSERT_EQ(entry.size(), 1U);
    EXPECT_EQ(entry.first().point, (Vector{0.0, 0.0, -2.0}));
}

}  // namespace
