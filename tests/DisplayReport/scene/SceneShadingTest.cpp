#include "DisplayReport/scene/SceneShading.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;

/// Ten square metres: four dark, three of the first channel, two of both, one of three channels.
SceneShading shading() {
    SceneShading shading;
    shading.regions = {{{}, 4, {}}, {{0}, 3, {}}, {{0, 1}, 2, {}}, {{0, 1, 2}, 0.9996, {}}, {{0, 1, 2, 3}, 0.0004, {}}};
    shading.area = 10;
    return shading;
}

std::vector<std::string> textsOf(const std::vector<ShadeEntry>& legend) {
    std::vector<std::string> texts;
    for (const ShadeEntry& entry : legend) {
        texts.push_back(entry.text);
    }
    return texts;
}

TEST(SceneShading, PartsAreThoseOfTheAreas) {
    EXPECT_NEAR(shading().partLitBy(0, false), 0.4, 1e-12);
    EXPECT_NEAR(shading().partLitBy(1, true), 0.6, 1e-12);
    EXPECT_NEAR(shading().partLitByChannel(1), 0.3, 1e-12);
    EXPECT_EQ(SceneShading().partLitBy(0, true), 0.0);
}

TEST(SceneShading, CountsHaveFourColoursAndChannelsTheirOwnInTurn) {
    const SceneShading shaded = shading();
    EXPECT_THAT(coloursOf(shaded.regions[3], ShadeBy::COUNT), ElementsAre(countColour(3)));
    EXPECT_THAT(coloursOf(shaded.regions[4], ShadeBy::COUNT), ElementsAre(countColour(3)));
    EXPECT_THAT(coloursOf(shaded.regions[2], ShadeBy::CHANNEL), ElementsAre(channelColour(0), channelColour(1)));
    EXPECT_THAT(coloursOf(shaded.regions[0], ShadeBy::CHANNEL), ElementsAre(countColour(0)));
}

TEST(SceneShading, TheLegendHoldsWhatOccursWithItsPart) {
    EXPECT_THAT(textsOf(legendOf(shading(), ShadeBy::COUNT, {})),
                ElementsAre("no projector, 40 % of the screen", "1 projector, 30 % of the screen",
                            "2 projectors, 20 % of the screen", "3 and more projectors, 10 % of the screen"));
    EXPECT_THAT(textsOf(legendOf(shading(), ShadeBy::CHANNEL, {"A", "B", "C", "D", "E"})),
                ElementsAre("no projector, 40 % of the screen", "A, 60 % of the screen", "B, 30 % of the screen",
                            "C, 10 % of the screen", "D, below 0.01 % of the screen"));
}

TEST(SceneShading, EveryLineOfALegendHasAsManyDecimals) {
    SceneShading shading;
    shading.regions = {{{}, 0.15, {}}, {{0}, 31.85, {}}, {{1}, 68, {}}};
    shading.area = 100;
    EXPECT_THAT(textsOf(legendOf(shading, ShadeBy::COUNT, {})),
                ElementsAre("no projector, 0.15 % of the screen", "1 projector, 99.85 % of the screen"));
    EXPECT_THAT(
        textsOf(legendOf(shading, ShadeBy::CHANNEL, {"A", "B"})),
        ElementsAre("no projector, 0.15 % of the screen", "A, 31.85 % of the screen", "B, 68.00 % of the screen"));
    shading.regions = {{{}, 12.5, {}}, {{0}, 62.5, {}}, {{1}, 25, {}}};
    EXPECT_THAT(
        textsOf(legendOf(shading, ShadeBy::CHANNEL, {"A", "B"})),
        ElementsAre("no projector, 12.5 % of the screen", "A, 62.5 % of the screen", "B, 25.0 % of the screen"));
}

}  // namespace
