#include "ProgramRun.h"
#include "ProjectorDisplays.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace projector_displays;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// The orders among the lines that a projector received: what changes something.
std::vector<std::string> orders(const PjlinkSimulator& projector) {
    std::vector<std::string> lines = projector.lines();
    lines.erase(std::remove_if(lines.begin(), lines.end(), [](const std::string& line) { return line.ends_with('?'); }),
                lines.end());
    return lines;
}

class PrepareCommandTest : public testing::Test {
protected:
    /// Runs `prepare` over a file with this content, which must not change.
    ProgramRun prepare(const std::string& content, const std::string& state,
                       std::vector<std::string> options = {"--timeout", PATIENT}) const {
        const std::string file = folder.write("display.xml", content);
        options.insert(options.begin(), {"prepare", file, state});
        ProgramRun run = runScreenManager(options);
        EXPECT_EQ(folder.read("display.xml"), content) << "the file is not changed";
        return run;
    }

    TemporaryFolder folder;
};

TEST_F(PrepareCommandTest, BlackAndClearReachEveryProjectorInARow) {
    const PjlinkSimulator left;
    const PjlinkSimulator right;
    const std::string two = twoProjectors(left.port(), right.port());
    const ProgramRun black = prepare(two, "black");
    EXPECT_EQ(black.exitCode, 0) << black.errors;
    EXPECT_EQ(black.output, "channels that show black: 2 of 2\n");
    EXPECT_THAT(black.errors, HasSubstr("Make sure that the projector's own warp and blend are switched off"));
    EXPECT_THAT(orders(left), ElementsAre("%1AVMT 11"));
    EXPECT_THAT(orders(right), ElementsAre("%1AVMT 11"));

    const ProgramRun clear = prepare(two, "clear");
    EXPECT_EQ(clear.exitCode, 0);
    EXPECT_EQ(clear.errors, "");
    EXPECT_EQ(clear.output, "channels that show their input: 2 of 2\n");
    EXPECT_THAT(orders(left), ElementsAre("%1AVMT 11", "%1AVMT 10"));
    EXPECT_THAT(orders(right), ElementsAre("%1AVMT 11", "%1AVMT 10"));
    EXPECT_EQ(left.mostConnections(), 1) << "one session at a time";
}

// Work is shown from its second second on: the first order takes longer.
TEST_F(PrepareCommandTest, SlowProjectorsAreCountedOnATerminal) {
    const PjlinkSimulator left({"--delay", "1050"});
    const PjlinkSimulator right;
    PseudoTerminal terminal;
    RunConditions conditions;
    conditions.errors = terminal.device();
    const std::string file = folder.write("display.xml", twoProjectors(left.port(), right.port()));
    const ProgramRun run = terminal.run(conditions, programFile(), {"prepare", file, "clear", "--timeout", PATIENT});
    EXPECT_EQ(run.exitCode, 0) << terminal.shown();
    EXPECT_THAT(terminal.shown(), HasSubstr("sending to projectors: 1 of 2"));
    EXPECT_TRUE(terminal.shown().ends_with("\r\x1b[K")) << "erased at the end";
}

TEST_F(PrepareCommandTest, QuietShowsTheResultAlone) {
    const PjlinkSimulator left;
    const PjlinkSimulator right;
    const ProgramRun run = prepare(twoProjectors(left.port(), right.port()), "black", {"--quiet"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
}

TEST_F(PrepareCommandTest, WithAMissingProjectorNothingIsSent) {
    const PjlinkSimulator left;
    const ProgramRun run = prepare(twoProjectors(left.port(), deadPort()), "black");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, HasSubstr("error: channel Right (R): PJLink projector 020000000002 at 127.0.0.1:"));
    EXPECT_THAT(run.errors, HasSubstr("error: nothing was sent; mend this, or let virtual projectors stand in with "
                                      "--offline\n"));
    EXPECT_THAT(orders(left), IsEmpty());
}

TEST_F(PrepareCommandTest, OfflineReplacesAMissingProjectorAndSendsToTheOthers) {
    const PjlinkSimulator left;
    const ProgramRun run =
        prepare(twoProjectors(left.port(), deadPort()), "black", {"--offline", "--timeout", PATIENT});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.output, "channels that show black: 1 of 2, 1 simulated\n");
    EXPECT_THAT(run.errors, HasSubstr("warning: channel Right (R): "));
    EXPECT_THAT(orders(left), ElementsAre("%1AVMT 11"));
}

TEST_F(PrepareCommandTest, AProjectorThatIsNotOnIsNotReady) {
    const std::vector<std::pair<std::string, std::string>> states{{"0", "is in standby; switch it on"},
                                                                  {"2", "is cooling down; wait, then switch it on"},
                                                                  {"3", "is warming up; wait until it is on"}};
    for (const auto& [power, expected] : states) {
        const PjlinkSimulator left;
        const PjlinkSimulator right({"--power", power});
        const std::string two = twoProjectors(left.port(), right.port());
        const ProgramRun run = prepare(two, "clear");
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_THAT(run.errors, HasSubstr("error: channel Right (R): projector 020000000002 (PJLink 127.0.0.1:" +
                                          std::to_string(right.port()) + ") " + expected + '\n'));
        EXPECT_THAT(orders(left), IsEmpty());
        EXPECT_THAT(right.lines(), Not(Contains("%1AVMT ?"))) << "a sleeping projector is not asked further";
    }
}

TEST_F(PrepareCommandTest, OfflineReplacesAProjectorThatIsNotOn) {
    const PjlinkSimulator left;
    const PjlinkSimulator right({"--power", "0"});
    EXPECT_EQ(prepare(twoProjectors(left.port(), right.port()), "clear", {"--offline"}).exitCode, 0);
    EXPECT_THAT(orders(left), ElementsAre("%1AVMT 10"));
    EXPECT_THAT(orders(right), IsEmpty());
}

TEST_F(PrepareCommandTest, AProjectorWithoutAShutterIsNotReady) {
    const PjlinkSimulator left;
    const PjlinkSimulator right({"--answer", "AVMT=ERR1"});
    const ProgramRun run = prepare(twoProjectors(left.port(), right.port()), "black");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr("command GetPictureMute: AVMT ?: it does not know the command (ERR1)"));
    EXPECT_THAT(orders(left), IsEmpty());
    EXPECT_THAT(orders(right), IsEmpty());
}

TEST_F(PrepareCommandTest, GreyNamesTheProjectorsThatCannotShowIt) {
    const PjlinkSimulator left;
    const PjlinkSimulator right;
    const ProgramRun run = prepare(twoProjectors(left.port(), right.port()), "gray50");
    EXPECT_EQ(run.exitCode, 1);
    const std::string cause = " cannot show a grey picture by itself; show one through its input\n";
    EXPECT_THAT(run.errors, HasSubstr("channel Left (L): projector 020000000001 (PJLink 127.0.0.1:" +
                                      std::to_string(left.port()) + ")" + cause));
    EXPECT_THAT(run.errors, HasSubstr("channel Right (R): projector 020000000002 (PJLink 127.0.0.1:" +
                                      std::to_string(right.port()) + ")" + cause));
    EXPECT_THAT(orders(left), IsEmpty());
    EXPECT_THAT(orders(right), IsEmpty());
}

TEST_F(PrepareCommandTest, GreyWithOfflineIsShownBySimulatedProjectorsAlone) {
    const PjlinkSimulator left;
    const PjlinkSimulator right;
    const ProgramRun run =
        prepare(twoProjectors(left.port(), right.port()), "gray50", {"--offline", "--timeout", PATIENT});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.output, "channels that show half grey: 0 of 2, 2 simulated\n");
    EXPECT_THAT(run.errors, HasSubstr("cannot show a grey picture by itself; show one through its input; a virtual "
                                      "projector stands in\n"));
    EXPECT_THAT(orders(left), IsEmpty());
    EXPECT_THAT(orders(right), IsEmpty());
}

TEST_F(PrepareCommandTest, AFaultWhileSendingNamesWhatWasSentAndTheUndoing) {
    const PjlinkSimulator left;
    const PjlinkSimulator right({"--answer", "AVMT 11=ERR4"});
    const ProgramRun run = prepare(twoProjectors(left.port(), right.port()), "black");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.output, "");
    const std::string file = folder.file("display.xml");
    EXPECT_EQ(run.errors, "error: " + file +
                              ": PJLink projector 020000000002 at 127.0.0.1:" + std::to_string(right.port()) +
                              ", command RunFillBlackTo: AVMT 11: the projector reports a failure of its own (ERR4)\n"
                              "  sent: RunFillBlackTo to channel Left\n"
                              "  failed: RunFillBlackTo to channel Right; it may have taken effect there\n"
                              "  what was sent stays in effect; undo it with: screenmanager prepare " +
                              file + " clear\n  (with --offline when a projector does not reply any more)\n");
    EXPECT_THAT(orders(left), ElementsAre("%1AVMT 11"));
}

TEST_F(PrepareCommandTest, WhatSimulatedProjectorsWereSentIsMarkedAndIsNoChange) {
    const PjlinkSimulator right({"--answer", "AVMT 11=ERR4"});
    const std::string file =
        folder.write("my display's.xml", display(entry("virtual-2", "Left", "") + entry("A", "Upper", "") +
                                                 entry("R", "Right", snippet(right.port(), 2))));
    const ProgramRun run = runScreenManager({"prepare", file, "black", "--offline", "--timeout", PATIENT});
    EXPECT_EQ(run.exitCode, 1);
    const std::string quoted = "'" + file.substr(0, file.size() - 6) + "'\\''s.xml'";
    EXPECT_THAT(run.errors, HasSubstr("  sent: RunFillBlackTo to channel Left (simulated)\n"
                                      "  sent: RunFillBlackTo to channel Upper (simulated)\n"
                                      "  failed: RunFillBlackTo to channel Right; it may have taken effect there\n"
                                      "  no other projector was sent anything; undo it with: screenmanager prepare " +
                                      quoted + " clear\n"));
}

TEST_F(PrepareCommandTest, AFullDiskIsReportedAndExitsWithFour) {
    const PjlinkSimulator left;
    const PjlinkSimulator right;
    const std::string file = folder.write("display.xml", twoProjectors(left.port(), right.port()));
    const ProgramRun run = runProgram(
        "/bin/sh", {"-c", programFile() + " prepare " + file + " black --timeout " + PATIENT + " > /dev/full"});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_THAT(run.errors, HasSubstr("error: standard output cannot be written\n"));
}

TEST_F(PrepareCommandTest, AFaultAtTheFirstProjectorSaysThatNoOtherWasSentAnything) {
    const PjlinkSimulator left({"--answer", "AVMT 10=ERR3"});
    const PjlinkSimulator right;
    const ProgramRun run = prepare(twoProjectors(left.port(), right.port()), "clear");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr("  failed: RunClearTo to channel Left; it may have taken effect there\n"
                                      "  no other projector was sent anything; "));
    EXPECT_THAT(orders(right), IsEmpty());
}

TEST_F(PrepareCommandTest, AProjectorThatDiesBetweenTwoCommandsEndsTheRun) {
    // How many questions come before the order is counted on a pair that lives.
    int questions = 0;
    {
        const PjlinkSimulator left;
        const PjlinkSimulator right;
        ASSERT_EQ(prepare(twoProjectors(left.port(), right.port()), "black").exitCode, 0);
        questions = static_cast<int>(right.lines().size() - orders(right).size());
        ASSERT_GE(questions, 3);
    }
    const PjlinkSimulator left;
    const PjlinkSimulator right({"--die-after", std::to_string(questions)});
    const ProgramRun run = prepare(twoProjectors(left.port(), right.port()), "black");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr("command RunFillBlackTo: no connection: Connection refused\n"
                                      "  sent: RunFillBlackTo to channel Left\n"
                                      "  failed: RunFillBlackTo to channel Right; it may have taken effect there\n"));
    EXPECT_THAT(orders(left), ElementsAre("%1AVMT 11"));
}

TEST_F(PrepareCommandTest, TwoEntriesWithOneProjectorCannotBeUsedAndNothingIsSent) {
    const PjlinkSimulator there;
    const std::string one = snippet(there.port(), 1);
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--timeout", PATIENT}, {"--offline", "--timeout", PATIENT}}) {
        const ProgramRun run = prepare(display(entry("L", "Left", one) + entry("R", "Right", one)), "black", options);
        EXPECT_EQ(run.exitCode, 3);
        EXPECT_EQ(run.errors,
                  "error: channel Right (R): it has the same MAC address 020000000001 as channel Left (L); "
                  "correct the Device element of one of the two, or remove one\n");
    }
    EXPECT_THAT(orders(there), IsEmpty());
}

TEST_F(PrepareCommandTest, AFileWithoutProjectorsIsAFault) {
    const ProgramRun run = prepare(display(""), "black");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr("has no projectors"));
}

}  // namespace
