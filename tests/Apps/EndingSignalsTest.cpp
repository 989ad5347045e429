#include "ProgramRun.h"
#include "ProjectorDisplays.h"
#include "support/Sanitizers.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>
#include <utility>

namespace {

using namespace projector_displays;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const std::string DOME = sourceFolder() + "/examples/spherical-dome/display.xml";

class EndingSignals : public testing::Test {
protected:
    /// The names of temporary files in the folder.
    [[nodiscard]] std::vector<std::string> leftovers() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            if (entry.path().filename().string().starts_with(".save-")) {
                names.push_back(entry.path().filename().string());
            }
        }
        return names;
    }

    /// True when there is a temporary file and its writer has locked it. One that it has made but not locked yet may be
    /// taken for a leftover; it then makes another.
    [[nodiscard]] bool isWriting() const {
        const std::vector<std::string> names = leftovers();
        if (names.empty()) {
            return false;
        }
        const int descriptor = ::open(folder.file(names.front()).c_str(), O_RDWR | O_CLOEXEC);
        const bool isLocked = descriptor >= 0 && ::flock(descriptor, LOCK_EX | LOCK_NB) != 0;
        ::close(descriptor);
        return isLocked;
    }

    /// Waits until a program is writing; then it stands still, however busy the machine is.
    void holdWhileWriting(const RunningProgram& program) const {
        while (!isWriting() && program.isRunning()) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        ASSERT_TRUE(program.isRunning()) << "it was faster than the test, or failed";
        program.send(SIGSTOP);
        ASSERT_TRUE(isWriting()) << "it was faster than the test";
    }

    /// Ends a command in the midst of its writing.
    ProgramRun endWhileWriting(const std::vector<std::string>& arguments, int signal) {
        RunningProgram program(programFile(), arguments);
        holdWhileWriting(program);
        program.send(signal);
        program.send(SIGCONT);
        return program.finish();
    }

    /// Expects that each signal ends a command in the midst of its writing, that the old file stays and nothing is left
    /// beside it.
    void expectClean(const std::vector<std::string>& arguments) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
            folder.write("result", "old");
            EXPECT_EQ(endWhileWriting(arguments, signal).signal, signal);
            EXPECT_THAT(leftovers(), IsEmpty()) << "after signal " << signal;
            EXPECT_EQ(folder.read("result"), "old");
        }
    }

    [[nodiscard]] std::vector<std::string> map(const std::string& nodes) const {
        return {"map", DOME, "--channel", "Left", "--grid", "--nodes", nodes, "-o", result};
    }

    const TemporaryFolder folder;
    const std::string result = folder.file("result");
};

TEST_F(EndingSignals, AMapLeavesNothing) {
    expectClean(map("1600x1600"));
}

TEST_F(EndingSignals, TargetsLeaveNothing) {
    // So many that they are still being written when the signal comes. The sanitizers take ten times as long for each.
    const std::string grid = IS_SANITIZED ? "400x250" : "1000x500";
    expectClean({"targets", DOME, "--grid", grid, "-o", result});
}

TEST_F(EndingSignals, APictureLeavesNothing) {
    expectClean({"picture", DOME, "--size", "8000x4000", "-o", result});
}

/// An addition that has written everything and waits for the lock of the file, which the test holds.
class EndingSignalsInAnAddition : public EndingSignals {
protected:
    EndingSignalsInAnAddition() { lock(); }
    ~EndingSignalsInAnAddition() override { unlock(); }

    void lock() {
        m_lock = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
        ASSERT_EQ(::flock(m_lock, LOCK_EX | LOCK_NB), 0);
    }
    void unlock() {
        if (m_lock >= 0) {
            ::close(std::exchange(m_lock, -1));
        }
    }

    const std::string file = folder.write("display.xml", display(""));
    const PjlinkSimulator simulator{{"--mac", mac(1)}};
    const std::vector<std::string> add{"add", file, "127.0.0.1:" + std::to_string(simulator.port()), "--timeout",
                                       PATIENT};

private:
    int m_lock = -1;
};

TEST_F(EndingSignalsInAnAddition, ItLeavesNothing) {
    expectClean(add);
    EXPECT_EQ(folder.read("display.xml"), display(""));
}

TEST_F(EndingSignalsInAnAddition, OneThatIsIgnoredStaysIgnored) {
    for (const int signal : {SIGINT, SIGHUP}) {
        unlock();
        folder.write("display.xml", display(""));
        lock();
        RunConditions conditions;
        conditions.ignored = signal;
        RunningProgram program(programFile(), add, conditions);
        holdWhileWriting(program);
        program.send(signal);
        program.send(SIGCONT);
        EXPECT_THAT(leftovers(), SizeIs(1));
        unlock();
        const ProgramRun run = program.finish();
        EXPECT_EQ(run.signal, 0);
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_THAT(leftovers(), IsEmpty());
    }
}

TEST_F(EndingSignalsInAnAddition, WhatAKilledOneLeavesTheNextOneRemoves) {
    EXPECT_EQ(endWhileWriting(add, SIGKILL).signal, SIGKILL);
    ASSERT_THAT(leftovers(), SizeIs(1));
    folder.write(".save-abcdef", "of an earlier version");
    unlock();
    const ProgramRun run = runScreenManager(add);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(leftovers(), ElementsAre(".save-abcdef"));
    EXPECT_THAT(folder.read("display.xml"), testing::HasSubstr("<Projector id=\"020000000001\">"));
}

TEST_F(EndingSignals, WhatAKilledMapLeavesTheNextOneRemovesAndNobodyElse) {
    EXPECT_EQ(endWhileWriting(map("1600x1600"), SIGKILL).signal, SIGKILL);
    const std::vector<std::string> left = leftovers();
    ASSERT_THAT(left, SizeIs(1));
    EXPECT_EQ(runScreenManager({"targets", DOME, "--grid", "2x2", "-o", folder.file("other")}).exitCode, 0);
    EXPECT_EQ(leftovers(), left);
    EXPECT_EQ(runScreenManager(map("3x3")).exitCode, 0);
    EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(EndingSignals, ARunThatStillWritesIsNotTouchedByAnotherForTheSameOutput) {
    RunningProgram slow(programFile(), map("1600x1600"));
    holdWhileWriting(slow);
    const std::vector<std::string> writing = leftovers();
    EXPECT_EQ(runScreenManager(map("3x3")).exitCode, 0);
    EXPECT_EQ(leftovers(), writing);
    EXPECT_THAT(folder.read("result"), testing::StartsWith("2\n3 3\n"));
    slow.send(SIGTERM);
    slow.send(SIGCONT);
    EXPECT_EQ(slow.finish().signal, SIGTERM);
    EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(EndingSignals, ALimitOnTheSizeOfFilesLeavesNothing) {
    folder.write("result", "old");
    // The limit is at most 100 KB, some megabytes are written.
    const ProgramRun run = runProgram(
        "/bin/sh",
        {"-c", "ulimit -f 100; exec \"$0\" targets \"$1\" --grid 100x100 -o \"$2\"", programFile(), DOME, result});
    EXPECT_EQ(run.signal, SIGXFSZ);
    EXPECT_THAT(leftovers(), IsEmpty());
    EXPECT_EQ(folder.read("result"), "old");
}

TEST_F(EndingSignals, AResultThatDoesNotFitWhereTheSignalIsIgnoredIsReportedAndTheFormerOneStays) {
    folder.write("result", "old");
    const ProgramRun run = runProgram("/bin/sh", {"-c",
                                                  "trap '' XFSZ; ulimit -f 100; "
                                                  "exec \"$0\" targets \"$1\" --grid 100x100 -o \"$2\"",
                                                  programFile(), DOME, result});
    EXPECT_EQ(run.exitCode, 4) << run.errors;
    EXPECT_THAT(run.errors, testing::HasSubstr("result: "));
    EXPECT_THAT(leftovers(), IsEmpty());
    EXPECT_EQ(folder.read("result"), "old");
}

TEST_F(EndingSignals, AReaderThatWentAwayEndsTheProgramAsBefore) {
    const ProgramRun run = runProgram("/bin/sh", {"-c",
                                                  "mkfifo \"$2/pipe\"; exec 3<>\"$2/pipe\"; "
                                                  "exec 4>\"$2/pipe\" 3<&-; exec \"$0\" targets \"$1\" >&4",
                                                  programFile(), DOME, folder.path()});
    EXPECT_EQ(run.signal, SIGPIPE);
}

}  // namespace
