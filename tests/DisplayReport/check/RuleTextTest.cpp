#include "DisplayReport/check/RuleText.h"

#include <gtest/gtest.h>

#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;

TEST(RuleText, DegreesHaveTenths) {
    EXPECT_EQ(degreesText(std::numbers::pi / 2), "90");
    EXPECT_EQ(degreesText(-0.0153), "-0.9");
    EXPECT_EQ(degreesText(0), "0");
}

TEST(RuleText, PartsArePercentWithTenthsBelowTen) {
    EXPECT_EQ(percentText(0.624), "62 %");
    EXPECT_EQ(percentText(1), "100 %");
    EXPECT_EQ(percentText(0.0254), "2.5 %");
    EXPECT_EQ(percentText(0), "0 %");
}

TEST(RuleText, LengthsHaveTheirUnit) {
    EXPECT_EQ(lengthText(1698.3567, "m"), "1698.357 m");
    EXPECT_EQ(lengthText(0.006, "m"), "0.006 m");
    EXPECT_EQ(lengthText(2.5, ""), "2.5");
}

TEST(RuleText, SidesAreRightAboveZero) {
    EXPECT_EQ(sidewaysText(std::numbers::pi / 4), "45 degrees to the right");
    EXPECT_EQ(sidewaysText(-std::numbers::pi / 4), "45 degrees to the left");
}

}  // namespace
