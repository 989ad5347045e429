#include "DisplayExport/PoleBlock.h"

#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"
#include "ExportDisplays.h"

#include <gmock/gmock.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayExport;
using State = WarpNode::State;

/// A ceiling of 4 by 4 metres around the place two metres above the eye, as a map: the zenith stands in the middle of
/// the picture.
class PoleBlockTest : public ExportDisplayTest {
protected:
    PoleBlockTest() {
        load(
            "<Screen shape='Ruled'><EyePoint x='0' y='0' z='1'/><LowerRail><Point x='-2' y='-2' z='3'/>"
            "<Point x='2' y='-2' z='3'/></LowerRail><UpperRail><Point x='-2' y='2' z='3'/><Point x='2' y='2' z='3'/>"
            "</UpperRail></Screen>",
            displays::projector("P1", displays::WHOLE_AREA + "<Layout xMin='0' xMax='4' yMin='0' yMax='4'/>"),
            "<TargetData type='PlanarBasic'/>");
        m_sight = std::make_unique<ChannelSight>(config(), channels()[0]);
        m_input = std::make_unique<ContentInput>(config(), *m_sight, InputChoice{.kind = InputKind::EQUIRECTANGULAR});
        m_sampler = std::make_unique<WarpSampler>(*m_sight, *m_input);
        m_meter = std::make_unique<WarpErrorMeter>(*m_sight, *m_input);
    }

    [[nodiscard]] WarpGrid grid(int columns, int rows) const {
        const auto along = [](int cells) {
            std::vector<double> places;
            for (int i = 0; i <= cells; ++i) {
                places.push_back(static_cast<double>(i) / cells);
            }
            return places;
        };
        return m_sampler->sample(along(columns), along(rows), {.directions = true}, {});
    }

    /// With so much error that no cell needs a fan: the block is that of the pole alone.
    [[nodiscard]] std::optional<PoleBlock> smallest(const WarpGrid& grid) const {
        constexpr double ANY = std::numeric_limits<double>::max();
        const CellCutter cutter(*m_sampler, *m_input, *m_meter, Seam::CONTINUE, ANY, ANY);
        return PoleBlock::around({0.0, 0.0, 1.0}, grid, cutter, *m_meter);
    }

    static void expectCells(const std::optional<PoleBlock>& block, const std::vector<std::size_t>& numbers) {
        ASSERT_TRUE(block);
        EXPECT_EQ(block->cells(), numbers);
    }

    std::unique_ptr<ChannelSight> m_sight;
    std::unique_ptr<ContentInput> m_input;
    std::unique_ptr<WarpSampler> m_sampler;
    std::unique_ptr<WarpErrorMeter> m_meter;
};

/// In a cell, on an edge and on a node: the cells that hold it with one more on each side.
TEST_F(PoleBlockTest, HasACellOnEachSideOfThePole) {
    const WarpGrid odd = grid(7, 9);
    const auto inCell = smallest(odd);
    expectCells(inCell, {23, 24, 25, 30, 31, 32, 37, 38, 39});
    const auto corners = inCell->corners();
    const P2 lower{2.0 / 7, 3.0 / 9};
    const P2 upper{5.0 / 7, 6.0 / 9};
    EXPECT_EQ(corners, (std::array<P2, 4>{lower, P2{upper[0], lower[1]}, upper, P2{lower[0], upper[1]}}));
    expectCells(smallest(grid(6, 5)), {7, 8, 9, 10, 13, 14, 15, 16, 19, 20, 21, 22});
    expectCells(smallest(grid(5, 6)), {6, 7, 8, 11, 12, 13, 16, 17, 18, 21, 22, 23});
    expectCells(smallest(grid(6, 6)), {7, 8, 9, 10, 13, 14, 15, 16, 19, 20, 21, 22, 25, 26, 27, 28});
}

/// Where the picture ends there, or its light.
TEST_F(PoleBlockTest, EndsWhereTheLightDoes) {
    expectCells(smallest(grid(1, 1)), {0});
    expectCells(smallest(grid(1, 3)), {0, 1, 2});
    expectCells(smallest(grid(3, 1)), {0, 1, 2});
    const WarpGrid whole = grid(7, 7);
    // The cell of the pole is number 24, between the nodes 27, 28, 36 and 35.
    struct Case {
        std::size_t dark;
        std::vector<std::size_t> numbers;
    };
    for (const Case& one : {Case{26, {17, 18, 24, 25, 31, 32}}, Case{29, {16, 17, 23, 24, 30, 31}},
                            Case{19, {23, 24, 25, 30, 31, 32}}, Case{43, {16, 17, 18, 23, 24, 25}}}) {
        WarpGrid dark = whole;
        dark.nodes[one.dark].state = State::CONTINUED;
        expectCells(smallest(dark), one.numbers);
    }
    for (const std::size_t corner : {27U, 28U, 35U, 36U}) {
        WarpGrid dark = whole;
        dark.nodes[corner].state = State::CONTINUED;
        EXPECT_FALSE(smallest(dark)) << corner;
        dark.nodes[corner] = {};
        EXPECT_FALSE(smallest(dark)) << corner;
    }
}

/// Where a picture shows the pole twice, or bends up around it, there is no rectangle around it.
TEST_F(PoleBlockTest, IsNoneWhereThePoleIsSeenTwice) {
    const WarpGrid once = grid(9, 9);
    ASSERT_TRUE(smallest(once));
    for (const std::size_t beside : {2U, 20U}) {
        WarpGrid twice = once;
        for (const std::size_t corner : once.cornersOf(40)) {
            twice.directions[corner + beside] = once.directions[corner];
        }
        EXPECT_FALSE(smallest(twice)) << beside;
    }
}

}  // namespace
