#include "DeviceFramework2/detail/Sockets.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace std::chrono_literals;
using Veltrani::DeviceFramework2Detail::Deadline;

TEST(Deadline, RunsOut) {
    const Deadline deadline(20ms);
    EXPECT_FALSE(deadline.expired());
    EXPECT_GT(deadline.remaining(), 0ms);
    EXPECT_LE(deadline.remaining(), 20ms);
    std::this_thread::sleep_for(25ms);
    EXPECT_TRUE(deadline.expired());
    EXPECT_EQ(deadline.remaining(), 0ms);
    EXPECT_EQ(deadline.limit(), 20ms);
}

TEST(Deadline, ANegativeOrZeroLimitHasPassed) {
    EXPECT_TRUE(Deadline(0ms).expired());
    EXPECT_TRUE(Deadline(-5ms).expired());
    EXPECT_TRUE(Deadline(std::chrono::milliseconds::min()).expired());
}

TEST(Deadline, AnAbsurdLimitIsADay) {
    const Deadline deadline(std::chrono::milliseconds::max());
    EXPECT_FALSE(deadline.expired());
    EXPECT_EQ(deadline.limit(), 24h);
    EXPECT_GT(deadline.remaining(), 23h);
}

}  // namespace
