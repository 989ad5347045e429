// What a terminal cannot show is not sent there.
#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string WALL = sourceFolder() + "/examples/planar-wall/display.xml";

ProgramRun runOn(PseudoTerminal& terminal, const std::vector<std::string>& arguments) {
    RunConditions conditions;
    conditions.output = terminal.device();
    return terminal.run(conditions, programFile(), arguments);
}

const std::vector<std::vector<std::string>> NO_TEXT{
    {"picture", WALL, "--size", "300x200"},
    {"view", WALL},
    {"map", WALL, "--channel", "Lower left", "--grid", "--format", "pfm"},
    {"map", WALL, "--channel", "Lower left", "--grid", "--format", "png"},
    {"map", WALL, "--channel", "Lower left", "--grid", "--nodes", "97x61"},
    {"picture", WALL, "--size", "300x200", "--format", "svg"},
};

TEST(Terminal, IsNotSentWhatItCannotShow) {
    for (std::vector<std::string> arguments : NO_TEXT) {
        for (const std::string output : {"", "-", "/dev/stdout", "the terminal itself"}) {
            PseudoTerminal terminal;
            std::vector<std::string> all = arguments;
            if (!output.empty()) {
                all.insert(all.end(), {"-o", output.starts_with("the") ? terminal.device() : output});
            }
            const ProgramRun run = runOn(terminal, all);
            EXPECT_EQ(run.exitCode, 2) << arguments[0] << output;
            EXPECT_THAT(run.errors, StartsWith("error: a terminal cannot show ")) << arguments[0] << output;
            EXPECT_THAT(run.errors, HasSubstr(": name a file with --output, or pass the output to another program\n"));
            EXPECT_EQ(terminal.shown(), "");
        }
    }
}

TEST(Terminal, IsNotSentAMesh) {
    for (const std::string ply : {"-", "/dev/stdout"}) {
        PseudoTerminal terminal;
        const ProgramRun run = runOn(terminal, {"coverage", WALL, "--ply", ply, "-o", "/dev/null"});
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.errors,
                  "error: a terminal cannot show a mesh: name a file with --ply, or pass the output to another "
                  "program\n");
        EXPECT_EQ(terminal.shown(), "");
    }
}

TEST(Terminal, IsNotSentTheMillionsOfNodesOfAWholePicture) {
    PseudoTerminal terminal;
    const ProgramRun run = runOn(terminal, {"map", WALL, "--channel", "Lower left", "--grid"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, StartsWith("error: a terminal cannot show the nodes of a whole picture: name a file"));
    EXPECT_EQ(terminal.shown(), "");
}

TEST(Terminal, IsSentAMeshOfFewNodes) {
    PseudoTerminal terminal;
    EXPECT_EQ(runOn(terminal, {"map", WALL, "--channel", "Lower left", "-q", "--grid", "--nodes", "2x2"}).exitCode, 0);
    EXPECT_THAT(terminal.shown(), HasSubstr("pixels 1920 1200\r\n"));
}

TEST(Terminal, IsSentWhatItCanShow) {
    PseudoTerminal terminal;
    EXPECT_EQ(runOn(terminal, {"targets", WALL, "-q", "--format", "ply", "--grid", "2x2"}).exitCode, 0);
    EXPECT_THAT(terminal.shown(), StartsWith("ply\r\n"));
}

TEST(Terminal, AnotherProgramIsSentEverything) {
    for (std::vector<std::string> arguments : NO_TEXT) {
        arguments.emplace_back("-q");
        const ProgramRun run = runScreenManager(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_GT(run.output.size(), 1000U);
        arguments.insert(arguments.end(), {"-o", "-"});
        EXPECT_EQ(runScreenManager(arguments).output, run.output);
    }
}

TEST(Terminal, AReportAndAMeshDoNotMixOnStandardOutput) {
    for (const std::string ply : {"-", "/dev/stdout"}) {
        const ProgramRun run = runScreenManager({"coverage", WALL, "--ply", ply});
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, HasSubstr("would both go to standard output: name a file for one of them"));
    }
    EXPECT_THAT(runScreenManager({"coverage", WALL, "--ply", "-", "-o", "/dev/null", "-q"}).output, StartsWith("ply"));
}

}  // namespace
