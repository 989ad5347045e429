#include "DisplayReport/ScenePage.h"

#include "DisplayReport/DisplayScene.h"
#include "DisplayReport/ViewerScript.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
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

TEST(ViewerScript, CannotEndItsElement) {
    const std::string script(viewerScript());
    EXPECT_GT(script.size(), 100000U);
    EXPECT_THAT(script, Not(HasSubstr("</script")));
    EXPECT_THAT(script, Not(HasSubstr("<!--")));
    EXPECT_TRUE(std::all_of(script.begin(), script.end(), [](char c) { return static_cast<unsigned char>(c) < 128; }));
    EXPECT_THAT(script, HasSubstr("Permission is hereby granted, free of charge")) << "the licence of the 3D library";
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

}  // namespace
