#include "DisplayReport/scene/SceneAxes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using testing::IsEmpty;

Extent box(const Point<double, 3>& a, const Point<double, 3>& b) {
    Extent extent;
    extent.add(a);
    extent.add(b);
    return extent;
}

std::vector<std::string> texts(const SceneAxes::Axis& axis) {
    std::vector<std::string> texts;
    for (const SceneAxes::Tick& tick : axis.ticks) {
        texts.push_back(tick.text);
    }
    return texts;
}

TEST(SceneAxes, TicksStandAtRoundNumbersInsideTheBox) {
    const SceneAxes scales = SceneAxes::of(box({-2.1, 0, 0.35}, {2.9, 0, 1.05}), "m");
    EXPECT_THAT(texts(scales.axes[0]), ElementsAre("-2", "-1", "0", "1", "2"));
    EXPECT_THAT(texts(scales.axes[1]), ElementsAre("0"));
    EXPECT_THAT(texts(scales.axes[2]), ElementsAre("1"));
    EXPECT_EQ(scales.axes[0].title, "x right [m]");
}

TEST(SceneAxes, FractionsHaveNoTailOfRounding) {
    EXPECT_THAT(texts(SceneAxes::of(box({0, 0, 0}, {0.5, 0, 0}), "").axes[0]),
                ElementsAre("0.0", "0.1", "0.2", "0.3", "0.4", "0.5"));
    EXPECT_EQ(SceneAxes::of(box({0, 0, 0}, {1, 0, 0}), "").axes[2].title, "z up");
}

TEST(SceneAxes, FarFromTheOriginTheyStillCount) {
    EXPECT_THAT(texts(SceneAxes::of(box({1e9, 0, 0}, {1e9 + 4, 0, 0}), "m").axes[0]),
                ElementsAre("1000000000", "1000000001", "1000000002", "1000000003", "1000000004"));
}

TEST(SceneAxes, ABoxWithoutASizeHasNoTicks) {
    EXPECT_THAT(SceneAxes::of(box({1, 2, 3}, {1, 2, 3}), "m").axes[0].ticks, IsEmpty());
    EXPECT_THAT(SceneAxes::of(Extent(), "m").axes[2].ticks, IsEmpty());
}

/// How far to the right a place lies for a camera in that direction that is far away.
double rightOf(const Point<double, 3>& place, const Point<double, 3>& towardsCamera) {
    return -towardsCamera[1] * place[0] + towardsCamera[0] * place[1];
}

TEST(SceneAxes, TheUprightScaleStandsAtTheLeftEndFromEverySide) {
    const Extent extent = box({-1, -2, -3}, {1, 2, 3});
    for (int step = 0; step < 36; ++step) {
        const double angle = 0.05 + step * std::numbers::pi / 18;
        const Point<double, 3> towards{std::sin(angle), std::cos(angle), 0.4};
        const SceneAxes::Edges edges = SceneAxes::edgesFor(extent, towards);
        for (const double x : {-1.0, 1.0}) {
            for (const double y : {-2.0, 2.0}) {
                EXPECT_LE(rightOf(edges.starts[2], towards), rightOf({x, y, -3}, towards) + 1e-12) << step;
            }
        }
        EXPECT_LT(rightOf(edges.outwards[2], towards), 0) << step << ": its numbers stand outside";
        EXPECT_EQ(edges.ends[2] - edges.starts[2], (Point<double, 3>{0, 0, 6}));
    }
}

TEST(SceneAxes, LyingScalesStandBelowOnTheSidesThatAreSeen) {
    const SceneAxes::Edges edges = SceneAxes::edgesFor(box({-1, -2, -3}, {1, 2, 3}), {0.5, -0.8, 0.4});
    EXPECT_EQ(edges.starts[0], (Point<double, 3>{-1, -2, -3}));
    EXPECT_EQ(edges.ends[0], (Point<double, 3>{1, -2, -3}));
    EXPECT_EQ(edges.outwards[0], (Point<double, 3>{0, -1, 0}));
    EXPECT_EQ(edges.starts[1], (Point<double, 3>{1, -2, -3}));
    EXPECT_EQ(edges.ends[1], (Point<double, 3>{1, 2, -3}));
    EXPECT_EQ(edges.outwards[1], (Point<double, 3>{1, 0, 0}));
    EXPECT_EQ(edges.corner, (Point<double, 3>{1, -2, -3}));
}

TEST(SceneAxes, SeenStraightOnTheNearerOfTwoLeftEdgesIsTheOuterOne) {
    const Extent extent = box({-1, -2, -3}, {1, 2, 3});
    EXPECT_EQ(SceneAxes::edgesFor(extent, {0, -1, 0}).starts[2], (Point<double, 3>{-1, -2, -3}));
    EXPECT_EQ(SceneAxes::edgesFor(extent, {1, 0, 0}).starts[2], (Point<double, 3>{1, -2, -3}));
}

}  // namespace
