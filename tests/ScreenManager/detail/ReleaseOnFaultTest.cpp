#include "ScreenManager/detail/ChannelDevices.h"

#include "support/DeviceManagerDouble.h"

#include <gtest/gtest.h>

#include <stdexcept>

using Veltrani::ScreenManagerDetail::releaseOnFault;

namespace {

TEST(ReleaseOnFault, AStepThatSucceedsKeepsTheDeviceAndGivesItsResult) {
    DeviceManagerDouble manager;
    DeviceDouble device(L"P0");
    EXPECT_EQ(releaseOnFault(manager, &device, [] { return 7; }), 7);
    EXPECT_EQ(manager.calls("releaseDevice"), 0U);
}

TEST(ReleaseOnFault, AStepThatThrowsGivesTheDeviceBackOnceAndTheExceptionGoesOn) {
    DeviceManagerDouble manager;
    DeviceDouble device(L"P0");
    EXPECT_THROW(releaseOnFault(manager, &device, [] { throw std::out_of_range("step"); }), std::out_of_range);
    EXPECT_EQ(manager.calls("releaseDevice"), 1U);
}

}  // namespace
