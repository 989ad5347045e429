#include "KelvoControl/detail/UnivariateFunctions.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Veltrani::KelvoControlDetail::ValueAndSlope;
using Veltrani::KelvoControlDetail::whereIncreasingEquals;

TEST(IncreasingFunction, ArrivesInFiveStepsWhereItIsSmooth) {
    int steps = 0;
    const auto cubic = [&](double x) {
        ++steps;
        return ValueAndSlope{x + 0.1 * x * x * x, 1 + 0.3 * x * x};
    };
    EXPECT_NEAR(whereIncreasingEquals(cubic, 1.1, 0, 5, 1.1), 1, 1e-15);
    EXPECT_LE(steps, 6);
}

TEST(IncreasingFunction, ArrivesWhereNewtonAloneWouldLeaveTheBounds) {
    const auto steep = [](double x) {
        return ValueAndSlope{std::atan(50 * (x - 2)), 50 / (1 + 2500 * (x - 2) * (x - 2))};
    };
    EXPECT_NEAR(whereIncreasingEquals(steep, 0, 0, 100, 90), 2, 1e-14);
    const auto flat = [](double x) { return ValueAndSlope{x * x * x, 3 * x * x}; };
    EXPECT_NEAR(whereIncreasingEquals(flat, 1e-12, 0, 1, 0), 1e-4, 1e-15) << "from a guess without a slope";
}

TEST(IncreasingFunction, TheEndsAreReachedAndNotPassed) {
    const auto line = [](double x) { return ValueAndSlope{2 * x, 2}; };
    EXPECT_NEAR(whereIncreasingEquals(line, 0, 0, 3, 1.5), 0, 1e-15);
    EXPECT_NEAR(whereIncreasingEquals(line, 6, 0, 3, 1.5), 3, 1e-15);
    EXPECT_LE(whereIncreasingEquals(line, 60, 0, 3, 1.5), 3);
}

}  // namespace
