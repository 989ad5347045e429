#include "DisplayReport/still/PicturePainter.h"

#include "DisplayReport/scene/SceneCamera.h"
#include "DisplayReport/still/ScenePainter.h"
#include "DisplayReport/still/TakenAreas.h"
#include "Scenes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace Veltrani::DisplayReport;
using P3 = Point<double, 3>;

/// The wall with a grid of five by five over all of it, perhaps upside down.
DisplayScene wholeWall(bool isUpsideDown = false) {
    DisplayScene scene = scenes::wall();
    scene.plan = {5, 5, 1};
    SceneChannel& channel = scene.channels[0];
    channel.targets.grid.clear();
    for (int column = 0; column < 5; ++column) {
        for (int row = 0; row < 5; ++row) {
            const double down = row / 4.0;
            channel.targets.grid.push_back({column,
                                            row,
                                            {column / 4.0, 1 - down},
                                            P3{-2.0 + column, 5, isUpsideDown ? 2 * down - 1 : 1 - 2 * down}});
        }
    }
    return scene;
}

std::vector<Drawing::Text> namesIn(const Drawing& drawing) {
    std::vector<Drawing::Text> names;
    std::copy_if(drawing.texts.begin(), drawing.texts.end(), std::back_inserter(names),
                 [](const Drawing::Text& text) { return text.hasHalo && text.text != "eye point"; });
    return names;
}

/// The lines of the arrow of the first channel.
std::vector<Drawing::Line> arrowIn(const Drawing& drawing, const DisplayScene& scene) {
    const Colour dark = mixed(scene.channels[0].colour, {0, 0, 0}, 0.5);
    std::vector<Drawing::Line> lines;
    std::copy_if(drawing.lines.begin(), drawing.lines.end(), std::back_inserter(lines),
                 [&](const Drawing::Line& line) { return line.colour == dark; });
    return lines;
}

TEST(PicturePainter, APictureHasItsNumberAndItsName) {
    const Drawing drawing = ScenePainter("front", 1000, 600).paint(wholeWall());
    const auto names = namesIn(drawing);
    ASSERT_EQ(names.size(), 1U);
    EXPECT_EQ(names[0].text, "1 Left");
}

TEST(PicturePainter, TheArrowPointsToTheTopOfThePicture) {
    for (const bool isUpsideDown : {false, true}) {
        const DisplayScene scene = wholeWall(isUpsideDown);
        const auto lines = arrowIn(ScenePainter("front", 1000, 600).paint(scene), scene);
        ASSERT_GE(lines.size(), 3U) << "a shaft and both sides of its head";
        const double up = lines.front().from[1] - lines[lines.size() - 3].to[1];
        EXPECT_GT(isUpsideDown ? -up : up, 30);
        const Drawing::Place& tip = lines.back().from;
        EXPECT_EQ(tip, lines[lines.size() - 3].to);
        EXPECT_GT((lines.back().to[1] - tip[1]) * (isUpsideDown ? -1 : 1), 0) << "the head leads back";
    }
}

TEST(PicturePainter, PicturesThatOverlapKeepTheirNamesApart) {
    DisplayScene scene = wholeWall();
    for (int i = 1; i < 6; ++i) {
        scene.channels.push_back(scene.channels[0]);
    }
    const auto names = namesIn(ScenePainter("front", 1000, 600).paint(scene));
    ASSERT_EQ(names.size(), 6U);
    for (std::size_t a = 0; a < names.size(); ++a) {
        EXPECT_TRUE(names[a].text.starts_with(std::to_string(a + 1)));
        for (std::size_t b = a + 1; b < names.size(); ++b) {
            EXPECT_TRUE(std::abs(names[a].right - names[b].right) > 30 || std::abs(names[a].down - names[b].down) > 9);
        }
    }
}

TEST(PicturePainter, ThePictureInsideAnotherOneChoosesFirstAndNoNameHidesAnArrow) {
    DisplayScene scene = wholeWall();
    scene.channels.push_back(scene.channels[0]);
    SceneChannel& inset = scene.channels[1];
    inset.colour = channelColour(1);
    for (GridTarget& target : inset.targets.grid) {
        target.point = P3{0.4 * target.point[0], 5, 0.4 * target.point[2]};
    }
    for (P3& point : inset.targets.boundary) {
        point = P3{0.4 * point[0], 5, 0.4 * point[2]};
    }
    const Drawing drawing = ScenePainter("front", 1000, 600).paint(scene);
    const auto names = namesIn(drawing);
    ASSERT_EQ(names.size(), 2U);
    EXPECT_EQ(names[0].text, "2 Left");
    EXPECT_EQ(names[1].text, "1 Left");
    std::size_t arrows = 0;
    for (const Drawing::Line& line : drawing.lines) {
        for (std::size_t channel = 0; channel < 2; ++channel) {
            if (line.colour == mixed(scene.channels[channel].colour, {0, 0, 0}, 0.5)) {
                ++arrows;
                EXPECT_FALSE(PaperArea::around(line.from, line.to, 0).overlaps(PaperArea::of(names[channel])));
            }
        }
    }
    EXPECT_GE(arrows, 6U) << "two shafts and both sides of two heads";
}

TEST(PicturePainter, TargetsAreAsFarApartAsTheirNarrowSide) {
    const DisplayScene scene = wholeWall();
    const SceneCamera camera(scene, "front", 1000, 600);
    const auto across = (*camera.place({1, 5, 0}))[0] - (*camera.place({0, 5, 0}))[0];
    EXPECT_NEAR(targetSpacing(scene.channels[0], camera, 1), across / 2, 0.05 * across) << "rows, half as far apart";
    EXPECT_TRUE(std::isinf(targetSpacing(scene.channels[0], camera, 7))) << "no neighbours";
    EXPECT_TRUE(std::isinf(targetSpacing(SceneChannel(), camera, 1)));
}

TEST(PicturePainter, ANarrowPictureHasItsNumberAlone) {
    DisplayScene scene = wholeWall();
    scene.channels[0].targets.name = "A name that is much longer than its picture is wide";
    for (GridTarget& target : scene.channels[0].targets.grid) {
        target.point[0] *= 0.02;
    }
    for (P3& point : scene.channels[0].targets.boundary) {
        point[0] *= 0.02;
    }
    const auto names = namesIn(ScenePainter("front", 1000, 600).paint(scene));
    ASSERT_EQ(names.size(), 1U);
    EXPECT_EQ(names[0].text, "1");
}

TEST(PicturePainter, APictureThatAnotherPartOfTheScreenHidesHasNone) {
    DisplayScene scene = wholeWall();
    SceneSurface& surface = scene.surfaces[0];
    // A sheet between the wall and the eye; the eye sees the one side of both.
    surface.vertices.insert(surface.vertices.end(), {{-20, 4, -20}, {20, 4, -20}, {20, 4, 20}, {-20, 4, 20}});
    surface.triangles.push_back({4, 5, 6});
    surface.triangles.push_back({4, 6, 7});
    const Drawing drawing = ScenePainter("front", 1000, 600).paint(scene);
    EXPECT_TRUE(namesIn(drawing).empty());
    EXPECT_TRUE(arrowIn(drawing, scene).empty());
}

TEST(PicturePainter, WithoutAGridTheFrustumShowsWhereItIs) {
    DisplayScene scene = wholeWall();
    scene.channels[0].targets.grid.clear();
    EXPECT_TRUE(namesIn(ScenePainter("front", 1000, 600).paint(scene)).empty());
    ChannelFrustum frustum;
    frustum.rim = {{-2, 5, 1}, {2, 5, 1}, {2, 5, -1}, {-2, 5, -1}};
    frustum.leftEdge = {{-2, 5, -1}, {-2, 5, 1}};
    scene.channels[0].frustum = frustum;
    const Drawing drawing = ScenePainter("front", 1000, 600).paint(scene);
    EXPECT_EQ(namesIn(drawing).size(), 1U);
    EXPECT_EQ(arrowIn(drawing, scene).size(), 3U);
}

}  // namespace
