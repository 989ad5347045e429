#include "DisplayReport/still/MarkPainter.h"

#include "DisplayReport/still/ScenePainter.h"
#include "DisplayReport/still/StillLibrary.h"
#include "Scenes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace Veltrani::DisplayReport;
using P3 = Point<double, 3>;

constexpr Colour VIOLET{150, 0, 200};

/// The wall, seen from the front, with marks.
Drawing drawn(const std::vector<SceneMark>& marks) {
    DisplayScene scene = scenes::wall();
    scene.marks = marks;
    return ScenePainter("front", 1200, 750).paint(scene);
}

std::vector<Drawing::Line> violetLines(const Drawing& drawing) {
    std::vector<Drawing::Line> lines;
    std::copy_if(drawing.lines.begin(), drawing.lines.end(), std::back_inserter(lines),
                 [](const Drawing::Line& line) { return line.colour == VIOLET; });
    return lines;
}

std::vector<Drawing::Text> violetTexts(const Drawing& drawing) {
    std::vector<Drawing::Text> texts;
    std::copy_if(drawing.texts.begin(), drawing.texts.end(), std::back_inserter(texts),
                 [](const Drawing::Text& text) { return text.colour == VIOLET; });
    return texts;
}

TEST(MarkPainter, ALineIsDrawnOverTheScreenAndItsHeadPointsOnwards) {
    const Drawing drawing = drawn({{{P3{-1, 6, 0}, P3{1, 6, 0}}, "", P3{1, 6, 0}, VIOLET, true}});
    const auto lines = violetLines(drawing);
    ASSERT_EQ(lines.size(), 3U) << "the line and both sides of its head";
    for (const Drawing::Triangle& triangle : drawing.triangles) {
        EXPECT_GT(lines[0].from[2], triangle.corners[0][2]) << "behind the wall, and drawn nevertheless";
    }
    EXPECT_GT(lines[0].to[0], lines[0].from[0]);
    for (const std::size_t side : {1U, 2U}) {
        EXPECT_DOUBLE_EQ(lines[side].from[0], lines[0].to[0]);
        EXPECT_LT(lines[side].to[0], lines[0].to[0]) << "back from the tip";
    }
    EXPECT_LT((lines[1].to[1] - lines[0].to[1]) * (lines[2].to[1] - lines[0].to[1]), 0) << "one above, one below";
}

TEST(MarkPainter, ALineThatIsSeenEndOnHasNoHead) {
    const P3 away{0, 5, 0};
    EXPECT_LE(violetLines(drawn({{{away, away}, "", away, VIOLET, true}})).size(), 1U);
}

TEST(MarkPainter, StrokesDiffer) {
    const auto widthOf = [](SceneMark::Stroke stroke) {
        const P3 from{-1, 5, 0};
        const P3 to{1, 5, 0};
        const Drawing with = drawn({{{from, to}, "", to, VIOLET, false, stroke}});
        return with.lines.back();
    };
    EXPECT_GT(widthOf(SceneMark::Stroke::THICK).width, widthOf(SceneMark::Stroke::THIN).width);
    EXPECT_EQ(widthOf(SceneMark::Stroke::THIN).colour, VIOLET);
    EXPECT_NE(widthOf(SceneMark::Stroke::PALE).colour, VIOLET);
}

// Twenty words that belong to one place.
TEST(MarkPainter, WordsCoverNoOthers) {
    std::vector<SceneMark> marks;
    const P3 place{0, 5, 0.5};
    for (int i = 0; i < 20; ++i) {
        marks.push_back({{P3{0, 5, 0}, place}, "words " + std::to_string(i), place, VIOLET});
    }
    const auto texts = violetTexts(drawn(marks));
    ASSERT_EQ(texts.size(), marks.size());
    for (std::size_t a = 0; a < texts.size(); ++a) {
        for (std::size_t b = a + 1; b < texts.size(); ++b) {
            const double room = (StillLibrary::get().width(texts[a].text, texts[a].size) +
                                 StillLibrary::get().width(texts[b].text, texts[b].size)) /
                                2;
            EXPECT_TRUE(std::abs(texts[a].right - texts[b].right) >= room ||
                        std::abs(texts[a].down - texts[b].down) >= texts[a].size)
                << texts[a].text << " and " << texts[b].text;
        }
    }
}

TEST(MarkPainter, WordsStandOnPaperWithinThePicture) {
    const P3 corner{2, 5, 1};
    const Drawing drawing = drawn({{{P3(), corner}, "a long text beside the last corner", corner, VIOLET}});
    const auto texts = violetTexts(drawing);
    ASSERT_EQ(texts.size(), 1U);
    const double half = StillLibrary::get().width(texts[0].text, texts[0].size) / 2;
    EXPECT_GE(texts[0].right - half, 0);
    EXPECT_LE(texts[0].right + half, 0.78 * 1200) << "the list of channels begins there";
    const bool hasPaper = std::any_of(drawing.boxes.begin(), drawing.boxes.end(), [&](const Drawing::Box& box) {
        return box.left <= texts[0].right - half && box.left + box.width >= texts[0].right + half &&
               box.top <= texts[0].down - texts[0].size && box.top + box.height >= texts[0].down;
    });
    EXPECT_TRUE(hasPaper);
}

TEST(MarkPainter, SingleTargetsAreLeftOut) {
    const P3 place{0, 5, 0};
    EXPECT_EQ(drawn({}).discs.size(), drawn({{{P3(), place}, "", place, VIOLET}}).discs.size() + 4);
}

}  // namespace
