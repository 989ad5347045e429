#include "ProgressMeter.h"

#include <gtest/gtest.h>

namespace {

TEST(ProgressMeter, TellsTheTimeLeftAtTheSameSpeed) {
    EXPECT_EQ(ProgressMeter::timeLeft(10.0, 1, 2), ", about 10 s left");
    EXPECT_EQ(ProgressMeter::timeLeft(10.0, 4, 5), ", about 3 s left");
    EXPECT_EQ(ProgressMeter::timeLeft(60.0, 1, 5), ", about 4 min left");
}

TEST(ProgressMeter, SaysNothingBeforeTheFirstPieceAndAfterTheLast) {
    EXPECT_EQ(ProgressMeter::timeLeft(10.0, 0, 2), "");
    EXPECT_EQ(ProgressMeter::timeLeft(10.0, 2, 2), "");
}

}  // namespace
