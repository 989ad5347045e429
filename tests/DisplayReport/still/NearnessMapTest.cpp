#include "DisplayReport/still/NearnessMap.h"

#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;

/// Over the left half of a picture of 40 by 20 pixels.
Drawing halfCovered(double nearness, double opacity = 1) {
    Drawing drawing;
    drawing.width = 40;
    drawing.height = 20;
    drawing.triangles = {{{{{-1, -1, nearness}, {20, -1, nearness}, {20, 21, nearness}}}, {}, opacity},
                         {{{{-1, -1, nearness}, {20, 21, nearness}, {-1, 21, nearness}}}, {}, opacity}};
    return drawing;
}

TEST(NearnessMap, WhatStandsBehindAnOpaqueTriangleIsHidden) {
    const NearnessMap map(halfCovered(0.5));
    EXPECT_FALSE(map.shows({10, 10, 0.4}));
    EXPECT_TRUE(map.shows({10, 10, 0.6})) << "in front";
    EXPECT_TRUE(map.shows({30, 10, 0.1})) << "beside";
}

TEST(NearnessMap, WhatLiesOnASurfaceOrAtItsEdgeIsShown) {
    const NearnessMap map(halfCovered(0.5));
    EXPECT_TRUE(map.shows({10, 10, 0.5}));
    EXPECT_TRUE(map.shows({10, 10, 0.5 * (1 - 0.9 * Drawing::LIFT)}));
    EXPECT_FALSE(map.shows({10, 10, 0.5 * (1 - 1.1 * Drawing::LIFT)}));
    EXPECT_TRUE(map.shows({19.5, 10, 0.1})) << "a neighbouring pixel is free";
}

TEST(NearnessMap, WhatIsNotOpaqueHidesNothing) {
    EXPECT_TRUE(NearnessMap(halfCovered(0.5, 0.9)).shows({10, 10, 0.1}));
}

TEST(NearnessMap, ASlantedTriangleHidesByItsNearnessAtThePixel) {
    Drawing drawing;
    drawing.width = drawing.height = 100;
    // From 0.1 at the left to 0.9 at the right, so 0.5 in the middle; the other way round it is the same.
    drawing.triangles = {{{{{0, -100, 0.1}, {100, 50, 0.9}, {0, 200, 0.1}}}, {}, 1}};
    const NearnessMap map(drawing);
    EXPECT_FALSE(map.shows({50, 50, 0.45}));
    EXPECT_TRUE(map.shows({50, 50, 0.55}));
    std::swap(drawing.triangles[0].corners[0], drawing.triangles[0].corners[1]);
    EXPECT_FALSE(NearnessMap(drawing).shows({50, 50, 0.45}));
}

TEST(NearnessMap, OutsideOfThePictureNothingIsHidden) {
    const NearnessMap map(halfCovered(0.5));
    EXPECT_TRUE(map.shows({-1, 10, 0.1}));
    EXPECT_TRUE(map.shows({10, 20, 0.1}));
    EXPECT_TRUE(NearnessMap(Drawing()).shows({0, 0, 0}));
}

}  // namespace
