#include "DisplayReport/SceneAxes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

}  // namespace
