#include "ColumnsByRows.h"

#include <gtest/gtest.h>

namespace {

TEST(ColumnsByRows, ReadsTwoWholeNumbers) {
    const auto grid = ColumnsByRows::parse("97x61");
    ASSERT_TRUE(grid.has_value());
    EXPECT_EQ(grid->columns, 97);
    EXPECT_EQ(grid->rows, 61);
}

TEST(ColumnsByRows, RefusesEverythingElse) {
    for (const char* text : {"", "x", "4", "4x", "x4", "4x4x4", "4X4", " 4x4", "4x4 ", "4.5x4", "99999999999x1"}) {
        EXPECT_FALSE(ColumnsByRows::parse(text).has_value()) << text;
    }
}

TEST(ColumnsByRows, IsWithinItsBoundsEndsIncluded) {
    EXPECT_TRUE((ColumnsByRows{2, 10}.isWithin(2, 10, 20)));
    EXPECT_FALSE((ColumnsByRows{1, 10}.isWithin(2, 10, 20)));
    EXPECT_FALSE((ColumnsByRows{2, 11}.isWithin(2, 10, 100)));
    EXPECT_FALSE((ColumnsByRows{3, 7}.isWithin(2, 10, 20)));
    EXPECT_FALSE((ColumnsByRows{2000000000, 2000000000}.isWithin(2, 2000000000, 1000)));
    EXPECT_FALSE((ColumnsByRows{-4, 4}.isWithin(-9, 3, 100)));
}

}  // namespace
