#include "Common/Point.h"

#include "Common/Finite.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <sstream>
#include <type_traits>

namespace {

using P2i = Point<int, 2>;
using P3 = Point<double, 3>;

TEST(Point, IsZeroByDefault) {
    EXPECT_EQ(P3{}, (P3{0.0, 0.0, 0.0}));
}

TEST(Point, TakesExactlyItsNumberOfComponents) {
    static_assert(std::is_constructible_v<P3, double, double, double>);
    static_assert(!std::is_constructible_v<P3, double, double>);
    static_assert(!std::is_constructible_v<P3, double, double, double, double>);
}

TEST(Point, TakesWholeNumbersForRealComponents) {
    EXPECT_EQ((P3{0, 0, 1}), (P3{0.0, 0.0, 1.0}));
    const int column = 3;
    EXPECT_EQ((Point<double, 2>{column, 0.5}), (Point<double, 2>{3.0, 0.5}));
}

TEST(Point, RefusesFractionsForWholeNumberedComponents) {
    static_assert(std::is_constructible_v<P2i, int, long>);
    static_assert(!std::is_constructible_v<P2i, int, double>);
}

TEST(Point, ComparesComponentByComponent) {
    EXPECT_EQ((P3{0.0, 1.0, 2.0}), (P3{-0.0, 1.0, 2.0}));
    EXPECT_NE((P3{0.0, 1.0, 2.0}), (P3{0.0, 1.0, 3.0}));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const P3 undefined{0.0, nan, 0.0};
    EXPECT_FALSE(undefined == undefined);
}

TEST(Point, OrdersByTheFirstComponentFirst) {
    EXPECT_LT((P2i{0, 9}), (P2i{1, 0}));
    EXPECT_LT((P2i{1, 0}), (P2i{1, 1}));
    EXPECT_FALSE((P2i{1, 1}) < (P2i{1, 1}));

    const std::map<P2i, char> grid{{P2i{1, 0}, 'b'}, {P2i{0, 1}, 'a'}};
    EXPECT_EQ(grid.begin()->second, 'a');
}

TEST(Point, AddsSubtractsAndScales) {
    EXPECT_EQ((P3{1.0, 2.0, 3.0} + P3{10.0, 20.0, 30.0}), (P3{11.0, 22.0, 33.0}));
    EXPECT_EQ((P3{1.0, 2.0, 3.0} - P3{10.0, 20.0, 30.0}), (P3{-9.0, -18.0, -27.0}));
    EXPECT_EQ((2.0 * P3{1.0, 2.0, 3.0}), (P3{2.0, 4.0, 6.0}));
    EXPECT_EQ((P3{1.0, 2.0, 3.0} * 2.0), (P3{2.0, 4.0, 6.0}));
    EXPECT_EQ(-(P3{1.0, -2.0, 3.0}), (P3{-1.0, 2.0, -3.0}));
}

// 1e16 + 1 - 1e16 is 0 when summed first to last and 1 in any order that meets the large terms first.
TEST(Point, SumsTheInnerProductFirstComponentFirst) {
    EXPECT_EQ(dot(P3{1e16, 1.0, -1e16}, P3{1.0, 1.0, 1.0}), 0.0);
}

TEST(Point, CrossProductIsRightHanded) {
    EXPECT_EQ(cross(P3{1.0, 0.0, 0.0}, P3{0.0, 1.0, 0.0}), (P3{0.0, 0.0, 1.0}));
}

TEST(Point, NormIsTheLength) {
    EXPECT_EQ(norm(P3{2.0, 3.0, 6.0}), 7.0);
}

TEST(Point, IsFiniteWhileNoComponentIsInfiniteOrNaN) {
    EXPECT_TRUE(isFinite(Point<double, 3>{0, -0.0, std::numeric_limits<double>::max()}));
    EXPECT_TRUE(isFinite(Point<double, 2>{std::numeric_limits<double>::denorm_min(), 1}));
    for (const double odd : {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()}) {
        for (std::size_t i = 0; i < 3; ++i) {
            Point<double, 3> point{1, 2, 3};
            point[i] = odd;
            EXPECT_FALSE(isFinite(point)) << odd << " at " << i;
        }
        EXPECT_FALSE(isFinite(Point<double, 2>{1, odd})) << odd;
    }
}

TEST(Point, IsPrintedWithAllDigits) {
    EXPECT_EQ(testing::PrintToString(Point<double, 3>{1.0, -0.5, 0.1}), "(1, -0.5, 0.10000000000000001)");
    EXPECT_EQ(testing::PrintToString(Point<int, 2>{1920, 1200}), "(1920, 1200)");
    std::ostringstream out;
    out << Point<double, 2>{0.25, 1e-20} << ' ' << 0.1234567891;
    EXPECT_EQ(out.str(), "(0.25, 9.9999999999999995e-21) 0.123457") << "the precision of the stream stays";
}

}  // namespace
