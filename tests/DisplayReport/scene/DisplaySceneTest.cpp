#include "DisplayReport/scene/DisplayScene.h"

#include "Scenes.h"

#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using scenes::wall;
using P3 = Point<double, 3>;

TEST(DisplayScene, NothingIsFramedByTheUnitCube) {
    const DisplayScene scene;
    EXPECT_TRUE(scene.core().empty());
    EXPECT_TRUE(scene.framedPoints().empty());
    EXPECT_EQ(scene.frame().minimum(), (P3{-0.5, -0.5, -0.5}));
    EXPECT_EQ(scene.frame().maximum(), (P3{0.5, 0.5, 0.5}));
}

TEST(DisplayScene, TheCoreIsTheScreen) {
    EXPECT_EQ(wall().core().minimum(), (P3{-2, 5, -1}));
    EXPECT_EQ(wall().core().maximum(), (P3{2, 5, 1}));
}

TEST(DisplayScene, WithoutAScreenTheTargetsAreTheCore) {
    DisplayScene scene = wall();
    scene.surfaces.clear();
    EXPECT_EQ(scene.core().minimum(), (P3{-2, 5, -1}));
    EXPECT_EQ(scene.core().maximum(), (P3{0, 5, 1}));
}

TEST(DisplayScene, TheFrameHoldsWhatStandsNear) {
    EXPECT_EQ(wall().frame().minimum(), (P3{-2, 0, -1})) << "the eye point";
    DisplayScene scene = wall();
    scene.channels[0].frustum.emplace();
    scene.channels[0].frustum->apex = {0, -1, 3};
    scene.channels[0].frustum->edges = {{{0, -1, 3}, {0, 6, 0}}};
    scene.cloud = SceneCloud{{{-3, 5, 0}}};
    EXPECT_EQ(scene.frame().minimum(), (P3{-3, -1, -1}));
    EXPECT_EQ(scene.frame().maximum(), (P3{2, 6, 3}));
}

TEST(DisplayScene, OneOutlierDoesNotShrinkThePicture) {
    DisplayScene scene = wall();
    scene.eyes[0].point = {1e9, 0, 0};
    scene.channels[0].targets.grid[0].point = {0, 1e9, 0};
    scene.channels[0].targets.boundary[0] = {0, 0, -1e9};
    scene.cloud = SceneCloud{{{1e9, 1e9, 1e9}}};
    EXPECT_EQ(scene.frame().minimum(), (P3{-2, 5, -1}));
    EXPECT_EQ(scene.frame().maximum(), (P3{2, 5, 1}));
}

TEST(DisplayScene, AProjectorFarBehindItsScreenIsStillFramed) {
    DisplayScene scene = wall();
    scene.eyes[0].point = {0, -12, 0};
    EXPECT_EQ(scene.frame().minimum()[1], -12) << "less than four sizes of the screen away";
    scene.eyes[0].point = {0, -14, 0};
    EXPECT_EQ(scene.frame().minimum()[1], 5);
}

}  // namespace
