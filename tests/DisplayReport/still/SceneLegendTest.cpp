#include "DisplayReport/still/SceneLegend.h"

#include "DisplayReport/still/StillLibrary.h"
#include "Scenes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;

std::vector<std::string> textsOf(const DisplayScene& scene, int width = 1600, int height = 1000) {
    Drawing drawing;
    SceneLegend(width, height, scene).addTo(drawing);
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

TEST(SceneLegend, TheDiscHasTheColourOfTheChannelAndItsNumber) {
    Drawing drawing;
    const DisplayScene scene = scenes::wall();
    SceneLegend(1600, 1000, scene).addTo(drawing);
    ASSERT_EQ(drawing.discsOnTop.size(), 1U);
    EXPECT_EQ(drawing.discsOnTop[0].colour, channelColour(0));
    EXPECT_GT(drawing.discsOnTop[0].centre[0], SceneLegend(1600, 1000, scene).sceneWidth());
    const auto number = std::find_if(drawing.texts.begin(), drawing.texts.end(),
                                     [](const Drawing::Text& text) { return text.text == "1"; });
    ASSERT_NE(number, drawing.texts.end());
    EXPECT_EQ(number->right, drawing.discsOnTop[0].centre[0]);
    EXPECT_LT(std::abs(number->down - number->size / 2 - drawing.discsOnTop[0].centre[1]), 0.1);
}

/// A scene of many channels, each with a name of its own.
DisplayScene manyChannels(std::size_t count) {
    DisplayScene scene = scenes::wall();
    scene.channels.assign(count, scene.channels[0]);
    for (std::size_t i = 0; i < count; ++i) {
        scene.channels[i].targets.name = "N" + std::to_string(i + 1);
        scene.channels[i].colour = channelColour(i);
    }
    return scene;
}

TEST(SceneLegend, HoldsAllChannelsHoweverManyThereAre) {
    for (const std::size_t count : {2U, 17U, 24U, 60U, 200U}) {
        const DisplayScene scene = manyChannels(count);
        for (const auto& [width, height] : {std::pair(1600, 1000), std::pair(800, 500)}) {
            Drawing drawing;
            const SceneLegend legend(width, height, scene);
            legend.addTo(drawing);
            std::set<std::pair<double, double>> places;
            for (std::size_t i = 0; i < count; ++i) {
                const auto name = std::find_if(drawing.texts.begin(), drawing.texts.end(), [&](const auto& text) {
                    return text.text == scene.channels[i].targets.name;
                });
                ASSERT_NE(name, drawing.texts.end()) << count << ": " << i;
                EXPECT_TRUE(places.emplace(name->right, name->down).second) << "two at one place";
                EXPECT_GE(name->size, 6);
                EXPECT_GT(name->right, legend.sceneWidth());
                EXPECT_LT(name->right, width);
                EXPECT_LT(name->down, height);
            }
            EXPECT_GE(legend.sceneWidth(), 0.5 * width - 1);
            EXPECT_EQ(drawing.discsOnTop.size(), count);
        }
    }
}

TEST(SceneLegend, TwoDozenChannelsHaveTheirCountsInTwoColumns) {
    const DisplayScene scene = manyChannels(24);
    Drawing drawing;
    const SceneLegend legend(1600, 1000, scene);
    legend.addTo(drawing);
    std::set<double> columns;
    std::size_t counts = 0;
    for (const Drawing::Text& text : drawing.texts) {
        if (text.text == "4 targets, 0 missed") {
            ++counts;
            columns.insert(text.right);
            EXPECT_LT(text.right + StillLibrary::get().width(text.text, text.size), 1600);
        }
    }
    EXPECT_EQ(counts, 24U) << "none is cut";
    EXPECT_EQ(columns.size(), 2U);
    EXPECT_GE(legend.sceneWidth(), 0.6 * 1600) << "the scene keeps its room";
}

TEST(SceneLegend, ARemarkOnTheTargetsStandsBelowTheirCountsInWholeWords) {
    DisplayScene scene = manyChannels(3);
    const std::string remark = "its projection model offers no grid: its targets were placed through its layout map";
    scene.channels[1].targets.remark = remark;
    Drawing drawing;
    SceneLegend(1600, 1000, scene).addTo(drawing);
    const auto below = [&](const std::string& name) {
        return std::find_if(drawing.texts.begin(), drawing.texts.end(),
                            [&](const auto& text) { return text.text == name; });
    };
    const auto name = below("N2");
    ASSERT_NE(name, drawing.texts.end());
    const auto next = below("N3");
    std::string read;
    for (auto line = name + 2; line != drawing.texts.end() && line->right == name->right && line->text != "N3";
         ++line) {
        EXPECT_GT(line->down, (line - 1)->down);
        EXPECT_LT(line->down, next->down);
        EXPECT_LE(line->right + StillLibrary::get().width(line->text, line->size), 1600);
        read += (read.empty() ? "" : " ") + line->text;
    }
    EXPECT_EQ(read, remark);
}

TEST(SceneLegend, LongRemarksOfManyChannelsStayInThePicture) {
    for (std::size_t count = 1; count <= 40; ++count) {
        DisplayScene scene = manyChannels(count);
        for (SceneChannel& channel : scene.channels) {
            channel.targets.remark =
                "its projection model offers no grid: its targets were placed through its layout map";
        }
        Drawing drawing;
        const SceneLegend legend(1600, 1000, scene);
        legend.addTo(drawing);
        for (const Drawing::Text& text : drawing.texts) {
            if (text.right > legend.sceneWidth()) {
                EXPECT_LT(text.down, 1000) << count << ": " << text.text;
            }
        }
    }
}

TEST(SceneLegend, ChannelsThatHaveNoRoomAtAllAreCounted) {
    const DisplayScene scene = manyChannels(2000);
    const auto texts = textsOf(scene, 800, 500);
    const auto listed = static_cast<std::size_t>(
        std::count_if(texts.begin(), texts.end(), [](const std::string& text) { return text.starts_with("N"); }));
    EXPECT_GT(listed, 100U);
    EXPECT_THAT(texts, Contains("and " + std::to_string(2000 - listed) + " more channels"));
}

TEST(SceneLegend, NumbersAreReadOnEveryColour) {
    for (std::size_t i = 0; i < 16; ++i) {
        const Colour paper = channelColour(i);
        const Colour ink = inkOn(paper);
        EXPECT_GT(std::abs(paper.red + paper.green + paper.blue - ink.red - ink.green - ink.blue), 250) << i;
    }
}

TEST(SceneLegend, StatesWhatTheShadesMeanBelowTheChannels) {
    DisplayScene scene = manyChannels(40);
    EXPECT_THAT(textsOf(scene), Not(Contains("lit by")));
    SceneShading shading;
    shading.regions = {{{}, 1, {}}, {{0}, 2, {}}, {{0, 1, 2, 3}, 5, {}}};
    shading.area = 8;
    scene.surfaces[0].shading = shading;
    Drawing drawing;
    SceneLegend(1600, 1000, scene).addTo(drawing);
    const auto textAt = [&](const std::string& text) {
        return std::find_if(drawing.texts.begin(), drawing.texts.end(), [&](const auto& t) { return t.text == text; });
    };
    double lowest = 0;
    for (const SceneChannel& channel : scene.channels) {
        lowest = std::max(lowest, textAt(channel.targets.name)->down);
    }
    for (const auto& [text, colour] : {std::pair("no projector, 12.5 % of the screen", countColour(0)),
                                       std::pair("1 projector, 25.0 % of the screen", countColour(1)),
                                       std::pair("3 and more projectors, 62.5 % of the screen", countColour(3))}) {
        const auto entry = textAt(text);
        ASSERT_NE(entry, drawing.texts.end()) << text;
        EXPECT_GT(entry->down - entry->size, lowest) << "below the channels";
        EXPECT_LT(entry->down, 1000);
        EXPECT_TRUE(std::any_of(drawing.boxes.begin(), drawing.boxes.end(), [&, &shade = colour](const auto& box) {
            return box.colour == softShade(shade) && box.top < entry->down && box.top + box.height > entry->down;
        })) << text;
    }
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
    const DisplayScene scene = scenes::wall();
    EXPECT_EQ(SceneLegend(300, 200, scene).letterSize(), 6);
    EXPECT_GT(SceneLegend(3200, 2000, scene).letterSize(), 20);
    EXPECT_GT(SceneLegend(300, 200, scene).sceneHeight(), 100);
}

}  // namespace
