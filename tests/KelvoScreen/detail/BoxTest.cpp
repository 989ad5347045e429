#include "KelvoScreen/detail/Box.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using Veltrani::KelvoScreenDetail::Box;
using Vector = Point<double, 3>;

Box box(const Vector& a, const Vector& b) {
    Box result;
    result.add(a);
    result.add(b);
    return result;
}

TEST(Box, IsEmptyUntilAPointIsAdded) {
    Box result;
    EXPECT_TRUE(result.isEmpty());
    result.add({1.0, 2.0, 3.0});
    EXPECT_FALSE(result.isEmpty());
    EXPECT_EQ(result.centre(), (Vector{1.0, 2.0, 3.0}));
    EXPECT_EQ(result.halfSize(), 0);
}

TEST(Box, ContainsItsInsideAndItsSurface) {
    const Box result = box({-1.0, 4.0, 0.0}, {3.0, -6.0, 1.0});
    EXPECT_TRUE(result.contains({0.0, 0.0, 0.5}));
    EXPECT_TRUE(result.contains({-1.0, 4.0, 1.0}));
    EXPECT_FALSE(result.contains({-1.001, 0.0, 0.5}));
    EXPECT_FALSE(result.contains({0.0, 4.001, 0.5}));
    EXPECT_FALSE(result.contains({0.0, 0.0, std::numeric_limits<double>::quiet_NaN()}));
    EXPECT_FALSE(Box().contains({0.0, 0.0, 0.0}));
}

TEST(Box, KnowsItsCentreAndSize) {
    const Box result = box({-1.0, 4.0, 0.0}, {3.0, -6.0, 1.0});
    EXPECT_EQ(result.centre(), (Vector{1.0, -1.0, 0.5}));
    EXPECT_EQ(result.halfSize(), 5);
    EXPECT_EQ(result.halfSurface(), 54);
    EXPECT_EQ(result.largestCoordinate(), 6);
}

TEST(Box, ClipsARayToItsInside) {
    const Box result = box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
    double first = -1;
    double second = -1;
    ASSERT_TRUE(result.clip({-3.0, 0.5, 0.5}, {2.0, 0.0, 0.0}, 0, first, second));
    EXPECT_EQ(first, 1.5);
    EXPECT_EQ(second, 2);
    ASSERT_TRUE(result.clip({-3.0, 0.5, 0.5}, {2.0, 0.0, 0.0}, 0.5, first, second));
    EXPECT_EQ(first, 1.25);
    EXPECT_EQ(second, 2.25);
}

TEST(Box, ARayFromInsideStartsAtItsOrigin) {
    const Box result = box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
    double first = -1;
    double second = -1;
    ASSERT_TRUE(result.clip({0.5, 0.5, 0.5}, {0.0, -1.0, 0.25}, 0, first, second));
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 0.5);
}

TEST(Box, ABoxWithoutThicknessIsMet) {
    const Box result = box({0.0, 0.0, 0.0}, {1.0, 0.0, 1.0});
    double first = -1;
    double second = -1;
    EXPECT_TRUE(result.clip({0.5, -1.0, 0.5}, {0.0, 1.0, 0.0}, 0, first, second));
    EXPECT_EQ(first, 1);
    EXPECT_TRUE(result.clip({-1.0, 0.0, 0.5}, {1.0, 0.0, 0.0}, 0, first, second)) << "along it";
}

TEST(Box, ARayThatMovesTooLittleToDivideByIsAlongTheBox) {
    const Box result = box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
    double first = -1;
    double second = -1;
    for (const double least : {1e-310, -1e-310}) {
        ASSERT_TRUE(result.clip({-1.0, 0.25, 0.75}, {1.0, least, -least}, 0, first, second)) << least;
        EXPECT_EQ(first, 1);
        EXPECT_EQ(second, 2);
        EXPECT_FALSE(result.clip({-1.0, 1.25, 0.75}, {1.0, least, least}, 0, first, second)) << least;
        EXPECT_FALSE(result.clip({-1.0, 0.25, -0.75}, {1.0, least, least}, 0, first, second)) << least;
    }
}

TEST(Box, RaysPastItAndAwayFromItMiss) {
    const Box result = box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
    double first = -1;
    double second = -1;
    EXPECT_FALSE(result.clip({2.0, 0.5, 0.5}, {1.0, 0.0, 0.0}, 0, first, second)) << "behind";
    EXPECT_FALSE(result.clip({-1.0, 0.5, 0.5}, {1.0, 2.0, 0.0}, 0, first, second)) << "beside";
    EXPECT_FALSE(result.clip({-1.0, 2.0, 0.5}, {1.0, 0.0, 0.0}, 0, first, second)) << "parallel";
}

TEST(Box, RaysThatAreNotARayMiss) {
    const Box result = box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
    double first = -1;
    double second = -1;
    EXPECT_FALSE(result.clip({0.5, 0.5, 0.5}, {0.0, 0.0, 0.0}, 0, first, second)) << "no length";
    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), Box::INFINITE, -Box::INFINITE}) {
        for (std::size_t i = 0; i < 3; ++i) {
            Vector broken{0.5, 0.5, 0.5};
            broken[i] = bad;
            EXPECT_FALSE(result.clip(broken, {0.25, 0.5, 1.0}, 0, first, second)) << bad;
            EXPECT_FALSE(result.clip({0.5, 0.5, 0.5}, broken, 0, first, second)) << bad;
        }
    }
}

}  // namespace
