#include "DisplayReport/coverage/PitchHints.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using Veltrani::DisplayReport::PitchHints;
using P2 = Point<double, 2>;

std::array<P2, 3> triangleAt(double u, double v) {
    return {P2{u, v}, {u + 0.01, v}, {u, v + 0.01}};
}

TEST(PitchHints, AreNoneAtFirst) {
    EXPECT_TRUE(PitchHints().least(10).empty());
    EXPECT_TRUE(PitchHints().greatest(10).empty());
}

TEST(PitchHints, TheMostExtremeOfEveryPartOfThePictureComesFirst) {
    PitchHints hints;
    constexpr double PART = 5e-5;
    hints.add(triangleAt(0.1, 0.1), PART, 3 * PART);
    hints.add(triangleAt(0.102, 0.1), PART, 4 * PART);
    hints.add(triangleAt(0.104, 0.1), PART, 2 * PART);
    hints.add(triangleAt(0.9, 0.9), PART, 10 * PART);
    const auto greatest = hints.greatest(10);
    ASSERT_EQ(greatest.size(), 2U);
    EXPECT_NEAR(greatest[0].ratio, 10, 1e-12);
    EXPECT_NEAR(greatest[1].ratio, 4, 1e-12);
    EXPECT_LE(norm(greatest[1].piece.minimum - P2{0.102, 0.1}), 1e-12);
    EXPECT_LE(norm(greatest[1].piece.maximum - P2{0.112, 0.11}), 1e-12);
    const auto least = hints.least(1);
    ASSERT_EQ(least.size(), 1U);
    EXPECT_NEAR(least[0].ratio, 2, 1e-12);
}

TEST(PitchHints, PiecesTooSmallForAPixelSayNothing) {
    PitchHints hints;
    hints.add(triangleAt(0.1, 0.1), 1e-7, 1);
    hints.add(triangleAt(0.1, 0.1), 0, 1);
    EXPECT_TRUE(hints.greatest(10).empty());
}

TEST(PitchHints, PlacesOnTheEdgeOfThePictureCount) {
    PitchHints hints;
    hints.add({P2{1, 1}, {1.0000001, 0.999}, {0.999, 1}}, 5e-5, 1);
    hints.add({P2{-1e-9, 0}, {0, 0.001}, {0.001, 0}}, 5e-5, 2);
    EXPECT_EQ(hints.greatest(10).size(), 2U);
}

}  // namespace
