#include "Configuration/BaseConfig.h"
#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/RuledOracle.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/RuledSurfaces.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using Vector = Point<double, 3>;

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

Vector anywhereOn(const RuledSurfaceScreen& screen, oracle::Random& random) {
    Vector out;
    EXPECT_TRUE(screen.mapInto3D({random.uniform(0, 1), random.uniform(0, 1)}, out, false));
    return out;
}

/// Aims at places all over the surface from `distance` away and expects every answer to agree with the oracle.
void expectAgreement(const ScreenConfigDouble& config, double distance, int count, std::uint64_t seed) {
    const RuledSurfaceScreen screen(&config);
    const oracle::RuledOracle truth(config);
    oracle::Random random(seed);
    int hitting = 0;
    for (int i = 0; i < count; ++i) {
        const Vector aim = anywhereOn(screen, random);
        const Vector from = aim + distance * random.inCube();
        const Vector to = from + random.uniform(0.2, 2) * (aim - from);
        const IntersectionSet hits = screen.intersect(from, to);
        hitting += hits.empty() ? 0 : 1;
        ASSERT_EQ(truth.faultOf(hits, from, to), "") << "ray " << i << " of seed " << seed;
    }
    EXPECT_EQ(hitting, count) << "every ray is aimed at the surface";
}

TEST(RuledSurfaceScreenRays, AgreeWithNewtonsMethodOnEveryKindOfSurface) {
    for (const auto& [name, config] : ruled::surfaces()) {
        SCOPED_TRACE(name);
        expectAgreement(config, 3, 500, 31);
    }
}

TEST(RuledSurfaceScreenRays, AgreeWithNewtonsMethodFromAMillionUnits) {
    for (const auto& [name, config] : ruled::surfaces()) {
        SCOPED_TRACE(name);
        expectAgreement(config, 1e6, 40, 32);
    }
}

TEST(RuledSurfaceScreenRays, AgreeWithNewtonsMethodAtEverySize) {
    for (const double factor : {1e-6, 1e-3, 1e3, 1e6}) {
        for (const auto& [name, config] : ruled::surfaces()) {
            SCOPED_TRACE(name);
            expectAgreement(ruled::scaled(config, factor), 3 * factor, 20, 33);
        }
    }
}

TEST(RuledSurfaceScreenRays, GrazingOnesLieOnTheSurfaceAndOnTheRay) {
    for (const auto& [name, config] : ruled::surfaces()) {
        SCOPED_TRACE(name);
        const RuledSurfaceScreen screen(&config);
        const oracle::RuledOracle truth(config);
        oracle::Random random(34);
        int hitting = 0;
        for (int i = 0; i < 200; ++i) {
            const Vector aim = anywhereOn(screen, random);
            const Vector normal = screen.getScreenNormal(aim);
            Vector across = cross(normal, random.inCube());
            across *= 1 / norm(across);
            const double cosine = std::pow(10.0, random.uniform(-11, -1));
            const Vector from = aim + 2.0 * across + 2.0 * cosine * normal;
            const IntersectionSet hits = screen.intersect(from, aim);
            hitting += hits.empty() ? 0 : 1;
            ASSERT_EQ(truth.faultOfPlaces(hits, from, aim), "") << "ray " << i << ", cosine " << cosine;
        }
        EXPECT_EQ(hitting, 200);
    }
}

TEST(RuledSurfaceScreenRays, ASaddleIsHitTwice) {
    const ScreenConfigDouble config = ruled::saddle();
    const RuledSurfaceScreen screen(&config);
    const oracle::RuledOracle truth(config);
    oracle::Random random(35);
    int twice = 0;
    for (int i = 0; i < 500; ++i) {
        const Vector from = anywhereOn(screen, random);
        const Vector to = anywhereOn(screen, random);
        const Vector start = from - (to - from);
        const IntersectionSet hits = screen.intersect(start, to);
        ASSERT_EQ(truth.faultOf(hits, start, to), "") << "ray " << i;
        twice += hits.size() == 2 ? 1 : 0;
    }
    EXPECT_GT(twice, 490);
}

TEST(RuledSurfaceScreenRays, ATouchingRayIsAHit) {
    // z = x y / 2 touches its tangent plane z = 0 in the origin; between the rulings it bends either way.
    const ScreenConfigDouble config = ruled::saddle();
    const RuledSurfaceScreen screen(&config);
    const IntersectionSet exactly = screen.intersect({-2.0, 0.0, -2.0}, {2.0, 0.0, 2.0});
    ASSERT_GE(exactly.size(), 1U);
    oracle::Random random(36);
    int found = 0;
    for (int i = 0; i < 500; ++i) {
        const Vector aim = anywhereOn(screen, random);
        Vector across = cross(screen.getScreenNormal(aim), random.inCube());
        across *= 1 / norm(across);
        const Vector from = aim - 2.0 * across;
        const IntersectionSet hits = screen.intersect(from, aim);
        for (std::size_t j = 0; j < hits.size(); ++j) {
            if (norm(hits[j].point - aim) < 1e-6) {
                ++found;
                break;
            }
        }
    }
    EXPECT_EQ(found, 500);
}

TEST(RuledSurfaceScreenRays, OneThatLiesInAPatchMisses) {
    const ScreenConfigDouble config = ruled::saddle();
    const RuledSurfaceScreen screen(&config);
    for (const double at : {0.0, 0.25, 0.5, 1.0}) {
        Vector start;
        Vector end;
        ASSERT_TRUE(screen.mapInto3D({at, 0.0}, start, false));
        ASSERT_TRUE(screen.mapInto3D({at, 1.0}, end, false));
        EXPECT_TRUE(screen.intersect(start - (end - start), end).empty()) << "along a ruling, s = " << at;
        ASSERT_TRUE(screen.mapInto3D({0.0, at}, start, false));
        ASSERT_TRUE(screen.mapInto3D({1.0, at}, end, false));
        EXPECT_TRUE(screen.intersect(start - (end - start), end).empty()) << "across the rulings, t = " << at;
    }
    const ScreenConfigDouble flat = ruled::trapezoid();
    const RuledSurfaceScreen plane(&flat);
    oracle::Random random(37);
    for (int i = 0; i < 300; ++i) {
        const Vector from = anywhereOn(plane, random);
        EXPECT_TRUE(plane.intersect(from, anywhereOn(plane, random)).empty()) << "ray " << i;
    }
}

TEST(RuledSurfaceScreenRays, MeetTheMappedPointEvenAtEdgesAndSeams) {
    for (const auto& [name, config] : ruled::surfaces()) {
        SCOPED_TRACE(name);
        const RuledSurfaceScreen screen(&config);
        oracle::Random random(38);
        const std::vector<double> seams = ruled::seams(config);
        for (int i = 0; i < 3000; ++i) {
            const bool isSeam = i % 2 == 0;
            const Point<double, 2> st = isSeam
                                            ? Point<double, 2>{seams[random.below(seams.size())], random.uniform(0, 1)}
                                            : Point<double, 2>{random.uniform(0, 1), random.below(2) * 1.0};
            Vector aim;
            ASSERT_TRUE(screen.mapInto3D(st, aim, false));
            const double distance = std::pow(10.0, random.uniform(-2, 4));
            const Vector from = aim + distance * random.inCube();
            const IntersectionSet hits = screen.intersect(from, aim);
            double nearest = INFINITE;
            for (std::size_t j = 0; j < hits.size(); ++j) {
                nearest = std::min(nearest, norm(hits[j].point - aim));
            }
            const Vector direction = (aim - from) * (1 / norm(aim - from));
            const double cosine = std::abs(dot(direction, screen.getScreenNormal(aim)));
            ASSERT_LE(nearest, 1e-12 * (distance + 10) / cosine) << "ray " << i << " at " << st[0] << ' ' << st[1];
        }
    }
}

TEST(RuledSurfaceScreenRays, ASeamIsHitOnce) {
    const ScreenConfigDouble config = ruled::cockpit();
    const RuledSurfaceScreen screen(&config);
    oracle::Random random(39);
    for (const double seam : ruled::seams(config)) {
        for (int i = 0; i < 200; ++i) {
            Vector aim;
            ASSERT_TRUE(screen.mapInto3D({seam, random.uniform(0, 1)}, aim, false));
            const Vector eye = 0.3 * random.inCube();
            ASSERT_EQ(screen.intersect(eye, aim).size(), 1U) << "s = " << seam << ", ray " << i;
        }
    }
    const ScreenConfigDouble ring = ruled::ring();
    const RuledSurfaceScreen closed(&ring);
    for (int i = 0; i < 200; ++i) {
        Vector aim;
        ASSERT_TRUE(closed.mapInto3D({0.0, random.uniform(0, 1)}, aim, false));
        ASSERT_EQ(closed.intersect(0.3 * random.inCube(), aim).size(), 1U) << "the seam of the ring, ray " << i;
    }
}

TEST(RuledSurfaceScreenRays, AnEdgeIsHitOnceThoughTheSurfaceContinuedIsMetAgain) {
    for (const auto& [name, config] : ruled::surfaces()) {
        const RuledSurfaceScreen screen(&config);
        oracle::Random random(42);
        for (int i = 0; i < 2000; ++i) {
            const double along = random.uniform(0, 1);
            const double end = i % 2;
            Vector aim;
            ASSERT_TRUE(
                screen.mapInto3D(i % 4 < 2 ? Point<double, 2>{along, end} : Point<double, 2>{end, along}, aim, false));
            const Vector from = aim + 3 * random.inCube();
            const IntersectionSet hits = screen.intersect(from, aim);
            ASSERT_FALSE(hits.empty()) << name;
            for (std::size_t hit = 1; hit < hits.size(); ++hit) {
                ASSERT_GT(norm(hits[hit].point - hits[hit - 1].point), 1e-12) << name << ", ray " << i;
            }
        }
    }
}

TEST(RuledSurfaceScreenRays, TheTipOfAConeIsHitOnce) {
    ScreenConfigDouble config = ruled::ring();
    config.upperRail.assign(config.upperRail.size(), Vector{0.2, 0.1, 1.5});
    ScreenConfigDouble upsideDown = config;
    std::swap(upsideDown.lowerRail, upsideDown.upperRail);
    oracle::Random random(41);
    for (const ScreenConfigDouble& one : {config, upsideDown, ruled::cone()}) {
        const RuledSurfaceScreen cone(&one);
        for (int i = 0; i < 300; ++i) {
            // Steep enough to pass through the tip into the cone, so that nothing else is met before it.
            const Vector eye = Vector{0.2, 0.1, 1.5} + Vector{0.0, 0.0, 3.0} + 0.5 * random.inCube();
            const IntersectionSet hits = cone.intersect(eye, {0.2, 0.1, 1.5});
            ASSERT_EQ(hits.size(), 1U) << "ray " << i;
            EXPECT_LE(norm(hits.first().point - Vector{0.2, 0.1, 1.5}), 1e-14);
        }
    }
}

TEST(RuledSurfaceScreenRays, AMappedOriginIsAHitAtZero) {
    const ScreenConfigDouble config = ruled::cockpit();
    const RuledSurfaceScreen screen(&config);
    oracle::Random random(40);
    for (int i = 0; i < 1000; ++i) {
        const Vector from = anywhereOn(screen, random);
        const Vector direction = random.inCube();
        const IntersectionSet hits = screen.intersect(from, from + direction);
        ASSERT_FALSE(hits.empty()) << "ray " << i;
        const double cosine = std::abs(dot(direction, screen.getScreenNormal(from))) / norm(direction);
        EXPECT_LE(hits.first().t * norm(direction), 1e-12 / cosine) << "ray " << i;
    }
}

TEST(RuledSurfaceScreenRays, BehindAndBesideTheyMiss) {
    const ScreenConfigDouble config = ruled::cockpit();
    const RuledSurfaceScreen screen(&config);
    EXPECT_EQ(screen.intersect({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}).size(), 1U);
    EXPECT_TRUE(screen.intersect({0.0, 0.0, 0.0}, {0.0, -1.0, 0.0}).empty()) << "behind";
    EXPECT_TRUE(screen.intersect({0.0, 0.0, 0.0}, {0.0, 0.0, 1.0}).empty()) << "through the open top";
    EXPECT_TRUE(screen.intersect({0.0, 50.0, 0.0}, {0.0, 51.0, 0.0}).empty());
}

TEST(RuledSurfaceScreenRays, AHitFurtherAlongThanEveryNumberIsLeftOutAndTheStartIsKept) {
    const ScreenConfigDouble config = ruled::saddle();
    const RuledSurfaceScreen throughOrigin(&config);
    for (const double length : {1e-310, 5e-324}) {
        const IntersectionSet hits = throughOrigin.intersect({0.0, 0.0, 0.0}, {0.0, 0.0, length});
        ASSERT_EQ(hits.size(), 1U) << length;
        EXPECT_EQ(hits.first().t, 0);
    }
}

TEST(RuledSurfaceScreenRays, ARayThatIsNoneMisses) {
    const ScreenConfigDouble config = ruled::cockpit();
    const RuledSurfaceScreen screen(&config);
    EXPECT_TRUE(screen.intersect({0.5, 0.0, 0.0}, {0.5, 0.0, 0.0}).empty()) << "no length";
    for (std::size_t i = 0; i < 3; ++i) {
        for (const double bad : {NOT_A_NUMBER, INFINITE, -INFINITE}) {
            Vector broken{0.1, 0.2, 0.3};
            broken[i] = bad;
            EXPECT_TRUE(screen.intersect(broken, {0.0, 1.0, 0.0}).empty());
            EXPECT_TRUE(screen.intersect({0.0, 1.0, 0.0}, broken).empty());
            EXPECT_TRUE(screen.intersectExtrapolatedWithSpecifiedNormal(broken, {0.0, 1.0, 0.0}, 1).empty());
        }
    }
}

}  // namespace
