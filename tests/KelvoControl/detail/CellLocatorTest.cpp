#include "KelvoControl/detail/CellLocator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using KelvoControlDetail::CellLattice;
using KelvoControlDetail::CellLocator;
using KelvoControlDetail::CellPlace;
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
