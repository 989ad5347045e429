#pragma once

#include "KelvoControl/detail/CellLattice.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace KelvoControlDetail {

/// Which cells of a lattice may hold a point of one of its planes: the box around all mapped cells, divided evenly into
/// bins, each with the cells whose boxes touch it. A second, finer division tells one cell that probably does.
class CellIndex {
public:
    /// @param plane the lattice's picture or screen; finite numbers
    /// @param margin cells count as this much larger on every side
    CellIndex(const CellLattice& lattice, const std::vector<Point<double, 2>>& plane, const Point<double, 2>& margin);

    /// The first nodes of the cells that may hold the point, in the order of the lattice; empty for NaN.
    [[nodiscard]] std::span<const std::uint32_t> near(const Point<double, 2>& point) const {
        if (!(point[0] >= m_low[0] && point[0] <= m_high[0] && point[1] >= m_low[1] && point[1] <= m_high[1])) {
            return {};
        }
        const std::size_t bin = binAt(point[1], 1) * m_bins[0] + binAt(point[0], 0);
        return {m_cells.data() + m_starts[bin], m_starts[bin + 1] - m_starts[bin]};
    }

    /// A cell that holds most points around this one, by its first node; `NO_GUESS` where there is none and for NaN.
    /// Looking there first saves the search among those near, whose outcome no processor can foresee.
    [[nodiscard]] std::uint32_t guess(const Point<double, 2>& point) const {
        const Point<double, 2> at{(point[0] - m_low[0]) * m_guessesPerUnit[0],
                                  (point[1] - m_low[1]) * m_guessesPerUnit[1]};
        if (!(at[0] >= 0 && at[1] >= 0 && at[0] < m_guessLimit[0] && at[1] < m_guessLimit[1])) {
            return NO_GUESS;
        }
        return m_guesses[static_cast<std::size_t>(at[1]) * m_guessColumns + static_cast<std::size_t>(at[0])];
    }

    static constexpr std::uint32_t NO_GUESS = 0xFFFFFFFF;

private:
    /// A range of bins in both directions, ends included.
    struct BinRange {
        std::size_t firstX = 0, lastX = 0, firstY = 0, lastY = 0;
        [[nodiscard]] std::size_t count() const { return (lastX - firstX + 1) * (lastY - firstY + 1); }
    };

    /// The bin of a coordinate within the box. A bin found for a point and one found for a cell's edge round alike.
    [[nodiscard]] std::size_t binAt(double value, std::size_t axis) const {
        const auto bin = static_cast<std::size_t>((value - m_low[axis]) * m_binsPerUnit[axis]);
        return bin < m_bins[axis] ? bin : m_bins[axis] - 1;
    }

    /// The box around all cells; answers their mean size.
    [[nodiscard]] Point<double, 2> enclose(const std::vector<QuadCell>& cells);
    /// Chooses the number of bins for cells of a mean size.
    void divideFor(const std::vector<QuadCell>& cells, const Point<double, 2>& meanSize);
    void divide(const std::array<std::size_t, 2>& bins);
    void fill(const std::vector<QuadCell>& cells, const std::vector<std::uint32_t>& nodes);
    void fillGuesses(const CellLattice& lattice, const std::vector<Point<double, 2>>& plane);
    [[nodiscard]] BinRange rangeOf(const QuadCell& cell) const;
    [[nodiscard]] std::size_t entries(const std::vector<QuadCell>& cells) const;

    Point<double, 2> m_margin;
    Point<double, 2> m_low{1.0, 1.0};
    Point<double, 2> m_high;  ///< below m_low when there is no mapped cell
    Point<double, 2> m_binsPerUnit;
    std::array<std::size_t, 2> m_bins{1, 1};
    std::vector<std::size_t> m_starts;
    std::vector<std::uint32_t> m_cells;
    Point<double, 2> m_guessesPerUnit;
    Point<double, 2> m_guessLimit;  ///< number of guesses across and along
    std::size_t m_guessColumns = 0;
    std::vector<std::uint32_t> m_guesses;
};

}  // namespace KelvoControlDetail
