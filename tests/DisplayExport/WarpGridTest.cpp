#include "DisplayExport/WarpGrid.h"

#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"
#include "ExportDisplays.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Veltrani::DisplayExport;
using State = WarpNode::State;
using DarkCells = WarpSampler::DarkCells;

/// A wall of 4 by 2 metres around (0, 5, 1), seen from the origin of the floor before it.
class WarpGridTest : public ExportDisplayTest {
protected:
    static constexpr P2 WHOLE_FROM{0.0, 0.0};
    static constexpr P2 WHOLE_TO{1.0, 1.0};

    /// Lit between two places of the picture: it is as large as its area, which reaches beyond the screen.
    void loadLit(const P2& from, const P2& to) {
        const auto edge = [&](std::size_t axis, double place) {
            return std::to_string((place - from[axis]) / (to[axis] - from[axis]));
        };
        load(
            "<Screen shape='Flat'><EyePoint x='0' y='0' z='0'/><Centre x='0' y='5' z='1'/><Size width='4' "
            "height='2'/></Screen>",
            displays::projector("P1", "<ScreenArea left='" + edge(0, 0) + "' right='" + edge(0, 1) + "' bottom='" +
                                          edge(1, 0) + "' top='" + edge(1, 1) +
                                          "'/><Layout xMin='0' xMax='4' yMin='0' yMax='2'/>"),
            "<TargetData type='PlanarBasic'/>");
        m_sight = std::make_unique<ChannelSight>(config(), channels()[0]);
        m_from = from;
        m_to = to;
    }

    [[nodiscard]] ContentInput input(InputKind kind) const { return {config(), *m_sight, InputChoice{.kind = kind}}; }

    /// (s, t) of a place of the picture.
    [[nodiscard]] P2 screenAt(const P2& picture) const {
        return {(picture[0] - m_from[0]) / (m_to[0] - m_from[0]), (picture[1] - m_from[1]) / (m_to[1] - m_from[1])};
    }
    /// On the wall and its continuation.
    [[nodiscard]] P3 pointAt(const P2& picture) const {
        const P2 screen = screenAt(picture);
        return {-2 + 4 * screen[0], 5.0, 2 * screen[1]};
    }
    [[nodiscard]] P3 directionAt(const P2& picture) const { return pointAt(picture) * (1 / norm(pointAt(picture))); }
    /// In a fisheye of half a turn that looks ahead.
    [[nodiscard]] P2 fisheyeAt(const P2& picture) const {
        const P3 seen = directionAt(picture);
        const double aside = std::hypot(seen[0], seen[2]);
        const double part = std::atan2(aside, seen[1]) / (std::numbers::pi * aside);
        return {0.5 + part * seen[0], 0.5 + part * seen[2]};
    }

    static std::vector<State> statesOf(const WarpGrid& grid) {
        std::vector<State> states;
        for (const WarpNode& node : grid.nodes) {
            states.push_back(node.state);
        }
        return states;
    }

    std::unique_ptr<ChannelSight> m_sight;
    P2 m_from;
    P2 m_to;
};

/// More columns and rows than are seen at once, no multiples of these, every node by the formulas of the wall.
TEST_F(WarpGridTest, HasEveryNodeInItsPlace) {
    loadLit(WHOLE_FROM, WHOLE_TO);
    const ContentInput fisheye = input(InputKind::FISHEYE);
    std::vector<double> across;
    for (int i = 0; i < 300; ++i) {
        across.push_back(std::pow(i / 299.0, 1.5));
    }
    const std::vector<double> upwards{0, 0.1, 0.2, 0.4, 0.45, 1};
    std::vector<std::pair<std::size_t, std::size_t>> progress;
    const WarpGrid grid =
        WarpSampler(*m_sight, fisheye)
            .sample(across, upwards, {.points = true, .directions = true},
                    [&progress](std::size_t done, std::size_t all) { progress.emplace_back(done, all); });
    EXPECT_THAT(progress, testing::ElementsAre(std::pair(0, 6), std::pair(4, 6), std::pair(6, 6)));
    ASSERT_EQ(grid.nodes.size(), 1800U);
    ASSERT_EQ(grid.points.size(), 1800U);
    ASSERT_EQ(grid.directions.size(), 1800U);
    for (std::size_t i = 0; i < grid.nodes.size(); ++i) {
        const P2 picture{across[i % 300], upwards[i / 300]};
        EXPECT_EQ(grid.pictureOf(i), picture);
        EXPECT_EQ(grid.nodes[i].state, State::MAPPED);
        EXPECT_LT(norm(grid.nodes[i].content - fisheyeAt(picture)), 1e-12) << picture;
        EXPECT_LT(norm(grid.points[i] - pointAt(picture)), 1e-12) << picture;
        EXPECT_LT(norm(grid.directions[i] - directionAt(picture)), 1e-12) << picture;
    }
    const WarpGrid bare = WarpSampler(*m_sight, fisheye).sample({0, 1}, upwards, {}, {});
    EXPECT_TRUE(bare.points.empty());
    EXPECT_TRUE(bare.directions.empty());
    const WarpGrid withPoints = WarpSampler(*m_sight, fisheye).sample({0, 1}, upwards, {.points = true}, {});
    EXPECT_EQ(withPoints.points.size(), 12U);
    EXPECT_TRUE(withPoints.directions.empty());
}

/// Two by two nodes are lit; those around them go on along the plane of the wall, with all that is kept of them.
TEST_F(WarpGridTest, GoesOnToTheNodesNextToTheLight) {
    loadLit({0.3, 0.4}, {0.7, 0.65});
    const ContentInput fisheye = input(InputKind::FISHEYE);
    const WarpSampler sampler(*m_sight, fisheye);
    const WarpGrid lit = sampler.sample({0, 0.15, 0.35, 0.55, 0.75, 0.9, 1}, {0, 0.2, 0.35, 0.5, 0.62, 0.8, 1},
                                        {.points = true, .directions = true}, {});
    for (const DarkCells dark : {DarkCells::LEFT_OUT, DarkCells::LOOKED_INTO}) {
        WarpGrid grid = lit;
        sampler.continueOver(grid, dark);
        for (std::size_t i = 0; i < grid.nodes.size(); ++i) {
            const std::size_t column = i % 7;
            const std::size_t row = i / 7;
            const bool isLit = (column == 2 || column == 3) && (row == 3 || row == 4);
            const bool isBeside = column >= 1 && column <= 4 && row >= 2 && row <= 5;
            const P2 picture = grid.pictureOf(i);
            EXPECT_EQ(grid.nodes[i].state, isLit      ? State::MAPPED
                                           : isBeside ? State::CONTINUED
                                                      : State::UNMAPPED)
                << picture;
            EXPECT_LT(norm(grid.points[i] - (isBeside ? pointAt(picture) : P3())), 1e-9) << picture;
            EXPECT_LT(norm(grid.directions[i] - (isBeside ? directionAt(picture) : P3())), 1e-9) << picture;
            EXPECT_LT(norm(grid.nodes[i].content - (isBeside ? fisheyeAt(picture) : P2())), 1e-9) << picture;
        }
    }
}

/// A light without any lit node around it, at each of the nine places inside a cell where it is looked for.
TEST_F(WarpGridTest, LooksForLightInsideDarkCells) {
    for (std::size_t i = 0; i < 9; ++i) {
        const P2 place{0.2 + 0.4 * static_cast<double>(i % 3 + 1) / 4, 0.3 + 0.5 * static_cast<double>(i / 3 + 1) / 4};
        loadLit(place - P2{0.02, 0.02}, place + P2{0.02, 0.02});
        const ContentInput screen = input(InputKind::SCREEN);
        const WarpSampler sampler(*m_sight, screen);
        const WarpGrid dark = sampler.sample({0, 0.2, 0.6, 1}, {0, 0.3, 0.8, 1}, {}, {});
        ASSERT_THAT(statesOf(dark), testing::Each(State::UNMAPPED));
        WarpGrid grid = dark;
        sampler.continueOver(grid, DarkCells::LEFT_OUT);
        EXPECT_THAT(statesOf(grid), testing::Each(State::UNMAPPED));
        sampler.continueOver(grid, DarkCells::LOOKED_INTO);
        for (std::size_t node = 0; node < 16; ++node) {
            const bool isCorner = node == 5 || node == 6 || node == 9 || node == 10;
            EXPECT_EQ(grid.nodes[node].state, isCorner ? State::CONTINUED : State::UNMAPPED) << i << ' ' << node;
            if (isCorner) {
                EXPECT_LT(norm(grid.nodes[node].content - screenAt(grid.pictureOf(node))), 1e-3) << i << ' ' << node;
            }
        }
    }
}

/// Nodes that lie anywhere, lit and not.
TEST_F(WarpGridTest, SamplesNodesAnywhere) {
    loadLit({0.3, 0.4}, {0.7, 0.65});
    const ContentInput fisheye = input(InputKind::FISHEYE);
    const std::array<P2, 4> picture{P2{0.35, 0.45}, P2{0.69, 0.5}, P2{0.2, 0.5}, P2{0.5, 0.9}};
    std::array<WarpNode, 4> nodes;
    std::array<P3, 4> directions;
    WarpSampler(*m_sight, fisheye).sampleAt(picture, {0.1, 0.1}, nodes, directions);
    for (std::size_t i = 0; i < picture.size(); ++i) {
        EXPECT_EQ(nodes[i].state, i < 2 ? State::MAPPED : State::CONTINUED) << i;
        EXPECT_LT(norm(nodes[i].content - fisheyeAt(picture[i])), 1e-9) << i;
        EXPECT_LT(norm(directions[i] - directionAt(picture[i])), 1e-9) << i;
    }
}

/// A grid of one column or row has no cells.
TEST_F(WarpGridTest, WithoutCellsNothingGoesOn) {
    loadLit({0.3, 0.4}, {0.7, 0.65});
    const ContentInput screen = input(InputKind::SCREEN);
    const WarpSampler sampler(*m_sight, screen);
    for (const bool isRow : {true, false}) {
        const std::vector<double> one{0.5};
        const std::vector<double> many{0, 0.5, 1};
        WarpGrid grid = sampler.sample(isRow ? many : one, isRow ? one : many, {}, {});
        sampler.continueOver(grid, DarkCells::LOOKED_INTO);
        EXPECT_THAT(statesOf(grid), testing::ElementsAre(State::UNMAPPED, State::MAPPED, State::UNMAPPED));
    }
}

}  // namespace
