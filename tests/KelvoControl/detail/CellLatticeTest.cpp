#include "KelvoControl/detail/CellLattice.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::KelvoControlDetail::CellLattice;
using Veltrani::KelvoControlDetail::QuadCell;
using P2 = Point<double, 2>;

/// Three columns, four rows: node (c, r) at (10 c, r) in the picture, at (c, 100 r) on the screen.
CellLattice lattice() {
    CellLattice made;
    made.columns = 3;
    made.rows = 4;
    for (int node = 0; node < 12; ++node) {
        made.picture.push_back({10.0 * (node % 3), 1.0 * (node / 3)});
        made.screen.push_back({1.0 * (node % 3), 100.0 * (node / 3)});
    }
    made.unused.assign(12, false);
    return made;
}

TEST(CellLattice, ACellLiesBetweenItsFirstNodeTheNextAndTheRowBehind) {
    const CellLattice cells = lattice();
    const QuadCell cell = cells.cell(cells.picture, 4);
    EXPECT_EQ(cell.origin, P2(10.0, 1.0));
    EXPECT_EQ(cell.alongA, P2(20.0, 1.0));
    EXPECT_EQ(cell.alongB, P2(10.0, 2.0));
    EXPECT_EQ(cell.across, P2(20.0, 2.0));
    EXPECT_EQ(cells.cell(cells.screen, 4).across, P2(2.0, 200.0));
}

TEST(CellLattice, AnUnusedNodeUnmapsTheCellsAroundItAndNoOthers) {
    CellLattice cells = lattice();
    cells.unused[4] = true;  // (1, 1)
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 2; ++column) {
            EXPECT_EQ(cells.isMapped(column, row), row == 2) << column << ", " << row;
        }
    }
    cells.unused[4] = false;
    cells.unused[11] = true;  // the last corner
    EXPECT_FALSE(cells.isMapped(1, 2));
    EXPECT_TRUE(cells.isMapped(0, 2));
}

}  // namespace
