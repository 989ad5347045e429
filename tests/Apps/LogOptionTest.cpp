#include "ProgramRun.h"
#include "ProjectorDisplays.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"
#include "support/TextLines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <regex>

/// `--log FILE`.

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

const std::string EXAMPLES = sourceFolder() + "/examples/";
const std::string WALL = EXAMPLES + "planar-wall/display.xml";

class LogOption : public testing::Test {
protected:
    [[nodiscard]] std::string path() const { return folder.file("run.log"); }
    [[nodiscard]] std::string log() const { return folder.read("run.log"); }

    /// The columns of every record, without the time.
    [[nodiscard]] std::vector<std::string> records() const {
        std::vector<std::string> found;
        for (const std::string& line : linesOf(log())) {
            if (!line.starts_with("#")) {
                found.push_back(line.substr(line.find('\t') + 1));
            }
        }
        return found;
    }

    /// The log is refused with this code and text, nothing is done, and a file that was there stays as it was.
    void expectRefused(int exitCode, const std::string& text, const std::string& file,
                       std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"--log", file});
        const ProgramRun run = runScreenManager(arguments);
        EXPECT_EQ(run.exitCode, exitCode) << run.errors;
        EXPECT_EQ(run.errors, "error: --log " + file + ": " + text + "\n");
        EXPECT_EQ(run.output, "");
    }

    /// A configuration of two projectors that do not answer.
    [[nodiscard]] std::string missingProjectors() const {
        const int port = projector_displays::deadPort();
        return folder.write("projectors.xml", projector_displays::twoProjectors(port, port));
    }

    static inline const std::string NO_LOG =
        "exists and is no log of screenmanager; it stays as it is: name a new file, or a log to continue";
    static inline const std::string OWN_FILE = "the command itself reads or writes this file: name another one";

    TemporaryFolder folder;
};

TEST_F(LogOption, WritesEveryRecordAsOneLineBetweenTheEndsOfTheRun) {
    const ProgramRun run = runScreenManager({"targets", WALL, "--log", path()});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    const std::vector<std::string> lines = linesOf(log());
    const std::string time = "[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z";
    ASSERT_GE(lines.size(), 4U);
    EXPECT_TRUE(std::regex_match(lines.front(), std::regex("# screenmanager log\t" + time +
                                                           "\tscreenmanager [0-9.]+: targets .*display.xml --log .*")))
        << lines.front();
    EXPECT_TRUE(std::regex_match(lines.back(), std::regex("# end\t" + time + "\texit code 0"))) << lines.back();
    for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
        EXPECT_TRUE(std::regex_match(lines[i], std::regex(time + "\t(INFO|WARN|ERROR|FATAL)\tDravix[.A-Za-z0-9]+\t" +
                                                          "(-|[A-Za-z0-9/]+\\.cpp:[0-9]+)\t.+")))
            << lines[i];
    }
    EXPECT_THAT(records(),
                Contains(MatchesRegex("INFO\tDravix.ScreenManager.ScreenManager\tBackEnd/ScreenManager/"
                                      "ScreenManager.cpp:[0-9]+\tSuccessfully loaded Content screen: Flat")));
}

TEST_F(LogOption, ChangesNothingOnTheStreams) {
    const std::vector<std::vector<std::string>> commands{
        {"targets", EXAMPLES + "collimated/display.xml", "--grid", "2x2"},
        {"coverage", EXAMPLES + "empty-wall/display.xml"},
        {"channels", missingProjectors(), "--offline", "--timeout", projector_displays::PATIENT},
        {"check", "no-such-file.xml"}};
    for (const std::vector<std::string>& verbosity : {std::vector<std::string>{}, {"--quiet"}, {"--verbose"}}) {
        for (std::vector<std::string> command : commands) {
            command.insert(command.end(), verbosity.begin(), verbosity.end());
            const ProgramRun without = runScreenManager(command);
            command.insert(command.end(), {"--log", path()});
            const ProgramRun with = runScreenManager(command);
            EXPECT_EQ(with.exitCode, without.exitCode) << command.front();
            EXPECT_EQ(with.output, without.output) << command.front();
            EXPECT_EQ(with.errors, without.errors) << command.front();
        }
    }
}

TEST_F(LogOption, HoldsWhatTheCommandKeepsFromTheConsole) {
    const ProgramRun run = runScreenManager({"--quiet", "channels", "--offline", missingProjectors(), "--timeout",
                                             projector_displays::PATIENT, "--log", path()});
    EXPECT_THAT(run.errors, Not(HasSubstr("Replacing projector")));
    EXPECT_THAT(records(), Contains(MatchesRegex("WARN\tDravix.ScreenManager.ChannelManager\tBackEnd/ScreenManager/"
                                                 "ChannelManager.cpp:[0-9]+\tReplacing projector Lwith \\(offline\\) "
                                                 "virtual projector")));
}

TEST_F(LogOption, BentRaysAreLoggedWhenVerboseOnly) {
    const std::vector<std::string> command{"targets", EXAMPLES + "collimated/display.xml", "--grid", "2x2", "--log",
                                           path()};
    EXPECT_EQ(runScreenManager(command).exitCode, 0);
    EXPECT_THAT(log(), Not(HasSubstr("Pitch,Yaw")));
    std::vector<std::string> verbose = command;
    verbose.emplace_back("--verbose");
    EXPECT_EQ(runScreenManager(verbose).exitCode, 0);
    EXPECT_THAT(log(), HasSubstr("INFO\tDravix.ScreenManager.SphereTargetLocator\t"));
}

TEST_F(LogOption, CommandsThatBendMillionsOfRaysLogNone) {
    const std::string display = EXAMPLES + "collimated/display.xml";
    const std::string result = folder.file("result");
    const std::vector<std::vector<std::string>> commands{
        {"check", display},
        {"coverage", display, "-o", result},
        {"export", display, "--no-blend", "--nodes", "3x3", "-o", folder.file("export")},
        {"picture", display, "--size", "200x200", "-o", result + ".png"},
        {"view", display, "-o", result + ".html"}};
    for (std::vector<std::string> command : commands) {
        command.insert(command.end(), {"--verbose", "--log", path()});
        const ProgramRun run = runScreenManager(command);
        EXPECT_LE(run.exitCode, 1) << command.front() << ": " << run.errors.substr(0, 1000);
        EXPECT_THAT(log(), HasSubstr("INFO\t")) << command.front();
        EXPECT_THAT(log(), Not(HasSubstr("Pitch,Yaw"))) << command.front();
    }
}

TEST_F(LogOption, ALaterRunGoesOnBehindTheEarlierOne) {
    EXPECT_EQ(runScreenManager({"check", WALL, "--log", path()}).exitCode, 0);
    const std::string first = log();
    EXPECT_EQ(runScreenManager({"check", "no-such-file.xml", "--log", path()}).exitCode, 3);
    const std::string both = log();
    EXPECT_THAT(both, StartsWith(first));
    EXPECT_THAT(both.substr(first.size()), StartsWith("# screenmanager log\t"));
    EXPECT_THAT(both, testing::EndsWith("\texit code 3\n"));
}

TEST_F(LogOption, ControlCharactersAreSpelledOut) {
    const std::string display =
        folder.write("dis\nplay.xml",
                     "<Display version='1' lengthUnit='m'><Units native='m'/>"
                     "<Screen shape='Mesh' fileUnit='m'><ContentMesh file='no&#10;such&#9;file.obj'/>"
                     "<ImportOrientation up='Z' forward='Y'/></Screen></Display>");
    EXPECT_EQ(runScreenManager({"check", display, "--log", path()}).exitCode, 1);
    EXPECT_THAT(linesOf(log()).front(), HasSubstr("dis\\nplay.xml"));
    EXPECT_THAT(records(), Contains(HasSubstr("no\\nsuch\\x09file.obj")));
    for (const std::string& line : linesOf(log())) {
        EXPECT_TRUE(line.starts_with("#") || std::count(line.begin(), line.end(), '\t') == 4) << line;
    }
}

TEST_F(LogOption, AFileThatIsNoLogIsRefusedAndStays) {
    const std::string notes = folder.write("notes.txt", "to be kept\n");
    expectRefused(4, NO_LOG, notes, {"check", WALL});
    EXPECT_EQ(folder.read("notes.txt"), "to be kept\n");
    const std::string empty = folder.write("empty.txt", "");
    expectRefused(4, NO_LOG, empty, {"check", WALL});
    EXPECT_EQ(folder.read("empty.txt"), "");
}

TEST_F(LogOption, APlaceThatTakesNoFileIsRefused) {
    const std::string remedy = ": name a file in a folder that takes new files";
    expectRefused(4, "cannot be written: No such file or directory" + remedy, folder.file("nowhere/run.log"),
                  {"check", WALL});
    expectRefused(4, "cannot be written: Is a directory" + remedy, folder.path(), {"check", WALL});
    expectRefused(4, NO_LOG, "/dev/full", {"check", WALL});
    ASSERT_EQ(::symlink(folder.file("target").c_str(), folder.file("dangling").c_str()), 0);
    expectRefused(4, "cannot be written: No such file or directory" + remedy, folder.file("dangling"), {"check", WALL});
    EXPECT_NE(::access(folder.file("target").c_str(), F_OK), 0) << "nothing is made where a link leads";
}

TEST_F(LogOption, APipeWithoutAReaderIsRefusedAtOnce) {
    ASSERT_EQ(::system(("mkfifo '" + folder.file("pipe") + "'").c_str()), 0);
    expectRefused(4, NO_LOG, folder.file("pipe"), {"check", WALL});
}

TEST_F(LogOption, AnInputOfTheCommandIsRefused) {
    const std::string display = folder.write(
        "display.xml",
        "<Display version='1' lengthUnit='m'><Units native='m'/>"
        "<Screen shape='Mesh' fileUnit='m'><ContentMesh file='missing.obj'/><ImportOrientation up='Z' forward='Y'/>"
        "</Screen></Display>");
    const std::string before = folder.read("display.xml");
    expectRefused(2, OWN_FILE, display, {"check", display});
    EXPECT_EQ(folder.read("display.xml"), before);
    ASSERT_EQ(::symlink(display.c_str(), folder.file("link").c_str()), 0);
    expectRefused(2, OWN_FILE, folder.file("link"), {"check", display});
    expectRefused(2, OWN_FILE, folder.file("./missing.obj"), {"check", display});
    EXPECT_NE(::access(folder.file("missing.obj").c_str(), F_OK), 0);
    expectRefused(2, OWN_FILE, folder.file("absent.xml"), {"check", folder.file("absent.xml")});
    expectRefused(2, OWN_FILE, folder.file("points.csv"),
                  {"map", WALL, "--channel", "Lower left", "--points", folder.file("points.csv")});
}

TEST_F(LogOption, AnOutputOfTheCommandIsRefused) {
    const std::string out = folder.file("out");
    expectRefused(2, OWN_FILE, out, {"targets", WALL, "-o", out});
    expectRefused(2, OWN_FILE, out, {"targets", WALL, "--output=" + folder.file("./out")});
    expectRefused(2, OWN_FILE, out, {"coverage", WALL, "--ply", out});
    expectRefused(2, OWN_FILE, out, {"view", WALL, "-o", out});
    expectRefused(2, OWN_FILE, out, {"picture", WALL, "-o", out});
    expectRefused(2, OWN_FILE, out, {"map", WALL, "--channel", "Lower left", "--grid", "-o", out});
    EXPECT_NE(::access(out.c_str(), F_OK), 0);
}

TEST_F(LogOption, WhereAStreamLeadsIsRefused) {
    EXPECT_EQ(runScreenManager({"check", WALL, "--log", path()}).exitCode, 0);
    const std::string before = log();
    for (const char* redirection : {">> \"$1\"", "2>> \"$1\"", "< \"$1\""}) {
        const ProgramRun run = runProgram(
            "/bin/sh",
            {"-c", std::string("\"$0\" check \"$2\" --log \"$1\" ") + redirection, programFile(), path(), WALL});
        EXPECT_EQ(run.exitCode, 2) << redirection;
    }
    EXPECT_EQ(linesOf(log()).size(), linesOf(before).size() + 1) << "the message of the second run on standard error";
}

TEST_F(LogOption, WithoutANameIsAWrongCommandLine) {
    const ProgramRun empty = runScreenManager({"--log", "", "check", WALL});
    EXPECT_EQ(empty.exitCode, 2);
    EXPECT_THAT(empty.errors, HasSubstr("--log: a file has a name"));
    EXPECT_EQ(runScreenManager({"check", WALL, "--log"}).exitCode, 2);
    EXPECT_EQ(runScreenManager({"check", WALL, "--log", path(), "--log", path()}).exitCode, 2);
}

TEST_F(LogOption, ALogThatTakesNoMoreIsAFaultOfTheOutput) {
    // A log of one block, and a limit of one block for every file that the program writes.
    const std::string opening = "# screenmanager log\n";
    folder.write("run.log", opening + "# " + std::string(512 - opening.size() - 3, '.') + "\n");
    const std::string limited = "trap '' XFSZ; ulimit -f 1; \"$0\" check \"$2\" --log \"$1\"";
    const auto run = [&](const std::string& command, const std::string& display) {
        return runProgram("/bin/sh", {"-c", command, programFile(), path(), display});
    };
    const ProgramRun right = run("(" + limited + ") | cat", WALL);
    EXPECT_EQ(right.errors, "error: --log " + path() + ": cannot be written any further: File too large\n");
    EXPECT_THAT(right.output, HasSubstr("No faults.")) << "the command does its work";
    EXPECT_EQ(run(limited + " > /dev/null", WALL).exitCode, 4);
    EXPECT_EQ(run(limited + " > /dev/null", "no-such-file.xml").exitCode, 3) << "a graver fault keeps its code";
    EXPECT_EQ(log().size(), 512U);
}

}  // namespace
