#include "DeviceFramework2/Commands.h"

#include "DeviceTesting.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

namespace {

using namespace Veltrani::DeviceFramework2;

TEST(Commands, AResultIsNotAvailableUntilADeviceStoresIt) {
    GetActiveInputSignalIndex command;
    EXPECT_THROW(static_cast<void>(command.getResult()), CmdResultNotAvailableException);
    command.setResult(0);
    EXPECT_EQ(command.getResult(), 0);
    command.setResult(3);
    EXPECT_EQ(command.getResult(), 3);
}

TEST(Commands, AMissingResultNamesTheCommand) {
    EXPECT_EQ(device_testing::faultOf([] { static_cast<void>(GetFirmware().getResult()); }),
              "The command GetFirmware has no result");
    EXPECT_EQ(device_testing::faultOf([] { static_cast<void>(GetNativeResolution().getResult()); }),
              "The command GetNativeResolution has no result");
    EXPECT_EQ(device_testing::faultOf([] { static_cast<void>(GetActiveInputSignalIndex().getResult()); }),
              "The command GetActiveInputSignalIndex has no result");
}

TEST(Commands, ResultsHaveTheTypesThatCallersRelyOn) {
    static_assert(std::is_same_v<decltype(GetFirmware().getResult()), const std::string&>);
    static_assert(std::is_same_v<decltype(GetNativeResolution().getResult()), const Point<int, 2>&>);
    static_assert(std::is_same_v<decltype(GetPowerState().getResult()), const PowerState&>);
    static_assert(std::is_same_v<decltype(GetPictureMute().getResult()), const bool&>);
    static_assert(std::is_same_v<decltype(GetProjectorName().getResult()), const std::string&>);
    static_assert(std::is_same_v<decltype(GetModel().getResult()), const std::string&>);
    GetNativeResolution resolution;
    resolution.setResult({1920, 1200});
    EXPECT_EQ(resolution.getResult(), (Point<int, 2>{1920, 1200}));
}

TEST(Commands, ParametersArePassedThroughUnchanged) {
    EXPECT_EQ(SetActiveInputSignalIndex(4).getIndex(), 4);
    EXPECT_EQ(Device::Drawing::RunFillBlackTo(5).getFillParameter(), 5);
    EXPECT_EQ(Device::Drawing::RunFill50GrayTo(-1).getFillParameter(), -1);
    EXPECT_EQ(Device::Drawing::RunClearTo(2).getFillParameter(), 2);
}

TEST(Commands, EveryCommandHasItsOwnName) {
    EXPECT_EQ(GetPowerState().typeName(), "GetPowerState");
    EXPECT_EQ(GetPictureMute().typeName(), "GetPictureMute");
    EXPECT_EQ(GetProjectorName().typeName(), "GetProjectorName");
    EXPECT_EQ(GetModel().typeName(), "GetModel");
    EXPECT_EQ(SetActiveInputSignalIndex(0).typeName(), "SetActiveInputSignalIndex");
    EXPECT_EQ(Device::Drawing::RunFillBlackTo(5).typeName(), "RunFillBlackTo");
    EXPECT_EQ(Device::Drawing::RunFill50GrayTo(5).typeName(), "RunFill50GrayTo");
    EXPECT_EQ(Device::Drawing::RunClearTo(2).typeName(), "RunClearTo");
    EXPECT_EQ(Device::Geometry::DisableWhiteLevelWarp().typeName(), "DisableWhiteLevelWarp");
    EXPECT_EQ(Device::Geometry::DisableWhiteLevelBlend().typeName(), "DisableWhiteLevelBlend");
    EXPECT_EQ(Device::Geometry::DisableBlackLevelBlend().typeName(), "DisableBlackLevelBlend");
}

TEST(Commands, NumbersDoNotTurnIntoCommandsByThemselves) {
    static_assert(!std::is_convertible_v<int, Device::Drawing::RunFillBlackTo>);
    static_assert(!std::is_convertible_v<int, SetActiveInputSignalIndex>);
    const std::shared_ptr<Command> shared = std::make_shared<Device::Drawing::RunClearTo>(2);
    EXPECT_NE(std::dynamic_pointer_cast<FillParameters>(shared), nullptr);
}

}  // namespace
