#include "DisplayExport/ViewFrame.h"

#include "Common/VeltraniException.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace {

using Veltrani::DisplayExport::ViewFrame;
using P3 = Point<double, 3>;

constexpr double HALF_TURN = std::numbers::pi;
constexpr double ROUNDING = 1e-12;

void expectNear(const P3& actual, const P3& expected) {
    EXPECT_LT(norm(actual - expected), ROUNDING) << actual << " instead of " << expected;
}

TEST(ViewFrame, LooksAheadWithTheWorldAboveIt) {
    const ViewFrame frame = ViewFrame::looking({1.0, 2.0, 3.0}, {0.0, 5.0, 0.0});
    expectNear(frame.eye, {1.0, 2.0, 3.0});
    expectNear(frame.forward, {0.0, 1.0, 0.0});
    expectNear(frame.right, {1.0, 0.0, 0.0});
    expectNear(frame.up, {0.0, 0.0, 1.0});
}

TEST(ViewFrame, TakesTheFrontAsUpWhereItLooksStraightUpOrDown) {
    const ViewFrame up = ViewFrame::looking({}, {0.0, 0.0, 2.0});
    expectNear(up.up, {0.0, 1.0, 0.0});
    expectNear(up.right, {-1.0, 0.0, 0.0});
    const ViewFrame down = ViewFrame::looking({}, {0.0, 0.0, -1.0});
    expectNear(down.up, {0.0, 1.0, 0.0});
    expectNear(down.right, {1.0, 0.0, 0.0});
}

TEST(ViewFrame, RollsItsRightSideDown) {
    const ViewFrame frame = ViewFrame::looking({}, {0.0, 1.0, 0.0}, HALF_TURN / 2);
    expectNear(frame.right, {0.0, 0.0, -1.0});
    expectNear(frame.up, {1.0, 0.0, 0.0});
}

/// The angles are those of an orientation: what `rotationZXY` makes of them has the axes as its columns.
TEST(ViewFrame, StatesTheAnglesOfAnOrientation) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> number(-1, 1);
    for (int i = 0; i < 1000; ++i) {
        const P3 direction = i == 0   ? P3{0.0, 0.0, 1.0}
                             : i == 1 ? P3{0.0, 0.0, -1.0}
                                      : P3{number(random), number(random), number(random)};
        const ViewFrame frame = ViewFrame::looking({}, direction, HALF_TURN * number(random));
        const P3 angles = frame.angles();
        const Matrix<double, 3> turned = Veltrani::rotationZXY(angles[0], angles[1], angles[2]);
        expectNear(turned * P3{1.0, 0.0, 0.0}, frame.right);
        expectNear(turned * P3{0.0, 1.0, 0.0}, frame.forward);
        expectNear(turned * P3{0.0, 0.0, 1.0}, frame.up);
        expectNear(frame.inWorld(frame.inFrame(direction)), direction);
    }
}

TEST(ViewFrame, RefusesADirectionWithoutLength) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THROW((void)ViewFrame::looking({}, {}), VeltraniException);
    EXPECT_THROW((void)ViewFrame::looking({}, {nan, 1.0, 0.0}), VeltraniException);
    EXPECT_THROW((void)ViewFrame::looking({nan, 0.0, 0.0}, {0.0, 1.0, 0.0}), VeltraniException);
    EXPECT_THROW((void)ViewFrame::looking({}, {0.0, 1.0, 0.0}, nan), VeltraniException);
}

}  // namespace
