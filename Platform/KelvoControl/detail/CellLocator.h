#pragma once

#include "KelvoControl/detail/AxisTable.h"
#include "KelvoControl/detail/CellIndex.h"
#include "KelvoControl/detail/CellLattice.h"

#include <optional>
#include <vector>

namespace KelvoControlDetail {

/// Finds the cell of a lattice that holds a point of one of its planes, and the place in it.
///
/// A lattice of straight rows and columns, parallel to the axes of the plane, is looked up by its two axes; any other
/// by the exact inverse of the cells near the point. Where cells overlap, one of them holds the point, always the same.
/// A point that no cell holds belongs to the first one, in the order of the lattice, that it misses by no more than the
/// tolerance: rounding opens no gap between two cells, nor at the border.
class CellLocator {
public:
    /// @param lattice must outlive the locator, where it is
    /// @param plane the lattice's picture or screen
    /// @param tolerance in units of the plane, by axis
    CellLocator(const CellLattice& lattice, const std::vector<Point<double, 2>>& plane,
                const Point<double, 2>& tolerance);

    /// False, with `place` untouched, outside of all mapped cells and for NaN.
    bool locate(const Point<double, 2>& point, CellPlace& place) const {
        return m_axes ? locateByAxes(point, place) : locateByIndex(point, place);
    }

private:
    struct Axes {
        AxisTable across;
        AxisTable along;
    };

    [[nodiscard]] static std::optional<Axes> axesOf(const CellLattice& lattice,
                                                    const std::vector<Point<double, 2>>& plane);

    bool locateByAxes(const Point<double, 2>& point, CellPlace& place) const {
        std::size_t column = 0;
        std::size_t row = 0;
        CellPlace found;
        if (m_axes->across.find(point[0], column, found.a) && m_axes->along.find(point[1], row, found.b) &&
            m_mapped[row * m_lattice.columns + column] != 0) {
            found.node = row * m_lattice.columns + column;
            place = found;
            return true;
        }
        return locateNearAxes(point, place);
    }
    bool locateNearAxes(const Point<double, 2>& point, CellPlace& place) const;
    bool locateByIndex(const Point<double, 2>& point, CellPlace& place) const;
    /// In the cell of this first node, edges included.
    bool locateIn(std::size_t node, const Point<double, 2>& point, CellPlace& place) const;
    bool locateAmongNear(const Point<double, 2>& point, CellPlace& place) const;
    /// Within the tolerance of a cell.
    bool locateNear(const Point<double, 2>& point, CellPlace& place) const;

    const CellLattice& m_lattice;
    const std::vector<Point<double, 2>>& m_plane;
    Point<double, 2> m_tolerance;
    std::optional<Axes> m_axes;
    std::vector<unsigned char> m_mapped;  ///< by the first node of the cell; of a lattice with axes only
    std::optional<CellIndex> m_index;     ///< of every other lattice
};

}  // namespace KelvoControlDetail
