#include "DisplayReport/coverage/ChannelLight.h"

#include "LitDisplays.h"

namespace {

using namespace Veltrani::DisplayReport;

using LandingExtentTest = LitDisplayTest;

TEST_F(LandingExtentTest, IsTheBoxOfARectangleOnAWall) {
    load(displays::FLAT, displays::projector("A", "<ScreenArea left='0' right='0.5' bottom='0.25' top='1'/>"));
    const Extent extent = LandingExtent::of(*lights().at(0)).box;
    EXPECT_EQ(extent.minimum(), (P3{-2, 5, 0.5}));
    EXPECT_EQ(extent.maximum(), (P3{0, 5, 2}));
}

TEST_F(LandingExtentTest, WhatLandsBesideTheScreenIsNotInIt) {
    // The wall of 4 x 2 stands 5 m away from the floor up to 2 m; the camera looks at its right part.
    load(displays::FLAT, camera("A", "-10", "40", "-20", "20", "<Position x='0.5' y='0' z='1'/>"),
         displays::PROJECTORS);
    const Extent extent = LandingExtent::of(*lights().at(0)).box;
    EXPECT_NEAR(extent.minimum()[0], 0.5 - 5 * std::tan(radians(10)), 1e-12);
    // The last points before the edge of the wall.
    EXPECT_LE(extent.maximum()[0], 2);
    EXPECT_GT(extent.maximum()[0], 1.9);
}

TEST_F(LandingExtentTest, IsEmptyWhereNothingLands) {
    load(displays::FLAT, displays::projector("A", "<ScreenArea left='1.2' right='1.4' bottom='0' top='1'/>"));
    EXPECT_TRUE(LandingExtent::of(*lights().at(0)).box.empty());
}

// However the strip is turned: its box would not tell.
TEST_F(LandingExtentTest, TellsHowNarrowAPictureIs) {
    load(displays::FLAT, displays::projector("A", "<ScreenArea left='0.25' right='0.26' bottom='0.25' top='0.75'/>") +
                             displays::projector("B", "<ScreenArea left='0' right='1' bottom='0.5' top='0.4'/>"));
    EXPECT_NEAR(LandingExtent::of(*lights().at(0)).narrow, 0.04, 1e-12);
    EXPECT_NEAR(LandingExtent::of(*lights().at(1)).narrow, 0.2, 1e-12);
    load("<Screen shape='Flat'><Centre x='0' y='5' z='0'/><Size width='30' height='20'/></Screen>",
         camera("A", "-0.5", "0.5", "-20", "20", "<Orientation z='0' x='0' y='40'/>"), displays::PROJECTORS);
    EXPECT_NEAR(LandingExtent::of(*lights().at(0)).narrow, 10 * std::tan(radians(0.5)), 1e-9);
}

}  // namespace
