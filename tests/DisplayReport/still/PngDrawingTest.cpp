// The pixels of stills.
#include "Common/VeltraniException.h"
#include "DisplayReport/still/ScenePainter.h"
#include "Scenes.h"
#include "still/Stills.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;
using stills::imageOf;

TEST(PngDrawing, HasThePixelsOfTheDrawing) {
    const PngImage image = imageOf(ScenePainter("home", 320, 200).paint(scenes::wall()));
    EXPECT_EQ(image.width, 320U);
    EXPECT_EQ(image.height, 200U);
}

TEST(PngDrawing, WithoutAPixelIsRefusedInEveryFormat) {
    for (const std::string& format : DrawingWriter::formats()) {
        EXPECT_THROW(stills::fileOf({}, format), VeltraniException) << format;
    }
}

TEST(PngDrawing, NearerHidesFartherWhateverTheOrder) {
    Drawing drawing;
    drawing.width = 30;
    drawing.height = 90;
    const auto sheet = [](double nearness, const Colour& colour) {
        return Drawing::Triangle{{{{-10, -10, nearness}, {300, -10, nearness}, {-10, 300, nearness}}}, colour, 1};
    };
    drawing.triangles = {sheet(0.5, {10, 20, 30}), sheet(0.25, {200, 200, 200})};
    drawing.lines = {{{0, 45, 0.1}, {30, 45, 0.1}, {255, 0, 0}, 5}};
    drawing.discs = {{{15, 70, 0.9}, {0, 255, 0}, 4}};
    const PngImage image = imageOf(drawing);
    EXPECT_EQ(image.at(5, 5), (PngImage::Colour{10, 20, 30}));
    EXPECT_EQ(image.at(15, 45), (PngImage::Colour{10, 20, 30})) << "the line is behind";
    EXPECT_EQ(image.at(15, 70), (PngImage::Colour{0, 255, 0})) << "the disc is in front";
}

TEST(PngDrawing, NeighboursLeaveNoGapAndDoNotOverlap) {
    Drawing drawing;
    drawing.width = drawing.height = 40;
    const Drawing::Place a{3.3, 2.1, 1};
    const Drawing::Place b{37.7, 5.2, 1};
    const Drawing::Place c{33.1, 36.4, 1};
    const Drawing::Place d{5.9, 31.8, 1};
    for (const double opacity : {0.5, 1.0}) {
        // The second turns the other way.
        drawing.triangles = {{{{a, b, c}}, {0, 0, 0}, opacity}, {{{a, d, c}}, {0, 0, 0}, opacity}};
        const PngImage image = imageOf(drawing);
        for (std::size_t i = 10; i < 30; ++i) {
            EXPECT_NEAR(image.at(i, i)[0], 255 * (1 - opacity), 1) << i;
        }
    }
}

// A pixel that is half covered is half as dark; over the whole picture the ink is that of the circle.
TEST(PngDrawing, ADiscHasTheAreaOfACircle) {
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
    EXPECT_NEAR(ink / (400 * std::numbers::pi), 1, 0.005);
}

TEST(PngDrawing, ALineIsAsWideAsItShouldBe) {
    Drawing drawing;
    drawing.width = drawing.height = 30;
    drawing.lines = {{{-5, 15, 1}, {35, 15, 1}, {0, 0, 0}, 4}};
    const PngImage image = imageOf(drawing);
    for (std::size_t down = 0; down < 30; ++down) {
        EXPECT_EQ(image.at(12, down)[0], down >= 13 && down < 17 ? 0 : 255) << down;
    }
}

TEST(PngDrawing, ADashedLineHasGaps) {
    Drawing drawing;
    drawing.width = 100;
    drawing.height = 20;
    drawing.lines = {{{0, 10, 1}, {100, 10, 1}, {0, 0, 0}, 2, true}};
    const PngImage image = imageOf(drawing);
    int changes = 0;
    for (std::size_t right = 1; right < 100; ++right) {
        changes += (image.at(right, 10)[0] < 128) != (image.at(right - 1, 10)[0] < 128) ? 1 : 0;
    }
    EXPECT_GE(changes, 8);
    drawing.lines[0].isDashed = false;
    EXPECT_GT(imageOf(drawing).count({0, 0, 0}, 40), 190U);
}

TEST(PngDrawing, TextAndBoxesAreOnTopOfEverything) {
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

TEST(PngDrawing, ACapitalIsAsHighAsItShouldBe) {
    Drawing drawing;
    drawing.width = drawing.height = 60;
    drawing.texts = {{10, 50, "H", 36, {0, 0, 0}, Drawing::Anchor::LEFT}};
    const PngImage image = imageOf(drawing);
    std::size_t first = 60;
    std::size_t last = 0;
    for (std::size_t down = 0; down < 60; ++down) {
        for (std::size_t right = 0; right < 60; ++right) {
            if (image.at(right, down)[0] < 128) {
                first = std::min(first, down);
                last = down;
            }
        }
    }
    EXPECT_EQ(last, 49U) << "it stands on its line";
    EXPECT_NEAR(static_cast<double>(last + 1 - first), 36, 1);
}

TEST(PngDrawing, AnchorsMoveTextToTheLeft) {
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
    EXPECT_NEAR(static_cast<double>(left), 52, 2);
    EXPECT_NEAR(static_cast<double>(left - middle) * 2, static_cast<double>(left - right), 2);
    EXPECT_GT(middle, right);
}

TEST(PngDrawing, LettersOnAPictureHavePaperAroundThem) {
    Drawing drawing;
    drawing.width = drawing.height = 40;
    drawing.boxes = {{0, 0, 40, 40, {90, 90, 90}}};
    drawing.texts = {{15, 30, "I", 20, {0, 0, 0}, Drawing::Anchor::LEFT}};
    const std::size_t dark = imageOf(drawing).count({90, 90, 90}, 0);
    drawing.texts[0].hasHalo = true;
    const PngImage image = imageOf(drawing);
    EXPECT_LT(image.count({90, 90, 90}, 0), dark - 50);
    EXPECT_GT(image.count({222, 222, 222}, 10), 50U);
}

TEST(PngDrawing, ShapesFarOutsideOfThePictureCostNothingAndHarmNothing) {
    Drawing drawing;
    drawing.width = drawing.height = 20;
    drawing.triangles = {{{{{1e12, 1e12, 1}, {2e12, 1e12, 1}, {1e12, 2e12, 1}}}, {0, 0, 0}, 1}};
    drawing.lines = {{{-1e12, -1e12, 1}, {-1e11, -1e12, 1}, {0, 0, 0}, 3}};
    drawing.discs = {{{1e12, 0, 1}, {0, 0, 0}, 5}};
    EXPECT_EQ(imageOf(drawing).count({255, 255, 255}, 0), 400U);
}

TEST(PngDrawing, ShapesThatReachFarAreDrawnWhereTheyAre) {
    Drawing drawing;
    drawing.width = drawing.height = 20;
    drawing.triangles = {{{{{-1e12, 10, 1}, {1e12, 10, 1}, {0, 1e12, 1}}}, {0, 0, 0}, 1}};
    drawing.lines = {{{5, -1e12, 1}, {5, 1e12, 1}, {255, 0, 0}, 2}};
    const PngImage image = imageOf(drawing);
    EXPECT_EQ(image.at(12, 5), (PngImage::Colour{255, 255, 255}));
    EXPECT_EQ(image.at(12, 15), (PngImage::Colour{0, 0, 0}));
    EXPECT_EQ(image.at(4, 5), (PngImage::Colour{255, 0, 0}));
    EXPECT_EQ(image.at(4, 15), (PngImage::Colour{255, 0, 0}));
}

TEST(PngDrawing, TrianglesWithoutAnAreaDrawNothing) {
    Drawing drawing;
    drawing.width = drawing.height = 20;
    drawing.triangles = {{{{{5, 5, 1}, {15, 15, 1}, {10, 10, 1}}}, {0, 0, 0}, 1}};
    drawing.lines = {{{5, 5, 1}, {5, 5, 1}, {0, 0, 0}, 3}};
    EXPECT_EQ(imageOf(drawing).count({255, 255, 255}, 0), 400U);
}

}  // namespace
