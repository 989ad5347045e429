#include "DisplayReport/maps/WarpGrid.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::DisplayReport::WarpGrid;

TEST(WarpGrid, ItsNodesReachExactlyFromEdgeToEdge) {
    for (const std::size_t count : {2U, 3U, 7U, 98U, 1921U}) {
        EXPECT_EQ(WarpGrid::fromMiddle(0, count), -1);
        EXPECT_EQ(WarpGrid::fromMiddle(count - 1, count), 1);
    }
    EXPECT_EQ(WarpGrid::fromMiddle(2, 5), 0);
    EXPECT_DOUBLE_EQ(WarpGrid::fromMiddle(1, 7), -2.0 / 3);
}

TEST(WarpGrid, TheAspectIsWidthByHeight) {
    EXPECT_EQ(WarpGrid::aspectOf({1920, 1200}), 1.6);
    EXPECT_EQ(WarpGrid::aspectOf({3, 4}), 0.75);
}

}  // namespace
