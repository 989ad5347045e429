#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

const std::string EXAMPLES = sourceFolder() + "/examples/";

nlohmann::json dataOf(const std::string& page) {
    const std::string start = "id=\"scene\">";
    const auto from = page.find(start) + start.size();
    return nlohmann::json::parse(page.substr(from, page.find("</script>", from) - from));
}

TEST(ViewCommand, WritesAPageOfEveryExample) {
    for (const char* example : {"closed-cylinder", "cockpit", "collimated", "curved-wall", "cylinder", "dome",
                                "lens-cylinder", "mesh-rays", "planar-wall", "spherical-dome", "warped-wall"}) {
        const ProgramRun run = runScreenManager({"view", EXAMPLES + example + "/display.xml"});
        EXPECT_EQ(run.exitCode, 0) << example;
        EXPECT_THAT(run.errors, AnyOf("", StartsWith("note: dashed outlines lie past the edge of the screen")))
            << example;
        EXPECT_THAT(run.output, StartsWith("<!DOCTYPE html>\n"));
        const auto data = dataOf(run.output);
        EXPECT_GE(data.at("channels").size(), 2U) << example;
        EXPECT_GE(data.at("surfaces").size(), 1U) << example;
    }
}

TEST(ViewCommand, ADisplayWithoutAnythingIsAPageThatSaysSo) {
    const TemporaryFolder folder;
    const std::string file = folder.write("display.xml", "<Display version='1'><Units native='m'/></Display>");
    const std::string page = folder.file("page.html");
    const ProgramRun run = runScreenManager({"view", file, "-o", page});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr("note: screen: the configuration describes no screen"));
    const auto data = dataOf(folder.read("page.html"));
    EXPECT_GE(data.at("notes").size(), 2U);
    EXPECT_EQ(runScreenManager({"view", file, "-o", page, "--quiet"}).errors, "");
}

TEST(ViewCommand, AScreenWithoutProjectorsIsAPageToo) {
    const ProgramRun run = runScreenManager({"view", EXAMPLES + "empty-wall/display.xml"});
    EXPECT_EQ(run.exitCode, 1);
    const auto data = dataOf(run.output);
    EXPECT_EQ(data.at("channels").size(), 0U);
    EXPECT_EQ(data.at("surfaces").size(), 1U);
}

TEST(ViewCommand, AWallFarFromTheOriginIsAPageLikeAnyOther) {
    const TemporaryFolder folder;
    const std::string file =
        folder.write("display.xml",
                     "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Flat'>"
                     "<EyePoint x='1e9' y='1e9' z='1e9'/><Centre x='1e9' y='1000000005' z='1e9'/><Size width='4' "
                     "height='2'/></Screen><TargetData type='PlanarBasic'/><Projectors><Projector id='A'><Name>Far"
                     "</Name><Resolution width='1920' height='1200'/><ScreenArea left='0' right='1' bottom='0' "
                     "top='1'/></Projector></Projectors></Display>");
    const ProgramRun run = runScreenManager({"view", file});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    const auto data = dataOf(run.output);
    EXPECT_EQ(data.at("channels").size(), 1U);
    EXPECT_EQ(data.at("surfaces").size(), 1U);
}

TEST(ViewCommand, AMeshThatIsMissingIsSaidInThePage) {
    const TemporaryFolder folder;
    const std::string file = folder.write("display.xml",
                                          "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Mesh' "
                                          "fileUnit='m'><ContentMesh file='gone.obj'/></Screen></Display>");
    const ProgramRun run = runScreenManager({"view", file});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(dataOf(run.output).at("notes").at(0).get<std::string>(), HasSubstr("gone.obj"));
}

TEST(ViewCommand, FaultsOfTheCommandAreThoseOfTargets) {
    const TemporaryFolder folder;
    const std::string file = folder.write("display.xml", "<Display version='1'><Units native='m'/></Display>");
    EXPECT_EQ(runScreenManager({"view", folder.file("gone.xml")}).exitCode, 3);
    EXPECT_EQ(runScreenManager({"view", file, "-o", file}).exitCode, 2);
    EXPECT_EQ(runScreenManager({"view", file, "-o", "/nowhere/page.html"}).exitCode, 4);
    EXPECT_EQ(runScreenManager({"view", file, "--grid", "0x1"}).exitCode, 2);
}

TEST(ViewCommand, APageOfMillionsOfTargetsStaysSmallAndSaysWhatItShows) {
    const TemporaryFolder folder;
    const std::string page = folder.file("page.html");
    const ProgramRun run = runScreenManager(
        {"view", EXAMPLES + "planar-wall/display.xml", "-o", page, "--grid", "500x500", "--boundary", "20000"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.errors, HasSubstr("of 1,500,000 targets are shown"));
    const std::string text = folder.read("page.html");
    EXPECT_LT(text.size(), 25'000'000U);
    EXPECT_EQ(dataOf(text).at("channels").at(0).at("placed"), 250000);
}

}  // namespace
