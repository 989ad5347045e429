#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <vector>

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

/// An export of a wall, and what `view` and `picture` make of it.
class ViewLit : public testing::Test {
protected:
    ViewLit() {
        const ProgramRun export_ = runScreenManager(
            {"export", m_wall, "-q", "-o", m_player, "--input", "screen", "--nodes", "5x5", "--content", m_content});
        EXPECT_EQ(export_.exitCode, 0) << export_.errors;
    }

    [[nodiscard]] ProgramRun view(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"view", m_wall, "--lit", m_player, "-o", m_folder.file("lit.html")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runScreenManager(arguments);
    }
    [[nodiscard]] ProgramRun picture() const {
        return runScreenManager(
            {"picture", m_wall, "--lit", m_player, "--size", "200x200", "-o", m_folder.file("lit.png")});
    }

    /// Both commands refuse the folder with the same words and code.
    void expectRefused(int code, const std::string& words) const {
        const ProgramRun shown = view();
        const ProgramRun drawn = picture();
        EXPECT_EQ(shown.exitCode, code) << shown.errors;
        EXPECT_EQ(drawn.exitCode, code);
        EXPECT_EQ(shown.errors, drawn.errors);
        EXPECT_THAT(shown.errors, HasSubstr(words));
        EXPECT_FALSE(std::filesystem::exists(m_folder.file("lit.html")));
    }

    [[nodiscard]] std::string manifest() const { return m_folder.read("player/manifest.json"); }
    void writeManifest(const std::string& text) const { m_folder.write("player/manifest.json", text); }

    static std::string wall(const std::string& id) {
        const std::string size = "<Resolution width='60' height='40'/><ScreenArea bottom='0' top='1' ";
        return "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Flat'><EyePoint x='0' y='0' "
               "z='0'/><Centre x='0' y='5' z='0'/><Size width='4' height='2'/></Screen><TargetData "
               "type='PlanarBasic'/><Projectors><Projector id='A'><Name>Left</Name>" +
               size + "left='0' right='0.6'/></Projector><Projector id='" + id + "'><Name>Right</Name>" + size +
               "left='0.4' right='1'/></Projector></Projectors></Display>";
    }

    const TemporaryFolder m_folder;
    std::string m_wall = m_folder.write("wall.xml", wall("B"));
    std::string m_player = m_folder.file("player");
    // Any picture is a content.
    std::string m_content = [this] {
        const std::string file = m_folder.file("content.png");
        EXPECT_EQ(runScreenManager({"picture", m_wall, "-q", "--size", "200x200", "-o", file}).exitCode, 0);
        return file;
    }();
};

TEST_F(ViewLit, ThePageHasTheLightOfBothKindsOfErrors) {
    const ProgramRun run = view();
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    const std::string page = m_folder.read("lit.html");
    EXPECT_LT(page.size(), 10'000'000U);
    const auto light = dataOf(page).at("light");
    ASSERT_EQ(light.at("sides").size(), 1U);
    for (const char* kind : {"shown", "shift", "unevenness"}) {
        EXPECT_THAT(light.at("sides")[0].at(kind).get<std::string>(), StartsWith("iVBORw0KGgo")) << "a PNG file";
    }
    EXPECT_THAT(light.at("facts")[0].get<std::string>(), HasSubstr("1414 x 707 places, one every 0.0028284 m"));
    EXPECT_THAT(light.at("facts")[1].get<std::string>(), HasSubstr("999698 lit, 0 on the screen not lit"));
    EXPECT_TRUE(dataOf(runScreenManager({"view", m_wall, "-q"}).output).at("light").is_null());
}

TEST_F(ViewLit, NotesAreThoseOfAPictureAndStandInThePage) {
    m_folder.write("wall.xml", wall("B") + "<!-- later -->");
    const ProgramRun run = view();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "note: " + m_wall + " has changed since the export: its geometry is the one of now\n");
    EXPECT_EQ(picture().errors, run.errors);
    EXPECT_THAT(dataOf(m_folder.read("lit.html")).at("notes").dump(), HasSubstr("has changed since the export"));
    EXPECT_EQ(view({"--quiet"}).errors, "");
}

TEST_F(ViewLit, WhatIsWrongWithTheFolderIsSaidAsByPicture) {
    const std::string good = manifest();
    std::filesystem::remove(m_player + "/manifest.json");
    expectRefused(3, "manifest.json");
    writeManifest("{");
    expectRefused(3, "manifest.json");
    writeManifest(good);
    m_folder.write("wall.xml", wall("C"));
    expectRefused(3, "the display has no such channel");
    m_folder.write("wall.xml", wall("B"));
    for (const auto& entry : std::filesystem::directory_iterator(m_player)) {
        const std::string name = entry.path().filename().string();
        if (name.ends_with(".content.png")) {
            const std::string whole = m_folder.read("player/" + name);
            m_folder.write("player/" + name, whole.substr(0, whole.size() / 2));
            expectRefused(3, name);
            std::filesystem::remove(entry.path());
            expectRefused(3, name);
            m_folder.write("player/" + name, whole);
            break;
        }
    }
    EXPECT_EQ(view().exitCode, 0);
}

TEST_F(ViewLit, APageReplacesNoFileOfTheExport) {
    const std::string good = manifest();
    // A name that ends like a page.
    std::filesystem::create_hard_link(m_player + "/manifest.json", m_folder.file("lit.html"));
    const ProgramRun run = view();
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, HasSubstr("lit.html is a file of the export that --lit reads: name another one"));
    EXPECT_EQ(manifest(), good);
}

TEST_F(ViewLit, AResultReplacesNoFileOfTheDisplay) {
    // Names that end like a picture and like errors.
    const std::string content = m_folder.read("wall.xml");
    for (const std::string name : {"wall.png", "wall.json"}) {
        const std::string display = m_folder.write(name, content);
        const bool isPicture = name == "wall.png";
        std::vector<std::string> arguments{
            "picture", display,   "--lit", m_player,
            "--size",  "200x200", "-o",    isPicture ? display : m_folder.file("lit.png")};
        if (!isPicture) {
            arguments.insert(arguments.end(), {"--lit-error", display});
        }
        const ProgramRun run = runScreenManager(arguments);
        EXPECT_EQ(run.exitCode, 2) << name << ": " << run.errors;
        EXPECT_THAT(run.errors, HasSubstr(name)) << name;
        EXPECT_EQ(m_folder.read(name), content);
        EXPECT_FALSE(std::filesystem::exists(m_folder.file("lit.png")));
    }
}

TEST_F(ViewLit, ErrorsThatCannotBeWrittenAreAFaultOfTheOutput) {
    for (const std::string name : {"e.png", "e.txt", "e.json"}) {
        const std::string nowhere = m_folder.file("no-folder/" + name);
        const ProgramRun run = runScreenManager({"picture", m_wall, "--lit", m_player, "--size", "200x200", "-o",
                                                 m_folder.file("lit.png"), "--lit-error", nowhere});
        EXPECT_EQ(run.exitCode, 4) << name;
        EXPECT_THAT(run.errors, HasSubstr(nowhere)) << name;
    }
}

TEST_F(ViewLit, ErrorsAreFilesOfAPictureAlone) {
    EXPECT_EQ(view({"--lit-error", m_folder.file("e.txt")}).exitCode, 2);
}

TEST_F(ViewLit, ResidualsGoTogetherWithIt) {
    const std::string table = m_folder.file("t.csv");
    ASSERT_EQ(runScreenManager({"targets", m_wall, "-q", "--grid", "6x4", "--boundary", "0", "-o", table}).exitCode, 0);
    const std::string report = m_folder.file("report.json");
    const ProgramRun fit = runScreenManager(
        {"fit", m_wall, "-q", "--points", table, "-o", m_folder.file("fitted.xml"), "--report", report});
    ASSERT_NE(m_folder.read("report.json"), "") << fit.errors;
    const ProgramRun run = view({"--residuals", report});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    const auto data = dataOf(m_folder.read("lit.html"));
    EXPECT_FALSE(data.at("light").is_null());
    EXPECT_FALSE(data.at("residuals").is_null());
}

}  // namespace
