#include "KelvoScreen/CylinderScreen.h"

#include "Configuration/BaseConfig.h"
#include "KelvoScreen/RoundOracle.h"
#include "KelvoScreen/ShapeChecks.h"
#include "support/ScreenConfigDouble.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <vector>

namespace {

using Vector = Point<double, 3>;

constexpr double PI = std::numbers::pi;
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

ScreenConfigDouble tiltedWall() {
    ScreenConfigDouble config;
    config.shape = BaseConfig::SHAPE_CYLINDER;
    config.centre = {1.0, -2.0, 3.0};
    config.orientation = {0.4, -0.3, 0.2};
    config.radius = 5;
    config.azimuthMin = -2;
    config.azimuthMax = 1.5;
    config.height = 3;
    return config;
}

TEST(CylinderScreen, MapsByAzimuthAndHeight) {
    ScreenConfigDouble config = tiltedWall();
    config.centre = {1.0, 2.0, 3.0};
    config.orientation = {};
    config.radius = 10;
    config.height = 4;
    config.azimuthMin = -PI / 2;
    config.azimuthMax = PI / 2;
    const CylinderScreen wall(&config);
    Vector out;
    ASSERT_TRUE(wall.mapInto3D({0.5, 0.5}, out, false));
    EXPECT_LE(norm(out - Vector{1.0, 12.0, 3.0}), 1e-14) << "forward, half way up";
    ASSERT_TRUE(wall.mapInto3D({1.0, 0.0}, out, false));
    EXPECT_LE(norm(out - Vector{11.0, 2.0, 1.0}), 1e-14) << "right, lower edge";
    ASSERT_TRUE(wall.mapInto3D({0.0, 1.0}, out, false));
    EXPECT_LE(norm(out - Vector{-9.0, 2.0, 5.0}), 1e-14) << "left, upper edge";
}

TEST(CylinderScreen, MapsEveryPlaceOfATiltedWallEdgesIncluded) {
    shapes::expectMapping<CylinderScreen>(tiltedWall());
}

TEST(CylinderScreen, PastItsEdgesItMapsOnlyWhenExtrapolating) {
    const ScreenConfigDouble config = tiltedWall();
    const CylinderScreen wall(&config);
    const oracle::RoundOracle truth(config);
    const Vector before{7.0, 8.0, 9.0};
    for (const Point<double, 2> st : {Point<double, 2>{-0.1, 0.5}, {1.4, 0.5}, {0.5, -7.0}, {0.5, 30.0}}) {
        Vector out = before;
        EXPECT_FALSE(wall.mapInto3D(st, out, false));
        EXPECT_EQ(out, before) << "untouched";
        ASSERT_TRUE(wall.mapInto3D(st, out, true));
        EXPECT_LE(norm(oracle::exact(out) - truth.mapped(st[0], st[1])), 1e-13L);
    }
}

TEST(CylinderScreen, TheSidesOfAWholeTurnMeet) {
    ScreenConfigDouble config = tiltedWall();
    config.azimuthMin = -PI;
    config.azimuthMax = PI;
    const CylinderScreen ring(&config);
    Vector left;
    Vector right;
    ASSERT_TRUE(ring.mapInto3D({0.0, 0.3}, left, false));
    ASSERT_TRUE(ring.mapInto3D({1.0, 0.3}, right, false));
    EXPECT_LE(norm(left - right), 1e-14);
}

TEST(CylinderScreen, NormalsPointOutwardAtTheNearestPoint) {
    const ScreenConfigDouble config = tiltedWall();
    const CylinderScreen wall(&config);
    const Vector& angles = config.orientation;
    for (const double height : {-100.0, 0.0, 1.0, 1e4}) {
        for (const long double distance : {1e-3L, 5.0L, 1e6L}) {
            const oracle::Exact point =
                oracle::exact(config.centre) + oracle::turned(angles, {0.6L * distance, -0.8L * distance, height});
            const Vector rounded{static_cast<double>(point[0]), static_cast<double>(point[1]),
                                 static_cast<double>(point[2])};
            const long double rounding = 1e-15L * std::max(distance, std::abs(static_cast<long double>(height)) + 5);
            EXPECT_LE(norm(oracle::exact(wall.getScreenNormal(rounded)) - oracle::turned(angles, {0.6L, -0.8L, 0.0L})),
                      1e-14L + 4 * rounding / distance);
        }
    }
    EXPECT_LE(norm(oracle::exact(wall.getScreenNormal(config.centre)) - oracle::turned(angles, {0.0L, 1.0L, 0.0L})),
              1e-15L);
    EXPECT_EQ(wall.getScreenNormal({NOT_A_NUMBER, 0.0, 0.0}), Vector{});
    EXPECT_EQ(wall.getScreenNormal({0.0, 0.0, INFINITE}), Vector{});
}

TEST(CylinderScreen, OneWithoutAnExtentIsNotValidAndNeverHit) {
    const std::vector<std::function<void(ScreenConfigDouble&)>> faults{
        [](ScreenConfigDouble& c) { c.radius = 0; },
        [](ScreenConfigDouble& c) { c.radius = -5; },
        [](ScreenConfigDouble& c) { c.radius = NOT_A_NUMBER; },
        [](ScreenConfigDouble& c) { c.radius = 1e200; },
        [](ScreenConfigDouble& c) { c.height = 0; },
        [](ScreenConfigDouble& c) { c.height = -1; },
        [](ScreenConfigDouble& c) { c.height = INFINITE; },
        [](ScreenConfigDouble& c) { c.height = NOT_A_NUMBER; },
        [](ScreenConfigDouble& c) { c.centre[2] = INFINITE; },
        [](ScreenConfigDouble& c) { c.orientation[0] = NOT_A_NUMBER; },
        [](ScreenConfigDouble& c) { c.azimuthMax = c.azimuthMin; },
        [](ScreenConfigDouble& c) { c.azimuthMax = c.azimuthMin + 6.3; },
        [](ScreenConfigDouble& c) { c.azimuthMin = NOT_A_NUMBER; },
    };
    shapes::expectNotValid<CylinderScreen>(tiltedWall(), faults);
}

TEST(CylinderScreen, NoDescriptionGivesAScreenThatIsNotValid) {
    const CylinderScreen screen(nullptr);
    shapes::expectNothing(screen);
    EXPECT_EQ(screen.getUniqueDataHash(), CylinderScreen::calcUniqueDataHash(nullptr));
}

TEST(CylinderScreen, TheHashFollowsEveryNumberOfTheDescription) {
    std::vector<shapes::Number> numbers = shapes::roundNumbers();
    numbers.push_back(shapes::number(&ScreenConfigDouble::height));
    shapes::expectHashFollows<CylinderScreen>(tiltedWall(), numbers);
}

TEST(CylinderScreen, UpdatesFromACylinderOnly) {
    shapes::expectUpdates<CylinderScreen>(tiltedWall(), BaseConfig::SHAPE_SPHERE,
                                          [](ScreenConfigDouble& c) { c.height = 8; });
}

TEST(CylinderScreen, SamplesARowAndDropsWhatIsOutside) {
    shapes::expectRow<CylinderScreen>(tiltedWall());
}

TEST(CylinderScreen, OutlinesAChannelPastItsEdges) {
    ScreenConfigDouble config = tiltedWall();
    config.centre = {};
    config.orientation = {};
    const CylinderScreen wall(&config);
    const Vector eye{0.0, 1.0, 0.5};
    const std::vector<Ray> boundary{{eye, {-2.0, 4.0, 5.0}}, {eye, {2.0, 4.0, -1.0}}, {eye, {0.0, 1.0, 4.0}}};
    const std::vector<Ray> centre{{eye, {0.0, 4.0, 1.0}}};
    const std::vector<Vector> outline = wall.intersectChannelBoundary(boundary, centre);
    ASSERT_EQ(outline.size(), 2U) << "the ray along the axis is dropped";
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_NEAR(std::hypot(outline[i][0], outline[i][1]), 5, 1e-14);
        EXPECT_LE(oracle::lineDistance(boundary[i].first, boundary[i].second, outline[i]), 1e-14L);
    }
    EXPECT_GT(outline[0][2], 1.5) << "above the upper edge";
}

}  // namespace
