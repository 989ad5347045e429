#include "DisplayReport/ScenePainter.h"

#include "DisplayReport/DisplayScene.h"
#include "DisplayReport/DrawingRaster.h"
#include "DisplayReport/DrawingWriter.h"
#include "DisplayReport/SceneCamera.h"
#include "support/PngImage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;
using testing::Not;
using P3 = Point<double, 3>;

/// A wall of four by two at y = 5, seen from the origin, with one channel over its left half.
DisplayScene wall() {
    DisplayScene scene;
    scene.title = "A <wall> & more";
    scene.unit = "m";
    scene.plan = {2, 2, 1};
    SceneSurface surface;
    surface.name = "content";
    surface.vertices = {{-2, 5, -1}, {2, 5, -1}, {2, 5, 1}, {-2, 5, 1}};
    surface.triangles = {{0, 1, 2}, {0, 2, 3}};
    scene.surfaces = {surface};
    SceneChannel channel;
    channel.colour = channelColour(0);
    channel.targets.name = "Left";
    channel.targets.grid = {{0, 0, {0.0, 0.0}, {-2, 5, 1}},
                            {0, 1, {0.0, 1.0}, {-2, 5, -1}},
                            {1, 0, {1.0, 0.0}, {0, 5, 1}},
                            {1, 1, {1.0, 1.0}, {0, 5, -1}}};
    channel.targets.boundary = {{-2, 5, 1}, {0, 5, 1}, {0, 5, -1}, {-2, 5, -1}};
    scene.channels = {channel};
    scene.eyes = {{"eye point", P3()}};
    return scene;
}

TEST(SceneCamera, EveryViewHoldsTheWholeFrame) {
    const DisplayScene scene = wall();
    for (const std::string& view : SceneCamera::views()) {
        const SceneCamera camera(scene, view, 800, 500);
        for (const double x : {-2.0, 2.0}) {
            for (const double y : {0.0, 5.0}) {
                for (const double z : {-1.0, 1.0}) {
                    const auto place = camera.place({x, y, z});
                    ASSERT_TRUE(place.has_value()) << view;
                    EXPECT_GE((*place)[0], 0) << view;
                    EXPECT_LE((*place)[0], 800) << view;
                    EXPECT_GE((*place)[1], 0) << view;
                    EXPECT_LE((*place)[1], 500) << view;
                }
            }
        }
    }
}

TEST(SceneCamera, RightIsRightAndUpIsUp) {
    const DisplayScene scene = wall();
    const SceneCamera front(scene, "front", 800, 500);
    EXPECT_LT(front.place({-2, 5, 0})->operator[](0), front.place({2, 5, 0})->operator[](0));
    EXPECT_LT(front.place({0, 5, 1})->operator[](1), front.place({0, 5, -1})->operator[](1));
    EXPECT_GT(front.place({0, 0, 0})->operator[](2), front.place({0, 5, 0})->operator[](2)) << "nearer";
    const SceneCamera top(scene, "top", 800, 500);
    EXPECT_LT(top.place({0, 5, 0})->operator[](1), top.place({0, 0, 0})->operator[](1)) << "forward is up";
    const SceneCamera home(scene, "home", 800, 500);
    EXPECT_LT(home.position()[1], 5) << "from the audience's side";
    EXPECT_GT(home.position()[2], 1) << "from above";
    EXPECT_FALSE(front.place({0, -1000, 0}).has_value()) << "behind";
}

// The front view is symmetric, so the middle of the wall's left half lies at three eighths of its own width.
TEST(ScenePainter, TheChannelsPictureLiesOnItsHalfOfTheScreen) {
    const DisplayScene scene = wall();
    const Drawing drawing = ScenePainter("front", 500, 300).paint(scene);
    const PngPicture picture = rasterised(drawing);
    PngImage image{picture.width, picture.height, picture.colours};
    const double left = (drawing.triangles[0].corners[0][0] + drawing.triangles[1].corners[0][0]) / 2;
    const double right = drawing.triangles[0].corners[1][0];
    const double down = (drawing.triangles[0].corners[1][1] + drawing.triangles[0].corners[2][1]) / 2;
    const auto at = [&](double part) {
        return image.at(static_cast<std::size_t>(left + (right - left) * part), static_cast<std::size_t>(down) + 9);
    };
    const auto lit = at(0.3);
    const auto dark = at(0.7);
    EXPECT_GT(lit[0] - lit[2], 60) << "orange";
    EXPECT_LT(std::abs(dark[0] - dark[2]), 30) << "the bare screen";
    EXPECT_EQ(image.at(499, 299), (PngImage::Colour{255, 255, 255}));
}

TEST(DrawingRaster, NearerHidesFartherWhateverTheOrder) {
    Drawing drawing;
    drawing.width = 30;
    drawing.height = 90;
    const auto sheet = [](double nearness, const Colour& colour) {
        return Drawing::Triangle{{{{-10, -10, nearness}, {300, -10, nearness}, {-10, 300, nearness}}}, colour, 1};
    };
    drawing.triangles = {sheet(0.5, {10, 20, 30}), sheet(0.25, {200, 200, 200})};
    drawing.lines = {{{0, 45, 0.1}, {30, 45, 0.1}, {255, 0, 0}, 5}};
    drawing.discs = {{{15, 70, 0.9}, {0, 255, 0}, 4}};
    const PngPicture picture = rasterised(drawing);
    const PngImage image{picture.width, picture.height, picture.colours};
    EXPECT_EQ(image.at(5, 5), (PngImage::Colour{10, 20, 30}));
    EXPECT_EQ(image.at(15, 45), (PngImage::Colour{10, 20, 30})) << "the line is behind";
    EXPECT_EQ(image.at(15, 70), (PngImage::Colour{0, 255, 0})) << "the disc is in front, in the second band of rows";
}

TEST(DrawingRaster, NeighboursLeaveNoGapAndDoNotOverlap) {
    Drawing drawing;
    drawing.width = drawing.height = 40;
    const Drawing::Place a{3.3, 2.1, 1};
    const Drawing::Place b{37.7, 5.2, 1};
    const Drawing::Place c{33.1, 36.4, 1};
    const Drawing::Place d{5.9, 31.8, 1};
    drawing.triangles = {{{a, b, c}, {0, 0, 0}, 0.5}, {{a, c, d}, {0, 0, 0}, 0.5}};
    const PngPicture picture = rasterised(drawing);
    const PngImage image{picture.width, picture.height, picture.colours};
    for (std::size_t i = 10; i < 30; ++i) {
        EXPECT_EQ(image.at(i, i), (PngImage::Colour{128, 128, 128})) << i;
    }
}

TEST(DrawingWriter, SvgEscapesTextAndIsWhole) {
    std::ostringstream out;
    DrawingWriter::ofFormat("svg")->write(ScenePainter("home", 800, 500).paint(wall()), out);
    EXPECT_THAT(out.str(), HasSubstr("A &lt;wall&gt; &amp; more</title>"));
    EXPECT_THAT(out.str(), Not(HasSubstr("nan")));
    EXPECT_TRUE(out.str().ends_with("</svg>\n"));
}

TEST(DrawingWriter, PngHasTheSizeThatWasAskedFor) {
    std::ostringstream out;
    DrawingWriter::ofFormat("png")->write(ScenePainter("home", 320, 200).paint(wall()), out);
    const PngImage image = PngImage::read(out.str());
    EXPECT_EQ(image.width, 320U);
    EXPECT_EQ(image.height, 200U);
    EXPECT_EQ(DrawingWriter::ofFormat("bmp"), nullptr);
}

TEST(ScenePainter, AnEmptySceneIsAPictureToo) {
    for (const std::string& view : SceneCamera::views()) {
        const Drawing drawing = ScenePainter(view, 300, 200).paint({});
        EXPECT_EQ(rasterised(drawing).colours.size(), 3U * 300 * 200);
    }
}

}  // namespace
