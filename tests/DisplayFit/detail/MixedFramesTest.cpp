#include "DisplayFit/detail/MixedFrames.h"

#include "WallChannels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using Veltrani::DisplayFit::FitFinding;
using Veltrani::DisplayFit::FitOutcome;
using Veltrani::DisplayFit::MeasuredPoint;
using Veltrani::DisplayFitDetail::mixedFrames;
using Measured = std::vector<MeasuredPoint>;

Measured wholeWall(int columns, int rows) {
    return WallChannels().measured(columns, rows);
}

double widthOfWall() {
    const WallChannels wall;
    return wall.lightOf(wall.measured(8, 5)).width();
}

std::string textOfMixture(const Measured& points, const std::string& unit = "m") {
    const WallChannels wall;
    const auto found = mixedFrames(wall.lightOf(points), points, unit);
    if (found) {
        EXPECT_EQ(found->kind, FitFinding::Kind::FRAMES_MIXED);
        EXPECT_EQ(found->outcome, FitOutcome::DOUBTFUL);
    }
    return found ? found->text : "";
}

/// Forty points of a wall, of which each so many is changed.
Measured fortyWith(std::size_t each, std::size_t most, const std::function<void(MeasuredPoint&)>& change) {
    Measured points = wholeWall(8, 5);
    std::size_t changed = 0;
    for (std::size_t i = 0; i < points.size(); i += each) {
        if (changed < most) {
            change(points[i]);
            ++changed;
        }
    }
    return points;
}

void moveByTwo(MeasuredPoint& point) {
    point.world += Point<double, 3>{0, -2, 0};
}

TEST(MixedFrames, APartThatLiesElsewhereIsNamedWithItsLines) {
    EXPECT_EQ(textOfMixture(wholeWall(8, 5)), "");
    EXPECT_EQ(textOfMixture(fortyWith(3, 10, moveByTwo)),
              "the points are of two frames: about 25 % of them, such as lines 2, 5, 8, lie among the others once they "
              "are moved by 2 m, as where an instrument was set up anew");
    Measured withoutLines = fortyWith(3, 10, moveByTwo);
    for (MeasuredPoint& point : withoutLines) {
        point.row = point.row == 8 ? 8 : 0;
    }
    EXPECT_EQ(textOfMixture(withoutLines, ""),
              "the points are of two frames: about 25 % of them, such as lines 8, lie among the others once they are "
              "moved by 2, as where an instrument was set up anew");
}

TEST(MixedFrames, ASmallPartIsNoFrame) {
    EXPECT_NE(textOfMixture(fortyWith(5, 6, moveByTwo)), "") << "15 %";
    EXPECT_EQ(textOfMixture(fortyWith(5, 5, moveByTwo)), "");
    Measured few = wholeWall(4, 3);
    for (std::size_t i = 0; i < few.size(); i += 2) {
        moveByTwo(few[i]);
    }
    EXPECT_NE(textOfMixture(few), "") << "six of twelve";
    few.pop_back();
    EXPECT_EQ(textOfMixture(few), "") << "six of eleven";
}

TEST(MixedFrames, BothFramesTogetherExplainNearlyAll) {
    for (const std::size_t wild : {std::size_t{6}, std::size_t{7}}) {
        Measured points = fortyWith(3, 10, moveByTwo);
        for (std::size_t i = 0; i < wild; ++i) {
            const auto number = static_cast<double>(i);
            points[3 * i + 1].world +=
                Point<double, 3>{5 + number * number, 7 - 3 * number, 11 * (i % 2 == 0 ? 1.0 : -1.0)};
        }
        EXPECT_EQ(textOfMixture(points).empty(), wild == 7) << wild;
    }
}

TEST(MixedFrames, WhatAProjectorDeviatesIsNoFrame) {
    const double width = widthOfWall();
    for (const double way : {0.08, 0.11, 0.13, 0.5}) {
        const Measured points = fortyWith(3, 10, [&](MeasuredPoint& point) { point.world[1] += way * width; });
        EXPECT_EQ(textOfMixture(points).empty(), way < 0.12) << way;
    }
}

TEST(MixedFrames, AnotherSizeIsNoMovement) {
    for (const double size : {1.2, 0.8, 1.45, 0.7}) {
        const Measured points = fortyWith(2, 20, [&](MeasuredPoint& point) {
            point.world = point.world * size - Point<double, 3>{0, 9, 0};
        });
        EXPECT_EQ(textOfMixture(points).empty(), size > 1.3 || size < 1 / 1.3) << size;
    }
}

TEST(MixedFrames, StationsAreTakenEachByItself) {
    Measured points = fortyWith(3, 10, [](MeasuredPoint& point) {
        moveByTwo(point);
        point.set = "gallery";
    });
    EXPECT_EQ(textOfMixture(points), "");
    points = wholeWall(8, 5);
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i].set = i % 2 == 0 ? "gallery" : "stalls";
        if (i % 4 == 3) {
            moveByTwo(points[i]);
        }
    }
    EXPECT_THAT(textOfMixture(points), testing::HasSubstr("about 50 % of them, such as lines"));
}

}  // namespace
