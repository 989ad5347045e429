#include "DisplayReport/still/DrawingRaster.h"

#include "DisplayReport/still/Drawing.h"
#include "support/PngImage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;

PngImage imageOf(const Drawing& drawing) {
    const PngPicture picture = rasterised(drawing);
    return {picture.width, picture.height, picture.colours};
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

// A pixel that is half covered is half as dark; over the whole picture the ink is that of the circle.
TEST(DrawingRaster, ADiscHasTheAreaOfACircle) {
    Drawing drawing;
    drawing.width = drawing.height = 60;
    drawing.discs = {{{30.2, 29.7, 1}, {0, 0, 0}, 20}};
    double ink = 0;
    const PngImage image = imageOf(drawing);
    for (std::size_t down = 0; down < image.height; ++down) {
        for (std::size_t right = 0; right < image.width; ++right) {
            ink += (255 - image.at(right, down)[0]) / 255.0;
        }
    }
    // A polygon of twenty corners has 98.4 % of it.
    EXPECT_NEAR(ink / (400 * std::numbers::pi), 0.984, 0.004);
}

TEST(DrawingRaster, ALineIsAsWideAsItShouldBe) {
    Drawing drawing;
    drawing.width = drawing.height = 30;
    drawing.lines = {{{-5, 15, 1}, {35, 15, 1}, {0, 0, 0}, 4}};
    const PngImage image = imageOf(drawing);
    for (std::size_t down = 0; down < 30; ++down) {
        EXPECT_EQ(image.at(12, down)[0], down >= 13 && down < 17 ? 0 : 255) << down;
    }
}

TEST(DrawingRaster, TextAndBoxesAreOnTopOfEverything) {
    Drawing drawing;
    drawing.width = drawing.height = 40;
    drawing.discs = {{{20, 20, 1e6}, {0, 255, 0}, 30}};
    drawing.boxes = {{0, 0, 20, 40, {255, 0, 0}}};
    drawing.texts = {{2, 30, "I", 20, {0, 0, 255}, Drawing::Anchor::LEFT}};
    const PngImage image = imageOf(drawing);
    EXPECT_EQ(image.at(18, 5), (PngImage::Colour{255, 0, 0}));
    EXPECT_EQ(image.at(30, 20), (PngImage::Colour{0, 255, 0}));
    EXPECT_GT(image.count({0, 0, 255}, 0), 20U);
}

TEST(DrawingRaster, AnchorsMoveTextToTheLeft) {
    const auto leftmost = [](Drawing::Anchor anchor) {
        Drawing drawing;
        drawing.width = 100;
        drawing.height = 30;
        drawing.texts = {{50, 25, "HH", 20, {0, 0, 0}, anchor}};
        const PngImage image = imageOf(drawing);
        std::size_t right = 0;
        while (right < 100 && image.at(right, 15)[0] > 128) {
            ++right;
        }
        return right;
    };
    const std::size_t left = leftmost(Drawing::Anchor::LEFT);
    const std::size_t middle = leftmost(Drawing::Anchor::MIDDLE);
    const std::size_t right = leftmost(Drawing::Anchor::RIGHT);
    EXPECT_NEAR(static_cast<double>(left), 49, 1);
    EXPECT_NEAR(static_cast<double>(left - middle) * 2, static_cast<double>(left - right), 2);
    EXPECT_GT(middle, right);
}

TEST(DrawingRaster, ShapesFarOutsideOfThePictureCostNothingAndHarmNothing) {
    Drawing drawing;
    drawing.width = drawing.height = 20;
    drawing.triangles = {{{{{1e12, 1e12, 1}, {2e12, 1e12, 1}, {1e12, 2e12, 1}}}, {0, 0, 0}, 1}};
    drawing.lines = {{{-1e12, -1e12, 1}, {-1e11, -1e12, 1}, {0, 0, 0}, 3}};
    drawing.discs = {{{1e12, 0, 1}, {0, 0, 0}, 5}};
    EXPECT_EQ(imageOf(drawing).count({255, 255, 255}, 0), 400U);
}

TEST(DrawingRaster, TrianglesWithoutAnAreaDrawNothing) {
    Drawing drawing;
    drawing.width = drawing.height = 20;
    drawing.triangles = {{{{{5, 5, 1}, {15, 15, 1}, {10, 10, 1}}}, {0, 0, 0}, 1}};
    drawing.lines = {{{5, 5, 1}, {5, 5, 1}, {0, 0, 0}, 3}};
    EXPECT_EQ(imageOf(drawing).count({255, 255, 255}, 0), 400U);
}

}  // namespace
