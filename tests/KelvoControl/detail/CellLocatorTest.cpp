#include "KelvoControl/detail/CellLocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace {

using Veltrani::KelvoControlDetail::CellLattice;
using Veltrani::KelvoControlDetail::CellLocator;
using Veltrani::KelvoControlDetail::CellPlace;
using Veltrani::KelvoControlDetail::QuadCell;
using P2 = Point<double, 2>;

constexpr P2 TOLERANCE{1e-9, 1e-9};

/// Five columns, four rows over (0..4, 0..3), moved by `bend` times a wave.
CellLattice lattice(double bend) {
    CellLattice made;
    made.columns = 5;
    made.rows = 4;
    for (std::size_t node = 0; node < 20; ++node) {
        const auto column = static_cast<double>(node % 5);
        const auto row = static_cast<double>(node / 5);
        made.screen.push_back({column + bend * std::sin(2 * row), row + bend * std::sin(3 * column)});
    }
    made.picture = made.screen;
    made.unused.assign(20, false);
    return made;
}

/// The middle of every cell is found in that cell, both for straight lattices and for bent ones.
TEST(CellLocator, FindsTheMiddleOfEveryMappedCell) {
    for (const double bend : {0.0, 0.15}) {
        CellLattice cells = lattice(bend);
        cells.unused[7] = true;
        const CellLocator locator(cells, cells.screen, TOLERANCE);
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 4; ++column) {
                const std::size_t node = row * 5 + column;
                CellPlace place{99, 7, 7};
                const bool found = locator.locate(cells.cell(cells.screen, node).at(0.5, 0.25), place);
                ASSERT_EQ(found, cells.isMapped(column, row)) << node;
                EXPECT_EQ(place.node, found ? node : 99);
                EXPECT_NEAR(place.a, found ? 0.5 : 7, 1e-14);
                EXPECT_NEAR(place.b, found ? 0.25 : 7, 1e-14);
            }
        }
    }
}

TEST(CellLocator, ALatticeHasAxesWhenItsRowsAndColumnsAreStraightAndParallelToThem) {
    const auto hasAxes = [](const CellLattice& cells) { return CellLocator(cells, cells.screen, TOLERANCE).hasAxes(); };
    EXPECT_TRUE(hasAxes(lattice(0.0)));
    EXPECT_FALSE(hasAxes(lattice(0.15)));
    for (std::size_t node = 0; node < 20; ++node) {
        for (const std::size_t axis : {0U, 1U}) {
            CellLattice cells = lattice(0.0);
            cells.screen[node][axis] += 1e-12;
            EXPECT_FALSE(hasAxes(cells)) << node << ' ' << axis;
        }
    }
    CellLattice single;
    single.columns = single.rows = 2;
    single.screen = {{3.0, 9.0}, {1.0, 9.0}, {3.0, 5.0}, {1.0, 5.0}};
    single.picture = single.screen;
    single.unused.assign(4, false);
    EXPECT_TRUE(hasAxes(single));
}

// Near edges the guessed cell is often the one beside, also where that one is unused.
TEST(CellLocator, FindsPlacesNearTheEdgesOfEveryMappedCell) {
    CellLattice cells = lattice(0.15);
    cells.unused[7] = true;
    const CellLocator locator(cells, cells.screen, TOLERANCE);
    int found = 0;
    for (std::size_t node = 0; node < 14; ++node) {
        if (node % 5 == 4 || !cells.isMapped(node % 5, node / 5)) {
            continue;
        }
        for (const double a : {1e-6, 0.01, 0.3, 0.8, 0.99, 1 - 1e-6}) {
            for (const double b : {1e-6, 0.02, 0.4, 0.7, 0.98, 1 - 1e-6}) {
                CellPlace place;
                ASSERT_TRUE(locator.locate(cells.cell(cells.screen, node).at(a, b), place)) << node << ": " << a << b;
                EXPECT_EQ(place.node, node) << a << ' ' << b;
                EXPECT_NEAR(place.a, a, 1e-12);
                EXPECT_NEAR(place.b, b, 1e-12);
                ++found;
            }
        }
    }
    EXPECT_EQ(found, 8 * 36);
}

TEST(CellLocator, WithinTheToleranceTheBorderHoldsAPointAndBeyondItDoesNot) {
    for (const double bend : {0.0, 0.15}) {
        const CellLattice cells = lattice(bend);
        const CellLocator locator(cells, cells.screen, TOLERANCE);
        const P2 corner = cells.screen.back();
        CellPlace place;
        ASSERT_TRUE(locator.locate(corner + P2{0.9e-9, 0.9e-9}, place)) << bend;
        EXPECT_EQ(place.node, 13U);
        EXPECT_NEAR(place.a, 1, 1e-8);
        EXPECT_LE(place.a, 1);
        EXPECT_FALSE(locator.locate(corner + P2{1e-6, 1e-6}, place)) << bend;
        EXPECT_FALSE(locator.locate(P2{-1.0, 1.0}, place)) << bend;
    }
}

/// Cells that lean over so far that a row lies ten cells beside the one below it.
CellLattice leaning() {
    CellLattice made = lattice(0.0);
    for (P2& node : made.screen) {
        node[0] += 10 * node[1];
    }
    return made;
}

TEST(CellLocator, TheToleranceIsTheSameAroundLeaningCells) {
    const CellLattice cells = leaning();
    const CellLocator locator(cells, cells.screen, TOLERANCE);
    CellPlace place;
    for (int i = 0; i <= 40; ++i) {
        const double x = 0.1 * i;
        ASSERT_TRUE(locator.locate({x, -0.9e-9}, place)) << x;
        EXPECT_EQ(place.b, 0) << x;
        EXPECT_LE(norm(cells.cell(cells.screen, place.node).at(place.a, place.b) - P2{x, 0.0}), 1e-12) << x;
        EXPECT_FALSE(locator.locate({x, -1.1e-9}, place)) << x;
        ASSERT_TRUE(locator.locate({30 + x, 3 + 0.9e-9}, place)) << x;
        EXPECT_FALSE(locator.locate({30 + x, 3 + 1.1e-9}, place)) << x;
    }
}

TEST(CellLocator, AnUnusedCellHoldsNothingButTheToleranceOfItsUsedNeighbours) {
    for (const bool leans : {false, true}) {
        CellLattice cells = leans ? leaning() : lattice(0.0);
        cells.unused[12] = true;  // takes cells 6, 7, 11 and 12: (1..3, 1..3) before they lean
        const CellLocator locator(cells, cells.screen, TOLERANCE);
        const double lean = leans ? 10 : 0;
        CellPlace place;
        for (int i = 1; i < 20; ++i) {
            // Above the used cell (1, 0), from just inside of it to deep in the unused cell (1, 1).
            const double x = lean + 1 + 0.05 * i;
            ASSERT_TRUE(locator.locate({x, 1.0}, place)) << x;
            ASSERT_TRUE(locator.locate({x, 1 + 0.9e-9}, place)) << x;
            EXPECT_EQ(place.node, 1U) << x;
            EXPECT_EQ(place.b, 1) << x;
            for (const double above : {1.1e-9, 1e-8, 1e-6, 1e-3, 0.5}) {
                EXPECT_FALSE(locator.locate({x + lean * above, 1 + above}, place)) << x << " + " << above;
            }
        }
    }
}

/// How far a point lies outside of a convex cell, by its four straight edges; 0 inside of it.
long double distanceTo(const QuadCell& cell, const P2& point) {
    const P2 corners[] = {cell.origin, cell.alongA, cell.across, cell.alongB, cell.origin};
    bool isInside = true;
    long double nearest = std::numeric_limits<long double>::infinity();
    for (std::size_t i = 0; i < 4; ++i) {
        const long double ex = static_cast<long double>(corners[i + 1][0]) - corners[i][0];
        const long double ey = static_cast<long double>(corners[i + 1][1]) - corners[i][1];
        const long double px = static_cast<long double>(point[0]) - corners[i][0];
        const long double py = static_cast<long double>(point[1]) - corners[i][1];
        isInside = isInside && ex * py - ey * px >= 0;
        const long double part = std::clamp((px * ex + py * ey) / (ex * ex + ey * ey), 0.0L, 1.0L);
        nearest = std::min(nearest, std::hypot(px - part * ex, py - part * ey));
    }
    return isInside ? 0 : nearest;
}

// By another route: along the edges of all cells, on both sides of them, what is accepted is what used cells hold and
// what lies around them within the tolerance.
TEST(CellLocator, AcceptsWhatUsedCellsHoldAndWhatIsWithinTheToleranceAroundThem) {
    CellLattice cells = lattice(0.2);
    cells.unused[7] = cells.unused[15] = true;
    const CellLocator locator(cells, cells.screen, TOLERANCE);
    std::mt19937 random(31);
    std::uniform_real_distribution<double> part(0.0, 1.0);
    int accepted = 0;
    int refused = 0;
    for (int i = 0; i < 20'000; ++i) {
        const QuadCell at = cells.cell(cells.screen, static_cast<std::size_t>(i / 4 % 3 * 5 + i / 12 % 4));
        const P2 from = i % 4 < 2 ? at.origin : at.across;
        const P2 edge = (i % 2 == 0 ? at.alongA : at.alongB) - from;
        const P2 aside = P2{-edge[1], edge[0]} * (std::pow(10.0, -7 - 3 * part(random)) / norm(edge));
        const P2 point = from + edge * part(random) + aside * (part(random) < 0.5 ? -1.0 : 1.0);
        long double distance = std::numeric_limits<long double>::infinity();
        for (std::size_t node = 0; node < 14; ++node) {
            if (node % 5 < 4 && cells.isMapped(node % 5, node / 5)) {
                distance = std::min(distance, distanceTo(cells.cell(cells.screen, node), point));
            }
        }
        if (distance > 0.999e-9L && distance < 1.42e-9L) {
            continue;  // near the corners of the tolerance, which is a box
        }
        CellPlace place;
        const bool isFound = locator.locate(point, place);
        ASSERT_EQ(isFound, distance < 1e-9L) << i << ": " << static_cast<double>(distance);
        ++(isFound ? accepted : refused);
        if (isFound) {
            EXPECT_TRUE(cells.isMapped(place.node % 5, place.node / 5));
            EXPECT_LE(norm(cells.cell(cells.screen, place.node).at(place.a, place.b) - point), 1.42e-9) << i;
        }
    }
    EXPECT_GT(accepted, 10'000);
    EXPECT_GT(refused, 2'000);
}

TEST(CellLocator, BeyondTheFoldOfACellThereIsNothing) {
    CellLattice cells;
    cells.columns = cells.rows = 2;
    cells.screen = {{0.0, 0.0}, {1.0, 0.0}, {0.0, 1.0}, {0.2, 0.2}};  // folds at (0.3125, 0.3125)
    cells.picture = cells.screen;
    cells.unused.assign(4, false);
    const CellLocator locator(cells, cells.screen, TOLERANCE);
    CellPlace place;
    EXPECT_TRUE(locator.locate({0.3, 0.3}, place));
    EXPECT_TRUE(locator.locate({0.3125 + 0.9e-9, 0.3125 + 0.9e-9}, place)) << "within the tolerance";
    int beyond = 0;
    for (int row = 0; row <= 100; ++row) {
        for (int column = 0; column <= 100; ++column) {
            const P2 point{0.01 * column, 0.01 * row};
            if (locator.locate(point, place)) {
                EXPECT_LE(norm(cells.cell(cells.screen, 0).at(place.a, place.b) - point), 2e-9) << column << ' ' << row;
            } else {
                ++beyond;
            }
        }
    }
    EXPECT_GT(beyond, 5000) << "the cell fills less than half of its box";
}

TEST(CellLocator, WhatIsNoNumberIsNowhere) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    for (const double bend : {0.0, 0.15}) {
        const CellLattice cells = lattice(bend);
        const CellLocator locator(cells, cells.screen, TOLERANCE);
        CellPlace place{99, 7, 7};
        for (const P2& point : {P2{nan, 1.0}, P2{1.0, nan}, P2{infinite, 1.0}, P2{1.0, -infinite}}) {
            EXPECT_FALSE(locator.locate(point, place)) << bend;
        }
        EXPECT_EQ(place.node, 99U);
    }
}

}  // namespace
