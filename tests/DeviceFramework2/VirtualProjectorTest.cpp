#include "DeviceFramework2/VirtualProjector.h"

#include "DeviceTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DeviceFramework2;
using device_testing::faultOf;
using testing::ElementsAre;
using testing::IsEmpty;

using Sent = VirtualProjector::SentCommand;

const std::wstring REAL = L" <Device type='PJLink' mac='02:00:00:00:00:01'/>\n";

class VirtualProjectorTest : public testing::Test {
protected:
    template <class Kind, class... Arguments>
    std::shared_ptr<Kind> send(Arguments... arguments) {
        auto command = std::make_shared<Kind>(arguments...);
        projector.execute(command);
        return command;
    }

    VirtualProjector projector{VirtualProjectorSnippet{1920, 1200, 1, REAL}, L"020000000001"};
};

TEST_F(VirtualProjectorTest, KeepsTheSnippetOfTheRealOne) {
    EXPECT_EQ(projector.getDeviceSnippet(), REAL);
    EXPECT_EQ(projector.getUidSourceText(), REAL);
    EXPECT_EQ(projector.getUID(), L"020000000001");
    send<Device::Drawing::RunFillBlackTo>(5);
    send<SetActiveInputSignalIndex>(3);
    EXPECT_EQ(projector.getDeviceSnippet(), REAL) << "what it was sent does not change it";
}

TEST_F(VirtualProjectorTest, IsMarkedAsSimulated) {
    ASSERT_NE(projector.getLocation(), nullptr);
    EXPECT_EQ(projector.getLocation()->getDescription(), L"Virtual projector 020000000001");
    EXPECT_EQ(send<GetFirmware>()->getResult(), "simulated (virtual projector)");
    EXPECT_EQ(send<GetProjectorName>()->getResult(), "Virtual projector 020000000001");
    EXPECT_EQ(send<GetModel>()->getResult(), "simulated (virtual projector)");
    EXPECT_EQ(projector.getTypeCode(), 0);
}

TEST_F(VirtualProjectorTest, AnswersResolutionAndInputsFromItsSnippet) {
    EXPECT_EQ(send<GetNativeResolution>()->getResult(), (Point<int, 2>{1920, 1200}));
    EXPECT_EQ(send<GetActiveInputSignalIndex>()->getResult(), 1);
    send<SetActiveInputSignalIndex>(4);
    EXPECT_EQ(send<GetActiveInputSignalIndex>()->getResult(), 4);
}

TEST_F(VirtualProjectorTest, IsAlwaysOnAndBlackWhenItWasToldSo) {
    EXPECT_EQ(send<GetPowerState>()->getResult(), PowerState::ON);
    EXPECT_FALSE(send<GetPictureMute>()->getResult());
    send<Device::Drawing::RunFillBlackTo>(5);
    EXPECT_TRUE(send<GetPictureMute>()->getResult());
    send<Device::Drawing::RunFill50GrayTo>(5);
    EXPECT_FALSE(send<GetPictureMute>()->getResult());
    send<Device::Drawing::RunFillBlackTo>(5);
    send<Device::Drawing::RunClearTo>(2);
    EXPECT_FALSE(send<GetPictureMute>()->getResult());
}

TEST_F(VirtualProjectorTest, RemembersWhatItWasSent) {
    EXPECT_THAT(projector.sentCommands(), IsEmpty());
    send<Device::Drawing::RunFillBlackTo>(5);
    send<Device::Geometry::DisableWhiteLevelBlend>();
    send<Device::Geometry::DisableBlackLevelBlend>();
    send<Device::Geometry::DisableWhiteLevelWarp>();
    send<Device::Drawing::RunFill50GrayTo>(5);
    send<Device::Drawing::RunClearTo>(2);
    send<SetActiveInputSignalIndex>(3);
    EXPECT_THAT(projector.sentCommands(),
                ElementsAre(Sent{"RunFillBlackTo", 5}, Sent{"DisableWhiteLevelBlend", {}},
                            Sent{"DisableBlackLevelBlend", {}}, Sent{"DisableWhiteLevelWarp", {}},
                            Sent{"RunFill50GrayTo", 5}, Sent{"RunClearTo", 2}, Sent{"SetActiveInputSignalIndex", 3}));
}

TEST_F(VirtualProjectorTest, ForgetsTheOldestOfVeryManyCommands) {
    for (int i = 0; i <= static_cast<int>(VirtualProjector::LONGEST_HISTORY); ++i) {
        send<Device::Drawing::RunClearTo>(i);
    }
    EXPECT_EQ(projector.sentCommands().size(), VirtualProjector::LONGEST_HISTORY);
    EXPECT_EQ(projector.sentCommands().front(), (Sent{"RunClearTo", 1}));
    EXPECT_EQ(projector.sentCommands().back(), (Sent{"RunClearTo", 1000}));
}

TEST_F(VirtualProjectorTest, SupportsEveryCommandOfTheFramework) {
    EXPECT_TRUE(projector.supports(GetFirmware()));
    EXPECT_TRUE(projector.supports(GetNativeResolution()));
    EXPECT_TRUE(projector.supports(GetActiveInputSignalIndex()));
    EXPECT_TRUE(projector.supports(SetActiveInputSignalIndex(0)));
    EXPECT_TRUE(projector.supports(GetPowerState()));
    EXPECT_TRUE(projector.supports(GetPictureMute()));
    EXPECT_TRUE(projector.supports(GetProjectorName()));
    EXPECT_TRUE(projector.supports(GetModel()));
    EXPECT_TRUE(projector.supports(Device::Drawing::RunFillBlackTo(5)));
    EXPECT_TRUE(projector.supports(Device::Drawing::RunFill50GrayTo(5)));
    EXPECT_TRUE(projector.supports(Device::Drawing::RunClearTo(2)));
    EXPECT_TRUE(projector.supports(Device::Geometry::DisableWhiteLevelWarp()));
    EXPECT_TRUE(projector.supports(Device::Geometry::DisableWhiteLevelBlend()));
    EXPECT_TRUE(projector.supports(Device::Geometry::DisableBlackLevelBlend()));
}

TEST_F(VirtualProjectorTest, RefusesWhatItCannotTakeAndRemembersNothingOfIt) {
    class Unknown : public Command {
    public:
        [[nodiscard]] std::string typeName() const override { return "Unknown"; }
    };
    EXPECT_FALSE(projector.supports(Unknown()));
    EXPECT_EQ(faultOf([&] { send<Unknown>(); }), "Virtual projector 020000000001, command Unknown: not supported");
    EXPECT_EQ(faultOf([&] { projector.execute(nullptr); }), "Virtual projector 020000000001: no command was given");
    EXPECT_EQ(faultOf([&] { send<SetActiveInputSignalIndex>(-1); }),
              "Virtual projector 020000000001, command SetActiveInputSignalIndex: input index -1 is negative");
    EXPECT_THAT(projector.sentCommands(), IsEmpty());
    EXPECT_EQ(send<GetActiveInputSignalIndex>()->getResult(), 1);
}

}  // namespace
