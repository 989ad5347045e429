#include "ScreenManager/detail/ChannelDevices.h"

#include "support/DeviceDouble.h"

#include <gtest/gtest.h>

using Veltrani::ScreenManagerDetail::askDevice;

namespace {

using namespace Veltrani::DeviceFramework2;

TEST(DeviceQuestion, GivesTheAnswerOfADeviceThatHasOne) {
    DeviceDouble device(L"P0");
    device.nativeResolution = Point<int, 2>{1920, 1200};
    EXPECT_EQ(askDevice<GetNativeResolution>(&device), (Point<int, 2>{1920, 1200}));
}

TEST(DeviceQuestion, GivesNothingWithoutADeviceOrSupport) {
    DeviceDouble device(L"P0");
    device.firmware = "1.0";
    device.refused = {"GetFirmware"};
    EXPECT_EQ(askDevice<GetFirmware>(&device), std::nullopt);
    EXPECT_EQ(device.calls("execute"), 0U);
    EXPECT_EQ(askDevice<GetFirmware>(nullptr), std::nullopt);
}

TEST(DeviceQuestion, AMissingAnswerIsAFault) {
    DeviceDouble device(L"P0");
    EXPECT_THROW(askDevice<GetFirmware>(&device), CmdResultNotAvailableException);
}

}  // namespace
