#include "DisplayReport/LandingExtent.h"

#include "LitDisplays.h"

namespace {

using namespace Veltrani::DisplayReport;

using LandingExtentTest = LitDisplayTest;

TEST_F(LandingExtentTest, IsTheBoxOfARectangleOnAWall) {
    load(displays::FLAT, displays::projector("A", "<ScreenArea left='0' right='0.5' bottom='0.25' top='1'/>"));
    const Extent extent = landingExtentOf(*lights().at(0));
    EXPECT_EQ(extent.minimum(), (P3{-2, 5, 0.5}));
    EXPECT_EQ(extent.maximum(), (P3{0, 5, 2}));
}

TEST_F(LandingExtentTest, WhatLandsBesideTheScreenIsNotInIt) {
    // The wall of 4 x 2 stands 5 m away from the floor up to 2 m; the camera looks at its right part.
    load(displays::FLAT, camera("A", "-10", "40", "-20", "20", "<Position x='0.5' y='0' z='1'/>"),
         displays::PROJECTORS);
    const Extent extent = landingExtentOf(*lights().at(0));
    EXPECT_NEAR(extent.minimum()[0], 0.5 - 5 * std::tan(radians(10)), 1e-12);
    // The last points before the edge of the wall.
    EXPECT_LE(extent.maximum()[0], 2);
    EXPECT_GT(extent.maximum()[0], 1.9);
}

TEST_F(LandingExtentTest, IsEmptyWhereNothingLands) {
    load(displays::FLAT, displays::projector("A", "<ScreenArea left='1.2' right='1.4' bottom='0' top='1'/>"));
    EXPECT_TRUE(landingExtentOf(*lights().at(0)).empty());
}

}  // namespace
