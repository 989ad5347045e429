#include "KelvoScreen/IntersectionSet.h"

#include "KelvoScreen/ScreenGeometry.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

Intersection at(double t, double x = 0) {
    return {Point<double, 3>{x, 0.0, 0.0}, t};
}

TEST(IntersectionSet, IsEmptyByDefault) {
    const IntersectionSet none;
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(none.size(), 0U);
    EXPECT_THROW((void)none.first(), std::logic_error);
    EXPECT_THROW((void)none[0], std::logic_error);
}

TEST(IntersectionSet, KeepsTheNearestFirst) {
    const IntersectionSet set{at(3), at(1), at(4), at(2), at(0.5)};
    ASSERT_EQ(set.size(), 5U);
    const double expected[] = {0.5, 1, 2, 3, 4};
    for (std::size_t i = 0; i < set.size(); ++i) {
        EXPECT_EQ(set[i].t, expected[i]);
    }
    EXPECT_EQ(set.first().t, 0.5);
    EXPECT_THROW((void)set[5], std::logic_error);
}

TEST(IntersectionSet, AmongEqualsTheEarlierComesFirst) {
    const IntersectionSet set{at(1, 10), at(1, 20), at(1, 30)};
    EXPECT_EQ(set[0].point[0], 10);
    EXPECT_EQ(set[1].point[0], 20);
    EXPECT_EQ(set[2].point[0], 30);
}

TEST(IntersectionSet, CopiesAreIndependent) {
    IntersectionSet set{at(1), at(2), at(3)};
    const IntersectionSet copy = set;
    set.add(at(0));
    EXPECT_EQ(copy.size(), 3U);
    EXPECT_EQ(copy.first().t, 1);
}

TEST(Intersection, IsPrintedWithAllDigits) {
    EXPECT_EQ(testing::PrintToString(Intersection{{0.0, 4.0, 0.1}, 0.3}),
              "(0, 4, 0.10000000000000001) at t 0.29999999999999999");
}

TEST(SurfaceHit, IsPrintedWithSideAndNormalOrAsAMiss) {
    EXPECT_EQ(testing::PrintToString(SurfaceHit{{0.0, 4.0, 1.0}, {0.0, -1.0, 0.0}, 0.5, -1, true}),
              "(0, 4, 1) at t 0.5, side -1, normal (0, -1, 0)");
    EXPECT_EQ(testing::PrintToString(SurfaceHit()), "miss");
}

}  // namespace
