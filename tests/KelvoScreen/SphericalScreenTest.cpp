#include "KelvoScreen/SphericalScreen.h"

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

TEST(SphericalScreen, MapsByAzimuthAndElevation) {
    const SphericalScreen dome(Vector{1.0, 2.0, 3.0}, 10, -PI / 2, PI / 2, 0, PI / 2);
    Vector out;
    ASSERT_TRUE(dome.mapInto3D({0.5, 0.0}, out, false));
    EXPECT_LE(norm(out - Vector{1.0, 12.0, 3.0}), 1e-14) << "forward";
    ASSERT_TRUE(dome.mapInto3D({1.0, 0.0}, out, false));
    EXPECT_LE(norm(out - Vector{11.0, 2.0, 3.0}), 1e-14) << "right";
    ASSERT_TRUE(dome.mapInto3D({0.0, 0.0}, out, false));
    EXPECT_LE(norm(out - Vector{-9.0, 2.0, 3.0}), 1e-14) << "left";
    ASSERT_TRUE(dome.mapInto3D({0.3, 1.0}, out, false));
    EXPECT_LE(norm(out - Vector{1.0, 2.0, 13.0}), 1e-14) << "up";
}

TEST(SphericalScreen, MapsEveryPlaceOfATiltedDomeEdgesIncluded) {
    shapes::expectMapping<SphericalScreen>(tiltedDome());
}

TEST(SphericalScreen, APositiveTiltRaisesTheFront) {
    ScreenConfigDouble config = tiltedDome();
    config.centre = {};
    config.orientation = {0.0, 0.25, 0.0};
    config.azimuthMin = -1;
    config.azimuthMax = 1;
    config.elevationMin = -1;
    config.elevationMax = 1;
    Vector out;
    ASSERT_TRUE(SphericalScreen(&config).mapInto3D({0.5, 0.5}, out, false));
    EXPECT_LE(norm(out - 5.0 * Vector{0.0, std::cos(0.25), std::sin(0.25)}), 1e-14);
}

TEST(SphericalScreen, PastItsLimitsItMapsOnlyWhenExtrapolatingAndNotPastAPole) {
    const ScreenConfigDouble config = tiltedDome();
    const SphericalScreen dome(&config);
    const oracle::RoundOracle truth(config);
    const Vector before{7.0, 8.0, 9.0};
    Vector out = before;
    for (const Point<double, 2> st : {Point<double, 2>{-0.1, 0.5}, {1.4, 0.5}, {0.5, -0.5}, {0.5, 1.2}}) {
        EXPECT_FALSE(dome.mapInto3D(st, out, false));
        EXPECT_EQ(out, before) << "untouched";
        Vector beyond;
        ASSERT_TRUE(dome.mapInto3D(st, beyond, true));
        EXPECT_LE(norm(oracle::exact(beyond) - truth.mapped(st[0], st[1])), 1e-14L);
    }
    const double pole = (PI / 2 + 0.35) / 1.55;
    EXPECT_FALSE(dome.mapInto3D({0.5, pole + 1e-6}, out, true)) << "there is nothing past the pole";
    EXPECT_FALSE(dome.mapInto3D({0.5, -1.0}, out, true));
    EXPECT_EQ(out, before);
    EXPECT_TRUE(dome.mapInto3D({0.5, pole - 1e-6}, out, true));
}

TEST(SphericalScreen, TheSidesOfTheWholeSphereMeet) {
    const SphericalScreen sphere(Vector{}, 3, -PI, PI, -PI / 2, PI / 2);
    for (const double t : {0.0, 0.25, 0.5, 1.0}) {
        Vector left;
        Vector right;
        Vector around;
        ASSERT_TRUE(sphere.mapInto3D({0.0, t}, left, false));
        ASSERT_TRUE(sphere.mapInto3D({1.0, t}, right, false));
        ASSERT_TRUE(sphere.mapInto3D({1.25, t}, around, true));
        EXPECT_LE(norm(left - right), 1e-14);
        Vector quarter;
        ASSERT_TRUE(sphere.mapInto3D({0.25, t}, quarter, false));
        EXPECT_LE(norm(around - quarter), 1e-14) << "azimuths go round";
    }
}

TEST(SphericalScreen, NormalsPointOutwardAtTheNearestPoint) {
    const ScreenConfigDouble config = tiltedDome();
    const SphericalScreen dome(&config);
    const Vector direction{2.0 / 7, 3.0 / 7, -6.0 / 7};
    for (const double distance : {1e-3, 5.0, 1e6}) {
        EXPECT_LE(norm(dome.getScreenNormal(config.centre + distance * direction) - direction), 1e-12);
    }
    const Vector atCentre = dome.getScreenNormal(config.centre);
    EXPECT_LE(norm(oracle::exact(atCentre) - oracle::turned(config.orientation, {0.0L, 1.0L, 0.0L})), 1e-15L);
    EXPECT_EQ(dome.getScreenNormal({NOT_A_NUMBER, 0.0, 0.0}), Vector{});
}

TEST(SphericalScreen, AnEyeInsideSeesTheSideOfTheNormal) {
    const ScreenConfigDouble config = tiltedDome();
    const SphericalScreen dome(&config);
    Vector ahead;
    ASSERT_TRUE(dome.mapInto3D({0.5, 0.5}, ahead, false));
    const std::vector<Ray> rays{{config.centre, ahead}, {ahead + (ahead - config.centre), ahead}};
    std::vector<SurfaceHit> hits(2);
    dome.intersectRays(rays, hits);
    EXPECT_EQ(hits[0].side, 1);
    EXPECT_EQ(hits[1].side, -1);
    EXPECT_LE(norm(hits[0].point - ahead), 1e-14);
    EXPECT_LE(norm(hits[1].point - ahead), 1e-14);
}

TEST(SphericalScreen, OneWithoutAnExtentIsNotValidAndNeverHit) {
    const std::vector<std::function<void(ScreenConfigDouble&)>> faults{
        [](ScreenConfigDouble& c) { c.radius = 0; },
        [](ScreenConfigDouble& c) { c.radius = -5; },
        [](ScreenConfigDouble& c) { c.radius = NOT_A_NUMBER; },
        [](ScreenConfigDouble& c) { c.radius = INFINITE; },
        [](ScreenConfigDouble& c) { c.radius = 1e200; },
        [](ScreenConfigDouble& c) { c.centre[2] = INFINITE; },
        [](ScreenConfigDouble& c) { c.orientation[0] = NOT_A_NUMBER; },
        [](ScreenConfigDouble& c) { c.azimuthMax = c.azimuthMin; },
        [](ScreenConfigDouble& c) { c.azimuthMax = c.azimuthMin - 1; },
        [](ScreenConfigDouble& c) { c.azimuthMax = c.azimuthMin + 6.3; },
        [](ScreenConfigDouble& c) { c.azimuthMin = NOT_A_NUMBER; },
        [](ScreenConfigDouble& c) { c.elevationMin = c.elevationMax; },
        [](ScreenConfigDouble& c) { c.elevationMin = -1.6; },
        [](ScreenConfigDouble& c) { c.elevationMax = 1.6; },
        [](ScreenConfigDouble& c) { c.elevationMax = NOT_A_NUMBER; },
    };
    shapes::expectNotValid<SphericalScreen>(tiltedDome(), faults);
}

TEST(SphericalScreen, ALimitThatIsAPoleToRoundingIsThePole) {
    const SphericalScreen rounded(Vector{}, 1, -PI, PI, -PI / 2 - 5e-10, PI / 2 - 5e-10);
    ASSERT_TRUE(rounded.isValid());
    EXPECT_EQ(rounded.intersect({0.0, 0.0, 0.0}, {0.0, 0.0, 1.0}).size(), 1U);
    EXPECT_EQ(rounded.intersect({0.0, 0.0, 0.0}, {0.0, 0.0, -1.0}).size(), 1U);
}

TEST(SphericalScreen, NoDescriptionGivesAScreenThatIsNotValid) {
    shapes::expectNothing(SphericalScreen(nullptr));
    EXPECT_EQ(SphericalScreen(nullptr).getUniqueDataHash(), SphericalScreen::calcUniqueDataHash(nullptr));
}

TEST(SphericalScreen, TheHashFollowsEveryNumberOfTheDescription) {
    std::vector<shapes::Number> numbers = shapes::roundNumbers();
    numbers.push_back(shapes::number(&ScreenConfigDouble::elevationMin));
    numbers.push_back(shapes::number(&ScreenConfigDouble::elevationMax));
    shapes::expectHashFollows<SphericalScreen>(tiltedDome(), numbers);
}

TEST(SphericalScreen, EqualSpheresHaveEqualHashesHoweverTheyWereMade) {
    ScreenConfigDouble config = tiltedDome();
    config.orientation = {};
    const SphericalScreen direct(config.centre, config.radius, config.azimuthMin, config.azimuthMax,
                                 config.elevationMin, config.elevationMax);
    EXPECT_EQ(direct.getUniqueDataHash(), SphericalScreen::calcUniqueDataHash(&config));
}

TEST(SphericalScreen, UpdatesFromASphereOnly) {
    shapes::expectUpdates<SphericalScreen>(tiltedDome(), BaseConfig::SHAPE_CYLINDER,
                                           [](ScreenConfigDouble& c) { c.radius = 8; });
}

TEST(SphericalScreen, SamplesARowAndDropsWhatIsOutside) {
    shapes::expectRow<SphericalScreen>(tiltedDome());
}

TEST(SphericalScreen, ACopyGoesItsOwnWay) {
    ScreenConfigDouble config = tiltedDome();
    SphericalScreen original(&config);
    const SphericalScreen copy = original;
    const auto before = original.getUniqueDataHash();
    config.radius = 8;
    original.updateGeometry(&config);
    EXPECT_EQ(copy.getUniqueDataHash(), before);
    EXPECT_NE(original.getUniqueDataHash(), before);
}

TEST(SphericalScreen, OutlinesAChannelPastTheCutOffOfADome) {
    const SphericalScreen dome(Vector{}, 5, -PI / 2, PI / 2, 0, PI / 2);
    const Vector eye{0.0, 1.0, 0.5};
    const std::vector<Ray> boundary{{eye, {-2.0, 4.0, 2.0}}, {eye, {2.0, 4.0, -2.0}}, {eye, {0.0, -4.0, 0.5}}};
    const std::vector<Ray> centre{{eye, {0.0, 4.0, 1.0}}};
    const std::vector<Vector> outline = dome.intersectChannelBoundary(boundary, centre);
    ASSERT_EQ(outline.size(), 3U) << "the second ray ends below the cut-off, the third behind the sides";
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(norm(outline[i]), 5, 1e-14);
        EXPECT_LE(oracle::lineDistance(boundary[i].first, boundary[i].second, outline[i]), 1e-14L);
    }
    EXPECT_LT(outline[1][2], 0);
    EXPECT_LT(outline[2][1], 0);
}

}  // namespace
