#include "DisplayReport/scene/ScenePage.h"

#include "DisplayReport/basics/Base64.h"
#include "DisplayReport/scene/DisplayScene.h"
#include "DisplayReport/scene/SceneCollector.h"
#include "KelvoScreen/MeshScreen.h"
#include "Scenes.h"
#include "ScreenManager/ScreenManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/Sanitizers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <memory>
#include <sstream>
#include <vector>

namespace {

using namespace Veltrani::DisplayReport;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

std::string pageOf(const DisplayScene& scene) {
    std::ostringstream out;
    ScenePage::write(scene, out);
    return out.str();
}

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

nlohmann::json dataOf(const std::string& page) {
    const std::string start = "id=\"scene\">";
    const auto from = page.find(start) + start.size();
    return nlohmann::json::parse(page.substr(from, page.find("</script>", from) - from));
}

DisplayScene named(const std::string& name) {
    DisplayScene scene;
    scene.title = name;
    scene.notes = {name};
    SceneChannel channel;
    channel.targets.name = name;
    channel.targets.projectorId = name;
    channel.targets.fault = name;
    scene.channels = {channel};
    return scene;
}

TEST(ScenePage, NamesComeBackAsTheyWereAndAreNeverMarkup) {
    const std::string name = "</script><script>alert(1)</script>\"'&<!--\n\xE2\x80\xA8\xE2\x80\xA9 \xC3\xA4";
    const std::string page = pageOf(named(name));
    EXPECT_EQ(count(page, "<script"), 2U);
    EXPECT_EQ(count(page, "</script>"), 2U);
    EXPECT_EQ(count(page, "<!--"), 0U);
    EXPECT_THAT(page, Not(HasSubstr("\xE2\x80\xA8\xE2\x80\xA9 \xC3\xA4</script")));
    const auto data = dataOf(page);
    EXPECT_EQ(data.at("title"), name);
    EXPECT_EQ(data.at("notes").at(0), name);
    EXPECT_EQ(data.at("channels").at(0).at("name"), name);
}

TEST(ScenePage, TextThatIsNoUtf8IsStillAPage) {
    EXPECT_EQ(dataOf(pageOf(named("a\xFF"
                                  "b")))
                  .at("title"),
              "a\xEF\xBF\xBD"
              "b");
}

TEST(ScenePage, AsksNoNetworkAndRunsItsOwnScriptAlone) {
    const std::string page = pageOf({});
    EXPECT_THAT(page, HasSubstr("default-src 'none'; script-src 'sha256-"));
    for (const char* loading : {" src=", " href=", "@import"}) {
        EXPECT_EQ(page.substr(0, page.find("<script>")).find(loading), std::string::npos) << loading;
    }
}

TEST(ScenePage, AnEmptySceneIsAPage) {
    const auto data = dataOf(pageOf({}));
    EXPECT_EQ(data.at("surfaces").size(), 0U);
    EXPECT_EQ(data.at("channels").size(), 0U);
    EXPECT_TRUE(data.at("cloud").is_null());
    EXPECT_GT(data.at("scale").get<double>(), 0);
}

TEST(ScenePage, TargetsAreGivenAsTheyAre) {
    const auto channel = dataOf(pageOf(scenes::wall())).at("channels").at(0);
    EXPECT_EQ(channel.at("cells"), base64Of(std::vector<std::int32_t>{0, 0, 0, 1, 1, 0, 1, 1}));
    EXPECT_EQ(channel.at("exactPoints"), base64Of(std::vector<double>{-2, 5, 1, -2, 5, -1, 0, 5, 1, 0, 5, -1}));
    EXPECT_EQ(channel.at("colour"), "#e69f00");
    EXPECT_TRUE(channel.at("frustum").is_null());
}

// From the middle of the frame (0, 2.5, 0) in its size, the diagonal of 4 by 5 by 2.
TEST(ScenePage, PlacesAreGivenFromTheMiddleOfThePictureInItsSize) {
    const auto data = dataOf(pageOf(scenes::wall()));
    EXPECT_EQ(data.at("centre"), (nlohmann::json{0, 2.5, 0}));
    EXPECT_DOUBLE_EQ(data.at("scale").get<double>(), std::sqrt(45.0));
    const auto x = static_cast<float>(-2 / std::sqrt(45.0));
    const auto y = static_cast<float>(2.5 / std::sqrt(45.0));
    const auto z = static_cast<float>(1 / std::sqrt(45.0));
    EXPECT_EQ(data.at("channels").at(0).at("boundary").get<std::string>().substr(0, 16),
              base64Of(std::vector<float>{x, y, z}));
}

TEST(ScenePage, FarFromTheOriginPlacesKeepTheirDigits) {
    const auto here = dataOf(pageOf(scenes::wall()));
    const auto there = dataOf(pageOf(scenes::moved(scenes::wall(), {1e9, 1e9, -1e9})));
    EXPECT_EQ(here.at("channels").at(0).at("points"), there.at("channels").at(0).at("points"));
    EXPECT_EQ(here.at("scale"), there.at("scale"));
}

// The largest display that the page is meant for: it stays below 25 MB and says that its mesh was thinned. The time
// until its first picture stands in the page for whoever measures.
TEST(ScenePage, TwelveChannelsAndAMillionTrianglesAreAPageOfAFewMegabytes) {
    const LogTrap log;
    TriangleMesh mesh;
    // Under the sanitizers a quarter, which is thinned as well.
    constexpr std::uint32_t COLUMNS = IS_SANITIZED ? 500 : 1000;
    constexpr std::uint32_t ROWS = COLUMNS / 2;
    for (std::uint32_t row = 0; row <= ROWS; ++row) {
        for (std::uint32_t column = 0; column <= COLUMNS; ++column) {
            mesh.vertices.push_back({0.01 * column, 5 + std::sin(0.02 * column), 0.01 * row});
        }
    }
    for (std::uint32_t row = 0; row < ROWS; ++row) {
        for (std::uint32_t column = 0; column < COLUMNS; ++column) {
            const std::uint32_t a = row * (COLUMNS + 1) + column;
            mesh.triangles.push_back({a, a + 1, a + COLUMNS + 2});
            mesh.triangles.push_back({a, a + COLUMNS + 2, a + COLUMNS + 1});
        }
    }
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<MeshScreen>(std::move(mesh)));
    const auto config = displays::parsed("", "");
    TargetSurvey survey;
    survey.plan = {64, 40, 16};
    for (int number = 0; number < 12; ++number) {
        ChannelTargets channel;
        channel.name = "Channel " + std::to_string(number + 1);
        for (int column = 0; column < 64; ++column) {
            for (int row = 0; row < 40; ++row) {
                channel.grid.push_back({column, row, {column / 63.0, row / 39.0}, {column / 7.0, 5.1, row / 9.0}});
            }
        }
        survey.channels.push_back(channel);
    }
    const DisplayScene scene = SceneCollector().collect("large", *config, survey, {});
    ScreenManager::deleteInstance();
    const std::string page = pageOf(scene);
    EXPECT_LT(page.size(), 25'000'000U);
    const auto data = dataOf(page);
    EXPECT_EQ(data.at("channels").size(), 12U);
    EXPECT_EQ(data.at("channels").at(11).at("cells").get<std::string>().size(), (64U * 40 * 8 + 2) / 3 * 4);
    const std::size_t triangles = data.at("surfaces").at(0).at("triangles").get<std::string>().size() / 16;
    EXPECT_LE(triangles, SceneCollector::Limits().triangles);
    EXPECT_GT(triangles, SceneCollector::Limits().triangles / 2) << "no more than needed is thrown away";
    EXPECT_THAT(data.at("notes").at(0).get<std::string>(),
                AllOf(HasSubstr("the content screen is shown with"),
                      HasSubstr(IS_SANITIZED ? "of its 250,000 triangles" : "of its 1,000,000 triangles")));
}

}  // namespace
