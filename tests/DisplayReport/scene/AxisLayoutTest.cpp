#include "DisplayReport/scene/SceneAxes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace {

using namespace Veltrani::DisplayReport;
using Place = AxisLayout::Place;
using Box = AxisLayout::Box;

struct Rectangle {
    Place middle;
    Box box;
};

bool overlap(const Rectangle& a, const Rectangle& b) {
    return std::abs(a.middle[0] - b.middle[0]) < (a.box[0] + b.box[0]) / 2 &&
           std::abs(a.middle[1] - b.middle[1]) < (a.box[1] + b.box[1]) / 2;
}

TEST(AxisLayout, NumbersOfALyingAxisStandBelowIt) {
    const AxisLayout layout({100, 300}, {500, 300}, {100, 310}, 8);
    const Place place = layout.number({200, 300}, {30, 10});
    EXPECT_EQ(place, (Place{200, 313}));
    EXPECT_EQ(layout.title({80, 10}, {30, 10}), (Place{300, 331}));
}

TEST(AxisLayout, NumbersOfAnUprightAxisStandOnTheSideThatIsAskedFor) {
    const AxisLayout left({100, 300}, {100, 50}, {90, 300}, 8);
    EXPECT_EQ(left.number({100, 200}, {30, 10}), (Place{77, 200}));
    EXPECT_EQ(left.titleAtEnd({80, 10}, {30, 10}), (Place{100, 32}));
    const AxisLayout right({100, 300}, {100, 50}, {110, 300}, 8);
    EXPECT_EQ(right.number({100, 200}, {30, 10}), (Place{123, 200}));
}

// Every direction of an axis, both sides, short and long numbers: no text covers another, nor the axis.
TEST(AxisLayout, WhereverTheAxisPointsNoTextCoversAnother) {
    const Box title{90, 12};
    int layouts = 0;
    for (int step = 0; step < 72; ++step) {
        for (const double side : {-1.0, 1.0}) {
            for (const Box& number : {Box{9, 12}, Box{75, 12}}) {
                const double angle = 0.01 + step * std::numbers::pi / 36;
                const Place along{std::cos(angle), std::sin(angle)};
                const Place start{400, 400};
                const Place end = start + along * 380;
                const Place beside = start + Place{-along[1], along[0]} * side;
                const AxisLayout layout(start, end, beside, 8);
                std::vector<Rectangle> texts{{layout.title(title, number), title}};
                for (int i = 0; i <= 4; ++i) {
                    texts.push_back({layout.number(start + along * (95.0 * i), number), number});
                }
                ASSERT_TRUE(layout.hasRoomFor(5, number) || number[0] > 70) << step;
                if (!layout.hasRoomFor(5, number)) {
                    continue;
                }
                ++layouts;
                for (std::size_t a = 0; a < texts.size(); ++a) {
                    for (std::size_t b = a + 1; b < texts.size(); ++b) {
                        EXPECT_FALSE(overlap(texts[a], texts[b])) << step << ": " << a << " and " << b;
                    }
                    for (int i = 0; i <= 380; ++i) {
                        EXPECT_FALSE(overlap(texts[a], {start + along * i, Box{}})) << step << ": " << a;
                    }
                }
            }
        }
    }
    EXPECT_GT(layouts, 200);
}

TEST(AxisLayout, AnAxisThatIsSeenEndOnHasNoRoom) {
    EXPECT_FALSE(AxisLayout({10, 10}, {10, 10}, {10, 10}, 8).hasRoomFor(1, {9, 12}));
    EXPECT_FALSE(AxisLayout({10, 10}, {30, 12}, {10, 20}, 8).hasRoomFor(5, {9, 12}));
    EXPECT_TRUE(AxisLayout({10, 10}, {90, 12}, {10, 20}, 8).hasRoomFor(5, {9, 12}));
    EXPECT_TRUE(AxisLayout({10, 10}, {90, 12}, {10, 20}, 8).hasRoomFor(0, {9, 12}));
}

TEST(AxisLayout, AnAxisWithoutALengthHasFinitePlaces) {
    const AxisLayout layout({10, 10}, {10, 10}, {10, 10}, 8);
    EXPECT_EQ(layout.number({10, 10}, {9, 12}), (Place{10, 10}));
    EXPECT_EQ(layout.titleAtEnd({9, 12}, {9, 12}), (Place{10, 10}));
}

}  // namespace
