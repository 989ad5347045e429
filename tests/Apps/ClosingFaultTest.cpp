#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

/// Faults of a disk that only the closing of a file reports.

namespace {

using testing::HasSubstr;

const std::string WALL = sourceFolder() + "/examples/planar-wall/display.xml";

class ClosingFault : public testing::Test {
protected:
    /// @param failing a part of the paths of the files whose closing fails
    [[nodiscard]] static ProgramRun run(const std::string& failing, const std::vector<std::string>& arguments) {
        return runProgram(programFile(), arguments, {{"LD_PRELOAD", failingClose()}, {"SM_FAIL_CLOSE", failing}});
    }

    const TemporaryFolder m_folder;
};

TEST_F(ClosingFault, OfALogEndsTheRunWithIt) {
    const std::string log = m_folder.file("run.log");
    const ProgramRun faulty = run("run.log", {"check", WALL, "--log", log});
    EXPECT_EQ(faulty.exitCode, 4);
    EXPECT_EQ(faulty.errors, "error: --log " + log + ": cannot be written any further: Input/output error\n");
    EXPECT_THAT(faulty.output, HasSubstr("No faults.")) << "the command does its work";
    EXPECT_EQ(run("another file", {"check", WALL, "--log", log}).exitCode, 0);
}

TEST_F(ClosingFault, OfAResultLeavesTheFileThatWasThere) {
    const std::string table = m_folder.write("targets.csv", "what was there");
    const ProgramRun run = ClosingFault::run(m_folder.path(), {"targets", WALL, "-q", "-o", table});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_EQ(run.errors, "error: " + table + ": Unable to write " + table + ": Input/output error\n");
    EXPECT_EQ(m_folder.read("targets.csv"), "what was there");
    const std::filesystem::directory_iterator files(m_folder.path());
    EXPECT_EQ(std::distance(begin(files), end(files)), 1) << "no temporary file stays";
}

}  // namespace
