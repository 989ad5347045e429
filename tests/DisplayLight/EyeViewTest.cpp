#include "DisplayLight/EyeView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

namespace {

using Veltrani::DisplayLight::EyeView;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

constexpr double DEGREE = std::numbers::pi / 180;

/// Directions around one, up to an angle from it in the plane of the floor and half of it upwards.
std::vector<P3> fan(double middle, double sides) {
    std::vector<P3> directions;
    for (int i = -10; i <= 10; ++i) {
        for (int k = -5; k <= 5; ++k) {
            const double azimuth = (middle + i * sides / 10) * DEGREE;
            const double elevation = k * sides / 20 * DEGREE;
            directions.push_back({2 * std::sin(azimuth) * std::cos(elevation),
                                  2 * std::cos(azimuth) * std::cos(elevation), 2 * std::sin(elevation)});
        }
    }
    return directions;
}

void expectShown(const EyeView& view, const std::vector<P3>& directions) {
    for (const P3& direction : directions) {
        const auto place = view.placeOf(direction);
        ASSERT_TRUE(place);
        EXPECT_GE((*place)[0], 0);
        EXPECT_LE((*place)[0], static_cast<double>(view.width()));
        EXPECT_GE((*place)[1], 0);
        EXPECT_LE((*place)[1], static_cast<double>(view.height()));
        const auto back = view.directionOf(*place);
        ASSERT_TRUE(back);
        EXPECT_LT(norm(*back * (1 / norm(*back)) - direction * (1 / norm(direction))), 1e-12);
    }
}

TEST(EyeView, IsFlatThenAFisheyeThenAPanorama) {
    const auto kindOf = [](double sides) {
        const auto directions = fan(30, sides);
        const EyeView view = EyeView::around({1, 2, 3}, directions, 400, 300);
        expectShown(view, directions);
        EXPECT_EQ(view.frame().eye, (P3{1, 2, 3}));
        return view.kind();
    };
    EXPECT_EQ(kindOf(40), EyeView::Kind::FLAT);
    EXPECT_EQ(kindOf(58), EyeView::Kind::FLAT);
    EXPECT_EQ(kindOf(62), EyeView::Kind::FISHEYE);
    EXPECT_EQ(kindOf(120), EyeView::Kind::FISHEYE);
    EXPECT_EQ(kindOf(130), EyeView::Kind::PANORAMA);
    EXPECT_EQ(kindOf(180), EyeView::Kind::PANORAMA);
}

TEST(EyeView, AFlatPictureIsThatOfACamera) {
    const auto directions = fan(0, 45);
    const EyeView view = EyeView::around({}, directions, 1000, 500);
    const P2 middle = *view.placeOf({0, 1, 0});
    const P2 aside = *view.placeOf({1, 1, 0});
    const P2 above = *view.placeOf({0, 1, 0.25});
    EXPECT_NEAR(aside[0] - middle[0], 0.48 * 1000, 1e-9) << "a margin of 2 % on each side";
    EXPECT_NEAR(aside[1], middle[1], 1e-9);
    EXPECT_NEAR(above[1] - middle[1], 0.25 * 480, 1e-9);
    EXPECT_FALSE(view.placeOf({0, -1, 0}));
    EXPECT_FALSE(view.placeOf({}));
    EXPECT_EQ(view.turn(), 0);
}

TEST(EyeView, AFisheyeHasEqualStepsOfAngle) {
    const EyeView view = EyeView::around({}, fan(0, 90), 1000, 1000);
    const P2 middle = *view.placeOf({0, 1, 0});
    const P2 aside = *view.placeOf({1, 0, 0});
    EXPECT_NEAR((*view.placeOf({1, 1, 0}))[0] - middle[0], (aside[0] - middle[0]) / 2, 1e-9);
    EXPECT_NEAR(aside[0] - middle[0], 480, 1e-9);
    EXPECT_FALSE(view.directionOf(middle + P2{0, 2 * 960.0 + 1}));
}

TEST(EyeView, APanoramaStandsUprightAndBeginsAgainAfterItsTurn) {
    const EyeView view = EyeView::around({}, fan(90, 180), 1000, 800);
    EXPECT_NEAR(view.turn(), 1000, 1e-9);
    EXPECT_EQ(view.frame().up, (P3{0, 0, 1}));
    const P2 middle = *view.placeOf(view.frame().forward);
    EXPECT_NEAR(middle[0], 500, 1e-9);
    EXPECT_FALSE(view.directionOf({500, middle[1] + 251}));
    EXPECT_TRUE(view.directionOf({500, middle[1] + 249}));
}

/// The edges of what a picture shows of directions: left, right, bottom and top.
std::array<double, 4> edgesOf(const EyeView& view, const std::vector<P3>& directions) {
    std::array<double, 4> edges{1e9, -1e9, 1e9, -1e9};
    for (const P3& direction : directions) {
        const P2 place = view.placeOf(direction).value();
        edges = {std::min(edges[0], place[0]), std::max(edges[1], place[0]), std::min(edges[2], place[1]),
                 std::max(edges[3], place[1])};
    }
    return edges;
}

// Directions that lie lopsided around their mean, in pictures that are too wide for them and too high.
TEST(EyeView, WhatItShowsFillsThePictureAndStandsInItsMiddle) {
    for (const double sides : {20.0, 100.0}) {
        std::vector<P3> directions = fan(25, sides);
        directions.push_back({std::sin((30 + sides) * DEGREE), std::cos((30 + sides) * DEGREE), 0.25});
        for (const auto& [width, height] : {std::pair<std::size_t, std::size_t>{300, 900}, {900, 200}}) {
            const EyeView view = EyeView::around({}, directions, width, height);
            EXPECT_EQ(view.kind(), sides < 60 ? EyeView::Kind::FLAT : EyeView::Kind::FISHEYE);
            const auto [left, right, bottom, top] = edgesOf(view, directions);
            EXPECT_NEAR(left + right, static_cast<double>(width), 1e-9);
            EXPECT_NEAR(bottom + top, static_cast<double>(height), 1e-9);
            if (width < height) {
                EXPECT_NEAR(right - left, 0.96 * 300, 1e-9);
            } else {
                EXPECT_NEAR(top - bottom, 0.96 * 200, 1e-9);
            }
            expectShown(view, directions);
        }
    }
}

// All around, from 60 degrees below the horizon to 40 above it: too much for a fisheye that looks down.
TEST(EyeView, APanoramaIsAsHighAsItsDirections) {
    std::vector<P3> directions;
    for (int i = -180; i < 180; i += 10) {
        for (const int k : {-60, 40}) {
            directions.push_back({std::sin(i * DEGREE) * std::cos(k * DEGREE),
                                  std::cos(i * DEGREE) * std::cos(k * DEGREE), std::sin(k * DEGREE)});
        }
    }
    const EyeView view = EyeView::around({}, directions, 1000, 100);
    ASSERT_EQ(view.kind(), EyeView::Kind::PANORAMA);
    EXPECT_NEAR(view.scale(), 96 / (100 * DEGREE), 1e-9);
    EXPECT_NEAR(view.turn(), 3.6 * 96, 1e-9);
    const P2 level = *view.placeOf({0.0, 1.0, 0.0});
    EXPECT_NEAR(level[0], 500, 1e-9);
    EXPECT_NEAR(level[1], 2 + 96 * 0.6, 1e-9);
    EXPECT_NEAR((*view.placeOf({1.0, 0.0, 0.0}))[0], 500 + view.turn() / 4, 1e-9);
    EXPECT_FALSE(view.directionOf({500 + 0.51 * view.turn(), 50}));
    EXPECT_TRUE(view.directionOf({500 - 0.49 * view.turn(), 50}));
    expectShown(view, directions);
}

// Of one direction, and of directions that cancel out.
TEST(EyeView, WhatHasNoExtentOrNoMeanIsShownAllTheSame) {
    const std::vector<P3> one{{0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}};
    const EyeView view = EyeView::around({}, one, 100, 50);
    EXPECT_LT(norm(view.frame().forward - P3{1.0, 0.0, 0.0}), 1e-12);
    EXPECT_LT(norm(*view.placeOf({1.0, 0.0, 0.0}) - P2{50.0, 25.0}), 1e-9);
    const std::vector<P3> opposite{{1.0, 0.0, 0.0}, {-3.0, 0.0, 0.0}};
    EXPECT_EQ(EyeView::around({}, opposite, 100, 50).frame().forward, (P3{0.0, 1.0, 0.0}));
    // The same but for a little, however many they are.
    std::vector<P3> nearly;
    for (int i = 0; i < 10; ++i) {
        nearly.push_back({1.0, 0.0, 0.0005});
        nearly.push_back({-1.0, 0.0, 0.0005});
    }
    EXPECT_EQ(EyeView::around({}, nearly, 100, 50).frame().forward, (P3{0.0, 1.0, 0.0}));
    // All of them up and down: a panorama stands upright.
    const std::vector<P3> steep{{0.0, 0.0, 1.0}, {0.0, 0.1, -0.3}, {0.1, 0.0, 1.0}, {-0.1, 0.0, 1.0}};
    const EyeView upright = EyeView::around({}, steep, 100, 50);
    ASSERT_EQ(upright.kind(), EyeView::Kind::PANORAMA);
    EXPECT_EQ(upright.frame().up, (P3{0.0, 0.0, 1.0}));
    EXPECT_LT(norm(upright.frame().forward - P3{0.0, 1.0, 0.0}), 1e-12);
}

TEST(EyeView, WithoutADirectionItLooksForward) {
    const EyeView view = EyeView::around({}, {}, 20, 10);
    EXPECT_EQ(view.frame().forward, (P3{0, 1, 0}));
    EXPECT_TRUE(view.directionOf({10, 5}));
}

}  // namespace
