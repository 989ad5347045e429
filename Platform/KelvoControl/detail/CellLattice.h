#pragma once

#include "Common/Point.h"
#include "KelvoControl/detail/QuadCell.h"

#include <cstddef>
#include <vector>

namespace KelvoControlDetail {

/// Nodes in rows and columns, column fastest, and the cells between them. Every node has a place in two planes: the
/// picture and the screen.
struct CellLattice {
    std::size_t columns = 0;                ///< nodes in a row, at least 2
    std::size_t rows = 0;                   ///< at least 2
    std::vector<Point<double, 2>> picture;  ///< columns * rows, pixels
    std::vector<Point<double, 2>> screen;   ///< columns * rows, (s, t)
    std::vector<bool> unused;               ///< columns * rows; cells at such a node map nothing

    /// True when none of the four nodes of a cell is unused; 0 <= column < columns - 1, the row likewise.
    [[nodiscard]] bool isMapped(std::size_t column, std::size_t row) const {
        const std::size_t node = row * columns + column;
        return !(unused[node] || unused[node + 1] || unused[node + columns] || unused[node + columns + 1]);
    }

    /// The cell whose first node this is, in one of the two planes.
    [[nodiscard]] QuadCell cell(const std::vector<Point<double, 2>>& plane, std::size_t node) const {
        return {plane[node], plane[node + 1], plane[node + columns], plane[node + columns + 1]};
    }
};

/// A place in a lattice: a cell and where in it.
struct CellPlace {
    std::size_t node = 0;  ///< the cell's first node
    double a = 0;          ///< across the cell, 0 to 1
    double b = 0;          ///< along the cell, 0 to 1
};

}  // namespace KelvoControlDetail
