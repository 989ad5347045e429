#include "ProjectorSession/ChannelListing.h"

#include "ProjectorSession/ProjectorRun.h"
#include "ProjectorTesting.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <sstream>

namespace {

using namespace projector_testing;
using namespace Veltrani::ProjectorSession;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class ChannelListingTest : public testing::Test {
protected:
    LogTrap trap;
    DeviceManager manager{settings()};
};

TEST_F(ChannelListingTest, TellsWhatTheProjectorTells) {
    const PjlinkSimulator simulator({"--answer", "RRES=3840x2160", "--answer", "INPT ?=5A"});
    const auto config = configOf(entry("L", device(simulator.port(), 1)));
    ProjectorRun run(*config, manager, ProjectorNeed::ANSWER);
    run.buildChannels();
    const ChannelListing listing = ChannelListing::ofChannels(run);
    ASSERT_THAT(listing.lines, SizeIs(1));
    const ChannelLine& line = listing.lines[0];
    EXPECT_EQ(line.name, "L");
    EXPECT_EQ(line.id, "020000000001");
    EXPECT_EQ(line.device, "PJLink 127.0.0.1:" + std::to_string(simulator.port()));
    EXPECT_EQ(line.state, "on");
    EXPECT_EQ(line.answer("resolution"), "3840 x 2160");
    EXPECT_EQ(line.answer("input"), "4");
    EXPECT_EQ(line.answer("firmware"), "1.02.003");
    EXPECT_THAT(listing.faults, IsEmpty());
}

TEST_F(ChannelListingTest, OfEntriesShowsWhereAMissingOneShouldBe) {
    const int dead = deadPort();
    const PjlinkSimulator simulator({"--power", "2"});
    const auto config =
        configOf(entry("L", device(dead, 1)) + entry("R", device(simulator.port(), 2)) + entry("X", ""));
    const ProjectorRun run(*config, manager, ProjectorNeed::ANSWER);
    const ChannelListing listing = ChannelListing::ofEntries(run);
    ASSERT_THAT(listing.lines, SizeIs(3));
    EXPECT_EQ(listing.lines[0].device, "PJLink 127.0.0.1:" + std::to_string(dead));
    EXPECT_EQ(listing.lines[0].state, "missing");
    EXPECT_EQ(listing.lines[1].id, "R") << "the id is that of the entry until there are channels";
    EXPECT_EQ(listing.lines[1].state, "cooling");
    EXPECT_EQ(listing.lines[1].answer("input"), "-");
    EXPECT_EQ(listing.lines[2].device, "-");
    EXPECT_THAT(listing.faults, IsEmpty()) << "a projector that is not on need not tell its input";
}

TEST_F(ChannelListingTest, WhatASleepingProjectorPutsOffIsNoFault) {
    const PjlinkSimulator asleep({"--power", "0", "--answer", "RRES=ERR3", "--answer", "SVER=ERR3"});
    const PjlinkSimulator broken({"--power", "0", "--answer", "RRES=ERR3", "--answer", "SVER=ERR4"});
    const PjlinkSimulator awake({"--answer", "RRES=ERR3"});
    const auto config = configOf(entry("L", device(asleep.port(), 1)) + entry("M", device(broken.port(), 2)) +
                                 entry("R", device(awake.port(), 3)));
    ProjectorRun run(*config, manager, ProjectorNeed::ANSWER);
    run.buildChannels();
    const ChannelListing listing = ChannelListing::ofChannels(run);
    ASSERT_THAT(listing.lines, SizeIs(3));
    EXPECT_EQ(listing.lines[0].state, "standby");
    EXPECT_EQ(listing.lines[0].answer("resolution"), "-");
    EXPECT_EQ(listing.lines[0].answer("firmware"), "-");
    ASSERT_THAT(listing.faults, SizeIs(2));
    EXPECT_THAT(listing.faults[0].where + listing.faults[0].what, HasSubstr("channel MPJLink projector 020000000002"));
    EXPECT_THAT(listing.faults[0].what, HasSubstr("SVER ?: the projector reports a failure of its own (ERR4)"));
    EXPECT_EQ(listing.faults[1].where, "channel R") << "one that is on has no reason to put anything off";
}

TEST_F(ChannelListingTest, WhatIsNotAnsweredIsAFaultAndTheRestIsShown) {
    const PjlinkSimulator simulator({"--answer", "SVER=ERR4"});
    const auto config = configOf(entry("L", device(simulator.port(), 1)));
    ProjectorRun run(*config, manager, ProjectorNeed::ANSWER);
    run.buildChannels();
    const ChannelListing listing = ChannelListing::ofChannels(run);
    EXPECT_EQ(listing.lines.at(0).answer("firmware"), "-");
    EXPECT_EQ(listing.lines.at(0).answer("input"), "2");
    ASSERT_THAT(listing.faults, SizeIs(1));
    EXPECT_EQ(listing.faults[0].where, "channel L");
    EXPECT_THAT(listing.faults[0].what, HasSubstr("command GetFirmware: SVER ?: the projector reports a failure"));
}

/// The projectors whose firmware was asked for when the connection of the first of them ended, which it does when the
/// wait for an answer runs out; 0 when none ended.
int askedBeforeTheFirstEnd(const std::vector<std::string>& journal) {
    std::set<std::string> asked;
    for (const std::string& event : journal) {
        std::string kind;
        std::string projector;
        std::istringstream(event) >> kind >> projector;
        if (kind == "LINE" && event.ends_with("SVER ?")) {
            asked.insert(projector);
        } else if (kind == "CLOSE" && asked.contains(projector)) {
            break;
        }
    }
    // The simulator may not have noticed any end yet: then all have been asked before it.
    return static_cast<int>(asked.size());
}

TEST_F(ChannelListingTest, ProjectorsThatFallSilentAreWaitedForTogether) {
    constexpr int PROJECTORS = 16;
    constexpr std::chrono::milliseconds WAIT(1000);
    const PjlinkSimulator silent({"--projectors", std::to_string(PROJECTORS), "--silent-on", "SVER"});
    std::string entries;
    for (int i = 0; i < PROJECTORS; ++i) {
        entries += entry("E" + std::to_string(i), device(silent.port(static_cast<std::size_t>(i)), i));
    }
    const auto config = configOf(entries);
    auto impatient = settings();
    impatient.pjlink.replyLimit = WAIT;
    DeviceManager hasty(impatient);
    ProjectorRun run(*config, hasty, ProjectorNeed::ANSWER);
    run.buildChannels();
    const ChannelListing listing = ChannelListing::ofChannels(run);
    ASSERT_THAT(listing.faults, SizeIs(PROJECTORS));
    for (std::size_t i = 0; i < PROJECTORS; ++i) {
        EXPECT_EQ(listing.faults[i].where, "channel " + listing.lines[i].name) << "in the order of the channels";
        EXPECT_THAT(listing.faults[i].what, HasSubstr("command GetFirmware: no answer within 1000 ms"));
        EXPECT_EQ(listing.lines[i].state, "on");
        EXPECT_EQ(listing.lines[i].answer("input"), "2");
    }
    EXPECT_EQ(silent.mostConnections(), 1);
    EXPECT_EQ(askedBeforeTheFirstEnd(silent.journal()), PROJECTORS) << "one after another it is one";
}

TEST_F(ChannelListingTest, AVirtualProjectorIsPlainlySimulated) {
    const auto config = configOf(displays::projector("L", "") + "<Projector id='M'/>");
    ProjectorRun run(*config, manager, ProjectorNeed::ANSWER);
    run.buildChannels();
    const ChannelListing listing = ChannelListing::ofChannels(run);
    ASSERT_THAT(listing.lines, SizeIs(2));
    EXPECT_EQ(listing.lines[0].state, "simulated");
    EXPECT_EQ(listing.lines[0].answer("resolution"), "1920 x 1200") << "as configured";
    EXPECT_EQ(listing.lines[1].answer("resolution"), "-") << "none is configured";
}

TEST(ChannelListing, IsPrintedAsATable) {
    ChannelListing listing;
    listing.lines.push_back({"Left\nupper", "1", "here", "on", {"4 x 3", "0", "v1"}});
    std::ostringstream out;
    listing.print(out);
    EXPECT_EQ(out.str(),
              "channel      id  device  state  resolution  input  firmware\n"
              "Left\\nupper  1   here    on     4 x 3       0      v1\n");
}

}  // namespace
