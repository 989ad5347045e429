#include "ScreenManager/SphericalLayoutToChannelMap.h"

#include "Common/VeltraniException.h"
#include "EyeMapFixture.h"
#include "KelvoScreen/SphericalScreen.h"
#include "RayScreen.h"
#include "ScreenManager/SphereTargetLocator.h"
#include "support/VirtualSlot.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <stdexcept>
#include <type_traits>

namespace {

using Vector = Point<double, 3>;
using Picture = Point<double, 2>;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr double PI = std::numbers::pi;
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
/// Coordinates are a few metres; each way rounds some dozen times.
constexpr double ROUNDING = 1e-12;
constexpr Vector UNTOUCHED{-7.0, -8.0, -9.0};
constexpr Picture UNTOUCHED_PICTURE{-7.0, -8.0};

class SphericalLayoutToChannelMapTest : public EyeMapFixture {
protected:
    SphericalLayoutToChannelMap makeMap() { return {&config, table}; }

    std::shared_ptr<RayScreen> installRayScreen() {
        auto screen = std::make_shared<RayScreen>(&trace);
        ScreenManager::getInstance()->setScreenGeometry(screen);
        trace.clear();
        return screen;
    }
    static void installDome() {
        ScreenManager::getInstance()->setScreenGeometry(
            std::make_shared<SphericalScreen>(Vector{0.5, 0.25, -0.125}, 5.0, -PI, PI, -PI / 2, PI / 2));
    }
    /// A map whose eye is the origin and whose frustum is straight, for a point given by its tangents.
    Picture fromTangents(const Frustum& frustum, double a, double b, bool& isShown) {
        screenConfig.eyePoint = {};
        addToTable(frustum);
        Picture picture = UNTOUCHED_PICTURE;
        isShown = makeMap().mapLayoutToChannel({a, 1.0, b}, picture, 0);
        return picture;
    }
    static Frustum unitFrustum() {
        Frustum frustum;
        frustum.ox = 0.0;
        frustum.oy = 0.0;
        return frustum;
    }
};

TEST_F(SphericalLayoutToChannelMapTest, APointInTheDirectionOfViewIsWhereTheTangentsAreZero) {
    Frustum frustum = turnedFrustum();
    addToTable(frustum);
    SphericalLayoutToChannelMap map = makeMap();
    Picture picture;
    ASSERT_TRUE(map.mapLayoutToChannel(screenConfig.eyePoint + frustum.R * Vector{0.0, 3.0, 0.0}, picture, 0));
    EXPECT_NEAR(picture[0], -frustum.ox / frustum.sx, ROUNDING);
    EXPECT_NEAR(picture[1], -frustum.oy / frustum.sy, ROUNDING);
}

TEST_F(SphericalLayoutToChannelMapTest, ThePictureSpansTheTangentsOfTheFrustumFromTheLeftBottom) {
    screenConfig.eyePoint = {1.0, 2.0, 3.0};
    Frustum frustum;
    frustum.ox = -0.5;
    frustum.sx = 2.0;
    frustum.oy = -1.0;
    frustum.sy = 4.0;
    addToTable(frustum);
    SphericalLayoutToChannelMap map = makeMap();
    Picture picture;
    ASSERT_TRUE(map.mapLayoutToChannel(screenConfig.eyePoint + 2.0 * Vector{-0.25, 1.0, 2.5}, picture, 0));
    EXPECT_EQ(picture, (Picture{0.125, 0.875})) << "a quarter right of the left edge, high up";
}

TEST_F(SphericalLayoutToChannelMapTest, PointsBehindTheEyeAndTooNearToItsPlaneAreNotShown) {
    screenConfig.eyePoint = {};
    addToTable(straightFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    Picture picture = UNTOUCHED_PICTURE;
    const double beyond = std::nextafter(1e-6, 1.0);
    for (const double ahead : {-1.0, -1e-6, 0.0, 1e-7, 1e-6}) {
        EXPECT_FALSE(map.mapLayoutToChannel({0.0, ahead, 0.0}, picture, 0)) << ahead;
    }
    EXPECT_EQ(picture, UNTOUCHED_PICTURE);
    EXPECT_TRUE(map.mapLayoutToChannel({0.0, beyond, 0.0}, picture, 0));
    EXPECT_EQ(picture, (Picture{0.5, 0.5}));
}

TEST_F(SphericalLayoutToChannelMapTest, ALittleBesideThePictureIsInsideAndIsNotClamped) {
    bool isShown = false;
    EXPECT_EQ(fromTangents(unitFrustum(), 1.0000005, 0.5, isShown), (Picture{1.0000005, 0.5}));
    EXPECT_TRUE(isShown);
    EXPECT_EQ(fromTangents(unitFrustum(), 0.5, 1.0000005, isShown), (Picture{0.5, 1.0000005}));
    EXPECT_TRUE(isShown);
    EXPECT_EQ(fromTangents(unitFrustum(), -1e-6, -5e-7, isShown), (Picture{-1e-6, -5e-7}));
    EXPECT_TRUE(isShown);
    EXPECT_EQ(fromTangents(unitFrustum(), 1.0, 0.0, isShown), (Picture{1.0, 0.0}));
    EXPECT_TRUE(isShown);
}

TEST_F(SphericalLayoutToChannelMapTest, MoreBesideThePictureIsOutside) {
    const double below = std::nextafter(-1e-6, -1.0);
    bool isShown = true;
    for (const auto& [a, b] : {std::pair(1.000002, 0.5),
                               {0.5, 1.000002},
                               {-2e-6, 0.5},
                               {0.5, -2e-6},
                               {below, 0.5},
                               {0.5, below},
                               {2.0, 0.5},
                               {0.5, -1.0}}) {
        EXPECT_EQ(fromTangents(unitFrustum(), a, b, isShown), UNTOUCHED_PICTURE);
        EXPECT_FALSE(isShown) << a << ", " << b;
    }
}

TEST_F(SphericalLayoutToChannelMapTest, WhatIsNotANumberIsNotShown) {
    addToTable(straightFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    Picture picture = UNTOUCHED_PICTURE;
    for (const std::size_t i : {0U, 1U, 2U}) {
        Vector layout = screenConfig.eyePoint + Vector{0.0, 1.0, 0.0};
        layout[i] = NOT_A_NUMBER;
        EXPECT_FALSE(map.mapLayoutToChannel(layout, picture, 0)) << i;
    }
    // A frustum without an extent: 0 / 0.
    addToTable(Frustum())->frustum.sx = 0.0;
    EXPECT_FALSE(makeMap().mapLayoutToChannel(screenConfig.eyePoint + Vector{0.0, 1.0, 0.5}, picture, 0));
    EXPECT_EQ(picture, UNTOUCHED_PICTURE);
}

TEST_F(SphericalLayoutToChannelMapTest, TheEyePointIsTakenOffAndThenTheOriginOfTheFrustum) {
    Frustum frustum = straightFrustum();
    frustum.origin = {0.5, -1.0, 0.25};
    addToTable(frustum);
    SphericalLayoutToChannelMap map = makeMap();
    Picture picture;
    const Vector ahead{0.5, 2.0, -1.0};
    ASSERT_TRUE(map.mapLayoutToChannel(screenConfig.eyePoint + frustum.origin + ahead, picture, 0));
    EXPECT_EQ(picture, (Picture{0.625, 0.25}));
}

TEST_F(SphericalLayoutToChannelMapTest, TheFrustumIsAskedForAgainForTheAnswer) {
    const auto blend = addToTable(straightFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    const Vector ahead = screenConfig.eyePoint + Vector{0.0, 1.0, 0.0};
    Picture picture = UNTOUCHED_PICTURE;
    EXPECT_TRUE(map.mapLayoutToChannel(ahead, picture, 0));
    EXPECT_EQ(blend->calls("getSphericalBlendExtents"), 2U);
    EXPECT_FALSE(map.mapLayoutToChannel(screenConfig.eyePoint, picture, 0));
    EXPECT_EQ(blend->calls("getSphericalBlendExtents"), 3U) << "once when it is refused";
    EXPECT_FALSE(map.mapLayoutToChannel(ahead + Vector{2.0, 0.0, 0.0}, picture, 0));
    EXPECT_EQ(blend->calls("getSphericalBlendExtents"), 4U) << "and once when it is outside";

    blend->change = [&](Frustum& frustum) { frustum.ox = blend->calls("getSphericalBlendExtents") == 6 ? -5.0 : -1.0; };
    EXPECT_TRUE(map.mapLayoutToChannel(ahead, picture, 0));
    EXPECT_EQ(picture, (Picture{2.5, 0.5})) << "the second frustum gives the answer, wherever it lies";
    picture = UNTOUCHED_PICTURE;
    blend->change = [&](Frustum& frustum) {
        frustum.ox = -1.0;
        frustum.origin[1] = blend->calls("getSphericalBlendExtents") == 8 ? 1.0 : 0.0;
    };
    EXPECT_TRUE(map.mapLayoutToChannel(ahead, picture, 0));
    EXPECT_EQ(picture, UNTOUCHED_PICTURE) << "behind the second frustum";
}

TEST_F(SphericalLayoutToChannelMapTest, ARayRunsFromTheEyeToOneStepAlongTheDirection) {
    Frustum frustum = turnedFrustum();
    frustum.origin = {5.0, 6.0, 7.0};
    addToTable(frustum);
    SphericalLayoutToChannelMap map = makeMap();
    const auto screen = installRayScreen();
    Vector layout;
    const Picture picture{0.3, 0.85};
    ASSERT_TRUE(map.mapChannelToLayout(picture, layout, 0));
    ASSERT_THAT(screen->rays, SizeIs(1));
    EXPECT_EQ(screen->rays[0].first, screenConfig.eyePoint) << "the origin of the frustum has no part in it";
    const double a = frustum.sx * picture[0] + frustum.ox;
    const double b = frustum.sy * picture[1] + frustum.oy;
    const double* r = frustum.R.data();
    const Vector direction{a * r[0] + r[1] + b * r[2], a * r[3] + r[4] + b * r[5], a * r[6] + r[7] + b * r[8]};
    EXPECT_EQ(screen->rays[0].second, screenConfig.eyePoint + direction);
    EXPECT_EQ(layout, screen->rays[0].second) << "the screen of this test stands there";
}

TEST_F(SphericalLayoutToChannelMapTest, ThePictureIsNotLimited) {
    addToTable(straightFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    installRayScreen();
    Vector layout;
    for (const Picture& picture : {Picture{-0.5, 0.5}, {1.5, 3.0}, {1e6, -1e6}}) {
        EXPECT_TRUE(map.mapChannelToLayout(picture, layout, 0));
        EXPECT_EQ(layout, screenConfig.eyePoint + (Vector{2.0 * picture[0] - 1.0, 1.0, 2.0 * picture[1] - 1.0}));
    }
}

TEST_F(SphericalLayoutToChannelMapTest, EitherSideOfTheSurfaceIsAHitAndAMissLeavesTheLayoutPoint) {
    addToTable(straightFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    const auto screen = installRayScreen();
    Vector layout;
    for (const double side : {1.0, 0.0, -1.0}) {
        screen->normalAt = [side](const Vector&) { return Vector{0.0, side, 0.0}; };
        EXPECT_TRUE(map.mapChannelToLayout({0.5, 0.5}, layout, 0)) << side;
    }
    layout = UNTOUCHED;
    screen->surface = [](const Vector&, const Vector&) { return IntersectionSet(); };
    EXPECT_FALSE(map.mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_THAT(log.messages(), IsEmpty());
    ScreenManager::deleteInstance();
    EXPECT_FALSE(map.mapChannelToLayout({0.5, 0.5}, layout, 0)) << "without a screen";
    EXPECT_EQ(layout, UNTOUCHED);
}

TEST_F(SphericalLayoutToChannelMapTest, WhatTheScreenThrowsPassesThrough) {
    addToTable(straightFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    installRayScreen()->throwFrom("intersect", std::runtime_error("no"));
    Vector layout;
    EXPECT_THROW(map.mapChannelToLayout({0.5, 0.5}, layout, 0), std::runtime_error);
}

TEST_F(SphericalLayoutToChannelMapTest, ThereAndBackMeetOnlyWhereTheFrustumStartsAtTheEye) {
    installDome();
    const auto blend = addToTable(turnedFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    for (int i = 0; i <= 20; ++i) {
        const Picture picture{0.05 * i, 1.0 - 0.045 * i};
        Vector layout;
        Picture back;
        blend->frustum.origin = {};
        ASSERT_TRUE(map.mapChannelToLayout(picture, layout, 0));
        EXPECT_NEAR(norm(layout - Vector{0.5, 0.25, -0.125}), 5.0, ROUNDING);
        ASSERT_TRUE(map.mapLayoutToChannel(layout, back, 0));
        EXPECT_NEAR(norm(back - picture), 0.0, ROUNDING);
        // The same point from nearer to the eye: not on the surface.
        ASSERT_TRUE(map.mapLayoutToChannel(0.5 * (layout + screenConfig.eyePoint), back, 0));
        EXPECT_NEAR(norm(back - picture), 0.0, ROUNDING);
        blend->frustum.origin = {0.1, 0.0, 0.0};
        EXPECT_TRUE(!map.mapLayoutToChannel(layout, back, 0) || norm(back - picture) > 0.01);
    }
}

TEST_F(SphericalLayoutToChannelMapTest, TheMapAndTheGridOfTheLocatorAgreeCellByCell) {
    installDome();
    std::size_t cells = 0;
    for (int k = 0; k < 12; ++k) {
        projector.frustumLeft = -0.5 - 0.02 * k;
        projector.frustumRight = 0.4 + 0.03 * std::sin(k);
        projector.frustumBottom = -0.3 + 0.02 * k;
        projector.frustumTop = 0.45;
        projector.orientationZ = 2.0 * std::sin(3.0 * k);
        projector.orientationX = 0.7 * std::cos(5.0 * k);
        projector.orientationY = 0.5 * std::sin(7.0 * k);
        targetData.targetPosition = {0.5 * std::sin(k), 0.25 * std::cos(k), 0.1 * k};
        screenConfig.eyePoint = targetData.targetPosition;
        // Wherever the projector stands: its place has no part in this direction.
        projector.position = {1.0 * k, 2.0, 3.0};
        table = std::make_shared<KelvoControl::Configuration>(&config);
        SphericalLayoutToChannelMap map = makeMap();
        constexpr int COLUMNS = 7;
        constexpr int ROWS = 5;
        std::map<Point<int, 2>, Vector> grid;
        request()->projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, COLUMNS, ROWS, grid);
        for (const auto& [cell, target] : grid) {
            const Picture picture{cell[0] / (COLUMNS - 1.0), 1.0 - cell[1] / (ROWS - 1.0)};
            Vector layout;
            ASSERT_TRUE(map.mapChannelToLayout(picture, layout, 0));
            EXPECT_LT(norm(layout - target), ROUNDING) << k << ": " << cell[0] << ", " << cell[1];
            ++cells;
        }
    }
    EXPECT_EQ(cells, 12U * 7U * 5U);
}

TEST_F(SphericalLayoutToChannelMapTest, EveryChannelHasItsOwnFrustumAndLocator) {
    ProjectorConfigDouble second(L"P2", &trace);
    second.frustumRight = 0.1;
    config.projectors = {&projector, &second};
    Frustum other = straightFrustum();
    other.ox = -3.0;
    addToTable(other, L"P2");
    addToTable(straightFrustum(), L"P1");
    SphericalLayoutToChannelMap map = makeMap();
    installRayScreen();
    Vector layout;
    ASSERT_TRUE(map.mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_EQ(layout, screenConfig.eyePoint + (Vector{0.0, 1.0, 0.0}));
    ASSERT_TRUE(map.mapChannelToLayout({0.5, 0.5}, layout, 1));
    EXPECT_EQ(layout, screenConfig.eyePoint + (Vector{-2.0, 1.0, 0.0}));
    Picture picture;
    ASSERT_TRUE(map.mapLayoutToChannel(layout, picture, 1));
    EXPECT_EQ(picture, (Picture{0.5, 0.5}));
    EXPECT_FALSE(map.mapLayoutToChannel(layout, picture, 0));
}

TEST_F(SphericalLayoutToChannelMapTest, IsBuiltFromTheConfigurationTheTableAndTheLocatorsInThisOrder) {
    addToTable(straightFrustum());
    static_cast<void>(request());
    trace.clear();
    static_cast<void>(request());
    const std::vector<std::string> readsOfTheLocator = trace.lines();
    trace.clear();
    makeMap();
    std::vector<std::string> expected{"config.getProjectorConfigIds()", "config.getProjectorConfig(\"P1\")",
                                      "config.getScreenConfig()", "screen.getEyePoint()",
                                      "config.getProjectorConfigIds()"};
    expected.insert(expected.end(), readsOfTheLocator.begin(), readsOfTheLocator.end());
    EXPECT_EQ(trace.lines(), expected);
    EXPECT_EQ(table.use_count(), 1) << "the map keeps nothing but its entries";
}

TEST_F(SphericalLayoutToChannelMapTest, AProjectorThatIsMissingFromTheTableIsNamed) {
    addToTable(straightFrustum(), L"P2");
    for (const auto& aTable : {table, std::shared_ptr<KelvoControl::Configuration>()}) {
        try {
            SphericalLayoutToChannelMap map(&config, aTable);
            FAIL() << "nothing was thrown";
        } catch (const VeltraniException& fault) {
            EXPECT_THAT(fault.message, HasSubstr(L"\"P1\""));
        }
    }
}

TEST_F(SphericalLayoutToChannelMapTest, WhatTheConfigurationThrowsPassesThrough) {
    addToTable(straightFrustum());
    for (const char* operation : {"getProjectorConfigIds", "getScreenConfig", "getTargetLocatorConfig"}) {
        config.throwOnce(operation, std::runtime_error(operation));
        EXPECT_THROW(makeMap(), std::runtime_error) << operation;
    }
}

TEST_F(SphericalLayoutToChannelMapTest, WithoutALocatorAScreenOrAConfigurationNothingCrashes) {
    addToTable(straightFrustum());
    targetData.targetDataType = L"none such";
    SphericalLayoutToChannelMap withoutLocator = makeMap();
    log.clear();
    Vector layout = UNTOUCHED;
    EXPECT_FALSE(withoutLocator.mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_EQ(layout, UNTOUCHED);
    Picture picture;
    EXPECT_TRUE(withoutLocator.mapLayoutToChannel(screenConfig.eyePoint + Vector{0.0, 1.0, 0.0}, picture, 0));
    config.screen = nullptr;
    EXPECT_TRUE(makeMap().mapLayoutToChannel({0.0, 1.0, 0.0}, picture, 0)) << "seen from the origin";
    EXPECT_EQ(picture, (Picture{0.5, 0.5}));
    EXPECT_NO_THROW(SphericalLayoutToChannelMap(nullptr, nullptr)) << "no channels";
}

TEST_F(SphericalLayoutToChannelMapTest, LocatorsOutliveTheManagerAndFollowTheScreen) {
    addToTable(straightFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    const std::weak_ptr<const TargetLocator> locator = request();
    TargetLocatorManager::getInstance()->screenDefinitionChanged();
    TargetLocatorManager::deleteInstance();
    EXPECT_FALSE(locator.expired());
    installRayScreen();
    Vector layout;
    EXPECT_TRUE(map.mapChannelToLayout({0.5, 0.5}, layout, 0));
    installDome();
    EXPECT_TRUE(map.mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_NEAR(norm(layout - Vector{0.5, 0.25, -0.125}), 5.0, ROUNDING);
}

TEST_F(SphericalLayoutToChannelMapTest, NoPointsNeedNoChannel) {
    SphericalLayoutToChannelMap map(nullptr, nullptr);
    EXPECT_NO_THROW(map.mapChannelPointsToLayout({}, {}, 0));
}

TEST_F(SphericalLayoutToChannelMapTest, CopiesShareLocatorsAndEntries) {
    addToTable(straightFrustum());
    auto original = std::make_unique<SphericalLayoutToChannelMap>(&config, table);
    SphericalLayoutToChannelMap copy = *original;
    table->add(KelvoProjectorUID(L"P2"), std::make_unique<KelvoProjector>(std::make_shared<Blend>(Frustum())));
    config.projectors.clear();
    SphericalLayoutToChannelMap assigned = makeMap();
    assigned = copy;
    original.reset();
    TargetLocatorManager::deleteInstance();
    installRayScreen();
    for (SphericalLayoutToChannelMap* map : {&copy, &assigned}) {
        Vector layout;
        EXPECT_TRUE(map->mapChannelToLayout({0.5, 0.5}, layout, 0));
        EXPECT_EQ(layout, screenConfig.eyePoint + (Vector{0.0, 1.0, 0.0}));
        Picture picture;
        EXPECT_TRUE(map->mapLayoutToChannel(layout, picture, 0));
    }
}

// Programs that were built with an older version of the library call the operations by their places.
TEST(SphericalLayoutToChannelMap, TheOperationsKeepTheirPlaces) {
    using Map = SphericalLayoutToChannelMap;
    EXPECT_EQ(slotOf(&Map::mapLayoutToChannel), 2U) << "behind the destructor";
    EXPECT_EQ(slotOf(&Map::mapChannelToLayout), 3U);
    EXPECT_EQ(slotOf(&Map::mapChannelPointsToLayout), 4U);
    EXPECT_TRUE((std::is_base_of_v<LayoutToChannelMap, Map>));
}

}  // namespace
