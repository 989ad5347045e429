#include "ExportFiles/TestPicture.h"

#include "DisplayReport/still/Drawing.h"
#include "DisplayReport/still/StillLibrary.h"
#include "support/PngImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>
#include <tuple>

namespace {

using Veltrani::DisplayReport::Colour;
using Veltrani::DisplayReport::Drawing;
using Veltrani::ExportFiles::TestPicture;
using P2 = Point<double, 2>;

constexpr PngImage::Colour WHITE{255, 255, 255};
constexpr PngImage::Colour BLACK{0, 0, 0};
constexpr PngImage::Colour YELLOW{255, 255, 0};
constexpr PngImage::Colour GREY{110, 110, 110};
constexpr PngImage::Colour BLUE{0, 100, 200};

TestPicture pictureOf(int width, int height) {
    return {7, "Upper left", "020000000001", {width, height}, {0, 100, 200}, {}};
}

PngImage shown(const TestPicture& picture) {
    std::ostringstream out;
    picture.write(out);
    return PngImage::read(out.str());
}

TEST(TestPicture, HasAFrameOnItsOutermostPixels) {
    const PngImage image = shown(pictureOf(500, 300));
    ASSERT_EQ(image.width, 500U);
    ASSERT_EQ(image.height, 300U);
    for (const std::size_t right : {0U, 33U, 499U}) {
        EXPECT_EQ(image.at(right, 0), WHITE);
        EXPECT_EQ(image.at(right, 299), WHITE);
    }
    for (const std::size_t down : {0U, 33U, 299U}) {
        EXPECT_EQ(image.at(0, down), WHITE);
        EXPECT_EQ(image.at(499, down), WHITE);
    }
    EXPECT_EQ(image.at(1, 20), BLACK) << "the frame is one pixel wide";
    EXPECT_EQ(image.at(498, 20), BLACK);
}

// Upside down, or from one edge too far, the lines would stand elsewhere: 0.1 of 505 pixels is the pixel 50.
TEST(TestPicture, HasLinesAtTheTenths) {
    const PngImage image = shown(pictureOf(505, 303));
    EXPECT_EQ(image.at(50, 5), GREY);
    EXPECT_EQ(image.at(49, 5), BLACK);
    EXPECT_EQ(image.at(51, 5), BLACK);
    EXPECT_EQ(image.at(252, 5), WHITE) << "the half is white";
    EXPECT_EQ(image.at(480, 302 - 30), GREY) << "v 0.1 is 30 pixels above the lowest";
    EXPECT_EQ(image.at(480, 302 - 29), BLACK);
    EXPECT_EQ(image.at(480, 302 - 151), WHITE);
}

TEST(TestPicture, TheMiddleOfATargetIsThePixelThatItLiesIn) {
    TestPicture picture = pictureOf(500, 300);
    picture.targets = {{0, 0}, {1, 1}, {100.9 / 500, 70.1 / 300}};
    const PngImage image = shown(picture);
    EXPECT_EQ(image.at(100, 299 - 70), WHITE);
    EXPECT_EQ(image.at(101, 299 - 70), BLACK) << "around its middle nothing is drawn";
    EXPECT_EQ(image.at(104, 299 - 70), YELLOW);
    EXPECT_EQ(image.at(96, 299 - 70), YELLOW);
    EXPECT_EQ(image.at(100, 299 - 74), YELLOW);
    EXPECT_EQ(image.at(100, 299 - 66), YELLOW);
    EXPECT_EQ(image.at(0, 299 - 4), YELLOW) << "on the corner of the picture its arms point inwards";
    EXPECT_EQ(image.at(495, 0), YELLOW);
}

// The words stand in the middle, where targets do, too.
TEST(TestPicture, NoWordHidesATarget) {
    TestPicture picture = pictureOf(960, 600);
    const PngImage words = shown(picture);
    std::size_t covered = 0;
    for (std::size_t down = 340; down < 384; down += 7) {
        for (std::size_t right = 300; right < 660; ++right) {
            if (words.at(right, down) == BLUE && words.at(right, down + 1) == BLUE) {
                picture.targets = {
                    {(static_cast<double>(right) + 0.5) / 960, 1 - (static_cast<double>(down) + 0.5) / 600}};
                const PngImage image = shown(picture);
                EXPECT_EQ(image.at(right, down), WHITE);
                EXPECT_EQ(image.at(right, down + 1), BLACK);
                EXPECT_EQ(image.at(right + 4, down), YELLOW);
                ++covered;
                right += 40;
            }
        }
    }
    EXPECT_GT(covered, 5U);
}

TEST(TestPicture, NoTargetHidesTheMiddleOfAnother) {
    TestPicture picture = pictureOf(500, 300);
    picture.targets = {{100.5 / 500, 70.5 / 300}, {104.5 / 500, 70.5 / 300}, {100.5 / 500, 75.5 / 300}};
    const PngImage image = shown(picture);
    EXPECT_EQ(image.at(100, 299 - 70), WHITE);
    EXPECT_EQ(image.at(104, 299 - 70), WHITE);
    EXPECT_EQ(image.at(100, 299 - 75), WHITE);
}

TEST(TestPicture, TheArrowPointsUpwards) {
    const PngImage image = shown(pictureOf(960, 600));
    std::size_t highest = 0;
    std::size_t widest = 0;
    for (std::size_t down = 0; down < 300; ++down) {
        std::size_t count = 0;
        for (std::size_t right = 0; right < image.width; ++right) {
            count += image.at(right, down) == BLUE ? 1 : 0;
        }
        if (count > 0 && highest == 0) {
            highest = down;
            EXPECT_LE(count, 3U) << "its upper end is the point";
        }
        widest = std::max(widest, count);
    }
    EXPECT_GT(highest, 0U);
    EXPECT_GT(widest, 20U);
}

TEST(TestPicture, SaysWhoseItIs) {
    const TestPicture picture = pictureOf(960, 600);
    EXPECT_GT(shown(picture).count(BLUE, 0), 1000U) << "number, name and arrow have the colour of the channel";
    TestPicture other = picture;
    other.name = "Lower left";
    EXPECT_NE(shown(other).bytes, shown(picture).bytes);
    other = picture;
    other.number = 8;
    EXPECT_NE(shown(other).bytes, shown(picture).bytes);
    other = picture;
    other.projectorId = "020000000002";
    EXPECT_NE(shown(other).bytes, shown(picture).bytes);
}

/// Boxes with left, top, width and height.
std::vector<std::array<double, 4>> boxesOf(const std::vector<Drawing::Box>& boxes, const Colour& colour) {
    std::vector<std::array<double, 4>> found;
    for (const Drawing::Box& box : boxes) {
        if (box.colour == colour) {
            found.push_back({box.left, box.top, box.width, box.height});
        }
    }
    return found;
}

/// The only text of its kind.
Drawing::Text textOf(const Drawing& drawing, const std::string& text) {
    const auto found = std::find_if(drawing.texts.begin(), drawing.texts.end(),
                                    [&text](const Drawing::Text& one) { return one.text == text; });
    return found == drawing.texts.end() ? Drawing::Text() : *found;
}

void expectText(const Drawing& drawing, const std::string& text, const P2& place, double size, Drawing::Anchor anchor,
                const Colour& colour) {
    const Drawing::Text found = textOf(drawing, text);
    EXPECT_EQ((P2{found.right, found.down}), place) << text;
    EXPECT_EQ(found.size, size) << text;
    EXPECT_EQ(found.anchor, anchor) << text;
    EXPECT_EQ(found.colour, colour) << text;
}

// In a picture of 1280 pixels a line is two pixels wide and a letter 20 pixels high; lengths by hand from there.
TEST(TestPicture, HasItsWordsBesideTheLinesAndAroundTheMiddle) {
    const Drawing drawing = pictureOf(1280, 1280).draw();
    EXPECT_EQ(drawing.title, "Upper left");
    using Anchor = Drawing::Anchor;
    const Colour white{255, 255, 255};
    const Colour own{0, 100, 200};
    expectText(drawing, "u 0.3", {384.0 + 2 + 10, 1280.0 - 20}, 20, Anchor::LEFT, white);
    expectText(drawing, "v 0.3", {20.0, 1280.0 - 1 - 384 - 10}, 20, Anchor::LEFT, white);
    expectText(drawing, "0, 0", {20.0, 1260.0}, 20, Anchor::LEFT, white);
    expectText(drawing, "1, 1", {1260.0, 40.0}, 20, Anchor::RIGHT, white);
    expectText(drawing, "7", {640.0, 720.0}, 160, Anchor::MIDDLE, own);
    expectText(drawing, "Upper left", {640.0, 820.0}, 60, Anchor::MIDDLE, own);
    expectText(drawing, "020000000001, 1280 x 1280", {640.0, 880.0}, 30, Anchor::MIDDLE, white);
    EXPECT_EQ(drawing.texts.size(), 2U * 9 + 2 + 3);
}

// A tall picture of a rotated projector has no larger words than a wide one; on a small picture they stay legible.
TEST(TestPicture, ItsShorterSideDecidesHowLargeWordsAndLinesAre) {
    for (const auto& [shorter, letter, line] :
         {std::tuple{1280, 20.0, 2.0}, {1199, 1199 / 64.0, 1.0}, {256, 5.0, 1.0}}) {
        for (const TestPicture& picture : {pictureOf(shorter, 2560), pictureOf(2560, shorter)}) {
            const Drawing drawing = picture.draw();
            EXPECT_EQ(textOf(drawing, "0, 0").size, letter) << picture.pixels;
            EXPECT_EQ(textOf(drawing, "u 0.3").size, letter) << picture.pixels;
            EXPECT_EQ(textOf(drawing, "7").size, 8 * letter) << picture.pixels;
            const auto tenths = boxesOf(drawing.boxes, {110, 110, 110});
            ASSERT_EQ(tenths.size(), 16U);
            EXPECT_EQ(tenths[0][2], line) << picture.pixels;
            EXPECT_EQ(tenths[1][3], line) << picture.pixels;
        }
    }
}

TEST(TestPicture, HasItsLinesItsArrowAndRoomForItsWords) {
    using Boxes = std::vector<std::array<double, 4>>;
    const Drawing drawing = pictureOf(1280, 1280).draw();
    EXPECT_EQ(boxesOf(drawing.boxes, {255, 255, 255}), (Boxes{{640, 0, 2, 1280},
                                                              {0, 639, 1280, 2},
                                                              {0, 0, 1280, 1},
                                                              {0, 1279, 1280, 1},
                                                              {0, 0, 1, 1280},
                                                              {1279, 0, 1, 1280}}));
    const Boxes tenths = boxesOf(drawing.boxes, {110, 110, 110});
    ASSERT_EQ(tenths.size(), 16U);
    EXPECT_EQ(tenths[0], (std::array<double, 4>{128, 0, 2, 1280}));
    EXPECT_EQ(tenths[1], (std::array<double, 4>{0, 1279 - 128, 1280, 2}));
    EXPECT_EQ(tenths[15], (std::array<double, 4>{0, 1279 - 1152, 1280, 2}));
    const auto& library = Veltrani::DisplayReport::StillLibrary::get();
    const double widest = std::max(library.width("Upper left", 60), library.width("020000000001, 1280 x 1280", 30));
    ASSERT_GT(widest, 160);
    EXPECT_EQ(boxesOf(drawing.boxes, {0, 0, 0}),
              (Boxes{{0, 0, 1280, 1280}, {std::floor(640 - widest / 2 - 40), 320, std::floor(widest + 80), 580}}));
    TestPicture named = pictureOf(1280, 1280);
    named.name = "Upper left one of six";
    const double ofName = library.width(named.name, 60);
    ASSERT_GT(ofName, widest);
    ASSERT_LT(ofName, 0.8 * 1280) << "it is not cut";
    EXPECT_EQ(boxesOf(named.draw().boxes, {0, 0, 0})[1],
              (std::array<double, 4>{std::floor(640 - ofName / 2 - 40), 320, std::floor(ofName + 80), 580}));
    // The arrow is 180 pixels high: a head of 120 rows, and a shaft.
    const Boxes arrow = boxesOf(drawing.boxes, {0, 100, 200});
    ASSERT_EQ(arrow.size(), 121U);
    EXPECT_EQ(arrow[0], (std::array<double, 4>{640, 340, 1, 1}));
    EXPECT_EQ(arrow[1], (std::array<double, 4>{640, 341, 1, 1}));
    EXPECT_EQ(arrow[119], (std::array<double, 4>{640 - 59, 459, 119, 1}));
    EXPECT_EQ(arrow[120], (std::array<double, 4>{640 - 18, 460, 37, 60}));
}

TEST(TestPicture, ACrossHasItsArmsOutsideTheRoomAroundItsMiddle) {
    using Boxes = std::vector<std::array<double, 4>>;
    TestPicture picture = pictureOf(1280, 1280);
    picture.targets = {{0.25, 0.75}, {0.0, 0.0}, {1.0, 1.0}};
    const auto marks = picture.draw().boxesOverTexts;
    Boxes arms = boxesOf(marks, {255, 255, 0});
    ASSERT_EQ(arms.size(), 12U);
    arms.resize(4);
    EXPECT_EQ(arms, (Boxes{{306, 319, 10, 1}, {325, 319, 10, 1}, {320, 305, 1, 10}, {320, 324, 1, 10}}));
    // The frame stays.
    EXPECT_EQ(boxesOf(marks, {0, 0, 0}), (Boxes{{316, 315, 9, 9}, {1, 1275, 4, 4}, {1275, 1, 4, 4}}));
    EXPECT_EQ(boxesOf(marks, {255, 255, 255}), (Boxes{{320, 319, 1, 1}, {0, 1279, 1, 1}, {1279, 0, 1, 1}}));
    for (const Point<int, 2>& pixels : {Point<int, 2>{2, 2}, {2, 90}, {90, 2}, {1, 90}}) {
        picture.pixels = pixels;
        EXPECT_TRUE(boxesOf(picture.draw().boxesOverTexts, {0, 0, 0}).empty()) << pixels << " has a frame alone";
    }
    picture.pixels = {3, 3};
    picture.targets = {{0.5, 0.5}};
    EXPECT_EQ(boxesOf(picture.draw().boxesOverTexts, {0, 0, 0}), (Boxes{{1, 1, 1, 1}}));
}

TEST(TestPicture, AnySizeAndAnyNameWillDo) {
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 900}, {900, 2}, {60, 40}}) {
        TestPicture picture = pictureOf(width, height);
        picture.name = "A name\nthat is far too long for a picture of this size, \xff and no UTF-8";
        picture.targets = {{0.5, 0.5}};
        const PngImage image = shown(picture);
        EXPECT_EQ(image.width, static_cast<std::size_t>(width));
        EXPECT_EQ(image.height, static_cast<std::size_t>(height));
    }
}

}  // namespace
