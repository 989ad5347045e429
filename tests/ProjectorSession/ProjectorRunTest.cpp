#include "ProjectorSession/ProjectorRun.h"

#include "Common/VeltraniException.h"
#include "ProjectorTesting.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace projector_testing;
using namespace Veltrani::ProjectorSession;
using testing::ElementsAre;
using testing::IsEmpty;

class ProjectorRunTest : public testing::Test {
protected:
    LogTrap trap;
    DeviceManager manager{settings()};
};

TEST_F(ProjectorRunTest, MakesChannelsOfProjectorsThatAreThereAndGivesThemBack) {
    const PjlinkSimulator left;
    const PjlinkSimulator right;
    const auto config = configOf(entry("L", device(left.port(), 1)) + entry("R", device(right.port(), 2)));
    {
        ProjectorRun run(*config, manager, ProjectorNeed::BLACK);
        ASSERT_TRUE(run.complete());
        run.buildChannels();
        EXPECT_EQ(run.channels().getNumberOfChannels(), 2);
        EXPECT_EQ(run.simulatedChannels(), 0U);
        EXPECT_EQ(run.nameOf(L"020000000002"), "R");
        EXPECT_EQ(run.nameOf(L"020000000009"), "020000000009");
        run.channels().setupProjectorState(IChannelManager::Black);
        EXPECT_THAT(run.records(), ElementsAre(CommandRecord{L"020000000001", "RunFillBlackTo", false},
                                               CommandRecord{L"020000000002", "RunFillBlackTo", false}));
        EXPECT_EQ(manager.deviceCount(), 2U);
    }
    EXPECT_EQ(manager.deviceCount(), 0U);
    EXPECT_THAT(orders(left), ElementsAre("%1AVMT 11"));
    EXPECT_THAT(orders(right), ElementsAre("%1AVMT 11"));
}

TEST_F(ProjectorRunTest, PutsVirtualProjectorsInPlaceOfThoseThatDoNotDo) {
    const PjlinkSimulator asleep({"--power", "0"});
    const PjlinkSimulator awake;
    const auto config = configOf(entry("L", device(asleep.port(), 1)) + entry("R", device(awake.port(), 2)) +
                                 entry("X", "") + entry("Y", "none"));
    ProjectorRun run(*config, manager, ProjectorNeed::CLEAR);
    ASSERT_FALSE(run.complete());
    run.buildChannels();
    ASSERT_EQ(run.channels().getNumberOfChannels(), 4);
    EXPECT_EQ(run.simulatedChannels(), 3U);
    run.channels().setupProjectorState(IChannelManager::Clear);
    EXPECT_EQ(run.records().size(), 4U);
    EXPECT_THAT(orders(asleep), IsEmpty());
    EXPECT_THAT(orders(awake), ElementsAre("%1AVMT 10"));
}

TEST_F(ProjectorRunTest, TwoEntriesWithOneProjectorCannotBecomeChannels) {
    const PjlinkSimulator simulator;
    const auto config = configOf(entry("L", device(simulator.port(), 1)) + entry("R", device(simulator.port(), 1)));
    {
        ProjectorRun run(*config, manager, ProjectorNeed::ANSWER);
        EXPECT_FALSE(run.complete());
        EXPECT_FALSE(run.findings().at(1).replaceable);
        EXPECT_THROW(run.buildChannels(), ChannelSwapException);
    }
    EXPECT_EQ(manager.deviceCount(), 0U);
}

}  // namespace
