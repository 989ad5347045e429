// What goes wrong while an export is under way: one message, the exit status of the manual page, and nothing left.
#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <thread>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string DOME = sourceFolder() + "/examples/spherical-dome/display.xml";

class ExportFaults : public testing::Test {
protected:
    [[nodiscard]] std::set<std::string> names() const {
        std::set<std::string> found;
        for (const auto& entry : fs::directory_iterator(m_folder.path())) {
            found.insert(entry.path().filename().string());
        }
        return found;
    }

    /// An export whose files are no larger than so many blocks of the shell: as on a disk that is full then.
    [[nodiscard]] ProgramRun limited(int blocks, const std::string& options) const {
        return runProgram("/bin/sh", {"-c",
                                      "ulimit -f " + std::to_string(blocks) +
                                          "; exec \"$0\" export \"$1\" --quiet --no-blend --output \"$2\" " + options,
                                      programFile(), DOME, m_output});
    }

    /// An export that takes long.
    [[nodiscard]] static std::vector<std::string> slow(const std::string& output, const std::string& jobs) {
        return {"export",  DOME,         "--output", output,   "--nodes", "1500x1500",
                "--force", "--no-blend", "--quiet",  "--jobs", jobs};
    }

    /// The processes that a process has started.
    static std::set<pid_t> childrenOf(pid_t parent) {
        std::set<pid_t> children;
        const std::string name = std::to_string(parent);
        std::ifstream in("/proc/" + name + "/task/" + name + "/children");
        for (pid_t child = 0; in >> child;) {
            children.insert(child);
        }
        return children;
    }

    /// Waits until an export has so many processes at work.
    static std::set<pid_t> workersOf(const RunningProgram& program, std::size_t count) {
        std::set<pid_t> workers;
        while (workers.size() < count && program.isRunning()) {
            workers = childrenOf(program.process());
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        return workers;
    }

    /// Gone, or ended and not yet waited for by the first process of the system.
    static bool hasEnded(pid_t process) {
        std::ifstream in("/proc/" + std::to_string(process) + "/stat");
        std::string state;
        return !(in >> state >> state >> state) || state == "Z" || state == "X";
    }

    const TemporaryFolder m_folder;
    const std::string m_output = m_folder.file("player");
};

TEST_F(ExportFaults, AFullDiskEndsItWithOneMessageAndLeavesNothing) {
    for (const std::string options :
         {"--format pfm --jobs 1", "--format pfm --jobs 3", "--format png16", "--format obj --nodes 300x300"}) {
        const ProgramRun run = limited(64, options);
        EXPECT_EQ(run.exitCode, 4) << options << run.errors;
        EXPECT_THAT(run.errors, StartsWith("error: " + m_output + ": 0")) << "the file is named";
        EXPECT_THAT(run.errors, HasSubstr(" cannot be written: File too large: make room on the disk, or name another "
                                          "folder with --output\n"));
        EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
        EXPECT_THAT(names(), IsEmpty()) << options;
    }
}

TEST_F(ExportFaults, AFullDiskLeavesTheEarlierExport) {
    ASSERT_EQ(limited(1000, "--nodes 3x3").exitCode, 0);
    const std::string manifest = m_folder.read("player/manifest.json");
    EXPECT_EQ(limited(64, "--force --format pfm").exitCode, 4);
    EXPECT_THAT(names(), ElementsAre("player"));
    EXPECT_EQ(m_folder.read("player/manifest.json"), manifest);
}

TEST_F(ExportFaults, AFolderThatCannotBeWrittenIsRefusedBeforeTheWork) {
    if (::geteuid() == 0) {
        // Who may do everything is refused by nothing but the file system.
        const ProgramRun run = runScreenManager({"export", DOME, "--output", "/proc/player"});
        EXPECT_EQ(run.exitCode, 4);
        EXPECT_THAT(run.errors, HasSubstr("no folder can be made there"));
        return;
    }
    fs::permissions(m_folder.path(), fs::perms::owner_write, fs::perm_options::remove);
    const ProgramRun run = runScreenManager({"export", DOME, "--output", m_output});
    fs::permissions(m_folder.path(), fs::perms::owner_write, fs::perm_options::add);
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_THAT(run.errors, HasSubstr("no folder can be made there: Permission denied"));
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(ExportFaults, AProcessThatIsKilledEndsItWithOneMessage) {
    for (const auto& [signal, message] :
         {std::pair{SIGKILL,
                    "SIGKILL, as the system does where memory runs out: allow it more, or state fewer --jobs\n"},
          std::pair{SIGALRM, "SIGALRM\n"}}) {
        RunningProgram program(programFile(), slow(m_output, "2"));
        const std::set<pid_t> workers = workersOf(program, 2);
        ASSERT_EQ(workers.size(), 2U) << "it was faster than the test, or failed";
        // The other one comes to no end by itself.
        ASSERT_EQ(::kill(*workers.rbegin(), SIGSTOP), 0);
        ASSERT_EQ(::kill(*workers.begin(), signal), 0);
        constexpr int MOST_WAITS = 30'000;
        for (int i = 0; i < MOST_WAITS && program.isRunning(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ASSERT_FALSE(program.isRunning()) << "it waits for the others";
        const ProgramRun run = program.finish();
        EXPECT_EQ(run.exitCode, 5);
        EXPECT_THAT(run.errors, StartsWith("error: channel "));
        EXPECT_THAT(run.errors, HasSubstr(std::string(": its process was ended by the signal ") + message));
        EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
        EXPECT_TRUE(std::all_of(workers.begin(), workers.end(), hasEnded)) << "the others end with it";
        EXPECT_THAT(names(), IsEmpty());
    }
}

// As by Ctrl-C on a terminal, and as by a process that sees to others.
TEST_F(ExportFaults, ItsProcessesEndWithIt) {
    for (const int signal : {SIGINT, SIGTERM, SIGKILL}) {
        fs::create_directories(m_output);
        RunningProgram program(programFile(), slow(m_output, "2"));
        const std::set<pid_t> workers = workersOf(program, 2);
        ASSERT_EQ(workers.size(), 2U) << "it was faster than the test, or failed";
        program.send(signal);
        EXPECT_EQ(program.finish().signal, signal);
        constexpr int MOST_WAITS = 5000;
        for (int i = 0; i < MOST_WAITS && !std::all_of(workers.begin(), workers.end(), hasEnded); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_TRUE(std::all_of(workers.begin(), workers.end(), hasEnded)) << signal;
        if (signal != SIGKILL) {
            EXPECT_THAT(names(), ElementsAre("player")) << signal;
        }
    }
}

}  // namespace
