#include "ProjectorSession/RecordedDevice.h"

#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/VirtualProjector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DeviceFramework2;
using testing::ElementsAre;
using testing::IsEmpty;
using Veltrani::ProjectorSession::CommandRecord;
using Veltrani::ProjectorSession::CommandRecords;
using Veltrani::ProjectorSession::RecordedDevice;

/// A device that takes warp commands without supporting them, as projectors do that have none.
class WithoutWarp : public VirtualProjector {
public:
    using VirtualProjector::VirtualProjector;

    [[nodiscard]] bool supports(const Command& command) const override {
        return dynamic_cast<const Device::Geometry::DisableWhiteLevelWarp*>(&command) == nullptr &&
               VirtualProjector::supports(command);
    }
    void execute(const std::shared_ptr<Command>& command) override {
        if (command && supports(*command)) {
            VirtualProjector::execute(command);
        }
    }
};

class RecordedDeviceTest : public testing::Test {
protected:
    CommandRecords records;
    VirtualProjector device{VirtualProjectorSnippet{1920, 1200, 1, L"<Device mac='02:00:00:00:00:01'/>"},
                            L"020000000001"};
    RecordedDevice recorded{device, [this](const CommandRecord& record) { records.push_back(record); }};
};

TEST_F(RecordedDeviceTest, LooksLikeTheDeviceBehind) {
    EXPECT_EQ(recorded.getUID(), device.getUID());
    EXPECT_EQ(recorded.getDeviceSnippet(), device.getDeviceSnippet());
    EXPECT_EQ(recorded.getUidSourceText(), device.getUidSourceText());
    EXPECT_EQ(recorded.getLocation(), device.getLocation());
    EXPECT_EQ(recorded.getTypeCode(), device.getTypeCode());
    EXPECT_TRUE(recorded.supports(GetFirmware()));
    EXPECT_EQ(&recorded.device(), &device);
    EXPECT_THAT(records, IsEmpty());
}

TEST_F(RecordedDeviceTest, PassesCommandsOnAndNotesThem) {
    recorded.execute(std::make_shared<Device::Drawing::RunFillBlackTo>(5));
    const auto resolution = std::make_shared<GetNativeResolution>();
    recorded.execute(resolution);
    EXPECT_EQ(resolution->getResult(), (Point<int, 2>{1920, 1200}));
    EXPECT_THAT(records, ElementsAre(CommandRecord{L"020000000001", "RunFillBlackTo", false},
                                     CommandRecord{L"020000000001", "GetNativeResolution", false}));
    EXPECT_EQ(device.sentCommands().size(), 2U);
}

TEST_F(RecordedDeviceTest, NotesFaultsAndLetsThemThrough) {
    EXPECT_THROW(recorded.execute(std::make_shared<SetActiveInputSignalIndex>(-1)), DeviceException);
    EXPECT_THROW(recorded.execute(nullptr), DeviceException);
    EXPECT_THAT(records, ElementsAre(CommandRecord{L"020000000001", "SetActiveInputSignalIndex", true},
                                     CommandRecord{L"020000000001", "", true}));
}

TEST_F(RecordedDeviceTest, WhatReachesNoProjectorIsNotNoted) {
    WithoutWarp plain(VirtualProjectorSnippet{}, L"A");
    RecordedDevice notes(plain, [this](const CommandRecord& record) { records.push_back(record); });
    notes.execute(std::make_shared<Device::Geometry::DisableWhiteLevelWarp>());
    notes.execute(nullptr);
    EXPECT_THAT(records, IsEmpty());
}

}  // namespace
