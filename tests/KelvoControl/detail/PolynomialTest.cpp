#include "KelvoControl/detail/UnivariateFunctions.h"

#include <gtest/gtest.h>

namespace {

using namespace Veltrani::KelvoControlDetail;

TEST(Polynomial, IsWrittenConstantFirst) {
    EXPECT_EQ(valueAt({1.0, 2.0, 3.0}, 2.0), 17.0);
    EXPECT_EQ(valueAt({}, 2.0), 0.0);
    EXPECT_EQ(derivative({1.0, 2.0, 3.0}), (Polynomial{2.0, 6.0}));
    EXPECT_EQ(sum({1.0}, {1.0, 2.0}), (Polynomial{2.0, 2.0}));
    EXPECT_EQ(product({1.0, 1.0}, {1.0, -1.0}), (Polynomial{1.0, 0.0, -1.0}));
    EXPECT_EQ(product({}, {1.0}), Polynomial{});
}

TEST(Polynomial, TheFirstOfSeveralRootsEndsItsPositivePart) {
    // (1 - x) (1 - x / 2) (1 - x / 3)
    const Polynomial cubic = product(product({1.0, -1.0}, {1.0, -0.5}), {1.0, -1.0 / 3});
    EXPECT_NEAR(positiveUpTo(cubic, 100), 1, 1e-12);
    EXPECT_EQ(positiveUpTo(cubic, 0.5), 0.5);
}

TEST(Polynomial, TwoRootsCloseTogetherAreNotOverlooked) {
    // (x - 3)^2 - 1e-12: below zero within a millionth of 3.
    EXPECT_NEAR(positiveUpTo({9.0 - 1e-12, -6.0, 1.0}, 1e6), 3, 2e-6);
    EXPECT_EQ(positiveUpTo({9.0 + 1e-6, -6.0, 1.0}, 1e6), 1e6);
}

TEST(Polynomial, RootsFarOutAreFound) {
    EXPECT_NEAR(positiveUpTo({1.0, -1e-9}, 1e12), 1e9, 1e-5);
    EXPECT_EQ(positiveUpTo({1.0}, 1e12), 1e12);
    EXPECT_EQ(positiveUpTo({1.0, 1.0, 1.0}, 1e12), 1e12);
}

TEST(Polynomial, OneThatDoesNotBeginPositiveEndsAtOnce) {
    EXPECT_EQ(positiveUpTo({0.0, 1.0}, 5), 0);
    EXPECT_EQ(positiveUpTo({-1.0, 1.0}, 5), 0);
}

}  // namespace
