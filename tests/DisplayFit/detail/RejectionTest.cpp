#include "DisplayFit/detail/Rejection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using Veltrani::DisplayFitDetail::Rejection;

TEST(Rejection, OfAKnownDeviationIsAsRareAsANormalNumber) {
    // A pair of normal numbers is longer than r once in exp(r^2 / 2) times.
    const Rejection rejection(4, true);
    EXPECT_NEAR(std::exp(-std::pow(rejection.largest(3), 2) / 2), std::erfc(4 / std::sqrt(2.0)), 1e-15);
    EXPECT_EQ(rejection.largest(3), rejection.largest(1000));
}

TEST(Rejection, OfAnEstimatedDeviationIsWiderTheFewerNumbersItIsFrom) {
    const Rejection rejection(4, false);
    EXPECT_NEAR(rejection.largest(1e7), Rejection(4, true).largest(1), 1e-5);
    double last = rejection.largest(100);
    for (const double freedom : {50, 20, 10, 6, 4, 2, 1}) {
        EXPECT_GT(rejection.largest(freedom), last);
        last = rejection.largest(freedom);
    }
    EXPECT_EQ(rejection.largest(0), std::numeric_limits<double>::infinity());
    EXPECT_EQ(rejection.largest(-3), std::numeric_limits<double>::infinity());
    EXPECT_EQ(Rejection(std::numeric_limits<double>::infinity(), false).largest(10),
              std::numeric_limits<double>::infinity());
}

// Oracle: drawn pairs over drawn deviations.
TEST(Rejection, OfAnEstimatedDeviationIsAsRareAsStated) {
    constexpr int DRAWN = 400000;
    const double deviations = 2;
    const double rarity = std::erfc(deviations / std::sqrt(2.0));
    for (const int freedom : {3, 8}) {
        std::mt19937 random(7);
        std::normal_distribution<double> normal;
        std::chi_squared_distribution<double> squares(freedom);
        const double most = Rejection(deviations, false).largest(freedom);
        int beyond = 0;
        for (int i = 0; i < DRAWN; ++i) {
            const double size = std::hypot(normal(random), normal(random));
            beyond += static_cast<int>(size > most * std::sqrt(squares(random) / freedom));
        }
        EXPECT_NEAR(beyond, rarity * DRAWN, 4 * std::sqrt(rarity * DRAWN)) << freedom;
    }
}

}  // namespace
