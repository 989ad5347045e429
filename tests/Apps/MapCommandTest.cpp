#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <numbers>
#include <sstream>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string EXAMPLES = sourceFolder() + "/examples/";
const std::string PLANAR = EXAMPLES + "planar-wall/display.xml";
const std::string DOME = EXAMPLES + "spherical-dome/display.xml";

/// A display whose picture is small enough to be mapped whole in a moment.
const std::string SMALL =
    "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><TargetData type='PlanarBasic'/>"
    "<Projectors><Projector id='P1'><Name>Left</Name><Resolution width='6' height='4'/>"
    "<Layout xMin='0' xMax='3' yMin='0' yMax='2'/></Projector><Projector id='P2'><Name>Right</Name>"
    "<Layout xMin='3' xMax='6' yMin='0' yMax='2'/></Projector><Projector id='P3'><Name>Spare</Name>"
    "<Resolution width='6' height='4'/></Projector></Projectors></Display>";

class MapCommand : public testing::Test {
protected:
    /// The program on the small display.
    ProgramRun map(const std::vector<std::string>& arguments, const std::string& channel = "Left") {
        std::vector<std::string> all{"map", m_file, "--channel", channel};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return runScreenManager(all);
    }
    /// The same, with a text on standard input, in a shell.
    ProgramRun mapFrom(const std::string& text, const std::string& arguments = "") {
        m_folder.write("input", text);
        return runProgram("/bin/sh", {"-c", programFile() + " map '" + m_file + "' --channel Left " + arguments +
                                                " < '" + m_folder.file("input") + "'"});
    }

    const TemporaryFolder m_folder;
    const std::string m_file = m_folder.write("display.xml", SMALL);
};

TEST_F(MapCommand, MapsPointsToTheLayout) {
    const ProgramRun run = map({"--point", "0.5,0.25", "--point", "-0.5,0.5", "--point", "1,1"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(tableOf(run.output), "u,v,x,y,z,mapped\n0.5,0.25,1.5,0.5,0,1\n-0.5,0.5,,,,0\n1,1,3,2,0,1\n");
    EXPECT_EQ(run.errors, "channel Left (P1): 2 of 3 points mapped to the layout\n");
}

TEST_F(MapCommand, MapsPointsToTheChannel) {
    const ProgramRun run = map({"--to", "channel", "--point", "4.5,0.5,9", "--point", "1,1,0", "-q"}, "P2");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(tableOf(run.output), "x,y,z,u,v,mapped\n4.5,0.5,9,0.5,0.25,1\n1,1,0,,,0\n");
    EXPECT_EQ(run.errors, "");
}

TEST_F(MapCommand, ReadsStandardInput) {
    const std::string expected = "u,v,x,y,z,mapped\n0.5,0.5,1.5,1,0,1\n";
    EXPECT_EQ(tableOf(mapFrom("0.5,0.5\n").output), expected);
    EXPECT_EQ(tableOf(mapFrom("# a note\n0.5,0.5\n").output), expected);
    EXPECT_EQ(tableOf(mapFrom("u,v\r\n0.5,0.5\r\n\r\n", "--points -").output), expected);
}

TEST_F(MapCommand, ItsTableSaysWhatItIs) {
    EXPECT_THAT(map({"--point", "0.5,0.25"}).output,
                StartsWith("# screenmanager/map version 1\n"
                           "# x, y, z: layout plane, +x right, +y up, z = 0; unit m\n"
                           "# u, v: place in the picture of the channel, (0, 0) bottom left, (1, 1) top right\n"
                           "u,v,x,y,z,mapped\n"));
    const auto headOf = [](const std::string& example, const std::string& channel) {
        const std::string file = sourceFolder() + "/examples/" + example + "/display.xml";
        return runScreenManager({"map", file, "--channel", channel, "--point", "0.5,0.5", "-q"}).output;
    };
    EXPECT_THAT(headOf("spherical-dome", "Centre"),
                HasSubstr("\n# x, y, z: world, right-handed, +x right, +y forward, "));
    EXPECT_THAT(headOf("warped-wall", "Left"),
                HasSubstr("\n# x, y, z: screen, x = s from left to right, y = 0, z = t"));
}

TEST_F(MapCommand, ReadsAFileAndWritesOne) {
    const std::string points = m_folder.write("points.csv", "x,y,z\n1.5,1,0\n");
    const ProgramRun run = map({"--to", "channel", "--points", points, "-o", m_folder.file("mapped.csv")});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(tableOf(m_folder.read("mapped.csv")), "x,y,z,u,v,mapped\n1.5,1,0,0.5,0.5,1\n");
}

TEST_F(MapCommand, WhatWasMappedComesBack) {
    const ProgramRun there = runScreenManager({"map", DOME, "--channel", "Top", "--point", "0.3,0.7", "-q"});
    ASSERT_EQ(there.exitCode, 0);
    const std::string table = tableOf(there.output);
    const std::string line = table.substr(table.find('\n') + 1);
    const std::string layout =
        line.substr(std::string("0.3,0.7,").size(), line.size() - std::string("0.3,0.7,,1\n").size());
    const ProgramRun back =
        runScreenManager({"map", DOME, "--channel", "Top", "--to", "channel", "--point", layout, "-q"});
    double u = 0;
    double v = 0;
    ASSERT_EQ(std::sscanf(tableOf(back.output).c_str(), "x,y,z,u,v,mapped\n%*f,%*f,%*f,%lf,%lf,1", &u, &v), 2)
        << back.output;
    EXPECT_NEAR(u, 0.3, 1e-9);
    EXPECT_NEAR(v, 0.7, 1e-9);
}

TEST_F(MapCommand, ABadLineEndsItAndIsNamed) {
    const ProgramRun run = mapFrom("0.5,0.5\n0,5;0,5\n1,1\n");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_EQ(tableOf(run.output), "u,v,x,y,z,mapped\n0.5,0.5,1.5,1,0,1\n") << "what came before it stays";
    EXPECT_EQ(run.errors,
              "error: standard input:2: point: found \"0,5;0,5\", expected u,v: 2 finite numbers with decimal points, "
              "a comma between them; write one point per line, such as 0.5,0.25\n");
    m_folder.write("mapped.csv", "old");
    EXPECT_EQ(mapFrom("0.5,0.5\nnan,0\n", "-o '" + m_folder.file("mapped.csv") + "'").exitCode, 3);
    EXPECT_EQ(m_folder.read("mapped.csv"), "old") << "a file is replaced as a whole or not at all";
}

TEST_F(MapCommand, WithoutAnyMappedPointItExitsWithOne) {
    EXPECT_EQ(map({"--point", "2,2", "-q"}).exitCode, 1);
    const ProgramRun run = mapFrom("");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(tableOf(run.output), "u,v,x,y,z,mapped\n");
    EXPECT_THAT(run.errors, HasSubstr("there are no points"));
}

TEST_F(MapCommand, AnUnknownChannelExitsWithTwoAndIsToldTheOthers) {
    const ProgramRun run = map({"--point", "0,0"}, "Middle");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors,
              "error: --channel: \"Middle\" is no channel; the channels are: Left (P1), Right (P2), Spare (P3)\n");
}

TEST_F(MapCommand, WhatAChannelLacksIsTold) {
    const ProgramRun rectangle = map({"--point", "0,0"}, "Spare");
    EXPECT_EQ(rectangle.exitCode, 3);
    EXPECT_THAT(rectangle.errors, HasSubstr("channel Spare (P3): its layout rectangle has no extent"));
    const ProgramRun size = map({"--grid"}, "Right");
    EXPECT_EQ(size.exitCode, 3);
    EXPECT_THAT(size.errors, HasSubstr("channel Right (P2): its picture has no size, 0 x 0 pixels"));
    EXPECT_EQ(map({"--point", "0,0", "-q"}, "Right").exitCode, 0) << "a point of a plane needs no pixels";
}

TEST_F(MapCommand, ADisplayWithoutTargetDataIsTold) {
    const std::string empty = EXAMPLES + "empty-wall/display.xml";
    EXPECT_EQ(runScreenManager({"map", empty, "--channel", "P1"}).exitCode, 2);
    const std::string file =
        m_folder.write("none.xml",
                       "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Flat'><Size width='1' "
                       "height='1'/></Screen><Projectors><Projector id='P1'/></Projectors></Display>");
    const ProgramRun run = runScreenManager({"map", file, "--channel", "P1", "--point", "0,0"});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.errors, HasSubstr("the configuration has no target data, expected target data of one of"));
}

TEST_F(MapCommand, FilesThatCannotBeUsedExitWithThree) {
    EXPECT_EQ(runScreenManager({"map", m_folder.file("gone.xml"), "--channel", "A"}).exitCode, 3);
    const ProgramRun gone = map({"--points", m_folder.file("gone.csv")});
    EXPECT_EQ(gone.exitCode, 3);
    EXPECT_EQ(gone.errors, "error: " + m_folder.file("gone.csv") + ": No such file or directory\n");
    const ProgramRun folder = map({"--points", m_folder.path()});
    EXPECT_EQ(folder.exitCode, 3);
    EXPECT_EQ(folder.errors, "error: " + m_folder.path() + ": Is a directory\n");
}

TEST_F(MapCommand, PointsThatCannotBeReadToTheirEndAreAFault) {
    const std::string unreadable = "/proc/self/mem";  // a file that opens and cannot be read at its start
    const std::string reason =
        ": cannot be read to its end: Input/output error; check the disk or the network that it comes from, and that "
        "it is a file of points\n";
    const ProgramRun file = map({"--points", unreadable});
    EXPECT_EQ(file.exitCode, 3);
    EXPECT_EQ(file.errors, "error: " + unreadable + reason);
    const ProgramRun input =
        runProgram("/bin/sh", {"-c", programFile() + " map '" + m_file + "' --channel Left < " + unreadable});
    EXPECT_EQ(input.exitCode, 3);
    EXPECT_EQ(input.errors, "error: standard input" + reason);
}

TEST_F(MapCommand, NeverReplacesWhatItReads) {
    const std::string points = m_folder.write("points.csv", "0,0\n");
    const ProgramRun onPoints = map({"--points", points, "-o", m_folder.path() + "/./points.csv"});
    EXPECT_EQ(onPoints.exitCode, 2);
    EXPECT_THAT(onPoints.errors, HasSubstr("is the file of points"));
    const ProgramRun onDisplay = map({"--grid", "--format", "mesh", "-o", m_file});
    EXPECT_EQ(onDisplay.exitCode, 2);
    EXPECT_THAT(onDisplay.errors, HasSubstr("is the configuration itself"));
    EXPECT_EQ(m_folder.read("points.csv"), "0,0\n");
    EXPECT_EQ(m_folder.read("display.xml"), SMALL);
}

TEST_F(MapCommand, WhatCannotBeWrittenExitsWithFour) {
    EXPECT_EQ(map({"--point", "0,0", "-o", "/nowhere/points.csv"}).exitCode, 4);
    EXPECT_EQ(map({"--point", "0,0", "-o", "/dev/full"}).exitCode, 4);
    EXPECT_EQ(map({"--grid", "-o", "/dev/full"}).exitCode, 4);
    EXPECT_EQ(map({"--grid", "-o", "/dev/null"}).exitCode, 0);
}

TEST_F(MapCommand, OptionsThatDoNotGoTogetherExitWithTwo) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> lines{
        {{"--grid", "--point", "0,0"}, "--grid"},
        {{"--grid", "--to", "channel"}, "--grid"},
        {{"--format", "png"}, "--grid"},
        {{"--nodes", "3x3"}, "--grid"},
        {{"--input", "fisheye"}, "--grid"},
        {{"--point", "0,0", "--points", "-"}, "--point"},
        {{"--to", "screen"}, "screen"},
        {{"--grid", "--format", "tiff"}, "tiff"},
        {{"--grid", "--format", "csv"}, "csv is not mesh, obj, pfm, pfm3d, png16 or png"},
        {{"--grid", "--nodes", "1x5"}, "\"1x5\" is not auto or COLUMNSxROWS"},
        {{"--grid", "--nodes", "100000x100000"}, "at most 40000000 nodes"},
        {{"--grid", "--nodes", "3x3", "--format", "pfm"}, "pfm has one value per pixel"},
        {{"--point", "0.5"}, "--point 0.5 is not U,V, such as 0.5,0.25"},
        {{"--point", "0,0", "--to", "channel"}, "--point 0,0 is not X,Y,Z"},
    };
    for (const auto& [arguments, expected] : lines) {
        const ProgramRun run = map(arguments);
        EXPECT_EQ(run.exitCode, 2) << expected;
        EXPECT_THAT(run.errors, HasSubstr(expected));
        EXPECT_EQ(run.output, "");
    }
    EXPECT_EQ(runScreenManager({"map", m_file}).exitCode, 2) << "no channel";
}

TEST_F(MapCommand, AGridIsAWarpMeshOfTheCornersOfAllPixels) {
    const ProgramRun run = map({"--grid"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.output, StartsWith("2\n7 5\n-1.5 -1 0 0 1\n-1 -1 0.08333333333333333 0 1\n"));
    EXPECT_THAT(run.output, EndsWith("\n1.5 1 0.5 1 1\npixels 6 4\n"));
    EXPECT_EQ(run.errors, "channel Left (P1): 7 x 5 nodes, 0 not mapped\n");
    EXPECT_THAT(map({"--grid", "--nodes", "2x3", "-q"}).output,
                testing::StrEq("2\n2 3\n-1.5 -1 0 0 1\n1.5 -1 0.5 0 1\n-1.5 0 0 0.5 1\n1.5 0 0.5 0.5 1\n"
                               "-1.5 1 0 1 1\n1.5 1 0.5 1 1\npixels 6 4\n"));
}

TEST_F(MapCommand, FormatsOfPixelsHaveOneValueEach) {
    const ProgramRun pfm = map({"--grid", "--format", "pfm"});
    EXPECT_EQ(pfm.exitCode, 0);
    EXPECT_THAT(pfm.output, StartsWith("PF\n6 4\n-1.0\n"));
    EXPECT_EQ(pfm.output.size(), std::string("PF\n6 4\n-1.0\n").size() + 6 * 4 * 3 * 4);
    EXPECT_EQ(pfm.errors, "channel Left (P1): 6 x 4 pixels, 0 not mapped\n");
    EXPECT_EQ(map({"--grid", "--format", "png", "-o", m_folder.file("map.png")}).exitCode, 0);
    EXPECT_THAT(m_folder.read("map.png"), StartsWith("\x89PNG\r\n"));
}

/// Number i of a portable float map with this header.
double valueOf(const std::string& file, const std::string& header, std::size_t i) {
    float value = 0;
    std::memcpy(&value, file.data() + header.size() + sizeof(value) * i, sizeof(value));
    return static_cast<double>(value);
}

// The other route: the points by themselves, and the angles of a fisheye about the eye point worked out here.
TEST_F(MapCommand, AFloatMapAgreesWithSinglePoints) {
    const std::string file = m_folder.write(
        "dome.xml",
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'><EyePoint x='1' "
        "y='-1' z='0.5'/><Radius value='5'/><Elevation min='-90' max='20'/></Screen><TargetData type='Spherical'/>"
        "<Projectors><Projector id='P1'><Resolution width='8' height='5'/><Orientation z='30' x='10' y='0'/>"
        "<Frustum left='-30' right='30' bottom='-20' top='20'/><Position x='1' y='-1' z='0.5'/></Projector>"
        "</Projectors></Display>");
    const std::string header = "PF\n8 5\n-1.0\n";
    const std::vector<std::string> common{"map", file, "--channel", "P1", "-q"};
    std::vector<std::string> grid = common;
    grid.insert(grid.end(), {"--grid", "--format", "pfm"});
    const std::string pfm = runScreenManager(grid).output;
    ASSERT_EQ(pfm.size(), header.size() + 8 * 5 * 3 * sizeof(float));

    std::vector<std::string> points = common;
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 8; ++column) {
            points.insert(points.end(),
                          {"--point", std::to_string((column + 0.5) / 8) + ',' + std::to_string((row + 0.5) / 5)});
        }
    }
    std::istringstream lines(tableOf(runScreenManager(points).output));
    std::string line;
    std::getline(lines, line);
    int mapped = 0;
    for (std::size_t i = 0; i < 8 * 5; ++i) {
        ASSERT_TRUE(std::getline(lines, line));
        double x = 0;
        double y = 0;
        double z = 0;
        if (std::sscanf(line.c_str(), "%*f,%*f,%lf,%lf,%lf,1", &x, &y, &z) != 3) {
            EXPECT_EQ(valueOf(pfm, header, 3 * i), -1) << line;
            EXPECT_EQ(valueOf(pfm, header, 3 * i + 2), 0) << line;
            continue;
        }
        ++mapped;
        const double angle = std::acos((y + 1) / std::hypot(x - 1, y + 1, z - 0.5));
        const double around = std::atan2(z - 0.5, x - 1);
        constexpr double FLOAT_ROUNDING = 1e-7;
        EXPECT_NEAR(valueOf(pfm, header, 3 * i), 0.5 + angle / std::numbers::pi * std::cos(around), FLOAT_ROUNDING);
        EXPECT_NEAR(valueOf(pfm, header, 3 * i + 1), 0.5 + angle / std::numbers::pi * std::sin(around), FLOAT_ROUNDING);
        EXPECT_EQ(valueOf(pfm, header, 3 * i + 2), 1);
    }
    EXPECT_GT(mapped, 20);
    EXPECT_LT(mapped, 40) << "the dome ends inside the picture";
}

TEST_F(MapCommand, APictureOfWhichNothingIsMappedIsNotWritten) {
    const std::string file = m_folder.write(
        "backwards.xml",
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'><Radius "
        "value='5'/></Screen><TargetData type='Spherical'/><Projectors><Projector id='P1'><Resolution width='6' "
        "height='4'/><Orientation z='180' x='0' y='0'/><Frustum left='-9' right='9' bottom='-9' top='9'/>"
        "</Projector></Projectors></Display>");
    m_folder.write("map.txt", "old");
    const ProgramRun run = runScreenManager({"map", file, "--channel", "P1", "--grid", "-o", m_folder.file("map.txt")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.errors,
              "error: channel P1 (P1): nothing of its picture is mapped, and nothing was written: what it shows lies "
              "behind the viewer, where a fisheye has no picture: state --input equirectangular\n");
    EXPECT_EQ(m_folder.read("map.txt"), "old");
    const ProgramRun around =
        runScreenManager({"map", file, "--channel", "P1", "--grid", "--input", "equirectangular"});
    EXPECT_EQ(around.exitCode, 0);
    EXPECT_THAT(around.errors, HasSubstr("7 x 5 nodes, 0 not mapped, 5 left out at the seam of the input"));
}

TEST_F(MapCommand, APictureThatMissesTheScreenIsMappedByNoInput) {
    const std::string file = m_folder.write(
        "aside.xml",
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'><Radius "
        "value='5'/><Elevation min='0' max='90'/></Screen><TargetData type='Spherical'/><Projectors><Projector "
        "id='P1'><Resolution width='6' height='4'/><Orientation z='0' x='-60' y='0'/><Frustum left='-9' right='9' "
        "bottom='-9' top='9'/></Projector></Projectors></Display>");
    for (const std::string input : {"fisheye", "equirectangular"}) {
        const ProgramRun run = runScreenManager({"map", file, "--channel", "P1", "--grid", "--input", input});
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_THAT(run.errors, EndsWith("nothing was written: check its position, orientation and frustum, or its "
                                         "map, against the screen\n"));
    }
}

TEST_F(MapCommand, AMeshThatCouldNotBeReadAgainIsRefusedWithTheNodesThatFit) {
    std::string large = SMALL;
    const std::string size = "width='6' height='4'";
    large.replace(large.find(size), size.size(), "width='3840' height='2160'");
    const std::string file = m_folder.write("large.xml", large);
    const std::vector<std::string> grid{"map", file, "--channel", "Left", "--grid", "-o", m_folder.file("large.map")};
    const ProgramRun run = runScreenManager(grid);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, HasSubstr("channel Left (P1): a mesh of 3841 x 2161 nodes"));
    EXPECT_THAT(run.errors, HasSubstr("state --nodes 1921x1081 or fewer, or choose --format pfm or png\n"));
    EXPECT_FALSE(std::filesystem::exists(m_folder.file("large.map")));
    std::vector<std::string> fewer = grid;
    fewer.insert(fewer.end(), {"--nodes", "97x61", "-q"});
    EXPECT_EQ(runScreenManager(fewer).exitCode, 0);
}

}  // namespace
