#include "DisplayReport/coverage/PitchHints.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using Veltrani::DisplayReport::PictureBox;
using P2 = Point<double, 2>;

TEST(PictureBox, IsTheWholePictureUnlessToldOtherwise) {
    EXPECT_FALSE(PictureBox().empty());
    EXPECT_EQ(PictureBox().minimum, (P2{0, 0}));
    EXPECT_EQ(PictureBox().maximum, (P2{1, 1}));
}

TEST(PictureBox, GrowsAroundItsPoints) {
    PictureBox box = PictureBox::none();
    EXPECT_TRUE(box.empty());
    box.add({0.5, 0.25});
    EXPECT_FALSE(box.empty());
    EXPECT_EQ(box.minimum, box.maximum);
    box.add({0.25, 0.75});
    EXPECT_EQ(box.minimum, (P2{0.25, 0.25}));
    EXPECT_EQ(box.maximum, (P2{0.5, 0.75}));
}

TEST(PictureBox, StandsAroundPoints) {
    const PictureBox box = PictureBox::around(std::array<P2, 3>{P2{0.5, 0.25}, {0.25, 0.75}, {2, 0.5}});
    EXPECT_EQ(box.minimum, (P2{0.25, 0.25}));
    EXPECT_EQ(box.maximum, (P2{1, 0.75}));
}

TEST(PictureBox, StaysWithinThePicture) {
    PictureBox box = PictureBox::none();
    box.add({-1e-9, 7});
    EXPECT_EQ(box.minimum, (P2{0, 1}));
    EXPECT_EQ(box.maximum, (P2{0, 1}));
}

}  // namespace
