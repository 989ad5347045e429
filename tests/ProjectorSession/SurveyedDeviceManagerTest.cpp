#include "ProjectorSession/SurveyedDeviceManager.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "ProjectorTesting.h"
#include "support/AllocationFault.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DeviceFramework2;
using namespace projector_testing;
using testing::ElementsAre;
using Veltrani::ProjectorSession::CommandRecord;
using Veltrani::ProjectorSession::ProjectorFinding;
using Veltrani::ProjectorSession::SurveyedDeviceManager;

class SurveyedDeviceManagerTest : public testing::Test {
protected:
    /// As the survey leaves it: the device is counted once.
    ProjectorFinding usable() { return {L"L", snippet, "Left", "", manager.connectDevice(snippet)}; }

    const PjlinkSimulator simulator;
    const std::wstring snippet = Veltrani::fromUtf8(device(simulator.port(), 1));
    const std::wstring wrapped = L"<Wrapper><Projector Width='4' Height='3'>" + snippet + L"</Projector></Wrapper>";
    DeviceManager manager{settings()};
};

TEST_F(SurveyedDeviceManagerTest, AnswersTheSurveyedDeviceWithoutAskingItAgain) {
    const ProjectorFinding finding = usable();
    SurveyedDeviceManager surveyed(manager, {finding});
    const auto asked = simulator.lines().size();
    Device* const made = surveyed.createDevice(snippet, true, L"");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->getUID(), L"020000000001");
    EXPECT_EQ(surveyed.getDevice(L"020000000001"), made) << "one object per device";
    EXPECT_FALSE(SurveyedDeviceManager::isSimulated(*made));
    EXPECT_EQ(simulator.lines().size(), asked);
    EXPECT_EQ(manager.useCount(finding.device), 2);
    surveyed.releaseDevice(made);
    EXPECT_EQ(manager.useCount(finding.device), 1) << "the count of the survey";
}

TEST_F(SurveyedDeviceManagerTest, AnUnusableProjectorDoesNotExist) {
    SurveyedDeviceManager surveyed(manager, {ProjectorFinding{L"L", snippet, "Left", "in standby", nullptr}});
    EXPECT_EQ(surveyed.createDevice(snippet, true, L""), nullptr);
    EXPECT_TRUE(simulator.journal().empty()) << "nobody is asked";
    Device* const stand = surveyed.createDevice(wrapped, false, DeviceTypeManager::virtualProjectorTypeName());
    ASSERT_NE(stand, nullptr);
    EXPECT_TRUE(SurveyedDeviceManager::isSimulated(*stand));
    EXPECT_EQ(stand->getDeviceSnippet(), snippet);
    surveyed.releaseDevice(stand);
    EXPECT_EQ(manager.deviceCount(), 0U);
    EXPECT_EQ(surveyed.getDevice(L"020000000001"), nullptr);
}

TEST_F(SurveyedDeviceManagerTest, GivesTheDevicesOfTheSurveyBack) {
    {
        const SurveyedDeviceManager surveyed(manager, {usable()});
        EXPECT_EQ(manager.deviceCount(), 1U);
    }
    EXPECT_EQ(manager.deviceCount(), 0U);
}

TEST_F(SurveyedDeviceManagerTest, ItsEndNeedsNoMemory) {
    const LogTrap trap;
    const ProjectorFinding finding = usable();
    manager.releaseDevice(finding.device);  // given back behind its back, which is logged at its end
    std::size_t failures = 0;
    for (bool isMissed = true; isMissed; ++failures) {
        auto surveyed = std::make_unique<SurveyedDeviceManager>(manager, std::vector<ProjectorFinding>{finding});
        const AllocationFault fault(failures);
        surveyed.reset();
        isMissed = fault.happened();
    }
    EXPECT_GT(failures, 1U);
}

TEST_F(SurveyedDeviceManagerTest, NotesWhatIsSentAndTellsAnObserver) {
    SurveyedDeviceManager surveyed(manager, {usable()});
    Device* const made = surveyed.createDevice(snippet, true, L"");
    made->execute(std::make_shared<Device::Drawing::RunFillBlackTo>(5));
    std::vector<CommandRecord> observed;
    surveyed.setObserver([&](const CommandRecord& record) { observed.push_back(record); });
    made->execute(std::make_shared<Device::Drawing::RunClearTo>(2));
    EXPECT_THAT(surveyed.records(), ElementsAre(CommandRecord{L"020000000001", "RunFillBlackTo", false},
                                                CommandRecord{L"020000000001", "RunClearTo", false}));
    EXPECT_THAT(observed, ElementsAre(CommandRecord{L"020000000001", "RunClearTo", false}));
    surveyed.releaseDevice(made);
}

TEST_F(SurveyedDeviceManagerTest, BindsDevicesToEntries) {
    SurveyedDeviceManager surveyed(manager, {});
    Device* const stand = surveyed.createDevice(L"<Wrapper><Projector Width='4' Height='3'/></Wrapper>", false, L"");
    EXPECT_TRUE(surveyed.bindDevice(stand, L"left"));
    EXPECT_EQ(surveyed.getDevice(L"left"), stand);
    EXPECT_FALSE(surveyed.bindDevice(nullptr, L"right"));
    surveyed.releaseDevice(nullptr);
    surveyed.releaseDevice(stand);
    EXPECT_EQ(manager.deviceCount(), 0U);
}

}  // namespace
