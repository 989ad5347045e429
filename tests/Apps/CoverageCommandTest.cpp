#include "ProgramRun.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <sstream>
#include <string>

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Json = nlohmann::json;

const std::string EXAMPLES = SM_SOURCE_DIR "/examples/";
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
        EXPECT_LE(channel["missed"].get<double>(), 1e-9);
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

TEST(CoverageCommand, WritesTheReportAndTheScreenToFiles) {
    const TemporaryFolder folder;
    const std::string ply = folder.file("screen.ply");
    const ProgramRun run =
        runScreenManager({"coverage", PLANAR, "--ply", ply, "-o", folder.write("report.txt", "old")});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(folder.read("report.txt"), StartsWith("channel"));
    std::istringstream text(folder.read("screen.ply"));
    std::string line;
    std::size_t announced = 0;
    while (std::getline(text, line) && line != "end_header") {
        if (line.starts_with("element ")) {
            announced += std::stoul(line.substr(line.rfind(' ')));
        }
    }
    std::size_t following = 0;
    while (std::getline(text, line)) {
        ++following;
    }
    EXPECT_GT(announced, 100U);
    EXPECT_EQ(following, announced);
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
    const std::string file = folder.write("display.xml", text);
    EXPECT_EQ(runScreenManager({"coverage", file, "-o", file}).exitCode, 2);
    EXPECT_EQ(runScreenManager({"coverage", file, "--ply", folder.path() + "/./display.xml"}).exitCode, 2);
    EXPECT_EQ(folder.read("display.xml"), text);
    const ProgramRun twice =
        runScreenManager({"coverage", file, "--ply", folder.file("a"), "-o", folder.path() + "/./a"});
    EXPECT_EQ(twice.exitCode, 2);
    EXPECT_THAT(twice.errors, HasSubstr("--ply and --output name the same file"));
}

TEST(CoverageCommand, AnUnwritableFileExitsWithFour) {
    EXPECT_EQ(runScreenManager({"coverage", PLANAR, "-o", "/nowhere/report"}).exitCode, 4);
    EXPECT_EQ(runScreenManager({"coverage", PLANAR, "--ply", "/dev/full", "-q"}).exitCode, 4);
}

TEST(CoverageCommand, TheDomeAndTheCylinderHaveTheirAreas) {
    const double pi = std::acos(-1.0);
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
    const double pi = std::acos(-1.0);
    const double lune = 25 * (pi / 4) * (1 + std::sin(15 * pi / 180));
    ASSERT_EQ(document["channels"].size(), 4U);
    for (const Json& channel : document["channels"]) {
        EXPECT_NEAR(channel["area"], lune, PROMISED * lune);
        EXPECT_NEAR(channel["missed"], 0, 1e-9);
    }
    EXPECT_NEAR(document["litBy"][1]["partOfScreen"], 1, PROMISED);
    EXPECT_EQ(document["overlaps"].size(), 0U) << "they only meet";
}

}  // namespace
