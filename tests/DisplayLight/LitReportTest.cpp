#include "DisplayLight/LitReport.h"

#include "LitPlaces.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace {

using namespace Veltrani::DisplayLight;
using testing::ElementsAre;
using Json = nlohmann::json;
using P3 = Point<double, 3>;

/// Four places that are lit, three of them compared, and two that are not.
LitPicture picture() {
    LitPicture picture;
    picture.places = {litPlace(1.25F, 1.5F), litPlace(0.5F, 0.25F), litPlace(1, 0.5F), litPlace(1, -1), {}, {}, {}};
    picture.places[3].lacksContent = true;
    picture.places[4].isOnScreen = true;
    picture.places[5].isOnScreen = true;
    picture.coarsest = "channel A\n(A)";
    picture.coarsestPixel = 0.0125;
    picture.notes = {"one", "two\nlines"};
    return picture;
}

Json jsonOf(const LitPicture& picture, const std::string& unit) {
    std::ostringstream out;
    LitReport(picture, unit).writeJson({{"wall.xml", std::string(64, 'a')}}, out);
    EXPECT_EQ(out.str().find('\n'), out.str().size() - 1) << "one line";
    return Json::parse(out.str());
}

TEST(LitReport, StatesItsFiguresInSentences) {
    const LitPicture lit = picture();
    EXPECT_THAT(
        LitReport::linesOf(lit.figures(), lit, "m"),
        ElementsAre("places: 4 lit, 2 on the screen not lit",
                    "content: off by 1.5 pixels at most, 0.75 in the mean, at 3 places; 1 by more than one; 1 "
                    "without content",
                    "light: up to 25 % too much and 50 % too little, 18.75 % in the mean; 1 places beyond white",
                    testing::AllOf(testing::StartsWith("coarsest: channel A"),
                                   testing::EndsWith(", a pixel is 0.0125 m wide"))));
    EXPECT_THAT(LitReport::linesOf(lit.figures(), lit, "").back(), testing::EndsWith("a pixel is 0.0125 wide"));
    EXPECT_EQ(LitReport::linesOf({}, lit, "m")[1], "content: not compared");
    LitFigures one;
    one.compared = 1;
    EXPECT_THAT(LitReport::linesOf(one, lit, "m")[1], testing::HasSubstr("at 1 places; "));
}

TEST(LitReport, HasALineForEachFigureAndForEachNote) {
    const LitPicture lit = picture();
    std::ostringstream out;
    LitReport(lit, "m").writeText(out);
    std::istringstream in(out.str());
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    ASSERT_EQ(lines.size(), 6U) << "no text of a note has a line end";
    EXPECT_EQ(lines[0], "places: 4 lit, 2 on the screen not lit");
    EXPECT_EQ(lines[4], "note: one");
    EXPECT_THAT(lines[5], testing::StartsWith("note: two"));
}

TEST(LitReport, AProgramReadsTheSameFigures) {
    LitPicture lit = picture();
    const std::vector<P3> ahead{{0.0, 3.0, 0.0}};
    lit.view = EyeView::around({1.0, 2.0, 3.0}, ahead, 40, 30);
    const Json json = jsonOf(lit, "m");
    EXPECT_EQ(json["schema"], "screenmanager/light");
    EXPECT_EQ(json["units"]["length"], "m");
    EXPECT_EQ(json["files"][0]["name"], "wall.xml");
    EXPECT_EQ(
        json["view"],
        (Json{
            {"kind", "flat"}, {"eye", {1.0, 2.0, 3.0}}, {"forward", {0.0, 1.0, 0.0}}, {"width", 40}, {"height", 30}}));
    EXPECT_EQ(json["lit"], 4);
    EXPECT_EQ(json["unlit"], 2);
    EXPECT_EQ(json["content"],
              (Json{{"places", 3}, {"largest", 1.5}, {"mean", 0.75}, {"beyondPixel", 1}, {"withoutContent", 1}}));
    EXPECT_EQ(json["light"],
              (Json{{"places", 4}, {"most", 0.25}, {"least", -0.5}, {"mean", 0.1875}, {"beyondWhite", 1}}));
    EXPECT_EQ(json["coarsest"], (Json{{"channel", "channel A\n(A)"}, {"pixel", 0.0125}}));
    EXPECT_EQ(json["notes"], (Json{"one", "two\nlines"}));
}

TEST(LitReport, AProgramReadsTheKindOfTheViewAndThatNothingWasCompared) {
    LitPicture lit = picture();
    lit.places = {litPlace(1, -1)};
    const std::vector<P3> wide{{1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}};
    lit.view = EyeView::around({}, wide, 40, 30);
    Json json = jsonOf(lit, "");
    EXPECT_EQ(json["view"]["kind"], "fisheye");
    EXPECT_TRUE(json["content"].is_null());
    EXPECT_TRUE(json["units"]["length"].is_null());
    const std::vector<P3> around{{1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, -1.0, 0.0}};
    lit.view = EyeView::around({}, around, 40, 30);
    json = jsonOf(lit, "");
    EXPECT_EQ(json["view"]["kind"], "panorama");
    // One place is enough to have been compared.
    lit.places = {litPlace(1, 0)};
    EXPECT_EQ(jsonOf(lit, "")["content"]["places"], 1);
}

}  // namespace
