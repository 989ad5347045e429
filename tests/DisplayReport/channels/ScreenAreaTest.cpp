#include "DisplayReport/channels/ScreenArea.h"

#include "Configuration/ProjectorConfig.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::DisplayReport::ScreenArea;

constexpr double NONE = ProjectorConfig::SCREEN_BOUND_NOT_CONFIGURED;

TEST(ScreenArea, IsCompleteWithAllFourBounds) {
    const ScreenArea area{0.0, 0.5, 0.25, 1.0};
    EXPECT_TRUE(area.complete());
    EXPECT_EQ(area.describe(), "left 0 right 0.5 bottom 0.25 top 1");
}

TEST(ScreenArea, NamesTheMissingBounds) {
    const ScreenArea area{0.0, NONE, 0.25, NONE};
    EXPECT_FALSE(area.complete());
    EXPECT_EQ(area.describe(), "screen area without right, top");
}

TEST(ScreenArea, TellsWhatKeepsTargetsFromBeingPlaced) {
    EXPECT_EQ((ScreenArea{0.0, 0.5, 0.25, 1.0}).fault(), "");
    EXPECT_EQ((ScreenArea{1.2, -0.2, 1.0, 0.0}).fault(), "") << "mirrored, and past the edges on both sides";
    EXPECT_EQ((ScreenArea{-1.0, 0.0, 1.0, 2.0}).fault(), "") << "it touches a corner";
    EXPECT_EQ((ScreenArea{0.0, NONE, 0.25, 1.0}).fault(),
              "screen area without right: give the channel a ScreenArea with left, right, bottom and top");
    EXPECT_EQ((ScreenArea{0.2, 0.2, 0.0, 1.0}).fault(), "left 0.2 right 0.2 bottom 0 top 1: it has no width");
    EXPECT_EQ((ScreenArea{0.0, 1.0, 1.0, 1.0}).fault(), "left 0 right 1 bottom 1 top 1: it has no height");
    EXPECT_EQ((ScreenArea{5.0, 6.0, 0.0, 1.0}).fault(),
              "left 5 right 6 bottom 0 top 1: it lies outside the screen, which reaches from 0 to 1");
    EXPECT_EQ((ScreenArea{0.0, 1.0, -0.5, -1.0}).fault(),
              "left 0 right 1 bottom -0.5 top -1: it lies outside the screen, which reaches from 0 to 1");
}

TEST(ScreenArea, WithoutAnyBoundThereIsNone) {
    const ScreenArea area{NONE, NONE, NONE, NONE};
    EXPECT_FALSE(area.complete());
    EXPECT_EQ(area.describe(), "no screen area");
}

}  // namespace
