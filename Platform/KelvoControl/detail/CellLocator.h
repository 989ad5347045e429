#pragma once

#include "KelvoControl/detail/CellLattice.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

// The search for the cell of a lattice that holds a point: along two axes where rows and columns are straight, else by
// an index of its cells.
namespace Veltrani::KelvoControlDetail {

/// Finds the interval of a growing or falling series of numbers that holds a number, in constant time where the numbers
/// are evenly spaced.
class AxisTable {
public:
    /// Returns nothing unless there are at least two numbers, finite, each above the one before, or each below, and not
    /// so near to each other that no number expresses how many of them fit into one unit.
    [[nodiscard]] static std::optional<AxisTable> of(const std::vector<double>& values);

    /// The interval between values `index` and `index + 1`, and the part of it that lies before `value`, 0 to 1; false
    /// outside of the series and for NaN. A value of the series belongs to the interval that begins there.
    [[nodiscard]] bool find(double value, std::size_t& index, double& part) const {
        const double key = value * m_sign;
        if (!(key >= m_first && key <= m_last)) {
            return false;
        }
        // By way of a signed number, which a processor converts in one step.
        index = static_cast<std::size_t>(static_cast<std::int64_t>((key - m_first) * m_guessesPerUnit));
        if (!m_intervals[index].holds(key)) {
            index = m_guesses[index];
            if (!m_intervals[index].holds(key)) {
                index = search(key);
            }
        }
        // Not below zero; rounding may have carried it above one.
        const Interval& interval = m_intervals[index];
        part = std::min((key - interval.begin) * interval.inverseWidth, 1.0);
        return true;
    }

    /// Returns the part of an interval that lies before `value`: 0 before the interval, 1 behind it.
    [[nodiscard]] double partOf(double value, std::size_t index) const {
        const Interval& interval = m_intervals[index];
        const double part = (value * m_sign - interval.begin) * interval.inverseWidth;
        return part > 0 ? (part < 1 ? part : 1) : 0;
    }

private:
    struct Interval {
        double begin, end;
        double inverseWidth;

        /// False for the last number of the series.
        [[nodiscard]] bool holds(double key) const { return key >= begin && key < end; }
    };

    AxisTable() = default;
    [[nodiscard]] std::size_t search(double key) const;

    double m_sign = 1;  ///< -1 for a falling series: it is kept negated, growing
    double m_first = 0;
    double m_last = 0;
    std::vector<Interval> m_intervals;   ///< and one more, which holds nothing
    std::vector<std::size_t> m_guesses;  ///< the interval in the middle of each even part of the range
    double m_guessesPerUnit = 0;
};

/// Returns 1 for each node that is the first one of a mapped cell, else 0.
[[nodiscard]] std::vector<unsigned char> mappedCells(const CellLattice& lattice);

/// Which cells of a lattice may hold a point of one of its planes: the box around all mapped cells, divided evenly into
/// bins, each with the cells whose boxes touch it. A coarser division into tiles holds in each the tangent of the
/// lattice, which names one cell that probably does.
class CellIndex {
public:
    /// @param plane the lattice's picture or screen; finite numbers
    /// @param margin cells count as this much larger on every side
    CellIndex(const CellLattice& lattice, const std::vector<Point<double, 2>>& plane, const Point<double, 2>& margin);

    /// Returns the first nodes of the cells that may hold the point, in the order of the lattice; empty for NaN.
    [[nodiscard]] std::span<const std::uint32_t> near(const Point<double, 2>& point) const {
        if (!(point[0] >= m_low[0] && point[0] <= m_high[0] && point[1] >= m_low[1] && point[1] <= m_high[1])) {
            return {};
        }
        const std::size_t bin = binAt(point[1], 1) * m_bins[0] + binAt(point[0], 0);
        return {m_cells.data() + m_starts[bin], m_starts[bin + 1] - m_starts[bin]};
    }

    /// Returns a cell that probably holds the point, by its first node; `NO_GUESS` where there is none and for NaN.
    /// Testing it first saves the search among those near, whose outcome no processor can predict.
    [[nodiscard]] std::uint32_t guess(const Point<double, 2>& point) const {
        const Point<double, 2> at{(point[0] - m_low[0]) * m_tilesPerUnit[0], (point[1] - m_low[1]) * m_tilesPerUnit[1]};
        if (!(at[0] >= 0 && at[1] >= 0 && at[0] < m_tileLimit[0] && at[1] < m_tileLimit[1])) {
            return NO_GUESS;
        }
        // By way of signed numbers, which a processor converts in one step.
        const auto x = static_cast<std::int32_t>(at[0]);
        const auto y = static_cast<std::int32_t>(at[1]);
        const Tangent& tangent = m_tangents[static_cast<std::size_t>(y) * m_tileColumns + static_cast<std::size_t>(x)];
        const auto fromMiddleX = static_cast<float>(at[0] - x) - 0.5F;
        const auto fromMiddleY = static_cast<float>(at[1] - y) - 0.5F;
        const std::size_t column = cellOf(tangent.column.at(fromMiddleX, fromMiddleY), m_lastColumn);
        const std::size_t row = cellOf(tangent.row.at(fromMiddleX, fromMiddleY), m_lastRow);
        const std::size_t node = row * m_columns + column;
        return m_mapped[node] != 0 ? static_cast<std::uint32_t>(node) : NO_GUESS;
    }

    static constexpr std::uint32_t NO_GUESS = 0xFFFFFFFF;

private:
    /// A coordinate of the lattice, near the middle of a tile.
    struct Slope {
        float middle = 0;
        float perX = 0;  ///< per tile
        float perY = 0;

        [[nodiscard]] float at(float x, float y) const { return middle + x * perX + y * perY; }
    };

    /// The place in the lattice, near the middle of a tile. Small numbers, so that all of them stay in the cache: a
    /// wrong guess costs time, nothing else.
    struct Tangent {
        Slope column;
        Slope row;
    };

    /// A range of bins in both directions, ends included.
    struct BinRange {
        std::size_t firstX = 0, lastX = 0, firstY = 0, lastY = 0;
        [[nodiscard]] std::size_t count() const { return (lastX - firstX + 1) * (lastY - firstY + 1); }
    };

    /// Returns the bin of a coordinate within the box. A bin found for a point and one found for a cell's edge round
    /// alike.
    [[nodiscard]] std::size_t binAt(double value, std::size_t axis) const {
        const auto bin = static_cast<std::size_t>((value - m_low[axis]) * m_binsPerUnit[axis]);
        return bin < m_bins[axis] ? bin : m_bins[axis] - 1;
    }

    /// Returns the cell of a coordinate of the lattice; the first or the last one beyond them, the first one for NaN.
    [[nodiscard]] static std::size_t cellOf(float coordinate, float last) {
        return static_cast<std::size_t>(static_cast<std::int64_t>(coordinate > 0 ? std::min(coordinate, last) : 0.0F));
    }

    /// Sets the box around all cells; returns their mean size.
    [[nodiscard]] Point<double, 2> enclose(const std::vector<QuadCell>& cells);
    /// Chooses the number of bins for cells of a mean size.
    void divideFor(const std::vector<QuadCell>& cells, const Point<double, 2>& meanSize);
    void divide(const std::array<std::size_t, 2>& bins);
    void fill(const std::vector<QuadCell>& cells, const std::vector<std::uint32_t>& nodes);
    void fillTangents(const CellLattice& lattice, const std::vector<Point<double, 2>>& plane);
    [[nodiscard]] Tangent tangentAt(const Point<double, 2>& middle, const CellLattice& lattice,
                                    const std::vector<Point<double, 2>>& plane) const;
    [[nodiscard]] BinRange rangeOf(const QuadCell& cell) const;
    [[nodiscard]] std::size_t entries(const std::vector<QuadCell>& cells) const;

    Point<double, 2> m_margin;
    Point<double, 2> m_low{1.0, 1.0};
    Point<double, 2> m_high;  ///< below m_low when there is no mapped cell
    Point<double, 2> m_binsPerUnit;
    std::array<std::size_t, 2> m_bins{1, 1};
    std::vector<std::uint32_t> m_starts;
    std::vector<std::uint32_t> m_cells;
    Point<double, 2> m_tilesPerUnit;
    Point<double, 2> m_tileLimit;  ///< number of tiles across and along
    std::size_t m_tileColumns = 0;
    std::vector<Tangent> m_tangents;
    std::size_t m_columns = 0;  ///< nodes in a row
    float m_lastColumn = 0;     ///< of the cells
    float m_lastRow = 0;
    std::vector<unsigned char> m_mapped;  ///< by the first node of the cell
};

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
        return (m_axes ? locateByAxes(point, place) : locateByGuess(point, place)) || locateBySearch(point, place);
    }

    // The steps of `locate`, for callers that pass a point on: the first one, by the kind of the lattice, finds most
    // points, and leaves `place` untouched where it is false.

    [[nodiscard]] bool hasAxes() const { return m_axes.has_value(); }
    /// May be called only where `hasAxes` is true.
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
        return false;
    }
    /// May be called only where `hasAxes` is false.
    bool locateByGuess(const Point<double, 2>& point, CellPlace& place) const {
        const std::uint32_t node = m_index->guess(point);
        return node != CellIndex::NO_GUESS && locateIn(node, point, place);
    }
    bool locateBySearch(const Point<double, 2>& point, CellPlace& place) const;

private:
    struct Axes {
        AxisTable across;
        AxisTable along;
    };

    [[nodiscard]] static std::optional<Axes> axesOf(const CellLattice& lattice,
                                                    const std::vector<Point<double, 2>>& plane);

    bool locateNearAxes(const Point<double, 2>& point, CellPlace& place) const;
    /// Locates the point in the cell of this first node, edges included.
    bool locateIn(std::size_t node, const Point<double, 2>& point, CellPlace& place) const {
        return QuadInverse(m_lattice.cell(m_plane, node)).anyPlaceOf(point, [&](const Point<double, 2>& found) {
            if (!isInCell(found)) {
                return false;
            }
            place = {node, found[0], found[1]};
            return true;
        });
    }
    bool locateAmongNear(const Point<double, 2>& point, CellPlace& place) const;
    /// Locates the point in the cell on that side of another one where the formula of the other one, continued, has it.
    bool locateBeside(std::size_t node, const Point<double, 2>& point, CellPlace& place) const;
    /// Locates the point within the tolerance of a cell.
    bool locateNear(const Point<double, 2>& point, CellPlace& place) const;

    const CellLattice& m_lattice;
    const std::vector<Point<double, 2>>& m_plane;
    Point<double, 2> m_tolerance;
    std::optional<Axes> m_axes;
    std::vector<unsigned char> m_mapped;  ///< of a lattice with axes only; see `mappedCells`
    std::optional<CellIndex> m_index;     ///< of every other lattice
};

}  // namespace Veltrani::KelvoControlDetail
