#include "ScreenManager/CollimatedLayoutToChannelMap.h"

#include "Common/VeltraniException.h"
#include "EyeMapFixture.h"
#include "KelvoScreen/SphericalScreen.h"
#include "MirrorRays.h"
#include "RayScreen.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/SphericalLayoutToChannelMap.h"
#include "support/VirtualSlot.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <new>
#include <numbers>
#include <stdexcept>

namespace {

using Vector = Point<double, 3>;
using Picture = Point<double, 2>;
using testing::HasSubstr;
using testing::SizeIs;

constexpr double PI = std::numbers::pi;
/// Coordinates are a few metres; each way rounds some dozen times.
constexpr double ROUNDING = 1e-12;
constexpr Vector UNTOUCHED{-7.0, -8.0, -9.0};
constexpr Picture UNTOUCHED_PICTURE{-7.0, -8.0};

class CollimatedLayoutToChannelMapTest : public EyeMapFixture {
protected:
    CollimatedLayoutToChannelMapTest() {
        targetData.targetDataType = BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED;
        targetData.pitchTable.clear();
        targetData.yawTable.clear();
    }
    CollimatedLayoutToChannelMap makeMap(bool useCache = false) { return {&config, table, useCache}; }

    /// Another screen with each call.
    std::shared_ptr<RayScreen> installRayScreen() {
        auto screen = std::make_shared<RayScreen>(&trace);
        screen->hash[0] = ++m_screens;
        ScreenManager::getInstance()->setScreenGeometry(screen);
        trace.clear();
        return screen;
    }
    /// The display of mirror_rays.py, with so many pixels.
    void installMirrorDisplay(int width, int height) {
        using namespace mirrorRays;
        ScreenManager::getInstance()->setScreenGeometry(
            std::make_shared<SphericalScreen>(DOME_CENTRE, DOME_RADIUS, -PI, PI, -PI / 2, PI / 2));
        projector.frustumLeft = GRID_ANGLES[0];
        projector.frustumRight = GRID_ANGLES[1];
        projector.frustumBottom = GRID_ANGLES[2];
        projector.frustumTop = GRID_ANGLES[3];
        projector.orientationZ = GRID_ROTATION[0];
        projector.orientationX = GRID_ROTATION[1];
        projector.orientationY = GRID_ROTATION[2];
        projector.width = width;
        projector.height = height;
        targetData.targetPosition = GRID_EYE;
        targetData.mirrorOrientation = GRID_ORIENTATION;
        targetData.mirrorPosition = GRID_POSITION;
        targetData.mirrorRadius = GRID_RADIUS;
        screenConfig.eyePoint = GRID_EYE;
        table = std::make_shared<KelvoControl::Configuration>(&config);
    }
    /// A screen whose layout points are as far apart as the picture points, without a mirror.
    void installFlatPicture(int width, int height) {
        targetData.targetDataType = BaseConfig::TARGET_DATA_SPHERICAL;
        addToTable(pictureOf(width, height));
        installRayScreen();
    }

private:
    unsigned char m_screens = 0;
};

TEST_F(CollimatedLayoutToChannelMapTest, APictureShowsWhatTheMirrorShows) {
    using namespace mirrorRays;
    installMirrorDisplay(64, 48);
    CollimatedLayoutToChannelMap map = makeMap();
    for (const Cell& cell : GRID) {
        Vector layout;
        const Picture picture{cell.cell[0] / (GRID_COLUMNS - 1.0), 1.0 - cell.cell[1] / (GRID_ROWS - 1.0)};
        ASSERT_TRUE(map.mapChannelToLayout(picture, layout, 0));
        EXPECT_LT(norm(layout - cell.target), ROUNDING);
    }
}

TEST_F(CollimatedLayoutToChannelMapTest, TheHeadingTablesBendTargetsAndLeaveTheMap) {
    using namespace mirrorRays;
    installMirrorDisplay(64, 48);
    targetData.yawTable = {{-PI, -PI - 0.01}, {PI, PI - 0.01}};
    CollimatedLayoutToChannelMap map = makeMap();
    std::map<Point<int, 2>, Vector> bent;
    request()->projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, GRID_COLUMNS, GRID_ROWS, bent);
    int compared = 0;
    for (const Cell& cell : GRID) {
        Vector layout;
        const Picture picture{cell.cell[0] / (GRID_COLUMNS - 1.0), 1.0 - cell.cell[1] / (GRID_ROWS - 1.0)};
        ASSERT_TRUE(map.mapChannelToLayout(picture, layout, 0));
        EXPECT_LT(norm(layout - cell.target), ROUNDING) << "the place without a table";
        if (const auto target = bent.find(cell.cell); target != bent.end()) {
            EXPECT_GT(norm(layout - target->second), 1e-4);
            ++compared;
        }
    }
    EXPECT_GT(compared, GRID_COLUMNS);
}

TEST_F(CollimatedLayoutToChannelMapTest, ThereItIsTheSphericalMap) {
    addToTable(turnedFrustum())->frustum.origin = {5.0, 6.0, 7.0};
    installRayScreen();
    CollimatedLayoutToChannelMap map = makeMap();
    SphericalLayoutToChannelMap spherical(&config, table);
    int shown = 0;
    for (int i = 0; i < 100; ++i) {
        const Picture picture{1.5 * std::sin(i), 1.5 * std::cos(3.0 * i)};
        Vector layout = UNTOUCHED;
        Vector expected = UNTOUCHED;
        const bool isShown = map.mapChannelToLayout(picture, layout, 0);
        ASSERT_EQ(isShown, spherical.mapChannelToLayout(picture, expected, 0));
        EXPECT_EQ(layout, expected);
        shown += isShown ? 1 : 0;
    }
    EXPECT_GT(shown, 50);
}

TEST_F(CollimatedLayoutToChannelMapTest, ARayRunsFromTheEyeToOneStepAlongTheDirection) {
    installFlatPicture(4, 4);
    const auto screen = installRayScreen();
    CollimatedLayoutToChannelMap map = makeMap();
    Vector layout;
    ASSERT_TRUE(map.mapChannelToLayout({1.75, -0.25}, layout, 0)) << "outside of the picture, too";
    ASSERT_THAT(screen->rays, SizeIs(1));
    EXPECT_EQ(screen->rays[0].first, screenConfig.eyePoint);
    EXPECT_EQ(screen->rays[0].second, screenConfig.eyePoint + (Vector{2.5, 1.0, -1.5}));
    screen->surface = [](const Vector&, const Vector&) { return IntersectionSet(); };
    layout = UNTOUCHED;
    EXPECT_FALSE(map.mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_EQ(layout, UNTOUCHED);
}

TEST_F(CollimatedLayoutToChannelMapTest, PixelsAreFoundThroughTheMirror) {
    constexpr int WIDTH = 64;
    constexpr int HEIGHT = 48;
    installMirrorDisplay(WIDTH, HEIGHT);
    for (const bool useCache : {false, true}) {
        CollimatedLayoutToChannelMap map = makeMap(useCache);
        int found = 0;
        for (int y = 0; y < HEIGHT; y += 5) {
            // The first column shares its places in the cache with the far one.
            for (int x = 1; x < WIDTH; x += 3) {
                const Picture picture{static_cast<double>(x) / WIDTH, static_cast<double>(y) / HEIGHT};
                Vector layout;
                Picture back;
                ASSERT_TRUE(map.mapChannelToLayout(picture, layout, 0));
                found += map.mapLayoutToChannel(layout, back, 0) && back == picture ? 1 : 0;
                Picture near;
                EXPECT_EQ(map.mapLayoutToChannel(layout + Vector{0.0, 0.0001, 0.0001}, near, 0) && near == picture,
                          back == picture);
                near = UNTOUCHED_PICTURE;
                EXPECT_FALSE(map.mapLayoutToChannel(1.001 * layout, near, 0)) << "behind the dome";
                EXPECT_EQ(near, UNTOUCHED_PICTURE);
            }
        }
        EXPECT_EQ(found, 10 * 21) << "the picture is smooth: no search goes astray";
    }
}

TEST_F(CollimatedLayoutToChannelMapTest, AnExactSampleEndsTheFirstPassAndTheFarColumnIsOne) {
    installFlatPicture(16, 12);
    CollimatedLayoutToChannelMap map = makeMap();
    const auto screen = installRayScreen();
    Picture picture;
    ASSERT_TRUE(map.mapLayoutToChannel(screenConfig.eyePoint + Vector{1.0, 1.0, 0.0}, picture, 0));
    EXPECT_EQ(picture, (Picture{1.0, 0.5}));
    EXPECT_THAT(screen->rays, SizeIs(25));
}

TEST_F(CollimatedLayoutToChannelMapTest, SmallPicturesAreSearchedPixelByPixel) {
    for (const auto& [width, height] : {std::pair(9, 20), {20, 9}, {1, 1}, {3, 2}}) {
        installFlatPicture(width, height);
        CollimatedLayoutToChannelMap map = makeMap();
        const auto screen = installRayScreen();
        Picture picture = UNTOUCHED_PICTURE;
        EXPECT_FALSE(map.mapLayoutToChannel({50.0, 0.0, 0.0}, picture, 0));
        EXPECT_THAT(screen->rays, SizeIs(static_cast<std::size_t>(width * height)));
        EXPECT_EQ(picture, UNTOUCHED_PICTURE);
    }
}

TEST_F(CollimatedLayoutToChannelMapTest, PicturesWithoutPixelsShowNothingAndDoNotCrash) {
    const Vector ahead = screenConfig.eyePoint + Vector{0.0, 1.0, 0.0};
    for (const auto& [width, height] : {std::pair(0, 0),
                                        {0, 1080},
                                        {1920, 0},
                                        {-1, -1},
                                        {-1, 5},
                                        {5, -1},
                                        {-1920, -1080},
                                        {std::numeric_limits<int>::min(), 7},
                                        {7, std::numeric_limits<int>::min()}}) {
        for (const bool useCache : {false, true}) {
            installFlatPicture(width, height);
            CollimatedLayoutToChannelMap map = makeMap(useCache);
            Picture picture = UNTOUCHED_PICTURE;
            EXPECT_FALSE(map.mapLayoutToChannel(ahead, picture, 0)) << width << " x " << height;
            EXPECT_EQ(picture, UNTOUCHED_PICTURE);
            Vector layout;
            EXPECT_TRUE(map.mapChannelToLayout({0.5, 0.5}, layout, 0)) << "which needs no pixels";
        }
    }
}

TEST_F(CollimatedLayoutToChannelMapTest, ACacheThatIsTooLargeIsRefusedAndWithoutOneSizesDoNotMatter) {
    const int largest = std::numeric_limits<int>::max();
    installFlatPicture(largest, largest);
    EXPECT_THROW(makeMap(true), std::bad_alloc);
    CollimatedLayoutToChannelMap map = makeMap(false);
    Picture picture;
    EXPECT_TRUE(map.mapLayoutToChannel(screenConfig.eyePoint + Vector{1.0, 1.0, 1.0}, picture, 0));
    EXPECT_EQ(picture, (Picture{1.0, 1.0}));
    EXPECT_TRUE(map.mapLayoutToChannel(screenConfig.eyePoint + Vector{-0.37, 1.0, 0.61}, picture, 0));
    EXPECT_NEAR(picture[0], 0.315, 0.0005) << "the first pixel that is near enough";
    EXPECT_NEAR(picture[1], 0.805, 0.0005);
}

TEST_F(CollimatedLayoutToChannelMapTest, TheSizeIsThatOfTheFrustum) {
    projector.width = 40;
    projector.height = 30;
    installFlatPicture(3, 2);
    CollimatedLayoutToChannelMap map = makeMap();
    Picture picture;
    ASSERT_TRUE(map.mapLayoutToChannel(screenConfig.eyePoint + Vector{-1.0 + 4.0 / 3.0, 1.0, 0.0}, picture, 0));
    EXPECT_EQ(picture, (Picture{2.0 / 3.0, 0.5}));
}

TEST_F(CollimatedLayoutToChannelMapTest, AFrustumThatGrowsIsSearchedWithoutTheCache) {
    targetData.targetDataType = BaseConfig::TARGET_DATA_SPHERICAL;
    const auto blend = addToTable(pictureOf(16, 16));
    installRayScreen();
    CollimatedLayoutToChannelMap map = makeMap(true);
    blend->frustum = pictureOf(4000, 4000);
    Picture picture;
    ASSERT_TRUE(map.mapLayoutToChannel(screenConfig.eyePoint + Vector{0.5, 1.0, 0.25}, picture, 0));
    EXPECT_NEAR(picture[0], 0.75, 0.00025);
    EXPECT_NEAR(picture[1], 0.625, 0.00025);
}

TEST_F(CollimatedLayoutToChannelMapTest, ACacheGoesOnAnsweringForTheOldScreen) {
    installFlatPicture(16, 12);
    CollimatedLayoutToChannelMap without = makeMap(false);
    CollimatedLayoutToChannelMap with = makeMap(true);
    const Vector wanted = screenConfig.eyePoint + Vector{1.0, 1.0, 0.0};
    Picture picture;
    ASSERT_TRUE(without.mapLayoutToChannel(wanted, picture, 0));
    ASSERT_TRUE(with.mapLayoutToChannel(wanted, picture, 0));
    const auto screen = installRayScreen();
    screen->surface = [](const Vector&, const Vector&) { return IntersectionSet(); };
    EXPECT_FALSE(without.mapLayoutToChannel(wanted, picture, 0));
    EXPECT_TRUE(with.mapLayoutToChannel(wanted, picture, 0));
    EXPECT_EQ(picture, (Picture{1.0, 0.5}));
    Vector layout;
    EXPECT_FALSE(with.mapChannelToLayout({1.0, 0.5}, layout, 0)) << "this direction has no cache";
}

TEST_F(CollimatedLayoutToChannelMapTest, EveryChannelHasItsOwnCache) {
    ProjectorConfigDouble second(L"P2", &trace);
    config.projectors = {&projector, &second};
    Frustum other = pictureOf(30, 12);
    other.ox = -3.0;
    addToTable(other, L"P2");
    installFlatPicture(16, 12);
    CollimatedLayoutToChannelMap map = makeMap(true);
    Picture picture;
    ASSERT_TRUE(map.mapLayoutToChannel(screenConfig.eyePoint + Vector{-1.0, 1.0, 0.0}, picture, 0));
    EXPECT_EQ(picture, (Picture{0.0, 0.5}));
    ASSERT_TRUE(map.mapLayoutToChannel(screenConfig.eyePoint + Vector{-1.0, 1.0, 0.0}, picture, 1));
    EXPECT_EQ(picture, (Picture{1.0, 0.5}));
}

TEST_F(CollimatedLayoutToChannelMapTest, IsBuiltFromTheConfigurationTheTableTheLocatorsAndTheFrustaInThisOrder) {
    addToTable(pictureOf(4, 4));
    static_cast<void>(request());
    trace.clear();
    static_cast<void>(request());
    const std::vector<std::string> readsOfTheLocator = trace.lines();
    std::vector<std::string> expected{"config.getProjectorConfigIds()", "config.getProjectorConfig(\"P1\")",
                                      "config.getScreenConfig()", "screen.getEyePoint()",
                                      "config.getProjectorConfigIds()"};
    expected.insert(expected.end(), readsOfTheLocator.begin(), readsOfTheLocator.end());
    trace.clear();
    makeMap(false);
    EXPECT_EQ(trace.lines(), expected);
    trace.clear();
    makeMap(true);
    expected.emplace_back("blend.getSphericalBlendExtents()");
    EXPECT_EQ(trace.lines(), expected) << "for the size of its cache";
    EXPECT_EQ(table.use_count(), 1) << "the map keeps nothing but its entries";
}

TEST_F(CollimatedLayoutToChannelMapTest, AProjectorThatIsMissingFromTheTableIsNamed) {
    for (const auto& aTable : {table, std::shared_ptr<KelvoControl::Configuration>()}) {
        try {
            CollimatedLayoutToChannelMap map(&config, aTable, true);
            FAIL() << "nothing was thrown";
        } catch (const VeltraniException& fault) {
            EXPECT_THAT(fault.message, HasSubstr(L"\"P1\""));
        }
    }
}

TEST_F(CollimatedLayoutToChannelMapTest, WithoutALocatorOrAConfigurationNothingCrashes) {
    addToTable(pictureOf(16, 12));
    targetData.targetDataType = L"none such";
    for (const bool useCache : {false, true}) {
        CollimatedLayoutToChannelMap map = makeMap(useCache);
        Vector layout = UNTOUCHED;
        EXPECT_FALSE(map.mapChannelToLayout({0.5, 0.5}, layout, 0));
        EXPECT_EQ(layout, UNTOUCHED);
        Picture picture;
        EXPECT_FALSE(map.mapLayoutToChannel({1.0, 2.0, 3.0}, picture, 0));
    }
    EXPECT_NO_THROW(CollimatedLayoutToChannelMap(nullptr, nullptr, true)) << "no channels";
}

// Programs that were built with an older version of the library call the operations by their places.
TEST(CollimatedLayoutToChannelMap, NoPointsNeedNoChannel) {
    CollimatedLayoutToChannelMap map(nullptr, nullptr, true);
    EXPECT_NO_THROW(map.mapChannelPointsToLayout({}, {}, 0));
}

TEST(CollimatedLayoutToChannelMap, TheOperationsKeepTheirPlaces) {
    using Map = CollimatedLayoutToChannelMap;
    EXPECT_EQ(slotOf(&Map::mapLayoutToChannel), 2U) << "behind the destructor";
    EXPECT_EQ(slotOf(&Map::mapChannelToLayout), 3U);
    EXPECT_EQ(slotOf(&Map::mapChannelPointsToLayout), 4U);
}

}  // namespace
