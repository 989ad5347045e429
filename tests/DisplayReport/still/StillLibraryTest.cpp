#include "DisplayReport/still/StillLibrary.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Veltrani::DisplayReport::StillLibrary;

double width(const std::string& text, double size = 10) {
    return StillLibrary::get().width(text, size);
}

TEST(StillLibrary, WidthsGrowWithTheTextAndInProportionToItsSize) {
    EXPECT_EQ(width(""), 0);
    EXPECT_GT(width("i"), 0);
    EXPECT_GT(width("W"), width("i"));
    EXPECT_NEAR(width("WW"), 2 * width("W"), 0.01);
    EXPECT_NEAR(width("Left wall", 37), 3.7 * width("Left wall"), 0.05);
    EXPECT_GT(width("壁"), 5) << "as wide as high, nearly";
}

TEST(StillLibrary, WhatFitsStaysAsItIs) {
    EXPECT_EQ(StillLibrary::get().fitting("Left", 10, width("Left") + 0.01), "Left");
    EXPECT_EQ(StillLibrary::get().fitting("", 10, 0), "");
}

TEST(StillLibrary, WhatDoesNotFitIsTheLongestBeginningThatDoes) {
    const std::string name = "a wall of many letters";
    for (const double room : {40.0, 75.0, 111.0}) {
        const std::string cut = StillLibrary::get().fitting(name, 10, room);
        ASSERT_TRUE(cut.ends_with("...")) << cut;
        const std::string kept = cut.substr(0, cut.size() - 3);
        EXPECT_TRUE(name.starts_with(kept));
        EXPECT_LE(width(cut), room);
        EXPECT_GT(width(name.substr(0, kept.size() + 1) + "..."), room) << "one letter more";
    }
    EXPECT_EQ(StillLibrary::get().fitting(name, 10, 0), "...");
}

TEST(StillLibrary, NeverCutsInsideACharacter) {
    // An e with an accent of its own, in three bytes.
    const std::string letter = "e\xCC\x81";
    std::string name;
    for (int i = 0; i < 20; ++i) {
        name += letter;
    }
    for (double room = 20; room < 80; room += 3) {
        const std::string cut = StillLibrary::get().fitting(name, 10, room);
        EXPECT_EQ((cut.size() - 3) % letter.size(), 0U) << room;
    }
}

}  // namespace
