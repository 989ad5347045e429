#include "DisplayReport/basics/Extent.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using P3 = Point<double, 3>;
using Veltrani::DisplayReport::Extent;

TEST(Extent, IsEmptyUntilTheFirstPoint) {
    Extent extent;
    EXPECT_TRUE(extent.empty());
    EXPECT_EQ(extent.size(), P3());
    extent.add({5.0, -6.0, 7.0});
    EXPECT_FALSE(extent.empty());
    EXPECT_EQ(extent.minimum(), (P3{5.0, -6.0, 7.0}));
    EXPECT_EQ(extent.maximum(), (P3{5.0, -6.0, 7.0}));
}

TEST(Extent, IsTheBoxAroundItsPoints) {
    Extent extent;
    extent.add({1.0, 5.0, -3.0});
    extent.add({-1.0, 4.0, 8.0});
    EXPECT_EQ(extent.minimum(), (P3{-1.0, 4.0, -3.0}));
    EXPECT_EQ(extent.maximum(), (P3{1.0, 5.0, 8.0}));
    EXPECT_EQ(extent.size(), (P3{2.0, 1.0, 11.0}));
}

TEST(Extent, PointsThatAreNotFiniteAreLeftOut) {
    Extent extent;
    extent.add({std::numeric_limits<double>::quiet_NaN(), 0.0, 0.0});
    extent.add({0.0, std::numeric_limits<double>::infinity(), 0.0});
    EXPECT_TRUE(extent.empty());
}

}  // namespace
