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
