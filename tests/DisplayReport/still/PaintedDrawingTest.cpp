#include "DisplayReport/still/PaintedDrawing.h"

#include "DisplayReport/still/ScenePainter.h"
#include "Scenes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace Veltrani::DisplayReport;
using Shape = PaintedDrawing::Shape;
using Kind = Shape::Kind;
using testing::ElementsAre;

constexpr Colour RED{255, 0, 0};
constexpr Colour GREEN{0, 255, 0};
constexpr Colour BLUE{0, 0, 255};

/// A black sheet over everything at half nearness.
Drawing sheet() {
    Drawing drawing;
    drawing.width = drawing.height = 100;
    drawing.triangles = {{{{{-100, -100, 0.5}, {400, -100, 0.5}, {-100, 400, 0.5}}}, {0, 0, 0}, 1}};
    return drawing;
}

std::vector<Shape> shapesOf(const Drawing& drawing, const Colour& colour) {
    std::vector<Shape> found;
    for (const Shape& shape : PaintedDrawing::of(drawing).shapes) {
        if (shape.colour == colour) {
            found.push_back(shape);
        }
    }
    return found;
}

double areaOf(const Shape& shape) {
    double twice = 0;
    for (const PaintedDrawing::Places& part : shape.parts) {
        for (std::size_t i = 2; i < part.size(); ++i) {
            const double piece = (part[i - 1][0] - part[0][0]) * (part[i][1] - part[0][1]) -
                                 (part[i - 1][1] - part[0][1]) * (part[i][0] - part[0][0]);
            EXPECT_GT(piece, 0) << "every area turns the same way";
            twice += piece;
        }
    }
    return twice / 2;
}

TEST(PaintedDrawing, WhatAnOpaqueSheetHidesIsLeftOut) {
    Drawing drawing = sheet();
    drawing.discs = {{{50, 50, 0.4}, RED, 3}, {{60, 50, 0.6}, GREEN, 3}};
    drawing.lines = {{{10, 50, 0.4}, {20, 50, 0.4}, RED, 1}, {{10, 60, 0.6}, {20, 60, 0.6}, BLUE, 1}};
    drawing.triangles.push_back({{{{10, 10, 0.2}, {30, 10, 0.2}, {10, 30, 0.2}}}, RED, 0.5});
    EXPECT_TRUE(shapesOf(drawing, RED).empty());
    EXPECT_EQ(shapesOf(drawing, GREEN).size(), 1U);
    EXPECT_EQ(shapesOf(drawing, BLUE).size(), 1U);
}

// Without a depth of their own, formats of shapes used to show a line or a cell as a whole or not at all.
TEST(PaintedDrawing, WhatIsHiddenInPartIsCutWhereItPassesBehind) {
    Drawing drawing;
    drawing.width = drawing.height = 100;
    drawing.triangles = {{{{{0, 0, 0.5}, {50, 0, 0.5}, {50, 100, 0.5}}}, {}, 1},
                         {{{{0, 0, 0.5}, {50, 100, 0.5}, {0, 100, 0.5}}}, {}, 1},
                         {{{{10, 10, 0.2}, {90, 10, 0.2}, {90, 90, 0.2}}}, RED, 0.5}};
    drawing.lines = {{{10, 95, 0.2}, {90, 95, 0.2}, BLUE, 1}};
    const auto line = shapesOf(drawing, BLUE);
    ASSERT_EQ(line.size(), 1U);
    ASSERT_EQ(line[0].parts.size(), 1U);
    EXPECT_NEAR(line[0].parts[0].front()[0], 50, 3);
    EXPECT_EQ(line[0].parts[0].back(), (PaintedDrawing::Place{90, 95}));
    const auto cell = shapesOf(drawing, RED);
    ASSERT_EQ(cell.size(), 1U) << "all pieces are painted at once";
    // Of 3200, a triangle of 40 by 40 is hidden.
    EXPECT_NEAR(areaOf(cell[0]), 2400, 100);
}

TEST(PaintedDrawing, WhatIsShownAsAWholeIsNotCutIntoPieces) {
    Drawing drawing = sheet();
    drawing.triangles.push_back({{{{10, 10, 0.6}, {90, 10, 0.6}, {90, 90, 0.6}}}, RED, 0.5});
    drawing.lines = {{{10, 95, 0.6}, {90, 95, 0.6}, BLUE, 1}};
    EXPECT_EQ(shapesOf(drawing, RED).at(0).parts.size(), 1U);
    EXPECT_EQ(shapesOf(drawing, BLUE).at(0).parts.at(0).size(), 2U);
}

TEST(PaintedDrawing, LinesThatContinueEachOtherAreOne) {
    Drawing drawing;
    drawing.width = drawing.height = 100;
    drawing.lines = {{{10, 10, 1}, {33.3, 20.7, 1}, BLUE, 2},
                     {{33.3, 20.7, 1}, {50, 70, 1}, BLUE, 2},
                     {{60, 70, 1}, {70, 70, 1}, BLUE, 2}};
    const auto lines = shapesOf(drawing, BLUE);
    ASSERT_EQ(lines.size(), 1U);
    ASSERT_EQ(lines[0].parts.size(), 2U);
    EXPECT_EQ(lines[0].parts[0].size(), 3U);
}

TEST(PaintedDrawing, DashedLinesStayApartFromOthers) {
    Drawing drawing;
    drawing.width = drawing.height = 100;
    drawing.lines = {{{10, 10, 1}, {50, 10, 1}, BLUE, 2, true}, {{50, 10, 1}, {90, 10, 1}, BLUE, 2}};
    const auto lines = shapesOf(drawing, BLUE);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_TRUE(lines[0].isDashed);
    EXPECT_FALSE(lines[1].isDashed);
}

TEST(PaintedDrawing, AreasTurnAlikeSoThatTheyAddUp) {
    Drawing drawing;
    drawing.width = drawing.height = 100;
    drawing.triangles = {{{{{10, 10, 1}, {90, 10, 1}, {90, 90, 1}}}, RED, 0.5},
                         {{{{10, 10, 1}, {10, 90, 1}, {90, 90, 1}}}, RED, 0.5}};
    const auto areas = shapesOf(drawing, RED);
    ASSERT_EQ(areas.size(), 1U);
    EXPECT_DOUBLE_EQ(areaOf(areas[0]), 6400);
}

// What was seen once: a coarse triangle of the screen drawn over the finer cells of a picture that lies on it.
TEST(PaintedDrawing, WhatLiesOnASurfaceIsDrawnAfterIt) {
    Drawing drawing = sheet();
    drawing.triangles[0].corners[0][2] = 0.9;  // in its middle 0.63, at the cell 0.607
    drawing.triangles.push_back({{{{80, 80, 0.61}, {90, 80, 0.61}, {80, 90, 0.61}}}, RED, 0.5});
    const PaintedDrawing painted = PaintedDrawing::of(drawing);
    ASSERT_EQ(painted.shapes.size(), 2U);
    EXPECT_EQ(painted.shapes[1].colour, RED);
}

TEST(PaintedDrawing, NearerSheetsAreDrawnLater) {
    Drawing drawing;
    drawing.width = drawing.height = 100;
    drawing.triangles = {{{{{0, 0, 0.5}, {90, 0, 0.5}, {0, 90, 0.5}}}, RED, 1},
                         {{{{50, 50, 0.2}, {100, 0, 0.2}, {100, 100, 0.2}}}, GREEN, 1}};
    const PaintedDrawing painted = PaintedDrawing::of(drawing);
    ASSERT_EQ(painted.shapes.size(), 2U);
    EXPECT_EQ(painted.shapes[0].colour, GREEN);
    EXPECT_EQ(painted.shapes[1].colour, RED);
}

TEST(PaintedDrawing, NothingLeadsFarOutOfThePicture) {
    Drawing drawing;
    drawing.width = drawing.height = 100;
    drawing.triangles = {{{{{-1e12, 10, 1}, {1e12, 10, 1}, {0, 1e12, 1}}}, RED, 0.5}};
    drawing.lines = {{{5, -1e12, 1}, {5, 1e12, 1}, RED, 2}, {{500, -1e12, 1}, {500, 1e12, 1}, RED, 2}};
    drawing.discs = {{{1e12, 0, 1}, RED, 2}};
    std::size_t places = 0;
    for (const Shape& shape : shapesOf(drawing, RED)) {
        for (const auto& part : shape.parts) {
            for (const auto& place : part) {
                EXPECT_LE(std::abs(place[0]), 200);
                EXPECT_LE(std::abs(place[1]), 200);
                ++places;
            }
        }
    }
    EXPECT_GT(places, 4U);
}

TEST(PaintedDrawing, TextsBecomeDrawable) {
    Drawing drawing;
    drawing.title = "a\nb";
    drawing.texts = {{0, 0, "x\xFFy\x01 \xEF\xBF\xBF z", 5, {}}};
    const PaintedDrawing painted = PaintedDrawing::of(drawing);
    EXPECT_EQ(painted.title, "a\\nb");
    EXPECT_EQ(painted.texts[0].text, "x\\xffy\\x01 \xEF\xBF\xBD z");
}

}  // namespace
