// Names of channels against the directions in which the eye sees their pictures.
#include "CheckedDisplays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

/// The findings of the rule in a dome seen from a seat, whose channels look to the left, ahead, to the right and up.
std::vector<std::string> foundInDome(const std::array<const char*, 4>& names) {
    sound::Display display = sound::named("seated-dome");
    constexpr std::array OLD{"Left", "Centre", "Right", "Top"};
    for (std::size_t i = 0; i < OLD.size(); ++i) {
        display.text = changed(display.text, "<Name>" + std::string(OLD.at(i)) + "</Name>",
                               "<Name>[" + std::string(names.at(i)) + "]</Name>");
    }
    display.text = changed(display.text, "<Name>[", "<Name>");
    display.text = changed(display.text, "]</Name>", "</Name>");
    DisplayFolder folder;
    std::vector<std::string> found;
    for (const std::string& text : reported(folder.checked(display))) {
        if (text.find("[name-against-place]") != std::string::npos) {
            found.push_back(text);
        }
    }
    return found;
}

TEST(NamedSides, NamesThatFitAreLeftAlone) {
    for (const std::array<const char*, 4>& names : {std::array{"Left", "Centre", "Right", "Top"},
                                                    {"Far left", "Left", "Right", "Top right"},
                                                    {"Links", "Mitte", "Rechts", "Oben"},
                                                    {"L", "C", "R", "T"},
                                                    {"Port", "Ahead", "Starboard", "Above"},
                                                    {"Left wall", "Left window", "Centre right", "Top"},
                                                    {"P1", "P2", "P3", "P4"},
                                                    {"Left", "Left", "Right", "Left top"},
                                                    {"WallLeft", "WallCentre", "WallRight", "WallTop"},
                                                    {"Outer left", "Centre left", "Right", "Right, upper"}}) {
        EXPECT_THAT(foundInDome(names), IsEmpty()) << names[0] << ", " << names[1];
    }
}

TEST(NamedSides, WordsThatMeanNoSideOfThePictureAreNotJudged) {
    for (const std::array<const char*, 4>& names :
         {std::array{"Stage right", "Centre", "Stage left", "Top"},
          {"Right eye", "Both", "Left eye", "Sky"},
          {"P1 right rack", "P2", "P3 left rack", "P4"},
          {"Rear R", "R 2", "R 1", "R 3"},
          {"Port 3", "Port 2", "Port 1", "Port 4"},
          {"Right of left", "Left of right", "Left and right", "Top and bottom"},
          {"Bright", "Wright", "Leftover", "Stop"}}) {
        EXPECT_THAT(foundInDome(names), IsEmpty()) << names[0] << ", " << names[1];
    }
}

TEST(NamedSides, ALoneNameOnTheOtherSideIsReported) {
    EXPECT_THAT(foundInDome({"A", "Centre", "Left", "Top"}),
                Contains("channel Left: its picture lies 55 degrees to the right of the middle of all pictures, as "
                         "the eye point sees them: exchange the names, or check the sign of Orientation z "
                         "[name-against-place]"));
    EXPECT_THAT(foundInDome({"Front right", "Centre", "Side", "Top"}),
                Contains(HasSubstr("channel Front right: its picture lies 55 degrees to the left of the middle")));
    EXPECT_THAT(foundInDome({"A", "B", "C", "Bottom"}),
                Contains(HasSubstr("channel Bottom: its picture lies 32 degrees above the middle of all pictures, as "
                                   "the eye point sees them: exchange the names, or check the sign of Orientation x")));
    EXPECT_THAT(foundInDome({"A", "Links", "B", "C"}), IsEmpty()) << "ahead is no side";
}

/// The part of a wall may lie on one side of it and still on the other side of the room.
TEST(NamedSides, ALoneNameOfAWallAsideIsLeftAlone) {
    sound::Display display = sound::named("cave-wall");
    display.text = changed(display.text, "Left wall front", "Left wall");
    display.text = changed(display.text, "Left wall rear", "Rear");
    DisplayFolder folder;
    EXPECT_THAT(reported(folder.checked(display)), testing::Not(Contains(HasSubstr("name-against-place"))));
}

TEST(NamedSides, NamesOutOfOrderAreReported) {
    EXPECT_THAT(foundInDome({"Centre", "Left", "Right", "Top"}),
                testing::ElementsAre(
                    "channel Left: its picture lies 55 degrees to the right of the picture of channel Centre, as the "
                    "eye point sees them: exchange the names, or check the sign of Orientation z "
                    "[name-against-place]"));
    EXPECT_THAT(foundInDome({"Left", "Far left", "Right", "Top"}),
                Contains(HasSubstr("channel Far left: its picture lies 55 degrees to the right of the picture of "
                                   "channel Left")));
    EXPECT_THAT(foundInDome({"Left", "Right", "Centre right", "Far right"}),
                Contains(HasSubstr("channel Centre right: its picture lies 55 degrees to the right of the picture of "
                                   "channel Right")));
    EXPECT_THAT(foundInDome({"A", "Top", "B", "Centre"}), Contains(HasSubstr("channel Centre: its picture lies")));
}

TEST(NamedSides, WordsOfOtherLanguagesAndShortOnesAreReported) {
    EXPECT_THAT(foundInDome({"Rechts", "Mitte", "Links", "Oben"}),
                Contains(HasSubstr("channel Rechts: its picture lies 55 degrees to the left of the middle")));
    EXPECT_THAT(foundInDome({"R", "C", "L", "T"}), Contains(HasSubstr("channel R: its picture lies 55 degrees")));
    EXPECT_THAT(foundInDome({"Starboard", "Ahead", "Port", "Above"}),
                Contains(HasSubstr("channel Port: its picture lies 55 degrees to the right")));
    EXPECT_THAT(foundInDome({"WallRight", "WallCentre", "WallLeft", "WallTop"}),
                Contains(HasSubstr("channel WallRight: its picture lies 55 degrees to the left")));
}

/// By hand: of the directions to the left, ahead, to the right and up, the middle lies 5.6 and 5.8 degrees to the
/// right.
TEST(NamedSides, ALoneNameNeedsTenDegrees) {
    for (const auto& [z, isFound] : {std::pair("15.4", false), std::pair("16", true)}) {
        sound::Display display = sound::named("seated-dome");
        display.text = changed(display.text, "<Name>Left</Name>", "<Name>A</Name>");
        display.text = changed(display.text, "<Name>Right</Name>", "<Name>B</Name>");
        display.text = changed(display.text, "<Name>Centre</Name>", "<Name>Left</Name>");
        display.text =
            changed(display.text, "<Orientation z='0' x='0'", "<Orientation z='" + std::string(z) + "' x='0'");
        DisplayFolder folder;
        EXPECT_EQ(rulesOf(folder.checked(display)).count("name-against-place"), isFound ? 1U : 0U) << z;
    }
}

/// By hand: the middle of the four directions lies 22.5 and 23.0 degrees to the right.
TEST(NamedSides, TwoSidesAreJudgedFromFiveDegreesBesideTheMiddle) {
    for (const auto& [z, isFound] : {std::pair("27", false), std::pair("28.5", true)}) {
        sound::Display display = sound::named("seated-dome");
        display.text = changed(display.text, "<Name>Centre</Name>", "<Name>A</Name>");
        display.text = changed(display.text, "z='-55'", "z='" + std::string(z) + "'");
        DisplayFolder folder;
        EXPECT_EQ(rulesOf(folder.checked(display)).count("name-against-place"), isFound ? 1U : 0U) << z;
    }
}

/// Eight bays, 45 degrees apart, two of which look where these others do.
std::vector<std::string> foundInRing(const std::string& first, const std::string& second) {
    sound::Display display = sound::named("closed-cylinder");
    display.text = changed(display.text, "z='" + first + ".000000'", "z='x'");
    display.text = changed(display.text, "z='" + second + ".000000'", "z='" + first + ".000000'");
    display.text = changed(display.text, "z='x'", "z='" + second + ".000000'");
    DisplayFolder folder;
    return reported(folder.checked(display));
}

TEST(NamedSides, NumbersOutOfOrderAreReported) {
    EXPECT_THAT(foundInRing("-90", "-45"),
                Contains("channel Bay 4: its picture lies where that of channel Bay 3 belongs, as the numbers of all "
                         "others grow to one side: exchange the names, or the Orientations or areas of the two "
                         "[name-against-place]"));
    EXPECT_THAT(foundInRing("-180", "-135"), Contains(HasSubstr("channel Bay 2: its picture lies where that of")));
    EXPECT_THAT(foundInRing("90", "135"), Contains(HasSubstr("channel Bay 8: its picture lies where that of")));
}

TEST(NamedSides, NumbersWithoutAnOrderAreLeftAlone) {
    // Where more are exchanged, or names differ by more than a number, the numbers follow another plan.
    EXPECT_THAT(foundInRing("-90", "45"), testing::Not(Contains(HasSubstr("[name-against-place]"))));
    sound::Display display = sound::named("closed-cylinder");
    display.text = changed(display.text, "<Name>Bay 8<", "<Name>Door 8<");
    display.text = changed(display.text, "<Name>Bay 3<", "<Name>Bay x<");
    display.text = changed(display.text, "<Name>Bay 4<", "<Name>Bay 3<");
    DisplayFolder folder;
    EXPECT_THAT(reported(folder.checked(display)), testing::Not(Contains(HasSubstr("[name-against-place]"))));
}

}  // namespace
