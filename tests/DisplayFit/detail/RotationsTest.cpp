#include "DisplayFit/detail/Rotations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Vector = Point<double, 3>;

void expectSame(const Matrix<double, 3>& a, const Matrix<double, 3>& b, double tolerance) {
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_NEAR(a(r, c), b(r, c), tolerance) << a << " and " << b;
        }
    }
}

TEST(Rotations, AVectorTurnsAboutItsAxisByItsLength) {
    const Vector axis = Vector{1, -2, 2} * (1.0 / 3);
    for (const double angle : {1e-9, 1e-5, 0.99e-4, 1.01e-4, 0.1, 1.5, 3.1, 5.0}) {
        expectSame(rotationOf(axis * angle), Veltrani::rotation(angle, axis), 1e-15);
    }
    EXPECT_EQ(rotationOf({}), (Matrix<double, 3>()));
}

TEST(Rotations, TheTurnBeforeIsTheDerivativeOfTheTurn) {
    constexpr double WIDTH = 1e-6;
    for (const Vector& turn : {Vector{}, Vector{1e-5, 0, 2e-5}, Vector{0.3, -0.2, 0.5}, Vector{1, 2, -0.5}}) {
        const Matrix<double, 3> before = turnBefore(turn);
        for (std::size_t k = 0; k < 3; ++k) {
            Vector step;
            step[k] = WIDTH;
            const Matrix<double, 3> moved = rotationOf(turn + step) * transpose(rotationOf(turn - step));
            // A small turn stands off the diagonal.
            const Vector found{moved(2, 1) - moved(1, 2), moved(0, 2) - moved(2, 0), moved(1, 0) - moved(0, 1)};
            for (std::size_t i = 0; i < 3; ++i) {
                EXPECT_NEAR(before(i, k), found[i] / (4 * WIDTH), 1e-9);
            }
        }
    }
}

TEST(Rotations, AnglesComeBackWhereTheyAreUnique) {
    for (const Vector& angles : {Vector{0.3, -0.4, 0.5}, Vector{-3, 1.2, 2.5}, Vector{7, 0.1, -4}}) {
        const auto found = anglesOf(Veltrani::rotationZXY(angles[0], angles[1], angles[2]), angles);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(found[i], angles[i], 1e-14);
        }
    }
}

TEST(Rotations, OfTwoSetsOfAnglesTheNearerIsTaken) {
    const Vector over{0.2, 2.5, 0.1};  // tilted beyond the zenith
    const auto rotation = Veltrani::rotationZXY(over[0], over[1], over[2]);
    EXPECT_NEAR(norm(anglesOf(rotation, over) - over), 0, 1e-14);
    const Vector other = anglesOf(rotation, {0.2 + std::numbers::pi, 0.6, 3});
    EXPECT_NEAR(other[1], std::numbers::pi - 2.5, 1e-14);
    expectSame(Veltrani::rotationZXY(other[0], other[1], other[2]), rotation, 1e-15);
}

TEST(Rotations, StraightUpAndDownAnglesStillGiveTheRotation) {
    constexpr double RIGHT_ANGLE = std::numbers::pi / 2;
    for (const double away : {0.0, 1e-12, 1e-9, 3e-8, 1e-5}) {
        for (const double sign : {1.0, -1.0}) {
            const auto rotation = Veltrani::rotationZXY(0.7, sign * (RIGHT_ANGLE - away), 0.4);
            const Vector found = anglesOf(rotation, {0.1, sign * RIGHT_ANGLE, 0.25});
            expectSame(Veltrani::rotationZXY(found[0], found[1], found[2]), rotation, 2e-8 * (away < 1e-8 ? 1 : 1e-6));
            if (away == 0) {
                EXPECT_NEAR(found[2], 0.25, 1e-7) << "Y stays where Z does the same";
            }
        }
    }
}

TEST(Rotations, ARollIsAboutTheAxisAlone) {
    EXPECT_NEAR(rollOf(rotationOf({0, 0.7, 0})), 0.7, 1e-15);
    EXPECT_NEAR(rollOf(rotationOf({0, -2.9, 0})), -2.9, 1e-15);
    EXPECT_NEAR(rollOf(rotationOf({0.4, 0, 0})), 0, 1e-15);
    EXPECT_NEAR(rollOf(rotationOf({0, 0, -1.3})), 0, 1e-15);
}

}  // namespace
