#include "DisplayReport/check/NameWords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;

double asideOf(const std::string& name, const std::vector<std::string>& names = {}) {
    const NamedPlace place = placeAsideOf(NameWords(names), name);
    EXPECT_TRUE(place.isNamed) << name;
    return place.rank;
}

double aboveOf(const std::string& name) {
    const NamedPlace place = placeAboveOf(NameWords({}), name);
    EXPECT_TRUE(place.isNamed) << name;
    return place.rank;
}

TEST(NameWords, ASideHasARank) {
    EXPECT_EQ(asideOf("Far left"), -2);
    EXPECT_EQ(asideOf("LEFT 3"), -1);
    EXPECT_EQ(asideOf("Left of centre"), -0.5);
    EXPECT_EQ(asideOf("Mitte"), 0);
    EXPECT_EQ(asideOf("centre-right"), 0.5);
    EXPECT_EQ(asideOf("wallRight"), 1);
    EXPECT_EQ(asideOf("Outer rechts"), 2);
    EXPECT_EQ(aboveOf("Top left"), 1);
    EXPECT_EQ(aboveOf("Centre"), 0);
    EXPECT_EQ(aboveOf("Unten"), -1);
}

TEST(NameWords, ANameWithoutOneSideHasNoPlace) {
    const NameWords words({});
    for (const char* name : {"", "P1", "Bright", "Left and right", "Stage left", "Right eye", "L", "Port 2", "Top",
                             "Far", "Left right centre"}) {
        EXPECT_FALSE(placeAsideOf(words, name).isNamed) << name;
    }
    for (const char* name : {"", "Left", "Centre left", "Top and bottom", "Stop"}) {
        EXPECT_FALSE(placeAboveOf(words, name).isNamed) << name;
    }
}

TEST(NameWords, ShortWordsCountWhereBothAreUsed) {
    EXPECT_EQ(asideOf("L 1", {"L 1", "R 1"}), -1);
    EXPECT_EQ(asideOf("Starboard", {"Port", "Starboard"}), 1);
    EXPECT_FALSE(placeAsideOf(NameWords({"R 1", "R 2"}), "R 1").isNamed);
    EXPECT_FALSE(placeAsideOf(NameWords({"Port 1", "Port 2"}), "Port 1").isNamed);
}

TEST(NameWords, WhatIsNotOfAnAxisIsTheRestOfTheName) {
    const NameWords words({});
    EXPECT_THAT(placeAsideOf(words, "Upper far left 2").rest, ElementsAre("upper"));
    EXPECT_THAT(placeAsideOf(words, "WallLeft, inner").rest, ElementsAre("wall", "inner"));
    EXPECT_THAT(placeAboveOf(words, "Upper left").rest, ElementsAre("left"));
}

}  // namespace
