#include "KelvoControl/detail/CellLocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <utility>

namespace {

using Veltrani::KelvoControlDetail::CellIndex;
using Veltrani::KelvoControlDetail::CellLattice;
using P2 = Point<double, 2>;

template <class Place>
CellLattice lattice(std::size_t columns, std::size_t rows, const Place& place) {
    CellLattice made;
    made.columns = columns;
    made.rows = rows;
    for (std::size_t node = 0; node < columns * rows; ++node) {
        made.screen.push_back(place(static_cast<double>(node % columns), static_cast<double>(node / columns)));
    }
    made.picture = made.screen;
    made.unused.assign(columns * rows, false);
    return made;
}

/// Every cell whose box holds a point is near it, and all that is near stands in order.
void expectComplete(const CellLattice& cells, unsigned seed) {
    for (const P2& margin : {P2{0.001, 0.03}, P2{0.03, 0.001}}) {
        const CellIndex index(cells, cells.screen, margin);
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> part(-0.2, 1.2);
        int held = 0;
        for (int i = 0; i < 500; ++i) {
            const P2 point{part(random), part(random)};
            const auto near = index.near(point);
            ASSERT_TRUE(std::is_sorted(near.begin(), near.end()));
            for (std::size_t row = 0; row + 1 < cells.rows; ++row) {
                for (std::size_t column = 0; column + 1 < cells.columns; ++column) {
                    const std::size_t node = row * cells.columns + column;
                    if (cells.isMapped(column, row) && cells.cell(cells.screen, node).boxHolds(point, margin)) {
                        ASSERT_NE(std::find(near.begin(), near.end(), node), near.end());
                        ++held;
                    }
                }
            }
        }
        EXPECT_GT(held, 100);
    }
}

TEST(CellIndex, KnowsEveryCellAroundAPoint) {
    expectComplete(lattice(9, 7, [](double c, double r) { return P2{c / 8.0 + 0.1 * std::sin(r), r / 6.0}; }), 1);
}

TEST(CellIndex, KnowsEveryCellOfAMeshInDisorder) {
    std::mt19937 random(2);
    std::uniform_real_distribution<double> part(0.0, 1.0);
    expectComplete(lattice(20, 20, [&](double, double) { return P2{part(random), part(random)}; }), 3);
}

TEST(CellIndex, KnowsEveryCellOfALongRow) {
    expectComplete(lattice(300, 2, [](double c, double r) { return P2{c / 299.0, r}; }), 4);
}

TEST(CellIndex, FewCellsOfAnEvenLatticeAreNearAPointWhereverItLies) {
    for (const auto& [columns, rows] : {std::pair<std::size_t, std::size_t>{61, 41}, {401, 3}, {3, 401}}) {
        for (const P2& corner : {P2{0.0, 0.0}, P2{-0.5, -0.5}, P2{-1.0, 7.0}, P2{300.0, -1.0}}) {
            const CellLattice cells = lattice(columns, rows,
                                              [&, across = static_cast<double>(columns - 1),
                                               along = static_cast<double>(rows - 1)](double c, double r) {
                                                  return corner + P2{c / across, r / along};
                                              });
            const CellIndex index(cells, cells.screen, {1e-9, 1e-9});
            std::size_t most = 0;
            for (std::size_t node = 0; node + columns < columns * rows; ++node) {
                if (node % columns + 1 < columns) {
                    most = std::max(most, index.near(cells.cell(cells.screen, node).at(0.4, 0.7)).size());
                }
            }
            EXPECT_GE(most, 1U);
            EXPECT_LE(most, 9U) << columns << " x " << rows << " at " << corner[0] << ' ' << corner[1];
        }
    }
}

TEST(CellIndex, CellsWithoutExtentAreInOneBin) {
    // All at one coordinate, which is so large that the margin vanishes beside it.
    for (const P2& place : {P2{1e8, 1e8}, P2{1e8, 0.5}, P2{0.5, 0.5}}) {
        const CellLattice cells = lattice(4, 3, [&](double, double) { return place; });
        const CellIndex index(cells, cells.screen, {1e-9, 1e-9});
        EXPECT_EQ(index.near(place).size(), 6U) << place[0];
        EXPECT_TRUE(index.near({place[0] + 1, place[1]}).empty());
    }
}

TEST(CellIndex, HasNoUnmappedCells) {
    CellLattice cells = lattice(4, 4, [](double c, double r) { return P2{c / 3.0, r / 3.0}; });
    cells.unused[5] = true;  // between the four cells around node (1, 1)
    const CellIndex index(cells, cells.screen, {0.0, 0.0});
    for (const std::uint32_t node : index.near({0.3, 0.3})) {
        EXPECT_TRUE(cells.isMapped(node % 4, node / 4));
    }
    cells.unused.assign(16, true);
    EXPECT_TRUE(CellIndex(cells, cells.screen, {0.0, 0.0}).near({0.5, 0.5}).empty());
}

/// Both sides of the number of nodes from which on their numbers no longer fit into sixteen bits.
TEST(CellIndex, GuessesTheCellOfItsMiddleHoweverManyThereAre) {
    for (const auto& [columns, rows] :
         {std::pair<std::size_t, std::size_t>{40, 30}, {257, 255}, {256, 256}, {300, 260}}) {
        CellLattice cells = lattice(
            columns, rows,
            [&, across = static_cast<double>(columns - 1), along = static_cast<double>(rows - 1)](double c, double r) {
                return P2{c / across, r / along};
            });
        cells.unused[columns * rows - 1] = true;
        const CellIndex index(cells, cells.screen, {1e-9, 1e-9});
        for (std::size_t row = 0; row + 1 < rows; ++row) {
            for (std::size_t column = 0; column + 1 < columns; ++column) {
                const std::size_t node = row * columns + column;
                const std::size_t expected = cells.isMapped(column, row) ? node : CellIndex::NO_GUESS;
                ASSERT_EQ(index.guess(cells.cell(cells.screen, node).at(0.5, 0.5)), expected)
                    << columns << " x " << rows;
            }
        }
    }
}

TEST(CellIndex, GuessesTheCellOfNearlyEveryPointOfABentLattice) {
    constexpr std::size_t SIDE = 64;
    const CellLattice cells = lattice(SIDE, SIDE, [](double c, double r) {
        const double s = c / (SIDE - 1.0);
        const double t = r / (SIDE - 1.0);
        return P2{0.1 + 0.75 * s + 0.08 * std::sin(3 * t) * (0.5 + s), 0.05 + 0.7 * t + 0.12 * s * s};
    });
    const CellIndex index(cells, cells.screen, {1e-9, 1e-9});
    std::mt19937 random(5);
    std::uniform_real_distribution<double> part(0.0, 1.0);
    constexpr int POINTS = 20000;
    int right = 0;
    for (int i = 0; i < POINTS; ++i) {
        const auto column = static_cast<std::size_t>(part(random) * (SIDE - 1));
        const auto row = static_cast<std::size_t>(part(random) * (SIDE - 1));
        const std::size_t node = row * SIDE + column;
        right += index.guess(cells.cell(cells.screen, node).at(part(random), part(random))) == node ? 1 : 0;
    }
    EXPECT_GT(right, 0.98 * POINTS);
}

TEST(CellIndex, NothingIsNearWhatIsNoNumberOrFarAway) {
    const CellLattice cells = lattice(3, 3, [](double c, double r) { return P2{c / 2.0, r / 2.0}; });
    const CellIndex index(cells, cells.screen, {0.0, 0.0});
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(index.near({nan, 0.5}).empty());
    EXPECT_TRUE(index.near({0.5, nan}).empty());
    EXPECT_TRUE(index.near({1e300, 0.5}).empty());
}

}  // namespace
