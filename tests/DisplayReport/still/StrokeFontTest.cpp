#include "DisplayReport/still/StrokeFont.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using namespace Veltrani::DisplayReport;

TEST(StrokeFont, EveryCharacterLooksLikeItself) {
    std::set<std::vector<StrokeFont::Stroke>> looks;
    for (char c = '!'; c <= '~'; ++c) {
        const auto strokes = StrokeFont::strokes(std::string(1, c), 6);
        EXPECT_FALSE(strokes.empty()) << c;
        EXPECT_TRUE(looks.insert(strokes).second) << c << " looks like another one";
        for (const auto& stroke : strokes) {
            for (const auto& corner : stroke) {
                EXPECT_GE(corner[0], 0) << c;
                EXPECT_LE(corner[0], StrokeFont::width(std::string(1, c), 6)) << c;
                EXPECT_GE(corner[1], -2) << c;
                EXPECT_LE(corner[1], 7) << c;
            }
        }
    }
    EXPECT_EQ(looks.size(), 94U);
}

TEST(StrokeFont, ACapitalIsAsHighAsAskedFor) {
    double highest = 0;
    for (const auto& stroke : StrokeFont::strokes("E", 12)) {
        for (const auto& corner : stroke) {
            highest = std::max(highest, corner[1]);
        }
    }
    EXPECT_EQ(highest, 12);
}

TEST(StrokeFont, OtherCharactersAreOneBoxEach) {
    EXPECT_EQ(StrokeFont::strokes("\xC3\xA4", 6).size(), 1U);
    EXPECT_EQ(StrokeFont::strokes("\xE2\x82\xAC\xC3\xA4", 6).size(), 2U);
    EXPECT_EQ(StrokeFont::strokes("\n", 6).size(), 1U);
    EXPECT_EQ(StrokeFont::width("", 6), 0);
}

}  // namespace
