#include "ExportFiles/TestPicture.h"

#include "support/PngImage.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using Veltrani::ExportFiles::TestPicture;

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
