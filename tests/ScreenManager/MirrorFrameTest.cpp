#include "ScreenManager/MirrorFrame.h"

#include "support/TargetLocatorConfigDouble.h"

#include <gtest/gtest.h>

#include <numbers>

namespace {

constexpr double QUARTER = std::numbers::pi / 2;

void expectNear(const Point<double, 3>& point, const Point<double, 3>& expected) {
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(point[i], expected[i], 1e-15);
    }
}

// A quarter turn about z takes +y, forwards, to +x, to the right.
TEST(MirrorFrame, MovesFirstAndTurnsThen) {
    const MirrorFrame frame({QUARTER, 0.0, 0.0}, {0.0, 2.0, 1.0});
    expectNear(frame.toWorld({0.0, 0.0, 0.0}), {2.0, 0.0, 1.0});
    expectNear(frame.toWorld({1.0, 0.5, 0.0}), {2.5, -1.0, 1.0});
    expectNear(frame.centre(), {2.0, 0.0, 1.0});
}

TEST(MirrorFrame, DirectionsAreTurnedOnly) {
    const MirrorFrame frame({QUARTER, 0.0, 0.0}, {0.0, 2.0, 1.0});
    expectNear(frame.rotation() * Point<double, 3>{0.0, 1.0, 0.0}, {1.0, 0.0, 0.0});
}

TEST(MirrorFrame, TakesWhatTheConfigurationStates) {
    TargetLocatorConfigDouble config;
    config.mirrorOrientation = {QUARTER, 0.1, -0.2};
    config.mirrorPosition = {1.0, 2.0, 3.0};
    const MirrorFrame expected(config.mirrorOrientation, config.mirrorPosition);
    EXPECT_EQ(MirrorFrame(config).toWorld({4.0, 5.0, 6.0}), expected.toWorld({4.0, 5.0, 6.0}));
}

}  // namespace
