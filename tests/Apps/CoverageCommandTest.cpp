#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <filesystem>
#include <map>
#include <numbers>
#include <sstream>
#include <string>

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Json = nlohmann::json;

const std::string EXAMPLES = sourceFolder() + "/examples/";
const std::string PLANAR = EXAMPLES + "planar-wall/display.xml";

/// What is promised of areas, as a part of them.
constexpr double PROMISED = 1e-3;

Json coverage(const std::string& file, int exitCode = 0) {
    const ProgramRun run = runScreenManager({"coverage", file, "--json", "--quiet"});
    EXPECT_EQ(run.exitCode, exitCode) << run.errors;
    return Json::parse(run.output);
}

std::string display(const std::string& inside) {
    return "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/>" + inside + "</Display>";
}

const std::string WALL =
    "<Screen shape='Flat'><Centre x='0' y='5' z='1'/><Size width='4' height='2'/></Screen>"
    "<TargetData type='PlanarBasic'/>";
const std::string AREA = "<ScreenArea left='0' right='0.5' bottom='0' top='1'/>";

// Six pictures of 0.37 x 0.55 of a wall of 6 x 2.5; the middle column is shared by both neighbours, the middle row by
// both rows.
TEST(CoverageCommand, MeasuresTheWallOfSixProjectors) {
    const Json document = coverage(PLANAR);
    EXPECT_NEAR(document["screenArea"], 15, PROMISED * 15);
    ASSERT_EQ(document["channels"].size(), 6U);
    for (const Json& channel : document["channels"]) {
        const double area = 0.37 * 0.55 * 15;
        EXPECT_NEAR(channel["area"], area, PROMISED * area);
        const double side = std::sqrt(area / (1920 * 1200));
        for (const char* const which : {"least", "mean", "most"}) {
            EXPECT_NEAR(channel["pitch"][which], side, PROMISED * side) << which;
        }
        EXPECT_EQ(channel["missed"], 0.0);
        EXPECT_EQ(channel["missedPixels"], 0);
    }
    // Two strips of 0.055 of the width, one of 0.1 of the height; lit twice, and where they cross four times.
    const double crossed = 2 * 0.055 * 0.1;
    const double twice = 2 * 0.055 * 0.9 + 0.1 * (1 - 2 * 0.055);
    const std::array<double, 4> expected{0, 1 - twice - crossed, twice, crossed};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(document["litBy"][i]["partOfScreen"], expected[i], PROMISED * expected[i] + 1e-6) << i;
    }
    // Neighbours: four side by side, three one above the other, four across a corner.
    EXPECT_EQ(document["overlaps"].size(), 11U);
    const double beside = 0.055 / 0.37;
    EXPECT_EQ(document["overlaps"][0]["second"]["name"], "Upper centre");
    EXPECT_NEAR(document["overlaps"][0]["first"]["part"], beside, PROMISED * beside);
    EXPECT_NEAR(document["overlaps"][0]["first"]["pixels"], beside * 1920 * 1200, PROMISED * beside * 1920 * 1200);
}

TEST(CoverageCommand, PrintsTables) {
    const ProgramRun run = runScreenManager({"coverage", PLANAR});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_THAT(run.output,
                StartsWith("channel       resolution   area (m^2)  of the screen  missed  pixel least (m)"));
    EXPECT_THAT(run.output, HasSubstr("\nUpper left    1920 x 1200  3.05"));
    EXPECT_THAT(run.output, HasSubstr("\nlit by        area (m^2)  of the screen\n"));
    EXPECT_THAT(run.output, HasSubstr("\noverlap of    and           area (m^2)  pixels of the first"));
}

/// The area of the faces of a PLY file, by the colour and the number of projectors of their corners.
std::map<std::string, double> areasByColour(const std::string& ply) {
    std::istringstream text(ply);
    std::string line;
    std::map<std::string, std::size_t> announced;
    while (std::getline(text, line) && line != "end_header") {
        std::istringstream words(line);
        std::string element;
        std::string name;
        if (words >> element >> name && element == "element") {
            words >> announced[name];
        }
    }
    std::vector<std::array<double, 3>> places(announced["vertex"]);
    std::vector<std::string> colours(places.size());
    for (std::size_t i = 0; i < places.size(); ++i) {
        text >> places[i][0] >> places[i][1] >> places[i][2] >> std::ws;
        std::getline(text, colours[i]);
    }
    std::map<std::string, double> areas;
    for (std::size_t i = 0; i < announced["face"]; ++i) {
        std::size_t three = 0;
        std::array<std::size_t, 3> face{};
        text >> three >> face[0] >> face[1] >> face[2];
        EXPECT_EQ(three, 3U);
        EXPECT_EQ(colours.at(face[0]), colours.at(face[1]));
        EXPECT_EQ(colours.at(face[0]), colours.at(face[2]));
        // The wall stands across the y axis.
        const auto side = [&](std::size_t corner, std::size_t axis) {
            return places[face[corner]][axis] - places[face[0]][axis];
        };
        areas[colours[face[0]]] += std::abs(side(1, 0) * side(2, 2) - side(1, 2) * side(2, 0)) / 2;
    }
    EXPECT_TRUE(static_cast<bool>(text));
    EXPECT_FALSE(static_cast<bool>(text >> line)) << "nothing follows";
    return areas;
}

TEST(CoverageCommand, WritesTheReportAndTheScreenToFiles) {
    const TemporaryFolder folder;
    const std::string ply = folder.file("screen.ply");
    const ProgramRun run =
        runScreenManager({"coverage", PLANAR, "--json", "--ply", ply, "-o", folder.write("report.json", "old")});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "");
    // Read back: the areas of the colours are those of the report.
    std::map<std::string, double> areas = areasByColour(folder.read("screen.ply"));
    // Dark and threefold are no more than slivers, where borders cross.
    EXPECT_LT(areas["40 40 40 0"] + areas["240 228 66 3"], 1e-3);
    ASSERT_EQ(areas.size(), 5U);
    const Json document = Json::parse(folder.read("report.json"));
    EXPECT_NEAR(areas.at("0 114 178 1"), document["litBy"][1]["area"], 1e-3);
    EXPECT_NEAR(areas.at("230 159 0 2"), document["litBy"][2]["area"], 1e-3);
    EXPECT_NEAR(areas.at("240 228 66 4"), document["litBy"][3]["area"], 1e-3);
}

TEST(CoverageCommand, TellsOfEveryFaultAndOfNothingElse) {
    const TemporaryFolder folder;
    const std::string dark = folder.write(
        "dark.xml", display(WALL +
                            "<Projectors><Projector id='A'><Name>quote \" and\nline</Name><Resolution width='10' "
                            "height='10'/></Projector><Projector id='B'>" +
                            AREA + "</Projector></Projectors>"));
    const Json document = coverage(dark, 1);
    EXPECT_THAT(document["channels"][0]["fault"].get<std::string>(), HasSubstr("no screen area"));
    EXPECT_TRUE(document["channels"][0]["area"].is_null());
    EXPECT_THAT(document["channels"][1]["fault"].get<std::string>(), HasSubstr("give it a Resolution"));
    EXPECT_NEAR(document["channels"][1]["area"], 4, 4e-3);
    const ProgramRun tables = runScreenManager({"coverage", dark});
    EXPECT_EQ(tables.exitCode, 1);
    EXPECT_THAT(tables.output, Not(HasSubstr("nan")));
    EXPECT_THAT(tables.output, HasSubstr("channel quote \" and"));
}

TEST(CoverageCommand, WithoutProjectorsTheScreenIsDark) {
    const Json document = coverage(EXAMPLES + "empty-wall/display.xml", 1);
    EXPECT_EQ(document["channels"].size(), 0U);
    EXPECT_NEAR(document["litBy"][0]["partOfScreen"], 1.0, 1e-12);
    EXPECT_THAT(runScreenManager({"coverage", EXAMPLES + "empty-wall/display.xml"}).output,
                HasSubstr("the configuration has no projectors"));
}

TEST(CoverageCommand, WithoutAScreenOrAFileExitsWithThree) {
    const TemporaryFolder folder;
    const ProgramRun none = runScreenManager({"coverage", folder.write("none.xml", display(""))});
    EXPECT_EQ(none.exitCode, 3);
    EXPECT_THAT(none.errors, HasSubstr("the configuration describes no screen"));
    EXPECT_EQ(runScreenManager({"coverage", folder.file("gone.xml")}).exitCode, 3);
    folder.write("wall.obj", "v 0 0 0\n");
    const ProgramRun flat = runScreenManager(
        {"coverage", "--json",
         folder.write("mesh.xml",
                      display("<Screen shape='Mesh' fileUnit='m'><ContentMesh file='wall.obj'/></Screen>"))});
    EXPECT_EQ(flat.exitCode, 3);
    EXPECT_THAT(flat.errors, HasSubstr("wall.obj"));
    EXPECT_EQ(flat.output, "");
}

TEST(CoverageCommand, NeverWritesOverAnInputNorTwiceToOneFile) {
    const TemporaryFolder folder;
    const std::string text = display(WALL);
    const std::string file = folder.write("display", text);
    for (const std::vector<std::string>& output :
         {std::vector<std::string>{"-o", file}, {"--ply", folder.path() + "/./display"}}) {
        const ProgramRun run = runScreenManager({"coverage", file, output[0], output[1]});
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_THAT(run.errors, HasSubstr("is the configuration itself"));
    }
    EXPECT_EQ(folder.read("display"), text);
    const ProgramRun twice =
        runScreenManager({"coverage", file, "--ply", folder.file("a"), "-o", folder.path() + "/./a"});
    EXPECT_EQ(twice.exitCode, 2);
    std::filesystem::create_symlink("b", folder.file("link"));
    EXPECT_EQ(runScreenManager({"coverage", file, "--ply", folder.file("link"), "-o", folder.file("b")}).exitCode, 2);
    EXPECT_THAT(twice.errors, HasSubstr("--ply and --output name the same file"));
}

/// A wall with one projector, which is soon measured.
std::string smallWall() {
    return display(WALL + "<Projectors><Projector id='A'><Name>A</Name><Resolution width='10' height='8'/>" + AREA +
                   "</Projector></Projectors>");
}

TEST(CoverageCommand, WritesTheTablesToAFile) {
    const TemporaryFolder folder;
    const ProgramRun run = runScreenManager(
        {"coverage", folder.write("display.xml", smallWall()), "-o", folder.write("report.txt", "old")});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(folder.read("report.txt"), StartsWith("channel"));
}

TEST(CoverageCommand, AnUnwritableFileExitsWithFour) {
    const TemporaryFolder folder;
    const std::string file = folder.write("display.xml", smallWall());
    EXPECT_EQ(runScreenManager({"coverage", file, "-o", "/nowhere/report"}).exitCode, 4);
    EXPECT_EQ(runScreenManager({"coverage", file, "--ply", "/dev/full", "-q"}).exitCode, 4);
}

TEST(CoverageCommand, TheDomeAndTheCylinderHaveTheirAreas) {
    const double pi = std::numbers::pi;
    const double dome = 25 * pi * (1 + std::sin(15 * pi / 180));
    EXPECT_NEAR(coverage(EXAMPLES + "dome/display.xml")["screenArea"], dome, PROMISED * dome);
    const Json cylinder = coverage(EXAMPLES + "cylinder/display.xml");
    const double wall = 3.5 * 220 * pi / 180 * 2.2;
    EXPECT_NEAR(cylinder["screenArea"], wall, PROMISED * wall);
    for (const Json& channel : cylinder["channels"]) {
        EXPECT_NEAR(channel["area"], 0.23 * wall, PROMISED * 0.23 * wall);
    }
    const double twice = 0.04 + 0.035 + 0.035 + 0.04;
    EXPECT_NEAR(cylinder["litBy"][2]["partOfScreen"], twice, PROMISED * twice);
}

std::string projectorOn(const std::string& name, const std::string& left, const std::string& right) {
    return "<Projector id='" + name + "'><Name>" + name + "</Name><Resolution width='1000' height='800'/>" +
           "<ScreenArea left='" + left + "' right='" + right + "' bottom='0' top='1'/></Projector>";
}

TEST(CoverageCommand, TwoRectanglesThatOverlapByHalf) {
    const TemporaryFolder folder;
    const Json document =
        coverage(folder.write("display.xml", display(WALL + "<Projectors>" + projectorOn("A", "0.1", "0.5") +
                                                     projectorOn("B", "0.3", "0.7") + "</Projectors>")));
    // Each lights 0.4 of the wall of 4 x 2, both together half of that.
    const auto expectNear = [](const Json& found, double expected) {
        EXPECT_NEAR(found.get<double>(), expected, PROMISED * expected);
    };
    ASSERT_EQ(document["channels"].size(), 2U);
    for (const Json& channel : document["channels"]) {
        expectNear(channel["area"], 3.2);
        expectNear(channel["pitch"]["mean"], std::sqrt(1.6 * 2 / (1000 * 800)));
    }
    ASSERT_EQ(document["overlaps"].size(), 1U);
    expectNear(document["overlaps"][0]["area"], 1.6);
    expectNear(document["overlaps"][0]["first"]["pixels"], 400000);
    expectNear(document["overlaps"][0]["second"]["part"], 0.5);
    expectNear(document["litBy"][0]["partOfScreen"], 0.4);
    expectNear(document["litBy"][1]["partOfScreen"], 0.4);
    expectNear(document["litBy"][2]["partOfScreen"], 0.2);
}

TEST(CoverageCommand, ADomeInEqualLunes) {
    const TemporaryFolder folder;
    const std::string dome =
        "<Screen shape='Sphere'><Orientation z='20' x='10' y='5'/><Radius value='5'/><Azimuth min='-90' max='90'/>"
        "<Elevation min='-15' max='90'/></Screen><TargetData type='PlanarBasic'/>";
    const Json document = coverage(folder.write(
        "display.xml", display(dome + "<Projectors>" + projectorOn("A", "0", "0.25") + projectorOn("B", "0.25", "0.5") +
                               projectorOn("C", "0.5", "0.75") + projectorOn("D", "0.75", "1") + "</Projectors>")));
    const double pi = std::numbers::pi;
    const double lune = 25 * (pi / 4) * (1 + std::sin(15 * pi / 180));
    ASSERT_EQ(document["channels"].size(), 4U);
    for (const Json& channel : document["channels"]) {
        EXPECT_NEAR(channel["area"], lune, PROMISED * lune);
        EXPECT_NEAR(channel["missed"], 0, 1e-9);
    }
    EXPECT_NEAR(document["litBy"][1]["partOfScreen"], 1, PROMISED);
    EXPECT_EQ(document["overlaps"].size(), 0U) << "they only meet";
}

// What must hold whatever the display is.
TEST(CoverageCommand, TheReportOfEveryExampleFitsTogether) {
    for (const char* example : {"closed-cylinder", "cockpit", "collimated", "curved-wall", "cylinder", "dome",
                                "lens-cylinder", "mesh-rays", "planar-wall", "spherical-dome", "warped-wall"}) {
        const Json document = coverage(EXAMPLES + example + "/display.xml");
        const double screen = document["screenArea"];
        double sum = 0;
        double seen = 0;
        for (const Json& lit : document["litBy"]) {
            sum += lit["area"].get<double>();
            seen += lit["projectors"].get<double>() * lit["area"].get<double>();
        }
        EXPECT_NEAR(sum, screen, 1e-9 * screen) << example;
        double areas = 0;
        for (const Json& channel : document["channels"]) {
            areas += channel["area"].get<double>();
            EXPECT_LE(channel["pitch"]["least"], channel["pitch"]["mean"]) << example;
            EXPECT_LE(channel["pitch"]["mean"].get<double>(), 1.001 * channel["pitch"]["most"].get<double>())
                << example;
        }
        // Four projectors on one spot count as three and more.
        EXPECT_GE(areas, seen - 1e-9 * screen) << example;
        for (const Json& overlap : document["overlaps"]) {
            EXPECT_GT(overlap["first"]["part"], 0.0) << example;
            EXPECT_LE(overlap["first"]["part"], 1.0) << example;
        }
    }
}

TEST(CoverageCommand, AFrustumOfARightAngleIsTold) {
    const TemporaryFolder folder;
    const Json document = coverage(
        folder.write("display.xml",
                     display("<Screen shape='Flat'><Centre x='0' y='5' z='0'/><Size width='4' height='2'/></Screen>"
                             "<TargetData type='ProjectorCentric'/><Projectors><Projector id='A'><Name>A</Name>"
                             "<Resolution width='1920' height='1200'/><Frustum left='-100' right='20' bottom='-10' "
                             "top='10'/><Position x='0' y='0' z='0'/></Projector></Projectors>")),
        1);
    EXPECT_THAT(document["channels"][0]["fault"].get<std::string>(), HasSubstr("an edge is at -100 deg"));
}

// The fault of one channel does not keep the others from being measured.
TEST(CoverageCommand, AMissingLensIsAFaultOfItsChannel) {
    const TemporaryFolder folder;
    const std::string common =
        "<Resolution width='1920' height='1200'/><Frustum left='-10' right='10' bottom='-10' top='10'/>"
        "<Position x='0' y='0' z='1'/></Projector>";
    const Json document = coverage(
        folder.write("display.xml",
                     display("<Screen shape='Flat'><Centre x='0' y='5' z='1'/><Size width='4' height='2'/></Screen>"
                             "<TargetData type='ProjectorCentric'/><Projectors><Projector id='A'><Name>A</Name>"
                             "<ProjectionModel name='BrownConrady' file='gone.yml'/>" +
                             common + "<Projector id='B'><Name>B</Name>" + common + "</Projectors>")),
        1);
    const std::string fault = document["channels"][0]["fault"];
    EXPECT_THAT(fault, HasSubstr("gone.yml"));
    EXPECT_THAT(fault, Not(HasSubstr(".cpp")));
    EXPECT_NEAR(document["channels"][1]["area"], std::pow(10 * std::tan(std::numbers::pi / 18), 2), 4e-3);
}

}  // namespace
