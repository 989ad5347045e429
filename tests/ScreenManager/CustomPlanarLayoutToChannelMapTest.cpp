#include "ScreenManager/CustomPlanarLayoutToChannelMap.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "KelvoScreen/FlatScreen.h"
#include "LayoutMapFixture.h"
#include "LayoutMapRows.h"
#include "PlanarMapText.h"
#include "support/SuiteFault.h"
#include "support/TemporaryFolder.h"
#include "support/VirtualSlot.h"

#include <cmath>
#include <stdexcept>
#include <type_traits>

namespace {

using Vector = Point<double, 3>;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// Coordinates are near 1; the map and the scaling to pixels round some dozen times.
constexpr double ROUNDING = 1e-12;
constexpr double CLOSURE = 1e-9;

/// One cell between these limits, the file's picture 100 x 100 pixels: x and y as in the file, pixel = (x + 1) * 50.
std::string cell(const std::string& xMin, const std::string& xMax, const std::string& sMin, const std::string& sMax) {
    return "2\n2 2\n" + xMin + " -1 " + sMin + " 0 1\n" + xMax + " -1 " + sMax + " 0 1\n" + xMin + " 1 " + sMin +
           " 1 1\n" + xMax + " 1 " + sMax + " 1 1\npixels 100 100\n";
}

class CustomPlanarLayoutToChannelMapTest : public LayoutMapFixture {
protected:
    CustomPlanarLayoutToChannelMapTest() {
        config.folder = Veltrani::fromUtf8(folder.path());
        config.projectors = {&first};
        first.name = L"Left";
        second.name = L"Right";
        give(first, L"first.map", planar_map::wholePicture(1920, 1080));
    }

    void give(ProjectorConfigDouble& projector, const std::wstring& name, const std::string& text) const {
        folder.write(Veltrani::toUtf8(name), text);
        projector.customPlanarFile = name;
    }
    /// A channel of 100 x 100 pixels with one cell.
    void giveCell(const std::string& xMin, const std::string& xMax, const std::string& sMin, const std::string& sMax) {
        give(first, L"cell.map", cell(xMin, xMax, sMin, sMax));
        first.width = first.height = 100;
    }
    CustomPlanarLayoutToChannelMap build() { return CustomPlanarLayoutToChannelMap(&config); }
    bool toLayout(double u, double v) {
        layout = NO_LAYOUT;
        return build().mapChannelToLayout({u, v}, layout, 0);
    }
    bool toChannel(double x, double y, double z) {
        channel = NO_CHANNEL;
        return build().mapLayoutToChannel({x, y, z}, channel, 0);
    }
    /// What building throws, its kind in front; empty when nothing.
    std::string fault(XMLConfigManager* from) {
        return suiteFaultOf([&] { const CustomPlanarLayoutToChannelMap map(from); });
    }

    const TemporaryFolder folder;
};

TEST_F(CustomPlanarLayoutToChannelMapTest, BuildingReadsFileThenResolutionOfEachProjectorInOrder) {
    give(second, L"second.map", planar_map::wholePicture(10, 10));
    config.projectors = {&first, &second};
    config.folder.clear();
    first.customPlanarFile = Veltrani::fromUtf8(folder.file("first.map"));
    second.customPlanarFile = Veltrani::fromUtf8(folder.file("second.map"));
    const CustomPlanarLayoutToChannelMap map(&config);
    EXPECT_THAT(trace.lines(), ElementsAre("config.getProjectorConfigIds()", "config.getProjectorConfig(\"P1\")",
                                           "config.getProjectorConfig(\"P2\")", "config.getProjectorConfigIds()",
                                           "config.getProjectorConfig(\"P1\")", "projector.getCustomPlanarFile()",
                                           "config.processPath(\"" + folder.file("first.map") + "\")",
                                           "projector.getWidth()", "projector.getHeight()",
                                           "config.getProjectorConfig(\"P2\")", "projector.getCustomPlanarFile()",
                                           "config.processPath(\"" + folder.file("second.map") + "\")",
                                           "projector.getWidth()", "projector.getHeight()"));
}

TEST_F(CustomPlanarLayoutToChannelMapTest, TheWholePictureIsTheWholeScreenInXAndZ) {
    EXPECT_TRUE(toLayout(0.25, 0.75));
    EXPECT_LT(norm(layout - Vector{0.25, 0.0, 0.75}), ROUNDING);
    EXPECT_EQ(layout[1], 0.0);
    EXPECT_TRUE(toChannel(0.25, 0.0, 0.75));
    EXPECT_LT(norm(channel - Point<double, 2>{0.25, 0.75}), ROUNDING);
}

TEST_F(CustomPlanarLayoutToChannelMapTest, WidthGoesWithUAndHeightWithV) {
    // A channel half as wide as the picture of its file: u = 1 is the middle of the map, v = 1 a quarter of it.
    give(first, L"first.map", planar_map::wholePicture(800, 400));
    first.width = 400;
    first.height = 100;
    EXPECT_TRUE(toLayout(1.0, 1.0));
    EXPECT_LT(norm(layout - Vector{0.5, 0.0, 0.25}), ROUNDING);
    EXPECT_TRUE(toChannel(0.25, 0.0, 0.125));
    EXPECT_LT(norm(channel - Point<double, 2>{0.5, 0.5}), ROUNDING);
    EXPECT_FALSE(toChannel(0.75, 0.0, 0.125)) << "a pixel of the file, but not of the channel";
    EXPECT_TRUE(toLayout(2.0, 0.5)) << "channel points are not checked, only where they lie on the screen";
    EXPECT_LT(norm(layout - Vector{1.0, 0.0, 0.125}), ROUNDING);
}

TEST_F(CustomPlanarLayoutToChannelMapTest, ScreenCoordinatesUpToTheEdgeAreIn) {
    EXPECT_TRUE(toLayout(1.0, 0.0));
    EXPECT_EQ(layout, (Vector{1.0, 0.0, 0.0}));
    EXPECT_TRUE(toLayout(0.0, 1.0));
    EXPECT_EQ(layout, (Vector{0.0, 0.0, 1.0}));
}

TEST_F(CustomPlanarLayoutToChannelMapTest, ScreenCoordinatesBeyondTheEdgeAreRefusedAndLeaveTheResult) {
    giveCell("-1", "1", "0", "1.0000001");
    EXPECT_FALSE(toLayout(1.0, 0.5));
    EXPECT_EQ(layout, NO_LAYOUT);
    EXPECT_TRUE(toLayout(0.99, 0.5));
    giveCell("-1", "1", "-0.0000001", "1");
    EXPECT_FALSE(toLayout(0.0, 0.5));
    EXPECT_EQ(layout, NO_LAYOUT);
    EXPECT_TRUE(toLayout(0.01, 0.5));
    // The same for t, on the other side of the file.
    give(first, L"cell.map",
         "2\n2 2\n-1 -1 0 -0.0000001 1\n1 -1 1 -0.0000001 1\n-1 1 0 1.0000001 1\n1 1 1 1.0000001 1\npixels 100 100\n");
    EXPECT_FALSE(toLayout(0.5, 0.0));
    EXPECT_FALSE(toLayout(0.5, 1.0));
    EXPECT_TRUE(toLayout(0.5, 0.5));
}

TEST_F(CustomPlanarLayoutToChannelMapTest, TheDepthOfALayoutPointDoesNotMatter) {
    EXPECT_TRUE(toChannel(0.3, 7.0, 0.4));
    const Point<double, 2> deep = channel;
    EXPECT_TRUE(toChannel(0.3, 0.0, 0.4));
    EXPECT_EQ(channel, deep);
    EXPECT_TRUE(toChannel(0.3, NOT_A_NUMBER, 0.4));
    EXPECT_EQ(channel, deep);
}

TEST_F(CustomPlanarLayoutToChannelMapTest, PixelsUpToTheFarCornerAreIn) {
    EXPECT_TRUE(toChannel(1.0, 0.0, 1.0));
    EXPECT_EQ(channel, (Point<double, 2>{1.0, 1.0}));
    EXPECT_TRUE(toChannel(0.0, 0.0, 0.0));
    EXPECT_EQ(channel, (Point<double, 2>{0.0, 0.0}));
}

TEST_F(CustomPlanarLayoutToChannelMapTest, PixelsBesideThePictureAreRefusedThoughTheyHaveAPlaceOnTheScreen) {
    giveCell("-1.01", "1", "0", "1");  // the left edge of the screen half a pixel left of the picture
    EXPECT_FALSE(toChannel(0.0, 0.0, 0.1)) << "pixel (-0.5, 10)";
    EXPECT_EQ(channel, NO_CHANNEL);
    EXPECT_TRUE(toLayout(-0.005, 0.1)) << "the other way only the screen counts";
    EXPECT_NEAR(layout[0], 0.0, ROUNDING);
    first.width = 99;
    EXPECT_FALSE(toChannel(1.0, 0.0, 0.5)) << "pixel 100 of 99";
    first.width = 100;
    first.height = 99;
    EXPECT_FALSE(toChannel(0.5, 0.0, 1.0));
    first.height = 100;
    EXPECT_TRUE(toChannel(0.5, 0.0, 1.0));
    give(first, L"cell.map", "2\n2 2\n-1 -1.01 0 0 1\n1 -1.01 1 0 1\n-1 1 0 1 1\n1 1 1 1 1\npixels 100 100\n");
    EXPECT_FALSE(toChannel(0.5, 0.0, 0.0)) << "pixel (50, -0.5)";
}

TEST_F(CustomPlanarLayoutToChannelMapTest, LayoutPointsBeyondTheScreenMapWhereTheFileDoes) {
    giveCell("-1", "1", "-0.5", "1.5");
    EXPECT_TRUE(toChannel(1.5, 0.0, 0.5));
    EXPECT_LT(norm(channel - Point<double, 2>{1.0, 0.5}), ROUNDING);
    EXPECT_FALSE(toLayout(1.0, 0.5)) << "the same point the other way";
}

TEST_F(CustomPlanarLayoutToChannelMapTest, PointsThatTheFileDoesNotMapLeaveTheResults) {
    give(first, L"first.map", planar_map::leftHalf(1920, 1080));
    EXPECT_FALSE(toLayout(0.75, 0.5));
    EXPECT_EQ(layout, NO_LAYOUT);
    EXPECT_FALSE(toChannel(0.75, 0.0, 0.5));
    EXPECT_EQ(channel, NO_CHANNEL);
}

TEST_F(CustomPlanarLayoutToChannelMapTest, NotANumberIsRefusedBothWays) {
    EXPECT_FALSE(toLayout(NOT_A_NUMBER, 0.5));
    EXPECT_FALSE(toLayout(0.5, NOT_A_NUMBER));
    EXPECT_EQ(layout, NO_LAYOUT);
    EXPECT_FALSE(toChannel(NOT_A_NUMBER, 0.0, 0.5));
    EXPECT_FALSE(toChannel(0.5, 0.0, NOT_A_NUMBER));
    EXPECT_EQ(channel, NO_CHANNEL);
}

TEST_F(CustomPlanarLayoutToChannelMapTest, EveryRowOfTheScriptIsMatched) {
    give(first, L"first.map", layoutMapRows::MAP_TEXT);
    first.width = layoutMapRows::RESOLUTION[0];
    first.height = layoutMapRows::RESOLUTION[1];
    for (const layoutMapRows::CustomPlanar& row : layoutMapRows::CUSTOM_PLANAR) {
        EXPECT_EQ(toLayout(row.channel[0], row.channel[1]), row.isOnScreen);
        EXPECT_LT(norm(layout - (row.isOnScreen ? row.toLayout : NO_LAYOUT)), ROUNDING);
        EXPECT_EQ(toChannel(row.layout[0], row.layout[1], row.layout[2]), row.isInPicture);
        EXPECT_LT(norm(channel - (row.isInPicture ? row.toChannel : NO_CHANNEL)), ROUNDING);
    }
}

TEST_F(CustomPlanarLayoutToChannelMapTest, ThereAndBackIsTheSamePointOverThePicture) {
    give(first, L"first.map", layoutMapRows::MAP_TEXT);
    first.width = 1600;
    first.height = 900;
    CustomPlanarLayoutToChannelMap map = build();
    constexpr int STEPS = 60;
    int mapped = 0;
    for (int row = 1; row < STEPS; ++row) {
        for (int column = 1; column < STEPS; ++column) {
            const Point<double, 2> point{static_cast<double>(column) / STEPS, static_cast<double>(row) / STEPS};
            if (map.mapChannelToLayout(point, layout, 0)) {
                ASSERT_TRUE(map.mapLayoutToChannel(layout, channel, 0));
                EXPECT_LT(norm(channel - point), CLOSURE);
                ++mapped;
            }
        }
    }
    EXPECT_GT(mapped, 2500) << "most of the picture lies on the screen";
}

TEST_F(CustomPlanarLayoutToChannelMapTest, EachChannelHasItsOwnFileAndResolution) {
    give(second, L"second.map", planar_map::leftHalf(10, 10));
    second.width = second.height = 10;
    config.projectors = {&second, &first};
    CustomPlanarLayoutToChannelMap map = build();
    EXPECT_FALSE(map.mapChannelToLayout({0.75, 0.5}, layout, 0));
    EXPECT_TRUE(map.mapChannelToLayout({0.75, 0.5}, layout, 1));
    EXPECT_NEAR(layout[0], 0.75, ROUNDING);
}

TEST_F(CustomPlanarLayoutToChannelMapTest, TheScreenOfTheMomentIsKeptAndSharedByCopies) {
    const auto screen = installGeometry();
    const auto uses = screen.use_count();
    {
        CustomPlanarLayoutToChannelMap map = build();
        EXPECT_EQ(screen.use_count(), uses + 1);
        const CustomPlanarLayoutToChannelMap copy = map;
        EXPECT_EQ(screen.use_count(), uses + 1) << "the transform is shared, not cloned";
        ScreenManager::getInstance()->setScreenGeometry(std::make_shared<FlatScreen>());
        EXPECT_EQ(screen.use_count(), 2) << "the manager has let go, the map has not";
    }
    EXPECT_EQ(screen.use_count(), 1);
}

TEST_F(CustomPlanarLayoutToChannelMapTest, AMapNeedsNoScreenAndAsksNothingAfterItWasBuilt) {
    CustomPlanarLayoutToChannelMap map = build();
    trace.clear();
    folder.write("first.map", "no map any more");
    first.width = 7;
    EXPECT_TRUE(map.mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_TRUE(map.mapLayoutToChannel(layout, channel, 0));
    EXPECT_LT(norm(channel - Point<double, 2>{0.5, 0.5}), ROUNDING);
    EXPECT_THAT(trace.lines(), IsEmpty());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(CustomPlanarLayoutToChannelMapTest, CopiesOutliveTheirOriginal) {
    ConfigManagerDouble none;
    CustomPlanarLayoutToChannelMap assigned(&none);
    {
        const CustomPlanarLayoutToChannelMap original = build();
        const CustomPlanarLayoutToChannelMap copy = original;
        assigned = copy;
    }
    EXPECT_TRUE(assigned.mapChannelToLayout({0.5, 0.25}, layout, 0));
    EXPECT_LT(norm(layout - Vector{0.5, 0.0, 0.25}), ROUNDING);
}

TEST_F(CustomPlanarLayoutToChannelMapTest, AChannelWithoutAMapFileIsNamed) {
    config.projectors = {&first, &second};
    EXPECT_EQ(fault(&config),
              "missing: Channel \"Right\" (P2) has no custom planar map file; the layout map needs one");
    EXPECT_EQ(config.calls("processPath"), 1U) << "nothing is looked for under an empty name";
}

TEST_F(CustomPlanarLayoutToChannelMapTest, AFileThatIsMissingOrBadIsToldAsTheReaderTellsIt) {
    first.customPlanarFile = L"nowhere.map";
    EXPECT_THAT(fault(&config), AllOf(StartsWith("missing: "), HasSubstr(folder.file("nowhere.map"))));
    give(first, L"bad.map", "2\n2 2\n-1 -1 0 zero 1\n");
    EXPECT_THAT(fault(&config), AllOf(StartsWith("parse: "), HasSubstr("bad.map")));
}

TEST_F(CustomPlanarLayoutToChannelMapTest, AProjectorWithoutARecordIsToldByItsNumber) {
    config.projectors = {&first, &second};
    IncompleteConfigDouble incomplete(config, L"P2");
    EXPECT_THAT(fault(&incomplete), AllOf(StartsWith("general: "), HasSubstr("channel 1 (counted from 0)")));
    EXPECT_EQ(fault(nullptr), "") << "without a configuration there are no channels";
}

TEST_F(CustomPlanarLayoutToChannelMapTest, WhatTheConfigurationThrowsPassesThrough) {
    config.throwFrom("processPath", std::runtime_error("broken"));
    EXPECT_THROW(build(), std::runtime_error);
}

TEST_F(CustomPlanarLayoutToChannelMapTest, TheOperationsKeepTheirPlaces) {
    EXPECT_EQ(slotOf(&CustomPlanarLayoutToChannelMap::mapLayoutToChannel), 2U) << "behind the destructor";
    EXPECT_EQ(slotOf(&CustomPlanarLayoutToChannelMap::mapChannelToLayout), 3U);
    static_assert(std::is_base_of_v<LayoutToChannelMap, CustomPlanarLayoutToChannelMap>);
}

}  // namespace
