#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <sstream>

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string EXAMPLES = sourceFolder() + "/examples/";
const std::string PLANAR = EXAMPLES + "planar-wall/display.xml";
const std::string CURVED = EXAMPLES + "curved-wall/display.xml";

std::ptrdiff_t lines(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
}

TEST(TargetsCommand, WritesOneLinePerTargetAndASummary) {
    const ProgramRun run = runScreenManager({"targets", PLANAR, "--grid", "4x3", "--boundary", "2"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(tableOf(run.output), StartsWith("channel,projector,kind,column,row,u,v,x,y,z\n"));
    EXPECT_EQ(lines(tableOf(run.output)), 1 + 6 * (12 + 8));
    EXPECT_THAT(run.errors, HasSubstr("72 of 72 targets placed, 48 of 48 samples of outlines, on 6 x 0 x 2.5 m"));
}

TEST(TargetsCommand, HasADefaultDensity) {
    const ProgramRun run = runScreenManager({"targets", PLANAR});
    EXPECT_EQ(lines(tableOf(run.output)), 1 + 6 * (16 * 10 + 4 * 16));
}

// Independent route: a measured point must lie on the wall that the generator of the example describes.
TEST(TargetsCommand, PlacesTargetsOnTheMeasuredWall) {
    const ProgramRun run = runScreenManager({"targets", CURVED, "--format", "json", "--quiet"});
    ASSERT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
    const auto document = nlohmann::json::parse(run.output);
    double farthestFromDesign = 0;
    int compared = 0;
    for (const auto& channel : document["channels"]) {
        for (const auto& target : channel["grid"]) {
            const double x = target["point"][0];
            const double y = target["point"][1];
            const double z = target["point"][2];
            const double pi = std::numbers::pi;
            const double s = std::atan2(x, y) / (140.0 * pi / 180.0) + 0.5;
            const double t = z / 2.4;
            const double deviation = 0.018 * std::sin(3 * pi * s) * std::sin(pi * t) + 0.012 * (2 * t - 1);
            const double radius = std::hypot(x, y);
            // Chords of the 80 x 16 mesh stand up to 1 mm inside the arc.
            ASSERT_NEAR(radius, 4.0 + deviation, 0.0015) << target.dump();
            farthestFromDesign = std::max(farthestFromDesign, std::abs(radius - 4.0));
            ++compared;
        }
    }
    EXPECT_EQ(compared, 4 * 16 * 10);
    EXPECT_GT(farthestFromDesign, 0.015) << "the designed wall was used";
}

TEST(TargetsCommand, WritesAFileAsAWhole) {
    const TemporaryFolder folder;
    const std::string file = folder.write("targets.ply", "old");
    const ProgramRun run = runScreenManager({"targets", PLANAR, "--format", "ply", "--output", file});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(folder.read("targets.ply"), StartsWith("ply\n"));
}

TEST(TargetsCommand, AnUnwritableFileExitsWithFour) {
    const ProgramRun run = runScreenManager({"targets", PLANAR, "-o", "/nowhere/targets.csv"});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_THAT(run.errors, HasSubstr("/nowhere/targets.csv: Unable to write"));
    const ProgramRun full = runProgram("/bin/sh", {"-c", programFile() + " targets '" + PLANAR + "' > /dev/full"});
    EXPECT_EQ(full.exitCode, 4);
}

TEST(TargetsCommand, ASpecialFileIsWrittenThrough) {
    EXPECT_EQ(runScreenManager({"targets", PLANAR, "-o", "/dev/null"}).exitCode, 0);
    const ProgramRun full = runScreenManager({"targets", PLANAR, "-o", "/dev/full"});
    EXPECT_EQ(full.exitCode, 4);
    EXPECT_THAT(full.errors, HasSubstr("error: /dev/full cannot be written"));
}

TEST(TargetsCommand, NeverOverwritesItsOwnConfiguration) {
    const TemporaryFolder folder;
    const std::string text = "<Display version='1'><Units native='m'/></Display>";
    const std::string file = folder.write("display.xml", text);
    const ProgramRun run =
        runScreenManager({"targets", file, "--format", "csv", "-o", folder.path() + "/./display.xml"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, HasSubstr("is the configuration itself"));
    EXPECT_EQ(folder.read("display.xml"), text);
}

TEST(TargetsCommand, NeverOverwritesAFileOfTheDisplay) {
    const TemporaryFolder folder;
    const std::string mesh = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    folder.write("wall.obj", mesh);
    const std::string file = folder.write("display.xml",
                                          "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Mesh' "
                                          "fileUnit='m'><ContentMesh file='wall.obj'/></Screen></Display>");
    const ProgramRun run = runScreenManager({"targets", file, "--format", "csv", "-o", folder.path() + "/./wall.obj"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, HasSubstr("is a file that the configuration names"));
    EXPECT_EQ(folder.read("wall.obj"), mesh);
}

TEST(TargetsCommand, ARedirectedDescriptorKeepsWhatItHasBeenGiven) {
    const TemporaryFolder folder;
    const std::string log = folder.write("log.txt", "earlier\n");
    const ProgramRun run =
        runProgram("/bin/sh", {"-c", programFile() + " targets '" + PLANAR + "' -q -o /dev/stdout >> '" + log + "'"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(folder.read("log.txt"), StartsWith("earlier\n# screenmanager/targets version 1\n"));
}

TEST(TargetsCommand, AFaultOfAMeshNamesItsFileOnceAndOnlyOnce) {
    const TemporaryFolder folder;
    folder.write("wall.obj", "v 0 0 0\nv 1,5 0 0\n");
    const std::string file = folder.write("display.xml",
                                          "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Mesh' "
                                          "fileUnit='m'><ContentMesh file='wall.obj'/></Screen></Display>");
    const ProgramRun run = runScreenManager({"targets", file});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.errors, StartsWith("error: " + file + ": content mesh: " + folder.file("wall.obj") + ": line 2: "));
    EXPECT_EQ(lines(run.errors), 1) << run.errors;
    const ProgramRun missing = runScreenManager({"targets", folder.file("gone.xml")});
    EXPECT_THAT(missing.errors, StartsWith("error: " + folder.file("gone.xml") + ": No such file"));
}

TEST(TargetsCommand, FilesThatCannotBeUsedExitWithThreeAndTellTheCause) {
    const TemporaryFolder folder;
    EXPECT_EQ(runScreenManager({"targets", folder.file("gone.xml")}).exitCode, 3);
    const std::string file = folder.write("display.xml",
                                          "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Mesh' "
                                          "fileUnit='m'><ContentMesh file='gone.obj'/></Screen></Display>");
    const ProgramRun run = runScreenManager({"targets", file, "--quiet"});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.errors, HasSubstr("Unable to load screen file. Ensure the screen file"));
    EXPECT_THAT(run.errors, HasSubstr("because: "));
    EXPECT_THAT(run.errors, HasSubstr("No such file or directory"));
}

TEST(TargetsCommand, AMeshWithoutTextureCoordinatesEndsInTwoWarningsPerChannel) {
    const TemporaryFolder folder;
    folder.write("wall.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    const std::string file = folder.write(
        "display.xml",
        "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Mesh' fileUnit='m'><ContentMesh "
        "file='wall.obj'/></Screen><TargetData type='PlanarBasic'/><Projectors><Projector id='A'><ScreenArea left='0' "
        "right='1' bottom='0' top='1'/></Projector></Projectors></Display>");
    const ProgramRun run = runScreenManager({"targets", file});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(lines(tableOf(run.output)), 1);
    EXPECT_THAT(run.errors,
                StartsWith("warning: Attempt to call ScreenManager::getScreenMatrix() with no parameterization in "
                           "projectOnTargetLocationSurface\n"
                           "warning: Attempt to call ScreenGeometry::mapInto3D() with no parameterization in "
                           "projectBoundaryOnTargetLocationSurface\n"));
    EXPECT_THAT(run.errors, HasSubstr("channel A has no grid of targets: The mesh has no 2D coordinates: export it"));
    EXPECT_THAT(runScreenManager({"targets", file, "--quiet"}).errors, Not(HasSubstr("warning")));
}

TEST(TargetsCommand, VerboseTellsWhatTheLibraryDoes) {
    const ProgramRun run = runScreenManager({"--verbose", "targets", CURVED});
    EXPECT_THAT(run.errors, HasSubstr("info: Successfully loaded Content screen: "));
    EXPECT_THAT(run.errors, HasSubstr("info: Successfully loaded Point Cloud Data screen: "));
}

TEST(TargetsCommand, TheFilesOfTheCurvedWallAreThoseOfItsGenerator) {
    const TemporaryFolder folder;
    ASSERT_EQ(runProgram(exampleGenerator(), {folder.path()}).exitCode, 0);
    for (const char* name : {"wall.obj", "wall-measured.obj", "wall-scan.pcd"}) {
        const ProgramRun compared = runProgram("/usr/bin/cmp", {folder.file(name), EXAMPLES + "curved-wall/" + name});
        EXPECT_EQ(compared.exitCode, 0) << compared.output;
    }
}

}  // namespace
