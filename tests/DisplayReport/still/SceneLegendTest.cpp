#include "DisplayReport/still/SceneLegend.h"

#include "Scenes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;

std::vector<std::string> textsOf(const DisplayScene& scene, int width = 1600, int height = 1000) {
    Drawing drawing;
    SceneLegend(width, height).addTo(drawing, scene);
    std::vector<std::string> texts;
    for (const Drawing::Text& text : drawing.texts) {
        texts.push_back(text.text);
    }
    return texts;
}

TEST(SceneLegend, NamesTheDisplayAndItsChannelsWithTheirCounts) {
    DisplayScene scene = scenes::wall();
    scene.channels[0].targets.gridMissed = 3;
    EXPECT_THAT(textsOf(scene), IsSupersetOf({"A <wall> & more", "Left", "4 targets, 3 missed"}));
}

TEST(SceneLegend, AChannelWithoutAGridHasItsOutlineCounted) {
    DisplayScene scene = scenes::wall();
    scene.channels[0].targets.grid.clear();
    scene.channels[0].placed = 0;
    EXPECT_THAT(textsOf(scene), Contains("outline alone, 4 samples"));
}

TEST(SceneLegend, AFaultStandsInPlaceOfTheCounts) {
    DisplayScene scene = scenes::wall();
    scene.channels[0].targets.fault = "no screen";
    EXPECT_THAT(textsOf(scene), Contains("no screen"));
    EXPECT_THAT(textsOf(scene), Not(Contains(StartsWith("4 targets"))));
}

TEST(SceneLegend, TheDiscHasTheColourOfTheChannel) {
    Drawing drawing;
    SceneLegend(1600, 1000).addTo(drawing, scenes::wall());
    ASSERT_EQ(drawing.discsOnTop.size(), 1U);
    EXPECT_EQ(drawing.discsOnTop[0].colour, channelColour(0));
    EXPECT_GT(drawing.discsOnTop[0].centre[0], SceneLegend(1600, 1000).sceneWidth());
}

TEST(SceneLegend, ChannelsThatDoNotFitAreCounted) {
    DisplayScene scene = scenes::wall();
    scene.channels.assign(200, scene.channels[0]);
    const auto texts = textsOf(scene, 800, 500);
    const auto listed = static_cast<std::size_t>(std::count(texts.begin(), texts.end(), "Left"));
    EXPECT_GT(listed, 5U);
    EXPECT_THAT(texts, Contains("and " + std::to_string(200 - listed) + " more channels"));
}

TEST(SceneLegend, EveryNoteStandsInTheOrderOfTheScene) {
    DisplayScene scene = scenes::wall();
    scene.notes = {"first", "second"};
    const auto texts = textsOf(scene);
    const auto first = std::find(texts.begin(), texts.end(), "first");
    ASSERT_NE(first, texts.end());
    EXPECT_EQ(*(first + 1), "second");
}

TEST(SceneLegend, NotesThatDoNotFitAreCounted) {
    DisplayScene scene = scenes::wall();
    scene.notes = {"1", "2", "3", "4", "5", "6"};
    const auto texts = textsOf(scene);
    EXPECT_THAT(texts, IsSupersetOf({"1", "2", "3", "and 3 further notes"}));
    EXPECT_THAT(texts, Not(Contains("4")));
}

TEST(SceneLegend, LongNamesAreCutAndControlCharactersNeverDrawn) {
    DisplayScene scene = scenes::wall();
    scene.channels[0].targets.name = "line\nbreak " + std::string(5000, 'W');
    const auto texts = textsOf(scene);
    const auto name = std::find_if(texts.begin(), texts.end(), [](const auto& text) { return text[0] == 'l'; });
    ASSERT_NE(name, texts.end());
    EXPECT_LT(name->size(), 60U);
    EXPECT_TRUE(name->ends_with("...")) << *name;
    EXPECT_EQ(name->find('\n'), std::string::npos);
}

TEST(SceneLegend, ASmallPictureKeepsLettersThatCanBeRead) {
    EXPECT_EQ(SceneLegend(300, 200).letterSize(), 6);
    EXPECT_GT(SceneLegend(3200, 2000).letterSize(), 20);
    EXPECT_GT(SceneLegend(300, 200).sceneHeight(), 100);
}

}  // namespace
