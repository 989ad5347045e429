// One channel among others that are alike.
#include "CheckedDisplays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// The warnings of a display after one change of its text.
std::vector<std::string> foundIn(const std::string& name, const std::string& from, const std::string& to) {
    sound::Display display = sound::named(name);
    display.text = changed(display.text, from, to);
    DisplayFolder folder;
    const DisplayDescription description = folder.checked(display);
    std::vector<std::string> texts;
    for (const Finding& finding : description.findings) {
        if (finding.severity == Severity::WARNING) {
            texts.push_back(finding.where + ": " + finding.what + " [" + finding.rule + "]");
        }
    }
    return texts;
}

const std::string STRAIGHT = "<Orientation z='0' x='0' y='0'/>";

TEST(GroupRules, OnePictureOnItsHeadIsReported) {
    EXPECT_THAT(foundIn("seated-dome", STRAIGHT, "<Orientation z='0' x='0' y='180'/>"),
                testing::ElementsAre(
                    "channel Centre: its picture is rolled by 180 degrees, those of the other 3 channels by 0: it "
                    "stands on its head; check y of its Orientation [odd-one-out]"));
    EXPECT_THAT(foundIn("seated-dome", "x='50' y='0'", "x='50' y='180'"), Contains(HasSubstr("channel Top: its pict")));
    EXPECT_THAT(foundIn("collimated", "z='-40' x='0' y='0'", "z='-40' x='0' y='180'"),
                Contains(HasSubstr("[odd-one-out]")));
    EXPECT_THAT(
        foundIn("wall-rays", STRAIGHT + "<Frustum left='-16' right='16' bottom='-10.2' top='10.2'/><Position x='0'",
                "<Orientation z='0' x='0' y='180'/><Frustum left='-16' right='16' bottom='-10.2' "
                "top='10.2'/><Position x='0'"),
        Contains(HasSubstr("channel Centre: its picture is rolled by 180 degrees")));
    EXPECT_THAT(foundIn("closed-cylinder", "z='45.000000' x='0' y='0'", "z='45.000000' x='0' y='180'"),
                Contains(HasSubstr("[odd-one-out]")));
}

TEST(GroupRules, RolledAndHangingProjectorsAreLeftAlone) {
    // On its side; all on their heads; one that hangs with a frustum of its own; one of two.
    EXPECT_THAT(foundIn("seated-dome", STRAIGHT, "<Orientation z='0' x='0' y='150'/>"), IsEmpty());
    EXPECT_THAT(foundIn("wall-rays", STRAIGHT, "<Orientation z='0' x='0' y='180'/>"), IsEmpty());
    EXPECT_THAT(
        foundIn("wall-rays", STRAIGHT + "<Frustum left='-16' right='16' bottom='-10.2' top='10.2'/><Position x='0'",
                "<Orientation z='0' x='0' y='180'/><Frustum left='-16' right='16' bottom='-10.3' "
                "top='10.1'/><Position x='0'"),
        IsEmpty());
    EXPECT_THAT(foundIn("ceiling", "x='0' y='180'", "x='0' y='0'"), Not(Contains(HasSubstr("[odd-one-out]"))));
}

/// Steps of 45 degrees: 4.5 beside the place are the limit.
TEST(GroupRules, OneOutOfAnEvenRowIsReported) {
    EXPECT_THAT(foundIn("closed-cylinder", "z='45.000000'", "z='49.000000'"), IsEmpty());
    EXPECT_THAT(foundIn("closed-cylinder", "z='45.000000'", "z='50.000000'"),
                Contains("channel Bay 6: it looks 5 degrees to the right of the middle between its neighbours, where "
                         "all others are 45 degrees apart: check z of its Orientation [odd-one-out]"));
    EXPECT_THAT(foundIn("closed-cylinder", "z='-180.000000'", "z='-190.000000'"),
                Contains(HasSubstr("channel Bay 1: it looks 10 degrees to the left of the middle")));
}

TEST(GroupRules, UnevenRowsAreLeftAlone) {
    // Two of them moved follow no law; of three no law shows.
    sound::Display display = sound::named("closed-cylinder");
    display.text = changed(display.text, "z='45.000000'", "z='52.000000'");
    display.text = changed(display.text, "z='-90.000000'", "z='-82.000000'");
    DisplayFolder folder;
    EXPECT_EQ(rulesOf(folder.checked(display)).count("odd-one-out"), 0U);
    EXPECT_THAT(foundIn("seated-dome", "z='55'", "z='45'"), IsEmpty());
}

TEST(GroupRules, OneOnTheOtherSideOfTheScreenIsReported) {
    const std::string view = "<Frustum left='-16' right='16' bottom='-10.2' top='10.2'/>";
    EXPECT_THAT(foundIn("wall-rays", STRAIGHT + view + "<Position x='0' y='1' z='1.7'/>",
                        "<Orientation z='180' x='0' y='0'/>" + view + "<Position x='0' y='9' z='1.7'/>"),
                testing::ElementsAre(
                    "channel Centre: it lights the screen from the other side than the other 2 channels do: check its "
                    "Position, and z of its Orientation [inside-surface]"));
}

/// The others stand 4 m away.
TEST(GroupRules, OneMuchNearerThanOthersIsReported) {
    const std::string from = "<Position x='0' y='1' z='1.7'/>";
    EXPECT_THAT(foundIn("wall-rays", from, "<Position x='0' y='3.9' z='1.7'/>"), IsEmpty());
    EXPECT_THAT(foundIn("wall-rays", from, "<Position x='0' y='4.8' z='1.7'/>"),
                testing::ElementsAre(
                    "channel Centre: its Position lies 0.2 m from the screen, those of the other channels with its "
                    "Frustum 4 m and more: check its Position [inside-surface]"));
    EXPECT_THAT(foundIn("wall-rays", from, "<Position x='0' y='4.1' z='1.7'/>"), Contains(HasSubstr("0.9 m from")));
}

TEST(GroupRules, LayoutsAgainstTheirAreasAreReported) {
    sound::Display display = sound::named("wall");
    display.text = changed(display.text, "xMin='0' xMax='2.22'", "xMin='3.780' xMax='6.0'");
    display.text = changed(display.text, "xMin='3.78' xMax='6'", "xMin='0' xMax='2.22'");
    DisplayFolder folder;
    EXPECT_THAT(reported(folder.checked(display)),
                Contains("channels: their ScreenAreas run to the right where their Layouts run to the left, so that "
                         "each shows the part of another: check the order of the Layouts, whose x runs to the right "
                         "and y upwards [layout-apart]"));
    display = sound::named("rows");
    display.text = changed(display.text, "yMin='1.125' yMax='2.5'", "yMin='0.0' yMax='1.375'");
    display.text = changed(display.text, "yMin='0' yMax='1.375'", "yMin='1.125' yMax='2.5'");
    EXPECT_THAT(reported(folder.checked(display)),
                Contains(HasSubstr("channels: their ScreenAreas run upwards where their Layouts run downwards")));
}

/// The left map of the wall, its picture on its head.
const char* const TURNED = "2\n2 2\n-1.6 -1 0.55 1 1\n1.6 -1 0 1 1\n-1.6 1 0.55 0 1\n1.6 1 0 0 1\npixels 1920 1200\n";

TEST(GroupRules, OneTurnedMapIsReported) {
    sound::Display display = sound::named("warped-wall");
    for (auto& [name, content] : display.files) {
        content = name == "left.map" ? TURNED : content;
    }
    DisplayFolder folder;
    EXPECT_THAT(reported(folder.checked(display)),
                Contains(testing::AllOf(HasSubstr("channel Left: map "),
                                        HasSubstr("left.map turns its picture by 180 degrees, that of channel Right "
                                                  "does not: check the order of its nodes; a projector that hangs "
                                                  "beside a standing one is allowed by name [mirrored-map]"))));
}

TEST(GroupRules, MapsThatAreAllTurnedAreThoseOfHangingProjectors) {
    sound::Display display = sound::named("warped-wall");
    for (auto& [name, content] : display.files) {
        content = name == "left.map" ? TURNED : content;
        content = name == "right.map" ? changed(changed(TURNED, "0.55", "1"), " 0 1\n1.6", " 0.45 1\n1.6") : content;
    }
    DisplayFolder folder;
    EXPECT_EQ(rulesOf(folder.checked(display)).count("mirrored-map"), 0U);
}

}  // namespace
