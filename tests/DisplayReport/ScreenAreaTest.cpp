#include "DisplayReport/ScreenArea.h"

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

TEST(ScreenArea, WithoutAnyBoundThereIsNone) {
    const ScreenArea area{NONE, NONE, NONE, NONE};
    EXPECT_FALSE(area.complete());
    EXPECT_EQ(area.describe(), "no screen area");
}

}  // namespace
