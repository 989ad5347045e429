#include "DisplayExport/PoleFan.h"

#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayExport/PoleBlock.h"
#include "DisplayExport/PoleZone.h"
#include "ExportDisplays.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace Veltrani::DisplayExport;

constexpr double ERROR = 0.25;

/// A wall of 4 by 4 metres above the eye, its picture as a map of the ceiling: the zenith stands a little off its
/// middle, and each direction is known by a formula.
class PoleFanTest : public ExportDisplayTest {
protected:
    /// A ceiling two metres above the eye. A place (s, t) of it is (4 s - 2, 4 t - 2) aside from its middle.
    PoleFanTest() {
        load(
            "<Screen shape='Ruled'><EyePoint x='0.1' y='-0.2' z='1'/><LowerRail><Point x='-2' y='-2' z='3'/>"
            "<Point x='2' y='-2' z='3'/></LowerRail><UpperRail><Point x='-2' y='2' z='3'/><Point x='2' y='2' z='3'/>"
            "</UpperRail></Screen>",
            displays::projector("P1", displays::WHOLE_AREA + "<Layout xMin='0' xMax='4' yMin='0' yMax='4'/>"),
            "<TargetData type='PlanarBasic'/>");
    }

    static constexpr P3 UP{0.0, 0.0, 1.0};

    /// From the eye.
    static P3 directionAt(const P2& picture) { return {4 * picture[0] - 2.1, 4 * picture[1] - 1.8, 2}; }

    struct Bench {
        Bench(const XMLConfigFile& config, const Veltrani::DisplayReport::ChannelChoice& channel, bool isFisheye)
            : sight(config, channel),
              input(config, sight, choiceOf(isFisheye)),
              sampler(sight, input),
              meter(sight, input),
              cutter(sampler, input, meter, Seam::CONTINUE, ERROR, ERROR),
              fan(sight, input, sampler, cutter) {}

        static InputChoice choiceOf(bool isFisheye) {
            if (isFisheye) {
                // The zenith lies opposite to its axis.
                return {.kind = InputKind::FISHEYE,
                        .direction = P3{0.0, 0.0, -1.0},
                        .aperture = 2 * std::numbers::pi,
                        .pixels = {2048, 2048}};
            }
            return {.kind = InputKind::EQUIRECTANGULAR, .pixels = {4096, 2048}};
        }

        [[nodiscard]] WarpGrid grid(int cells) const {
            std::vector<double> places;
            for (int i = 0; i <= cells; ++i) {
                places.push_back(static_cast<double>(i) / cells);
            }
            return sampler.sample(places, places, {.directions = true}, {});
        }

        ChannelSight sight;
        ContentInput input;
        WarpSampler sampler;
        WarpErrorMeter meter;
        CellCutter cutter;
        PoleFan fan;
    };

    /// How far what a piece shows somewhere is from what belongs there, by the angle between the directions, in pixels.
    static double errorAt(bool isFisheye, const WarpPiece& piece, double ofB, double ofC) {
        const auto between = [&](auto part) {
            const auto& [a, b, c] = piece.corners;
            return part(a) + ofB * (part(b) - part(a)) + ofC * (part(c) - part(a));
        };
        const P2 content = between([](const WarpCorner& corner) { return corner.content; });
        const P3 belongs = directionAt(between([](const WarpCorner& corner) { return corner.picture; }));
        P3 shown;
        double pixelsPerRadian = 0;
        if (isFisheye) {
            const P2 aside = content - P2{0.5, 0.5};
            const double angle = 2 * std::numbers::pi * norm(aside);
            shown = {std::sin(angle) * aside[0] / norm(aside), std::sin(angle) * aside[1] / norm(aside),
                     -std::cos(angle)};
            pixelsPerRadian = 2048 / (2 * std::numbers::pi);
        } else {
            const double azimuth = 2 * std::numbers::pi * (content[0] - 0.5);
            const double elevation = std::numbers::pi * (content[1] - 0.5);
            shown = {std::cos(elevation) * std::sin(azimuth), std::cos(elevation) * std::cos(azimuth),
                     std::sin(elevation)};
            pixelsPerRadian = 4096 / (2 * std::numbers::pi);
        }
        return norm(shown - belongs * (1 / norm(belongs))) * pixelsPerRadian;
    }
};

TEST_F(PoleFanTest, FillsTheBlockAroundThePoleWithinTheError) {
    for (const bool isFisheye : {false, true}) {
        const Bench bench(config(), channels()[0], isFisheye);
        const WarpGrid grid = bench.grid(60);
        const auto block = PoleBlock::around(UP, grid, bench.cutter, bench.meter);
        ASSERT_TRUE(block);
        const auto corners = block->corners();
        const P2 zenith{2.1 / 4, 1.8 / 4};
        EXPECT_TRUE(corners[0][0] < zenith[0] && zenith[0] < corners[2][0]);
        EXPECT_TRUE(corners[0][1] < zenith[1] && zenith[1] < corners[2][1]);
        const auto cut = bench.fan.fill(corners, UP);
        ASSERT_TRUE(cut);
        EXPECT_EQ(cut->leftOut, 1U);
        EXPECT_TRUE(cut->isDivided);
        // An eighth of a pixel across at most.
        EXPECT_LE(cut->areaLeftOut, 1.0 / (64 * 1920 * 1200));
        EXPECT_GT(cut->areaLeftOut, 0);
        EXPECT_LT(cut->pieces.size(), 40'000U);
        EXPECT_LE(cut->error.largest, ERROR);
        EXPECT_EQ(cut->error.beyond, 0U);
        EXPECT_GT(cut->error.places, cut->pieces.size());
        double sum = 0;
        double largest = 0;
        for (const WarpPiece& piece : cut->pieces) {
            const auto& [a, b, c] = piece.corners;
            const P2 toB = b.picture - a.picture;
            const P2 toC = c.picture - a.picture;
            const double area = (toB[0] * toC[1] - toB[1] * toC[0]) / 2;
            EXPECT_GT(area, 0) << "counter-clockwise";
            sum += area;
            for (const P2& in : {P2{0.3, 0.3}, P2{0.05, 0.5}, P2{0.45, 0.1}, P2{0.5, 0.5}}) {
                largest = std::max(largest, errorAt(isFisheye, piece, in[0], in[1]));
            }
        }
        EXPECT_LE(largest, ERROR);
        const P2 size = corners[2] - corners[0];
        EXPECT_NEAR(sum + cut->areaLeftOut, size[0] * size[1], 1e-12) << "nothing twice, and no gap";
    }
}

/// The cells around a block keep the error as they are, those within it do not all.
TEST_F(PoleFanTest, ABlockIsNoLargerThanItMustBe) {
    const Bench bench(config(), channels()[0], false);
    const WarpGrid grid = bench.grid(60);
    const auto block = PoleBlock::around(UP, grid, bench.cutter, bench.meter);
    ASSERT_TRUE(block);
    const std::vector<std::size_t> numbers = block->cells();
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    const auto needsFan = [&](std::size_t number) {
        const WarpCell cell = WarpCell::of(grid, number);
        return bench.meter.errorsIn({&cell, 1}, ERROR).front().largest > ERROR;
    };
    EXPECT_GT(std::count_if(numbers.begin(), numbers.end(), needsFan), 4);
    EXPECT_GT(numbers.size(), 9U);
    EXPECT_LT(numbers.size(), grid.cells() / 2);
    std::size_t others = 0;
    for (std::size_t number = 0; number < grid.cells(); ++number) {
        const WarpCell cell = WarpCell::of(grid, number);
        if (!std::binary_search(numbers.begin(), numbers.end(), number)) {
            EXPECT_LE(bench.meter.errorsIn({&cell, 1}, ERROR).front().largest, ERROR);
            EXPECT_FALSE(cell.holds(UP));
            ++others;
        }
    }
    EXPECT_EQ(others + numbers.size(), grid.cells());
    EXPECT_FALSE(PoleBlock::around(-UP, grid, bench.cutter, bench.meter)) << "it shows no nadir";
}

/// Where a pole is not, or nothing is seen on the way to it, cells are divided in four instead.
TEST_F(PoleFanTest, ThereIsNoneWithoutThePole) {
    const Bench bench(config(), channels()[0], false);
    const std::array<P2, 4> beside{P2{0.6, 0.6}, P2{0.9, 0.6}, P2{0.9, 0.8}, P2{0.6, 0.8}};
    EXPECT_FALSE(bench.fan.fill(beside, UP));
    const std::array<P2, 4> beyond{P2{0.4, 0.3}, P2{1.4, 0.3}, P2{1.4, 0.8}, P2{0.4, 0.8}};
    EXPECT_FALSE(bench.fan.fill(beyond, UP)) << "a part of it lies beside the ceiling";
    WarpGrid dark = bench.grid(60);
    // The node at the zenith: (31.5, 27) of 60.
    dark.nodes[27 * 61 + 31] = WarpNode();
    EXPECT_FALSE(PoleBlock::around(UP, dark, bench.cutter, bench.meter));
}

/// A fifth of what is lit: places on the ceiling by their distance to the zenith.
TEST_F(PoleFanTest, ItsZoneHasAFifthOfThePicture) {
    const Bench bench(config(), channels()[0], false);
    const PoleZone& zone = bench.meter.zone();
    constexpr int PER_SIDE = 200;
    int inside = 0;
    const WarpGrid grid = bench.grid(PER_SIDE);
    for (std::size_t number = 0; number < grid.cells(); ++number) {
        inside += zone.holds(WarpCell::of(grid, number)) ? 1 : 0;
    }
    EXPECT_NEAR(static_cast<double>(inside) / (PER_SIDE * PER_SIDE), 0.2, 0.02);
    EXPECT_EQ(zone.poles().size(), 2U);
    EXPECT_NEAR(zone.least()[0] * 1920, 1.0 / 16, 1e-12);
    EXPECT_NEAR(zone.least()[1] * 1200, 1.0 / 16, 1e-12);
}

/// Seen across the zenith a cell turns; a metre and a half aside, a small one does not.
TEST_F(PoleFanTest, ContentTurnsNearThePoleAlone) {
    const Bench bench(config(), channels()[0], false);
    const PoleZone& zone = bench.meter.zone();
    const auto cellAt = [&](const P2& lower, double size) {
        WarpCell cell;
        cell.picture = {lower, lower + P2{size, 0.0}, lower + P2{size, size}, lower + P2{0.0, size}};
        for (std::size_t i = 0; i < 4; ++i) {
            const P3 direction = directionAt(cell.picture[i]);
            cell.directions[i] = direction * (1 / norm(direction));
            cell.nodes[i].state = WarpNode::State::MAPPED;
        }
        return cell;
    };
    const P2 zenith{2.1 / 4, 1.8 / 4};
    EXPECT_TRUE(zone.turnsIn(cellAt(zenith - P2{0.01, 0.01}, 0.02)));
    EXPECT_TRUE(zone.turnsIn(cellAt(zenith + P2{0.1, 0.0}, 0.02))) << "a fifth of a radian";
    EXPECT_FALSE(zone.turnsIn(cellAt(zenith + P2{0.2, 0.0}, 0.001))) << "five thousandths";
    EXPECT_TRUE(zone.turnsIn(cellAt(zenith + P2{0.2, 0.0}, 0.004))) << "twenty thousandths";
    EXPECT_FALSE(zone.turnsIn(cellAt({0.9, 0.9}, 0.02))) << "too far from it";
}

}  // namespace
