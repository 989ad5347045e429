#include "DisplayReport/still/TakenAreas.h"

#include "DisplayReport/still/StillLibrary.h"

#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;

TEST(PaperArea, OverlapsWhatLiesInItAndNotWhatTouchesIt) {
    const PaperArea area{10, 20, 30, 40};
    EXPECT_TRUE(area.overlaps(area));
    EXPECT_TRUE(area.overlaps({29, 39, 50, 60}));
    EXPECT_TRUE(area.overlaps({0, 0, 100, 100}));
    EXPECT_TRUE(area.overlaps({15, 25, 16, 26}));
    EXPECT_FALSE(area.overlaps({30, 20, 40, 40})) << "beside it";
    EXPECT_FALSE(area.overlaps({10, 40, 30, 50})) << "below it";
    EXPECT_FALSE(area.overlaps({0, 0, 9, 100}));
}

TEST(PaperArea, IsAroundALineOfAnyDirection) {
    const PaperArea area = PaperArea::around({30, 10, 1}, {20, 50, 1}, 2);
    EXPECT_EQ(area.left, 18);
    EXPECT_EQ(area.top, 8);
    EXPECT_EQ(area.right, 32);
    EXPECT_EQ(area.bottom, 52);
}

TEST(PaperArea, OfATextStandsAtItsAnchor) {
    Drawing::Text text{100, 50, "Left wall", 10, {}};
    const double width = StillLibrary::get().width(text.text, text.size);
    EXPECT_EQ(PaperArea::of(text).left, 100);
    EXPECT_NEAR(PaperArea::of(text).right, 100 + width, 1e-9);
    EXPECT_EQ(PaperArea::of(text).top, 40);
    EXPECT_GT(PaperArea::of(text).bottom, 50) << "tails of letters";
    text.anchor = Drawing::Anchor::MIDDLE;
    EXPECT_NEAR(PaperArea::of(text).left, 100 - width / 2, 1e-9);
    text.anchor = Drawing::Anchor::RIGHT;
    EXPECT_NEAR(PaperArea::of(text).right, 100, 1e-9);
}

TEST(TakenAreas, AreThoseOfTheTextsAndWhatWasAdded) {
    Drawing drawing;
    drawing.texts.push_back({100, 50, "wall", 10, {}});
    TakenAreas taken(drawing);
    EXPECT_FALSE(taken.isFree({101, 41, 102, 42}));
    EXPECT_TRUE(taken.isFree({0, 0, 10, 10}));
    taken.add({5, 5, 6, 6});
    EXPECT_FALSE(taken.isFree({0, 0, 10, 10}));
    EXPECT_TRUE(TakenAreas().isFree({0, 0, 10, 10}));
}

}  // namespace
