#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <utility>
#include <vector>

namespace {

using testing::EndsWith;
using testing::HasSubstr;

const std::string EXAMPLES = sourceFolder() + "/examples/";

TEST(CheckCommand, TheExamplesAreAllRight) {
    for (const char* example : {"planar-wall", "curved-wall"}) {
        const ProgramRun run = runScreenManager({"check", EXAMPLES + example + "/display.xml"});
        EXPECT_EQ(run.exitCode, 0) << run.output;
        EXPECT_THAT(run.output, HasSubstr("No faults."));
        EXPECT_EQ(run.errors, "");
    }
}

TEST(CheckCommand, PrintsTheDisplayAsATable) {
    const ProgramRun run = runScreenManager({"check", EXAMPLES + "planar-wall/display.xml"});
    EXPECT_THAT(run.output, HasSubstr("6 x 0 x 2.5 m (right x forward x up)"));
    EXPECT_THAT(run.output, HasSubstr("channels     6\n"));
    EXPECT_THAT(run.output, HasSubstr("channel       projector     picture      targets by"));
    EXPECT_THAT(run.output, HasSubstr("Upper centre  020000000002  1920 x 1200"));
}

/// An example whose pictures have no sizes.
std::string withoutResolutions(const TemporaryFolder& folder, const std::string& example) {
    std::ifstream file(EXAMPLES + example + "/display.xml");
    std::ostringstream text;
    text << file.rdbuf();
    return folder.write("unsized.xml", std::regex_replace(text.str(), std::regex("<Resolution [^>]*>"), ""));
}

TEST(CheckCommand, AChannelWithoutResolutionIsAFaultWhereCommandsFail) {
    for (const auto& [example, channel] :
         {std::pair("planar-wall", "Upper left"), std::pair("spherical-dome", "Left")}) {
        const TemporaryFolder folder;
        const std::string file = withoutResolutions(folder, example);
        const ProgramRun run = runScreenManager({"check", file});
        EXPECT_EQ(run.exitCode, 1) << run.output;
        EXPECT_THAT(run.output, HasSubstr(": its picture has no size in pixels, which coverage, whole maps and some "
                                          "targets need: give it a Resolution [no-resolution]\n"));
        EXPECT_EQ(runScreenManager({"coverage", "--quiet", file}).exitCode, 1);
        EXPECT_EQ(runScreenManager({"map", "--quiet", file, "--channel", channel, "--grid"}).exitCode, 3);
    }
}

/// What stands in the column "throw" of a channel of two projectors before a wall, the second of which looks away.
std::string throwsOf(const TemporaryFolder& folder, const std::vector<std::string>& options) {
    const auto projector = [](const std::string& id, const std::string& z) {
        return "<Projector id='" + id + "'><Resolution width='1920' height='1200'/><Orientation z='" + z +
               "' x='0' y='0'/><Frustum left='-16' right='16' bottom='-10.2' top='10.2'/>"
               "<Position x='0' y='1' z='1'/></Projector>";
    };
    std::vector<std::string> arguments{"check"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.push_back(
        folder.write("wall.xml",
                     "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Flat'>"
                     "<Centre x='0' y='5' z='1'/><Size width='4' height='2'/></Screen><TargetData type='3D'/>"
                     "<Projectors>" +
                         projector("A", "0") + projector("B", "120") + "</Projectors></Display>"));
    return runScreenManager(arguments).output;
}

TEST(CheckCommand, AThrowThatIsNotMeasuredIsNotCalledUnstated) {
    const TemporaryFolder folder;
    const std::string whole = throwsOf(folder, {});
    EXPECT_THAT(whole, HasSubstr("  4 m "));
    EXPECT_THAT(whole, HasSubstr("  middle misses "));
    EXPECT_THAT(whole, testing::Not(HasSubstr("not stated")));
    const std::string quick = throwsOf(folder, {"--quick"});
    EXPECT_THAT(quick, HasSubstr("  not measured  not measured  "));
    EXPECT_THAT(quick, testing::Not(HasSubstr("not stated")));
}

TEST(CheckCommand, FaultsAreToldAndExitWithOne) {
    const TemporaryFolder folder;
    const std::string file = folder.write(
        "display.xml",
        "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Mesh' fileUnit='m'><ContentMesh "
        "file='gone.obj'/></Screen><TargetData type='PlanarBasic'/><Projectors><Projector "
        "id='A'/></Projectors></Display>");
    const ProgramRun run = runScreenManager({"check", file});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.output, HasSubstr("4 faults:"));
    EXPECT_THAT(run.output, HasSubstr("because: "));
    EXPECT_THAT(run.output, HasSubstr("channel A: it has no Layout, which maps of this display need"));
    EXPECT_THAT(run.output, HasSubstr("No such file or directory"));
    EXPECT_THAT(run.output, HasSubstr("channel A, screen area: no screen area"));
    EXPECT_EQ(run.errors, "");
}

/// A wall whose one channel is mirrored.
std::string mirroredWall(const TemporaryFolder& folder) {
    return folder.write(
        "mirrored.xml",
        "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Flat'><Centre x='0' y='5' "
        "z='1'/><Size width='4' height='2'/></Screen><TargetData type='PlanarBasic'/><Projectors>"
        "<Projector id='A'><Resolution width='1920' height='1200'/><ScreenArea left='1' right='0' "
        "bottom='0' top='1'/><Layout xMin='0' xMax='4' yMin='0' yMax='2'/></Projector></Projectors></Display>");
}

TEST(CheckCommand, WarningsCountWithStrictAlone) {
    const TemporaryFolder folder;
    const std::string file = mirroredWall(folder);
    const ProgramRun lenient = runScreenManager({"check", file});
    EXPECT_EQ(lenient.exitCode, 0);
    EXPECT_THAT(lenient.output, HasSubstr("1 warning:\n  - channel A: ScreenArea left 1 lies beyond right 0, which "
                                          "mirrors the picture: exchange the two [edges-exchanged]\n"));
    EXPECT_THAT(lenient.output, testing::Not(HasSubstr("No faults.")));
    EXPECT_EQ(runScreenManager({"check", "--strict", file}).exitCode, 1);
}

TEST(CheckCommand, ARuleIsAllowedByItsName) {
    const TemporaryFolder folder;
    const std::string file = mirroredWall(folder);
    const ProgramRun run =
        runScreenManager({"check", "--strict", "--allow", "edges-exchanged", "--allow", "same-name", file});
    EXPECT_EQ(run.exitCode, 0) << run.output;
    EXPECT_THAT(run.output, HasSubstr("No faults."));
    for (const char* name : {"edges", "same-device"}) {
        const ProgramRun wrong = runScreenManager({"check", "--allow", name, file});
        EXPECT_EQ(wrong.exitCode, 2);
        EXPECT_THAT(wrong.errors, HasSubstr("no rule that can be allowed is called " + std::string(name)));
        EXPECT_THAT(wrong.errors, HasSubstr("edges-exchanged, area-off-screen"));
    }
}

TEST(CheckCommand, AQuickCheckMeasuresNoLightAndNamesWhatItLeavesOut) {
    const TemporaryFolder folder;
    const ProgramRun run = runScreenManager({"check", "--quick", mirroredWall(folder)});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.output, HasSubstr("not measured"));
    EXPECT_THAT(run.output,
                EndsWith("\nNot judged: 11 rules that need light, left out by --quick (lens-among-others, looks-away, "
                         "misses-screen, "
                         "wide-misses-screen, inside-surface, nearly-same-picture, name-against-place, eye-outside, "
                         "mostly-dark, dark-parts, narrow-overlap); check without --quick to judge by them.\n"));
    EXPECT_THAT(runScreenManager({"check", mirroredWall(folder)}).output, testing::Not(HasSubstr("Not judged")));
}

TEST(CheckCommand, NoExampleHasAWarning) {
    std::size_t examples = 0;
    for (const auto& entry : std::filesystem::directory_iterator(EXAMPLES)) {
        const std::string file = entry.path().string() + "/display.xml";
        if (!std::filesystem::exists(file)) {
            continue;
        }
        ++examples;
        const ProgramRun run = runScreenManager({"check", "--strict", file});
        // The wall that channels are to be added to is not complete before.
        const bool isEmpty = entry.path().filename() == "empty-wall";
        EXPECT_EQ(run.exitCode, isEmpty ? 1 : 0) << run.output;
        EXPECT_THAT(run.output, testing::Not(HasSubstr(" warning"))) << file;
        EXPECT_THAT(run.output,
                    HasSubstr(isEmpty ? "1 fault:\n  - channels: the configuration has no projectors" : "No faults."));
    }
    EXPECT_GE(examples, 11U);
}

TEST(CheckCommand, AConfigurationThatCannotBeUsedExitsWithThree) {
    const TemporaryFolder folder;
    EXPECT_EQ(runScreenManager({"check", folder.file("gone.xml")}).exitCode, 3);
    EXPECT_EQ(runScreenManager({"check", folder.path()}).exitCode, 3);
    EXPECT_EQ(runScreenManager({"check", folder.write("bad.xml", "<Display")}).exitCode, 3);
    EXPECT_EQ(runScreenManager({"check", "/dev/zero"}).exitCode, 3);
}

TEST(CheckCommand, NamesOfEveryScriptWorkInTheCLocale) {
    const TemporaryFolder folder;
    const std::string file = folder.write(
        "B\xc3\xbchne 100%s/d\xc3\xadsplay.xml",
        "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Mesh' fileUnit='m'><ContentMesh "
        "file='W\xc3\xa4nde.obj'/></Screen><TargetData type='PlanarBasic'/><Projectors><Projector "
        "id='A'><Name>\xe5\xb7\xa6"
        "</Name><Resolution width='1920' height='1200'/><ScreenArea left='0' right='1' bottom='0' top='1'/><Layout "
        "xMin='0' xMax='1' yMin='0' "
        "yMax='1'/></Projector></Projectors></Display>");
    folder.write("B\xc3\xbchne 100%s/W\xc3\xa4nde.obj",
                 "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\nf 1/1 2/2 3/3\n");
    const ProgramRun run = runScreenManager({"check", file}, {{"LC_ALL", "C"}});
    EXPECT_EQ(run.exitCode, 0) << run.output;
    EXPECT_THAT(run.output, HasSubstr("W\xc3\xa4nde.obj): 1 triangle"));
    EXPECT_THAT(run.output, HasSubstr("\xe5\xb7\xa6"));
}

TEST(CheckCommand, AFullDiskExitsWithFour) {
    const ProgramRun run =
        runProgram("/bin/sh", {"-c", programFile() + " check '" + EXAMPLES + "planar-wall/display.xml' > /dev/full"});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_THAT(run.errors, HasSubstr("standard output cannot be written"));
}

}  // namespace
