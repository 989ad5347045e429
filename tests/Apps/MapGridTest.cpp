// `map --grid` of what is seen of a channel: the inputs, eyes and formats that it has in common with `export`.
#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <numbers>

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr int WIDTH = 12;
constexpr int HEIGHT = 8;
const std::string HEADER = "PF\n12 8\n-1.0\n";

std::string displayOf(const std::string& screen, const std::string& targets, const std::string& projectors) {
    return "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/>" + screen + targets +
           "<Projectors>" + projectors + "</Projectors></Display>";
}

/// Four metres wide and two high, its middle at (0, 3, 1); one channel lights its right half.
const std::string WALL = displayOf(
    "<Screen shape='Flat'><EyePoint x='0' y='0' z='1.2'/><Centre x='0' y='3' z='1'/><Size width='4' height='2'/>"
    "</Screen>",
    "<TargetData type='PlanarBasic'/>",
    "<Projector id='P1'><Name>Right</Name><Resolution width='12' height='8'/><ScreenArea left='0.5' right='1' "
    "bottom='0' top='1'/><Layout xMin='0' xMax='2' yMin='0' yMax='2'/></Projector>");

/// A dome above a horizon; one channel looks up at its zenith, one behind the viewer.
const std::string DOME = displayOf(
    "<Screen shape='Sphere'><EyePoint x='0' y='0' z='0'/><Radius value='5'/><Elevation min='-90' max='90'/></Screen>",
    "<TargetData type='Spherical'/>",
    "<Projector id='P1'><Name>Zenith</Name><Resolution width='12' height='8'/><Orientation z='0' x='80' y='0'/>"
    "<Frustum left='-30' right='30' bottom='-25' top='25'/></Projector>"
    "<Projector id='P2'><Name>Back</Name><Resolution width='12' height='8'/><Orientation z='180' x='0' y='0'/>"
    "<Frustum left='-30' right='30' bottom='-25' top='25'/></Projector>");

class MapGrid : public testing::Test {
protected:
    [[nodiscard]] static ProgramRun map(const std::string& file, const std::string& channel,
                                        const std::vector<std::string>& options) {
        std::vector<std::string> arguments{"map", file, "--channel", channel, "--grid"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runScreenManager(arguments);
    }

    /// Red, green and blue of a pixel, counted from the bottom left one.
    [[nodiscard]] static std::array<float, 3> pixelOf(const std::string& map, int column, int row) {
        std::array<float, 3> values{};
        std::memcpy(values.data(),
                    map.data() + HEADER.size() + sizeof(values) * static_cast<std::size_t>(row * WIDTH + column),
                    sizeof(values));
        return values;
    }

    /// What an export of the channel with the same options writes in the format; it counts nodes by itself.
    [[nodiscard]] std::string exported(const std::string& file, const std::string& channel,
                                       const std::vector<std::string>& options) {
        const std::string folder = m_folder.file("player" + std::to_string(++m_exports));
        std::vector<std::string> arguments{"export", file, "--channel", channel, "-q", "--no-blend", "-o", folder};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const ProgramRun run = runScreenManager(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().extension() != ".json") {
                return m_folder.read(entry.path().lexically_relative(m_folder.path()).string());
            }
        }
        return "";
    }

    void expectSameAsExport(const std::string& file, const std::string& channel,
                            const std::vector<std::string>& options) {
        const ProgramRun run = map(file, channel, options);
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_GT(run.output.size(), 20U);
        EXPECT_TRUE(run.output == exported(file, channel, options)) << testing::PrintToString(options);
    }

    const TemporaryFolder m_folder;
    const std::string m_wall = m_folder.write("wall.xml", WALL);
    const std::string m_dome = m_folder.write("dome.xml", DOME);
    int m_exports = 0;
};

TEST_F(MapGrid, WritesTheFileOfAnExport) {
    expectSameAsExport(m_wall, "P1", {"--input", "frustum", "--nodes", "5x4"});
    expectSameAsExport(m_wall, "P1",
                       {"--input", "frustum", "--eye", "0.5,0.25,1", "--margin", "10", "--format", "pfm"});
    expectSameAsExport(m_wall, "P1", {"--input", "layout", "--nodes", "auto", "--format", "obj"});
    expectSameAsExport(m_wall, "P1", {"--input", "screen", "--format", "png16"});
    expectSameAsExport(m_wall, "P1",
                       {"--input", "cube", "--roll", "20", "--axis", "1,1,0", "--nodes", "7x7", "--format", "obj"});
    expectSameAsExport(m_dome, "Zenith",
                       {"--input", "fisheye", "--axis", "0,0,1", "--aperture", "200", "--nodes", "auto", "--error", "2",
                        "--size", "1024x1024"});
    expectSameAsExport(m_dome, "Back", {"--input", "equirectangular", "--wrap", "--nodes", "6x5", "--format", "obj"});
    expectSameAsExport(m_dome, "Back",
                       {"--input", "equirectangular", "--centre", "170,10", "--roll", "5", "--nodes", "6x5"});
    expectSameAsExport(m_dome, "Back", {"--input", "frustum", "--format", "pfm3d"});
}

// By the formulas of a fisheye, worked out here from the place of each pixel on the wall.
TEST_F(MapGrid, AFlatDisplayHasPanoramasFromEveryEye) {
    for (const auto& [eye, x, z] : {std::tuple<std::string, double, double>{"", 0, 1.2}, {"0.5,0,0.75", 0.5, 0.75}}) {
        std::vector<std::string> options{"--input", "fisheye", "--format", "pfm", "--quiet"};
        if (!eye.empty()) {
            options.insert(options.end(), {"--eye", eye});
        }
        const ProgramRun run = map(m_wall, "Right", options);
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        ASSERT_THAT(run.output, StartsWith(HEADER));
        for (int row = 0; row < HEIGHT; ++row) {
            for (int column = 0; column < WIDTH; ++column) {
                const double right = 2 * (column + 0.5) / WIDTH - x;
                const double up = 2 * (row + 0.5) / HEIGHT - z;
                const double part = std::atan2(std::hypot(right, up), 3) / std::numbers::pi / std::hypot(right, up);
                const auto [u, v, mapped] = pixelOf(run.output, column, row);
                EXPECT_NEAR(u, 0.5 + part * right, 1e-6);
                EXPECT_NEAR(v, 0.5 + part * up, 1e-6);
                EXPECT_EQ(mapped, 1);
            }
        }
    }
}

TEST_F(MapGrid, PointsOnTheScreenAreThoseOfTheWall) {
    const ProgramRun run = map(m_wall, "Right", {"--format", "pfm3d"});
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.errors, "channel Right (P1): 12 x 8 pixels\n");
    for (int row = 0; row < HEIGHT; ++row) {
        for (int column = 0; column < WIDTH; ++column) {
            const auto [x, y, z] = pixelOf(run.output, column, row);
            EXPECT_NEAR(x, 2 * (column + 0.5) / WIDTH, 1e-6);
            EXPECT_NEAR(y, 3, 1e-6);
            EXPECT_NEAR(z, 2 * (row + 0.5) / HEIGHT, 1e-6);
        }
    }
}

TEST_F(MapGrid, AnObjHasTheInputOfTheDisplayUnlessOneIsStated) {
    const ProgramRun run = map(m_wall, "Right", {"--nodes", "2x2", "-o", m_folder.file("wall.obj"), "-q"});
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(m_folder.read("wall.obj"), HasSubstr("v -1.5 -1 0\nvt 0 0\nv 1.5 -1 0\nvt 1 0\nv -1.5 1 0\nvt 0 1\n"));
    EXPECT_THAT(m_folder.read("wall.obj"), HasSubstr("f 1/1 2/2 4/4\nf 1/1 4/4 3/3\n"));
    const std::string fisheye = map(m_dome, "Zenith", {"--format", "obj", "--nodes", "9x7", "-q"}).output;
    EXPECT_EQ(fisheye, map(m_dome, "Zenith", {"--format", "obj", "--nodes", "9x7", "--input", "fisheye", "-q"}).output);
    EXPECT_EQ(map(m_wall, "Right", {"--format", "obj", "-q"}).output.find("\nv 1.5 1 0\nvt 1 1\nf "),
              map(m_wall, "Right", {"--format", "obj", "--nodes", "13x9", "-q"}).output.find("\nv 1.5 1 0\nvt 1 1\nf "))
        << "the corners of all pixels";
}

TEST_F(MapGrid, ThePictureToLookAtShowsWhatIsSeen) {
    ASSERT_EQ(map(m_wall, "Right", {"--input", "frustum", "-o", m_folder.file("a.png"), "-q"}).exitCode, 0);
    EXPECT_THAT(m_folder.read("a.png"), StartsWith("\x89PNG\r\n"));
}

// A wall that is seen squarely needs no node but its corners.
TEST_F(MapGrid, TakesAsFewNodesAsKeepTheError) {
    const ProgramRun square = map(m_wall, "Right", {"--input", "frustum", "--axis", "0,1,0", "--nodes", "auto"});
    EXPECT_EQ(square.exitCode, 0);
    EXPECT_THAT(square.output, StartsWith("2\n2 2\n"));
    const auto nodesWith = [this](const std::string& error) {
        const ProgramRun run = map(m_wall, "Right", {"--input", "fisheye", "--nodes", "auto", "--error", error});
        int columns = 0;
        int rows = 0;
        double within = 0;
        EXPECT_EQ(std::sscanf(run.errors.c_str(), "channel Right (P1): %d x %d nodes, within %lf pixels", &columns,
                              &rows, &within),
                  3)
            << run.errors;
        EXPECT_LE(within, std::stod(error));
        EXPECT_THAT(run.output, StartsWith("2\n" + std::to_string(columns) + ' ' + std::to_string(rows) + '\n'));
        return columns * rows;
    };
    EXPECT_GT(nodesWith("5"), nodesWith("50"));
}

TEST_F(MapGrid, SaysWhatAnEngineRenders) {
    const ProgramRun run = map(m_wall, "Right", {"--input", "frustum", "--axis", "0,1,0", "--margin", "0"});
    // The right half of the wall, 3 m ahead, from 1.2 m above its lower edge.
    EXPECT_THAT(run.errors, HasSubstr("its frustum: from 0,0,1.2, orientation z 0, x 0, y 0, left 0, right 33.69, "
                                      "bottom -21.801, top 14.931 degrees"));
    // From an eye a metre further back and half a metre aside: arc tangents of 0.5, 1.5, 1.2 and 0.8 over 4 m.
    const auto around = [](const std::string& axis, const std::string& roll) {
        return std::vector<std::string>{"--input", "frustum", "--eye", "0.5,-1,1.2", "--margin",
                                        "0",       "--axis",  axis,    "--roll",     roll};
    };
    EXPECT_THAT(map(m_wall, "Right", around("0,1,0", "0")).errors,
                HasSubstr("its frustum: from 0.5,-1,1.2, orientation z 0, x 0, y 0, left -7.125, right 20.556, "
                          "bottom -16.699, top 11.31 degrees"));
    // To the right by the arc tangent of 1 over 2, up by that of 1.2 over the length of both.
    EXPECT_THAT(map(m_wall, "Right", around("1,2,1.2", "20")).errors,
                HasSubstr("its frustum: from 0.5,-1,1.2, orientation z 26.565, x 28.221, y 20, left "));
    EXPECT_THAT(map(m_wall, "Right", {"--input", "layout"}).errors, Not(HasSubstr("frustum")));
    EXPECT_EQ(map(m_wall, "Right", {"--input", "frustum", "-q"}).errors, "");
}

TEST_F(MapGrid, OptionsThatAreNotHeededAreRefused) {
    for (const auto& [options, message] : std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{"--eye", "0,0,0"}, "--eye: needs --input frustum or fisheye or equirectangular or cube"},
             {{"--input", "layout", "--eye", "0,0,0"}, "--eye: needs --input frustum"},
             {{"--axis", "0,0,1"}, "--axis: needs --input frustum or fisheye or cube"},
             {{"--roll", "3"}, "--roll: needs --input"},
             {{"--input", "cube", "--aperture", "200"}, "--aperture: needs --input fisheye"},
             {{"--input", "fisheye", "--margin", "2"}, "--margin: needs --input frustum"},
             {{"--input", "fisheye", "--centre", "2,2"}, "--centre: needs --input equirectangular"},
             {{"--input", "frustum", "--eye", "0,0"}, "--eye: \"0,0\" is not X,Y,Z"},
             {{"--input", "frustum", "--eye", "0,0,0", "--eye", "1,0,0"}, "--eye"},
             {{"--input", "equirectangular", "--wrap"}, "choose --format obj"},
             {{"--input", "equirectangular", "--wrap", "--format", "pfm"}, "--wrap: pfm has one value per pixel"},
             {{"--nodes", "auto", "--format", "png16"}, "--nodes: png16 has one value per pixel"},
             {{"--error", "1", "--format", "pfm3d"}, "--error: pfm3d has one value per pixel"},
             {{"--size", "9x9", "--format", "pfm"}, "--size: pfm has one value per pixel"},
             {{"--error", "0"}, "--error"},
             {{"--error", "1"}, "--error: needs --nodes auto: state it, or leave the option out"},
             {{"--nodes", "9x7", "--error", "1"}, "--error: chooses the nodes, which --nodes states"},
             {{"--input", "dome"}, "dome"}}) {
        const ProgramRun run = map(m_wall, "Right", options);
        EXPECT_EQ(run.exitCode, 2) << message << run.errors;
        EXPECT_THAT(run.errors, HasSubstr(message));
        EXPECT_EQ(run.output, "");
    }
    EXPECT_EQ(runScreenManager({"map", m_wall, "--channel", "P1", "--input", "frustum"}).exitCode, 2);
    EXPECT_EQ(runScreenManager({"map", m_wall, "--channel", "P1", "--point", "0,0", "--format", "obj"}).exitCode, 2);
}

TEST_F(MapGrid, WhatADisplayDoesNotHaveIsRefused) {
    const ProgramRun layout = map(m_dome, "Back", {"--input", "layout"});
    EXPECT_EQ(layout.exitCode, 3);
    EXPECT_THAT(layout.errors, HasSubstr("channel Back (P2): its display has no layout plane: choose another input"));
    const ProgramRun wide = map(m_dome, "Back", {"--input", "frustum", "--axis", "0,1,0"});
    EXPECT_EQ(wide.exitCode, 3);
    EXPECT_THAT(wide.errors, HasSubstr("fisheye"));
    const std::string collimated = sourceFolder() + "/examples/collimated/display.xml";
    const ProgramRun mirror = map(collimated, "Centre", {"--input", "frustum", "--eye", "0,0,0", "--nodes", "3x3"});
    EXPECT_EQ(mirror.exitCode, 3);
    EXPECT_THAT(mirror.errors, HasSubstr("it is seen in a mirror from 0,-0.3,1.4 alone"));
    const std::string flat =
        m_folder.write("flat.xml", displayOf("", "<TargetData type='PlanarBasic'/>",
                                             "<Projector id='P1'><Resolution width='6' height='4'/>"
                                             "<Layout xMin='0' xMax='3' yMin='0' yMax='2'/></Projector>"));
    EXPECT_EQ(map(flat, "P1", {"-q"}).exitCode, 0) << "a layout plane needs no screen";
    const ProgramRun blind = map(flat, "P1", {"--input", "fisheye"});
    EXPECT_EQ(blind.exitCode, 3);
    EXPECT_THAT(blind.errors, HasSubstr("the configuration describes no screen: add a Screen element"));
}

TEST_F(MapGrid, NothingThatIsMappedIsNotWritten) {
    const ProgramRun narrow = map(m_dome, "Back", {"--input", "fisheye", "--axis", "0,0,1", "--aperture", "20"});
    EXPECT_EQ(narrow.exitCode, 1);
    EXPECT_THAT(narrow.errors,
                HasSubstr("beyond the circle of the fisheye: state another --axis or a wider --aperture"));
    EXPECT_EQ(narrow.output, "");
}

// On its own a panorama is that of the layout map: nodes at the seam are left out, and a mirror is not looked into.
TEST_F(MapGrid, PanoramasOnTheirOwnAreThoseOfTheLayoutMap) {
    const ProgramRun own = map(m_dome, "Back", {"--input", "equirectangular"});
    EXPECT_THAT(own.errors, HasSubstr("13 x 9 nodes, 0 not mapped, 9 left out at the seam of the input"));
    const ProgramRun seen = map(m_dome, "Back", {"--input", "equirectangular", "--centre", "0,0"});
    EXPECT_THAT(seen.errors, StartsWith("channel Back (P2): 13 x 9 nodes, within"));
    EXPECT_NE(own.output, seen.output);
}

}  // namespace
