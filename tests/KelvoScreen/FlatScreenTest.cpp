#include "KelvoScreen/FlatScreen.h"

#include "Common/Matrix.h"
#include "Configuration/BaseConfig.h"
#include "KelvoScreen/MeshOracle.h"
#include "support/ScreenConfigDouble.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

namespace {

using Vector = Point<double, 3>;
using Grid = ScreenGeometry::Grid;

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

ScreenConfigDouble tilted() {
    ScreenConfigDouble config;
    config.shape = BaseConfig::SHAPE_FLAT;
    config.centre = {1.0, 5.0, 2.0};
    config.orientation = {0.3, -0.2, 0.1};
    config.width = 4;
    config.height = 2.5;
    return config;
}

/// The point at (s, t) by the formula in the header of the class.
Vector expectedPoint(const ScreenConfigDouble& config, double s, double t) {
    const Vector& angles = config.orientation;
    return config.centre + Veltrani::rotationZXY(angles[0], angles[1], angles[2]) *
                               Vector{(s - 0.5) * config.width, 0.0, (t - 0.5) * config.height};
}

void expectNear(const Vector& actual, const Vector& expected, double tolerance) {
    EXPECT_LE(norm(actual - expected), tolerance) << actual[0] << ' ' << actual[1] << ' ' << actual[2] << " instead of "
                                                  << expected[0] << ' ' << expected[1] << ' ' << expected[2];
}

TEST(FlatScreen, TheDefaultIsTheUprightUnitSquare) {
    const FlatScreen screen;
    EXPECT_TRUE(screen.isValid());
    for (const Point<double, 2> st : {Point<double, 2>{0.0, 0.0}, {1.0, 1.0}, {0.1, 0.7}, {0.3, 0.9}}) {
        Vector out;
        ASSERT_TRUE(screen.mapInto3D(st, out, false));
        EXPECT_EQ(out, (Vector{st[0], 0.0, st[1]})) << "exactly, without a rounding";
    }
    EXPECT_EQ(screen.getScreenNormal({0.5, 3.0, 0.5}), (Vector{0.0, 1.0, 0.0}));
}

TEST(FlatScreen, MapsByCentreOrientationAndSize) {
    const ScreenConfigDouble config = tilted();
    const FlatScreen screen(&config);
    for (const double s : {0.0, 0.25, 1.0}) {
        for (const double t : {0.0, 0.6, 1.0}) {
            Vector out;
            ASSERT_TRUE(screen.mapInto3D({s, t}, out, false));
            expectNear(out, expectedPoint(config, s, t), 1e-14);
        }
    }
}

TEST(FlatScreen, OutsideItMapsOnlyWhenExtrapolating) {
    const ScreenConfigDouble config = tilted();
    const FlatScreen screen(&config);
    Vector out{7.0, 8.0, 9.0};
    for (const Point<double, 2> st : {Point<double, 2>{-0.1, 0.5}, {1.1, 0.5}, {0.5, -2.0}, {0.5, 1.0 + 2e-9}}) {
        EXPECT_FALSE(screen.mapInto3D(st, out, false));
        EXPECT_EQ(out, (Vector{7.0, 8.0, 9.0})) << "untouched";
        Vector beyond;
        ASSERT_TRUE(screen.mapInto3D(st, beyond, true));
        expectNear(beyond, expectedPoint(config, st[0], st[1]), 1e-13);
    }
}

TEST(FlatScreen, UpToABillionthOutsideIsTheEdge) {
    const FlatScreen screen;
    for (const bool extrapolate : {false, true}) {
        Vector out;
        ASSERT_TRUE(screen.mapInto3D({1 + 1e-9, -1e-9}, out, extrapolate));
        EXPECT_EQ(out, (Vector{1.0, 0.0, 0.0}));
    }
}

TEST(FlatScreen, NumbersThatAreNotFiniteMapNowhere) {
    const FlatScreen screen;
    Vector out{7.0, 8.0, 9.0};
    for (const double bad : {NOT_A_NUMBER, INFINITE, -INFINITE}) {
        EXPECT_FALSE(screen.mapInto3D({bad, 0.5}, out, true));
        EXPECT_FALSE(screen.mapInto3D({0.5, bad}, out, true));
    }
    EXPECT_EQ(out, (Vector{7.0, 8.0, 9.0}));
}

TEST(FlatScreen, ARayHitsWhereItIsAimed) {
    const ScreenConfigDouble config = tilted();
    const FlatScreen screen(&config);
    oracle::Random random(11);
    for (int i = 0; i < 2000; ++i) {
        const Vector aim = expectedPoint(config, random.uniform(0, 1), random.uniform(0, 1));
        const Vector from = aim + 6.0 * random.inCube();
        const double stretch = random.uniform(0.1, 3);
        const Vector to = from + stretch * (aim - from);
        const IntersectionSet hits = screen.intersect(from, to);
        ASSERT_EQ(hits.size(), 1U);
        const double scale = 10;
        EXPECT_LE(oracle::distanceFromRay(from, to, hits.first().point), 1e-12 * scale);
        EXPECT_LE(std::abs(dot(hits.first().point - config.centre, screen.getScreenNormal(aim))), 1e-12 * scale);
        expectNear(from + hits.first().t * (to - from), hits.first().point, 1e-12 * scale);
    }
}

TEST(FlatScreen, MissesBehindBesideAndParallel) {
    const FlatScreen screen;
    EXPECT_TRUE(screen.intersect({0.5, 1.0, 0.5}, {0.5, 2.0, 0.5}).empty()) << "behind the origin";
    EXPECT_TRUE(screen.intersect({0.5, -1.0, 0.5}, {1.6, 0.0, 0.5}).empty()) << "beside";
    EXPECT_TRUE(screen.intersect({0.5, -1.0, 0.5}, {0.6, -1.0, 0.5}).empty()) << "parallel";
    EXPECT_TRUE(screen.intersect({-1.0, 0.0, 0.5}, {0.5, 0.0, 0.5}).empty()) << "within the plane";
}

TEST(FlatScreen, ARayWithinATiltedPlaneMisses) {
    const ScreenConfigDouble config = tilted();
    const FlatScreen screen(&config);
    oracle::Random random(12);
    for (int i = 0; i < 1000; ++i) {
        const Vector from = expectedPoint(config, random.uniform(-3, 3), random.uniform(-3, 3));
        const Vector to = expectedPoint(config, random.uniform(0, 1), random.uniform(0, 1));
        EXPECT_TRUE(screen.intersect(from, to).empty());
    }
}

TEST(FlatScreen, RaysOnTheSurfaceHitAtTheirOrigin) {
    const ScreenConfigDouble config = tilted();
    const FlatScreen screen(&config);
    const Vector normal = screen.getScreenNormal({});
    oracle::Random random(13);
    for (int i = 0; i < 1000; ++i) {
        const Vector from = expectedPoint(config, random.uniform(0, 1), random.uniform(0, 1));
        const double sign = i % 2 == 0 ? 1 : -1;
        const IntersectionSet hits = screen.intersect(from, from + sign * normal);
        ASSERT_EQ(hits.size(), 1U);
        EXPECT_GE(hits.first().t, 0);
        EXPECT_LE(hits.first().t, 1e-14);
    }
}

TEST(FlatScreen, EdgesAndCornersBelongToIt) {
    const ScreenConfigDouble config = tilted();
    const FlatScreen screen(&config);
    oracle::Random random(14);
    for (int i = 0; i < 3000; ++i) {
        const std::array<Point<double, 2>, 4> edge{
            {{0.0, random.uniform(0, 1)}, {1.0, random.uniform(0, 1)}, {random.uniform(0, 1), 1.0}, {0.0, 1.0}}};
        Vector aim;
        ASSERT_TRUE(screen.mapInto3D(edge[static_cast<std::size_t>(i) % 4], aim, false));
        const Vector from = aim + 3.0 * random.inCube();
        EXPECT_EQ(screen.intersect(from, aim).size(), 1U) << "ray " << i;
        const Vector outside = aim + 1e-9 * (aim - config.centre);
        EXPECT_TRUE(screen.intersect(from, outside).empty()) << "ray " << i;
    }
}

/// The distance between the line of a ray and that of an edge.
double distanceOfLines(const Vector& from, const Vector& to, const Vector& edge, const Vector& along) {
    std::array<long double, 3> d{}, o{};
    for (std::size_t i = 0; i < 3; ++i) {
        d[i] = static_cast<long double>(to[i]) - from[i];
        o[i] = static_cast<long double>(edge[i]) - from[i];
    }
    long double volume = 0;
    long double area2 = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t j = (i + 1) % 3;
        const std::size_t k = (i + 2) % 3;
        const long double across = d[j] * along[k] - d[k] * along[j];
        volume += o[i] * across;
        area2 += across * across;
    }
    return static_cast<double>(std::abs(volume) / std::sqrt(area2));
}

TEST(FlatScreen, ARayBesideAnEdgeHitsItWithinRoundingAtEverySlope) {
    const ScreenConfigDouble config = tilted();
    const FlatScreen screen(&config);
    const Vector normal = screen.getScreenNormal({});
    const Vector outward = (1 / config.width) * (expectedPoint(config, 1, 0) - expectedPoint(config, 0, 0));
    const Vector upward = (1 / config.height) * (expectedPoint(config, 0, 1) - expectedPoint(config, 0, 0));
    constexpr double ROUNDING_OF_TEN = 3.6e-14;
    oracle::Random random(15);
    int hits = 0;
    int misses = 0;
    for (int i = 0; i < 8000; ++i) {
        const Vector edge = expectedPoint(config, 1, random.uniform(0.3, 0.7));
        const Vector aim = edge + std::pow(10.0, -17 + i % 17) * outward;
        const double slope = std::pow(10.0, random.uniform(-4, 0));
        const double turn = random.uniform(-3, 3);
        const Vector direction = slope * normal + std::cos(turn) * outward + 0.1 * std::sin(turn) * upward;
        const Vector from = aim - random.uniform(0.5, 3) * direction;
        const double distance = distanceOfLines(from, aim, edge, upward);
        const bool isHit = !screen.intersect(from, aim).empty();
        if (distance < 0.1 * ROUNDING_OF_TEN) {
            EXPECT_TRUE(isHit) << "ray " << i << " at " << distance << ", slope " << slope;
            ++hits;
        } else if (distance > 4 * ROUNDING_OF_TEN) {
            EXPECT_FALSE(isHit) << "ray " << i << " at " << distance << ", slope " << slope;
            ++misses;
        }
    }
    EXPECT_GT(hits, 500);
    EXPECT_GT(misses, 3000);
}

TEST(FlatScreen, RaysThatAreNotARayMiss) {
    const FlatScreen screen;
    EXPECT_TRUE(screen.intersect({0.5, 0.0, 0.5}, {0.5, 0.0, 0.5}).empty()) << "no length";
    for (std::size_t i = 0; i < 3; ++i) {
        for (const double bad : {NOT_A_NUMBER, INFINITE, -INFINITE}) {
            Vector broken{0.5, -1.0, 0.5};
            broken[i] = bad;
            EXPECT_TRUE(screen.intersect(broken, {0.5, 1.0, 0.5}).empty());
            EXPECT_TRUE(screen.intersect({0.5, 1.0, 0.5}, broken).empty());
            EXPECT_TRUE(screen.intersectExtrapolatedWithSpecifiedNormal(broken, {0.5, 1.0, 0.5}, 1).empty());
        }
    }
}

TEST(FlatScreen, TinyAndHugeScreensAreHitAlike) {
    for (const double size : {1e-6, 1e-3, 1.0, 1e6, 1e12}) {
        ScreenConfigDouble config = tilted();
        config.centre = size * config.centre;
        config.width *= size;
        config.height *= size;
        const FlatScreen screen(&config);
        ASSERT_TRUE(screen.isValid()) << size;
        const Vector aim = expectedPoint(config, 0.75, 0.25);
        const IntersectionSet hits = screen.intersect({0.0, 0.0, 0.0}, aim);
        ASSERT_EQ(hits.size(), 1U) << size;
        expectNear(hits.first().point, aim, 1e-12 * size * 6);
    }
}

TEST(FlatScreen, TheContinuationIsTheWholePlaneSeenFromTheWantedSide) {
    const FlatScreen screen;
    const Vector from{0.5, -1.0, 0.5};
    const Vector to{30.5, 1.0, 0.5};
    EXPECT_TRUE(screen.intersect(from, to).empty());
    const IntersectionSet hits = screen.intersectExtrapolatedWithSpecifiedNormal(from, to, 1);
    ASSERT_EQ(hits.size(), 1U);
    expectNear(hits.first().point, {15.5, 0.0, 0.5}, 1e-13);
    EXPECT_EQ(hits.first().t, 0.5);
    EXPECT_TRUE(screen.intersectExtrapolatedWithSpecifiedNormal(from, to, -1).empty());
    EXPECT_EQ(screen.intersectExtrapolatedWithSpecifiedNormal(to, from, -1).size(), 1U);
    EXPECT_TRUE(screen.intersectExtrapolatedWithSpecifiedNormal(from, to, 0).empty());
}

TEST(FlatScreen, ADescriptionWithoutAnExtentIsNotValidAndNeverHit) {
    const std::vector<std::function<void(ScreenConfigDouble&)>> faults{
        [](ScreenConfigDouble& c) { c.width = 0; },
        [](ScreenConfigDouble& c) { c.height = -1; },
        [](ScreenConfigDouble& c) { c.width = NOT_A_NUMBER; },
        [](ScreenConfigDouble& c) { c.width = 1e-170; },
        [](ScreenConfigDouble& c) { c.height = 1e170; },
        [](ScreenConfigDouble& c) { c.height = INFINITE; },
        [](ScreenConfigDouble& c) { c.centre[1] = NOT_A_NUMBER; },
        [](ScreenConfigDouble& c) { c.orientation[2] = INFINITE; },
    };
    for (const auto& fault : faults) {
        ScreenConfigDouble config = tilted();
        fault(config);
        const FlatScreen screen(&config);
        EXPECT_FALSE(screen.isValid());
        EXPECT_TRUE(screen.intersect({0.0, 0.0, 0.0}, config.centre).empty());
        EXPECT_EQ(screen.getScreenNormal(config.centre), Vector{});
        Vector out;
        EXPECT_FALSE(screen.mapInto3D({0.5, 0.5}, out, true));
        Grid grid;
        screen.sampleHorizontally(0.5, 0, 1, 3, 0, grid, true);
        EXPECT_TRUE(grid.empty());
    }
}

TEST(FlatScreen, NoDescriptionGivesAScreenThatIsNotValid) {
    const FlatScreen screen(nullptr);
    EXPECT_FALSE(screen.isValid());
    EXPECT_TRUE(screen.intersect({0.0, -1.0, 0.0}, {0.0, 1.0, 0.0}).empty());
    EXPECT_EQ(screen.getUniqueDataHash(), FlatScreen::calcUniqueDataHash(nullptr));
    EXPECT_NE(screen.getUniqueDataHash(), (std::array<unsigned char, 20>{}));
}

TEST(FlatScreen, TheHashFollowsEveryNumberOfTheDescription) {
    const ScreenConfigDouble config = tilted();
    const FlatScreen screen(&config);
    EXPECT_EQ(screen.getUniqueDataHash(), FlatScreen::calcUniqueDataHash(&config));
    std::vector<std::array<unsigned char, 20>> seen{screen.getUniqueDataHash(), FlatScreen().getUniqueDataHash()};
    const auto expectNew = [&seen](const ScreenConfigDouble& changed) {
        const auto hash = FlatScreen::calcUniqueDataHash(&changed);
        EXPECT_EQ(std::count(seen.begin(), seen.end(), hash), 0);
        seen.push_back(hash);
    };
    for (std::size_t i = 0; i < 3; ++i) {
        ScreenConfigDouble moved = config;
        moved.centre[i] = std::nextafter(moved.centre[i], INFINITE);
        expectNew(moved);
        ScreenConfigDouble turned = config;
        turned.orientation[i] = std::nextafter(turned.orientation[i], INFINITE);
        expectNew(turned);
    }
    ScreenConfigDouble wider = config;
    wider.width = std::nextafter(wider.width, INFINITE);
    expectNew(wider);
    ScreenConfigDouble higher = config;
    higher.height = std::nextafter(higher.height, INFINITE);
    expectNew(higher);
    EXPECT_EQ(seen.size(), 10U);
}

TEST(FlatScreen, TheHashOfTheDefaultIsThatOfItsDescription) {
    ScreenConfigDouble unitSquare;
    unitSquare.centre = {0.5, -0.0, 0.5};
    unitSquare.width = 1;
    unitSquare.height = 1;
    EXPECT_EQ(FlatScreen().getUniqueDataHash(), FlatScreen::calcUniqueDataHash(&unitSquare));
}

TEST(FlatScreen, UpdatesFromAFlatDescriptionOnly) {
    ScreenConfigDouble config = tilted();
    FlatScreen screen(&config);
    const auto before = screen.getUniqueDataHash();
    screen.updateGeometry(nullptr);
    EXPECT_EQ(screen.getUniqueDataHash(), before);
    config.width = 8;
    config.shape = BaseConfig::SHAPE_SPHERE;
    screen.updateGeometry(&config);
    EXPECT_EQ(screen.getUniqueDataHash(), before);
    config.shape = BaseConfig::SHAPE_FLAT;
    screen.updateGeometry(&config);
    EXPECT_EQ(screen.getUniqueDataHash(), FlatScreen::calcUniqueDataHash(&config));
    Vector out;
    ASSERT_TRUE(screen.mapInto3D({1.0, 0.5}, out, false));
    expectNear(out, expectedPoint(config, 1.0, 0.5), 1e-13);
}

TEST(FlatScreen, SamplesARow) {
    const FlatScreen screen;
    Grid grid{{{1, 4}, Vector{9.0, 9.0, 9.0}}, {{0, 3}, Vector{9.0, 9.0, 9.0}}};
    screen.sampleHorizontally(0.5, 0.5, 1.5, 3, 4, grid, false);
    const Grid expected{
        {{0, 3}, Vector{9.0, 9.0, 9.0}}, {{0, 4}, Vector{0.5, 0.0, 0.5}}, {{1, 4}, Vector{1.0, 0.0, 0.5}}};
    EXPECT_EQ(grid, expected) << "overwrites, leaves out what is outside, touches nothing else";
}

TEST(FlatScreen, TheLastColumnOfAFullRowIsNotLostToRounding) {
    const FlatScreen screen;
    Grid grid;
    // ((1.0 - 0.2) * 3) / 3 + 0.2 is one last bit above 1.
    screen.sampleHorizontally(0.5, 0.2, 1.0, 4, 0, grid, false);
    ASSERT_EQ(grid.size(), 4U);
    EXPECT_EQ((grid[{3, 0}][0]), 1.0);
}

TEST(FlatScreen, OutlinesAChannelPastItsEdges) {
    const FlatScreen screen;
    const Vector eye{0.5, -1.0, 0.5};
    const std::vector<Ray> boundary{{eye, {-1.0, 0.0, 2.0}}, {eye, {2.0, 0.0, 2.0}}, {eye, {0.5, -2.0, 0.5}}};
    const std::vector<Ray> centre{{eye, {0.5, 0.0, 0.5}}};
    const std::vector<Vector> outline = screen.intersectChannelBoundary(boundary, centre);
    ASSERT_EQ(outline.size(), 2U) << "the ray away from the plane is dropped";
    expectNear(outline[0], {-1.0, 0.0, 2.0}, 1e-14);
    expectNear(outline[1], {2.0, 0.0, 2.0}, 1e-14);
}

}  // namespace
