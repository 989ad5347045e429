#include "ExportFiles/ChannelWarpGrid.h"

#include "ExportedDisplays.h"

#include <gtest/gtest.h>

namespace {

using namespace Veltrani::ExportFiles;
using namespace exported_displays;
using Veltrani::DisplayExport::InputKind;
using Veltrani::DisplayExport::WarpNode;
using P2 = Point<double, 2>;

TEST(ContentStrip, HasTheFacesBesideEachOther) {
    const ContentStrip cube{6, false};
    EXPECT_EQ(cube.placeOf({0.5, 0.25}, 0), (P2{0.5 / 6, 0.25}));
    EXPECT_EQ(cube.placeOf({1.0, 1.0}, 5), (P2{1.0, 1.0}));
    EXPECT_EQ(ContentStrip().placeOf({1.25, 0.25}, 0), (P2{1.25, 0.25}));
}

TEST(ContentStrip, MovesWhatLiesBeyondOneEdgeToTheOther) {
    const ContentStrip panorama{1, true};
    EXPECT_EQ(panorama.wrappedPlaceOf({1.25, 0.5}, 0), (P2{0.25, 0.5}));
    EXPECT_EQ(panorama.wrappedPlaceOf({-0.25, 0.5}, 0), (P2{0.75, 0.5}));
    EXPECT_EQ(panorama.wrappedPlaceOf({1.0, 1.5}, 0), (P2{1.0, 1.5})) << "an edge stays the edge that it is";
    EXPECT_EQ(panorama.placeOf({1.25, 0.5}, 0), (P2{1.25, 0.5}));
    EXPECT_EQ(ContentStrip().wrappedPlaceOf({1.25, 0.5}, 0), (P2{1.25, 0.5}));
}

TEST(ChannelWarpGrid, HasTheNodesThatItIsGiven) {
    const ExportedChannel wall(WALL);
    const auto warp = wall.warp(InputKind::LAYOUT, nodes(3, 2));
    std::vector<WarpNode> given = warp.nodes();
    given[4] = WarpNode();
    given[5].state = WarpNode::State::CONTINUED;
    const ChannelWarpGrid grid(warp, given, {});
    EXPECT_EQ(grid.columns(), 3U);
    EXPECT_EQ(grid.rows(), 2U);
    EXPECT_EQ(grid.pixels(), (Point<int, 2>{32, 16}));
    EXPECT_TRUE(grid.at(1, 0).isMapped);
    EXPECT_EQ(grid.at(1, 0).input, (P2{0.5, 0.0}));
    EXPECT_FALSE(grid.at(1, 1).isMapped);
    EXPECT_TRUE(grid.at(2, 1).isMapped) << "a continued one";
    EXPECT_EQ(grid.at(2, 1).input, (P2{1.0, 1.0}));
}

/// Nodes keep content that goes on over an edge, and have the brightness of their place; pixels have neither.
TEST(ChannelWarpGrid, NodesGoOnBeyondTheEdgesAndPixelsStayBetweenThem) {
    const ExportedChannel behind(BEHIND);
    const ContentStrip panorama{1, true};
    const auto brightness = [](const P2& picture) { return 0.25 + 0.5 * picture[0] + 0.125 * picture[1]; };
    for (const bool isOfNodes : {true, false}) {
        const auto warp = behind.warp(InputKind::EQUIRECTANGULAR, isOfNodes ? nodes(3, 2) : pixels(false));
        std::vector<WarpNode> given = warp.nodes();
        given[warp.columns() + 1].content = {1.25, 0.5};
        const ChannelWarpGrid grid(warp, given, panorama, brightness);
        EXPECT_EQ(grid.at(1, 1).input, (P2{isOfNodes ? 1.25 : 0.25, 0.5}));
        EXPECT_EQ(grid.at(1, 1).brightness, isOfNodes ? 0.625 : 1);
        EXPECT_EQ(grid.at(2, 0).brightness, isOfNodes ? 0.75 : 1);
        EXPECT_EQ(ChannelWarpGrid(warp, given, panorama).at(1, 1).brightness, 1);
    }
}

}  // namespace
