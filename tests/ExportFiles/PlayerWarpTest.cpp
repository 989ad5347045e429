#include "ExportFiles/PlayerWarp.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>

namespace {

using namespace Veltrani::ExportFiles;
using P2 = Point<double, 2>;

constexpr int COLUMNS = 12;
constexpr int ROWS = 6;

std::string bytesOf(float number) {
    std::string bytes;
    for (auto bits = std::bit_cast<std::uint32_t>(number); bytes.size() < sizeof bits; bits >>= 8U) {
        bytes.push_back(static_cast<char>(bits & 0xFFU));
    }
    return bytes;
}

/// A portable float map of what the middle of each pixel shows.
/// @param contentAt the place in the input of a place of the picture; none where it is negative
std::unique_ptr<const PlayerWarp> pixelWarp(bool wrapsAround, const std::function<P2(const P2&)>& contentAt) {
    std::string file = "PF\n" + std::to_string(COLUMNS) + ' ' + std::to_string(ROWS) + "\n-1.0\n";
    for (int row = 0; row < ROWS; ++row) {
        for (int column = 0; column < COLUMNS; ++column) {
            const P2 content = contentAt({(column + 0.5) / COLUMNS, (row + 0.5) / ROWS});
            for (const double part : {content[0], content[1], content[0] < 0 ? 0.0 : 1.0}) {
                file += bytesOf(static_cast<float>(part));
            }
        }
    }
    ExportedChannelView view;
    view.pixels = {COLUMNS, ROWS};
    view.wrapsAround = wrapsAround;
    return PlayerWarp::parse(file, "warp.pfm", "pfm", view);
}

/// Of 32-bit numbers, and of their differences over a pixel.
constexpr double ROUNDING = 1e-6;
constexpr double ROUNDING_OF_SLOPES = 2e-6 * COLUMNS;

// Content that is linear in the picture, wherever in it the seam lies.
TEST(PlayerWarp, OfAPanoramaGoesOnOverItsSeam) {
    for (const double start : {0.03, 0.2, 0.45, 0.5, 0.7, 0.999}) {
        const auto linear = [start](const P2& place) {
            return P2{start + 0.6 * place[0] - 0.3 * place[1], 0.1 + 0.05 * place[0] + 0.5 * place[1]};
        };
        const auto warp = pixelWarp(true, [&linear](const P2& place) {
            const P2 content = linear(place);
            return P2{content[0] - std::floor(content[0]), content[1]};
        });
        for (const double s : {0.0, 0.04, 0.3, 0.55, 0.81, 1.0}) {
            for (const double t : {0.0, 0.2, 0.47, 0.9, 1.0}) {
                const auto shown = warp->shownAt({s, t});
                ASSERT_TRUE(shown);
                EXPECT_NEAR(std::remainder(shown->content[0] - linear({s, t})[0], 1.0), 0, ROUNDING) << start;
                EXPECT_NEAR(shown->content[1], linear({s, t})[1], ROUNDING);
                EXPECT_NEAR(shown->alongU[0], 0.6, ROUNDING_OF_SLOPES) << start << ' ' << s << ' ' << t;
                EXPECT_NEAR(shown->alongU[1], 0.05, ROUNDING_OF_SLOPES);
                EXPECT_NEAR(shown->alongV[0], -0.3, ROUNDING_OF_SLOPES) << start << ' ' << s << ' ' << t;
                EXPECT_NEAR(shown->alongV[1], 0.5, ROUNDING_OF_SLOPES);
            }
        }
    }
}

// Any other input ends there: between its left part and its right one lies its middle.
TEST(PlayerWarp, OfAnInputThatEndsItCrossesTheMiddle) {
    const auto warp = pixelWarp(false, [](const P2& place) { return P2{place[0] < 0.5 ? 0.125 : 0.875, place[1]}; });
    EXPECT_NEAR(warp->shownAt({0.5, 0.5})->content[0], 0.5, ROUNDING);
    EXPECT_NEAR(warp->shownAt({0.5, 0.5})->alongU[0], 0.75 * COLUMNS, ROUNDING_OF_SLOPES);
    EXPECT_NEAR(warp->shownAt({0.25, 0.5})->content[0], 0.125, ROUNDING);
}

/// A mesh of three by three nodes over a picture of 8 x 2 pixels, whose content is twice as steep in the right half and
/// four times as steep in the upper one. The bottom right node has none.
TEST(PlayerWarp, OfNodesItStatesTheSlopeOverAQuarterOfAPixel) {
    ExportedChannelView view;
    view.pixels = {8, 2};
    const auto warp = PlayerWarp::parse(
        "2\n3 3\n-4 -1 0 0 1\n0 -1 0.25 0 1\n4 -1 0.75 0 -1\n-4 0 0 0.125 1\n0 0 0.25 0.125 1\n4 0 0.75 0.125 1\n"
        "-4 1 0 0.625 1\n0 1 0.25 0.625 1\n4 1 0.75 0.625 1\npixels 8 2\n",
        "warp.mesh", "mesh", view);
    const auto at = [&warp](double u, double v) { return warp->shownAt({u, v}).value(); };
    EXPECT_LT(norm(at(0.25, 0.25).content - P2{0.125, 0.0625}), 1e-12);
    EXPECT_LT(norm(at(0.25, 0.25).alongU - P2{0.5, 0.0}), 1e-12);
    EXPECT_LT(norm(at(0.25, 0.25).alongV - P2{0.0, 0.25}), 1e-12);
    EXPECT_LT(norm(at(0.75, 0.75).alongU - P2{1.0, 0.0}), 1e-12);
    EXPECT_LT(norm(at(0.75, 0.75).alongV - P2{0.0, 1.0}), 1e-12);
    // A step is a 32nd of the width, and an eighth of the height: half of it reaches into the next cell.
    EXPECT_LT(norm(at(0.5 - 1 / 64.0, 0.75).alongU - P2{0.75, 0.0}), 1e-12);
    EXPECT_LT(norm(at(0.25, 0.5 - 1 / 16.0).alongV - P2{0.0, 0.625}), 1e-12);
    // At the far edges it is that before them.
    EXPECT_LT(norm(at(1.0, 1.0).alongU - P2{1.0, 0.0}), 1e-12);
    EXPECT_LT(norm(at(1.0, 1.0).alongV - P2{0.0, 1.0}), 1e-12);
    EXPECT_FALSE(warp->shownAt({0.75, 0.25}));
    EXPECT_FALSE(warp->shownAt({1.01, 0.75}));
}

TEST(PlayerWarp, ShowsNothingNextToAPixelWithoutContent) {
    const P2 hole{4.5 / COLUMNS, 2.5 / ROWS};
    const auto warp = pixelWarp(true, [&hole](const P2& place) {
        return norm(place - hole) < 1e-9 ? P2{-1.0, 0.0} : P2{0.5, 0.5};
    });
    for (const double column : {3.6, 4.5, 5.4}) {
        for (const double row : {1.6, 2.5, 3.4}) {
            EXPECT_FALSE(warp->shownAt({column / COLUMNS, row / ROWS})) << column << ' ' << row;
        }
    }
    EXPECT_TRUE(warp->shownAt({3.4 / COLUMNS, 2.5 / ROWS}));
    EXPECT_TRUE(warp->shownAt({4.5 / COLUMNS, 3.6 / ROWS}));
}

}  // namespace
