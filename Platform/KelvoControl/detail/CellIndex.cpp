#include "KelvoControl/detail/CellIndex.h"

#include <algorithm>
#include <cmath>

namespace KelvoControlDetail {

namespace {

/// Bins across a cell of mean size, so that most bins hold one or two cells.
constexpr double BINS_ACROSS_CELL = 2;
constexpr double MOST_BINS_PER_CELL = BINS_ACROSS_CELL * BINS_ACROSS_CELL;

/// Entries for each cell. Cells of one size need about ten; where some are far larger than others, or all lie over each
/// other, the bins are made coarser until that many suffice: the memory stays in proportion to the file.
constexpr std::size_t MOST_ENTRIES_PER_CELL = 16;

/// Guesses across a bin, as long as there are not too many in all: with eight across a cell, more than nine guesses of
/// ten are right.
constexpr double GUESSES_ACROSS_BIN = 4;
constexpr double MOST_GUESSES = 1024.0 * 1024.0;

std::vector<std::uint32_t> mappedNodes(const CellLattice& lattice) {
    std::vector<std::uint32_t> nodes;
    for (std::size_t row = 0; row + 1 < lattice.rows; ++row) {
        for (std::size_t column = 0; column + 1 < lattice.columns; ++column) {
            if (lattice.isMapped(column, row)) {
                nodes.push_back(static_cast<std::uint32_t>(row * lattice.columns + column));
            }
        }
    }
    return nodes;
}

double lowest(const QuadCell& cell, std::size_t axis) {
    return std::min({cell.origin[axis], cell.alongA[axis], cell.alongB[axis], cell.across[axis]});
}

double highest(const QuadCell& cell, std::size_t axis) {
    return std::max({cell.origin[axis], cell.alongA[axis], cell.alongB[axis], cell.across[axis]});
}

}  // namespace

CellIndex::CellIndex(const CellLattice& lattice, const std::vector<Point<double, 2>>& plane,
                     const Point<double, 2>& margin)
    : m_margin(margin) {
    const std::vector<std::uint32_t> nodes = mappedNodes(lattice);
    if (nodes.empty()) {
        return;
    }
    std::vector<QuadCell> cells;
    cells.reserve(nodes.size());
    for (const std::uint32_t node : nodes) {
        cells.push_back(lattice.cell(plane, node));
    }
    divideFor(cells, enclose(cells));
    fill(cells, nodes);
    fillGuesses(lattice, plane);
}

Point<double, 2> CellIndex::enclose(const std::vector<QuadCell>& cells) {
    Point<double, 2> size;
    m_low = m_high = cells.front().origin;
    for (const QuadCell& cell : cells) {
        for (std::size_t axis = 0; axis < 2; ++axis) {
            const double low = lowest(cell, axis) - m_margin[axis];
            const double high = highest(cell, axis) + m_margin[axis];
            m_low[axis] = std::min(m_low[axis], low);
            m_high[axis] = std::max(m_high[axis], high);
            size[axis] += (high - low) / static_cast<double>(cells.size());
        }
    }
    return size;
}

void CellIndex::divideFor(const std::vector<QuadCell>& cells, const Point<double, 2>& meanSize) {
    const auto count = static_cast<double>(cells.size());
    Point<double, 2> bins;
    for (std::size_t axis = 0; axis < 2; ++axis) {
        // Cells without extent, all at one coordinate, need no division.
        const double wanted =
            meanSize[axis] > 0 ? BINS_ACROSS_CELL * (m_high[axis] - m_low[axis]) / meanSize[axis] : 1.0;
        bins[axis] = std::clamp(std::ceil(wanted), 1.0, std::ceil(MOST_BINS_PER_CELL * count));
    }
    const double excess = std::max(bins[0] * bins[1] / (MOST_BINS_PER_CELL * count + 1), 1.0);
    for (std::size_t axis = 0; axis < 2; ++axis) {
        bins[axis] = std::max(std::floor(bins[axis] / std::sqrt(excess)), 1.0);
    }
    divide({static_cast<std::size_t>(bins[0]), static_cast<std::size_t>(bins[1])});
    while ((m_bins[0] > 1 || m_bins[1] > 1) && entries(cells) > MOST_ENTRIES_PER_CELL * cells.size()) {
        divide({(m_bins[0] + 1) / 2, (m_bins[1] + 1) / 2});
    }
}

void CellIndex::divide(const std::array<std::size_t, 2>& bins) {
    m_bins = bins;
    for (std::size_t axis = 0; axis < 2; ++axis) {
        const double extent = m_high[axis] - m_low[axis];
        m_binsPerUnit[axis] = extent > 0 ? static_cast<double>(bins[axis]) / extent : 0;
    }
}

void CellIndex::fill(const std::vector<QuadCell>& cells, const std::vector<std::uint32_t>& nodes) {
    const auto forEachEntry = [&](const auto& visit) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const BinRange range = rangeOf(cells[i]);
            for (std::size_t y = range.firstY; y <= range.lastY; ++y) {
                for (std::size_t x = range.firstX; x <= range.lastX; ++x) {
                    visit(y * m_bins[0] + x, nodes[i]);
                }
            }
        }
    };
    // Counted first, then filled: bin after bin in one list.
    m_starts.assign(m_bins[0] * m_bins[1] + 1, 0);
    forEachEntry([&](std::size_t bin, std::uint32_t) { ++m_starts[bin + 1]; });
    for (std::size_t bin = 0; bin + 1 < m_starts.size(); ++bin) {
        m_starts[bin + 1] += m_starts[bin];
    }
    m_cells.resize(m_starts.back());
    std::vector<std::size_t> next(m_starts.begin(), m_starts.end() - 1);
    forEachEntry([&](std::size_t bin, std::uint32_t node) { m_cells[next[bin]++] = node; });
}

void CellIndex::fillGuesses(const CellLattice& lattice, const std::vector<Point<double, 2>>& plane) {
    const auto bins = static_cast<double>(m_bins[0] * m_bins[1]);
    const double perBin = std::min(GUESSES_ACROSS_BIN, std::sqrt(MOST_GUESSES / bins));
    for (std::size_t axis = 0; axis < 2; ++axis) {
        m_guessLimit[axis] = std::max(std::floor(static_cast<double>(m_bins[axis]) * perBin), 1.0);
        const double extent = m_high[axis] - m_low[axis];
        m_guessesPerUnit[axis] = extent > 0 ? m_guessLimit[axis] / extent : 0;
    }
    m_guessColumns = static_cast<std::size_t>(m_guessLimit[0]);
    const auto holding = [&](const Point<double, 2>& point) {
        for (const std::uint32_t node : near(point)) {
            if (lattice.cell(plane, node).anyPlaceOf(point, isInCell)) {
                return node;
            }
        }
        return NO_GUESS;
    };
    const auto centre = [&](std::size_t bin, std::size_t axis) {
        return m_low[axis] + (static_cast<double>(bin) + 0.5) / m_guessesPerUnit[axis];
    };
    for (std::size_t y = 0; y < static_cast<std::size_t>(m_guessLimit[1]); ++y) {
        for (std::size_t x = 0; x < m_guessColumns; ++x) {
            m_guesses.push_back(holding({centre(x, 0), centre(y, 1)}));
        }
    }
}

CellIndex::BinRange CellIndex::rangeOf(const QuadCell& cell) const {
    return {binAt(lowest(cell, 0) - m_margin[0], 0), binAt(highest(cell, 0) + m_margin[0], 0),
            binAt(lowest(cell, 1) - m_margin[1], 1), binAt(highest(cell, 1) + m_margin[1], 1)};
}

std::size_t CellIndex::entries(const std::vector<QuadCell>& cells) const {
    std::size_t count = 0;
    for (const QuadCell& cell : cells) {
        count += rangeOf(cell).count();
    }
    return count;
}

}  // namespace KelvoControlDetail
