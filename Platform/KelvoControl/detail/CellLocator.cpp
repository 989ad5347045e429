#include "KelvoControl/detail/CellLocator.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <utility>

namespace Veltrani::KelvoControlDetail {

namespace {

bool isGrowing(const std::vector<double>& values) {
    for (std::size_t i = 0; i + 1 < values.size(); ++i) {
        if (!(values[i] < values[i + 1])) {
            return false;
        }
    }
    return true;
}

/// Bins across a cell of mean size, so that most bins hold one or two cells.
constexpr double BINS_ACROSS_CELL = 2;
constexpr double MOST_BINS_PER_CELL = BINS_ACROSS_CELL * BINS_ACROSS_CELL;

/// Entries for each cell. Cells of one size need about ten; where some are far larger than others, or all lie over each
/// other, the bins are made coarser until that many suffice: the memory stays in proportion to the file.
constexpr std::size_t MOST_ENTRIES_PER_CELL = 16;

/// Guesses across a bin, as long as there are not too many in all: with eight across a cell, nearly nine guesses of ten
/// are right, and beside a wrong one is the cell. More of them would not stay in the cache.
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

std::optional<AxisTable> AxisTable::of(const std::vector<double>& values) {
    if (values.size() < 2) {
        return std::nullopt;
    }
    const double sign = values.back() < values.front() ? -1 : 1;
    std::vector<double> keys = values;
    std::transform(keys.begin(), keys.end(), keys.begin(), [sign](double value) { return value * sign; });
    if (!isGrowing(keys)) {
        return std::nullopt;
    }
    AxisTable table;
    table.m_sign = sign;
    table.m_first = keys.front();
    table.m_last = keys.back();
    for (std::size_t i = 0; i + 1 < keys.size(); ++i) {
        table.m_intervals.push_back({keys[i], keys[i + 1], 1 / (keys[i + 1] - keys[i])});
    }
    const std::size_t intervals = table.m_intervals.size();
    table.m_intervals.push_back({table.m_last, table.m_last, 0});
    const double range = table.m_last - table.m_first;
    const auto count = static_cast<double>(intervals);
    table.m_guessesPerUnit = count / range;
    for (std::size_t i = 0; i < intervals; ++i) {
        const double middle = table.m_first + range * ((static_cast<double>(i) + 0.5) / count);
        table.m_guesses.push_back(table.search(middle));
    }
    // One more, as there is of the intervals: rounding may put the last value just behind the last part.
    table.m_guesses.push_back(intervals - 1);
    const auto isUsable = [](double number) { return std::isfinite(number) && number > 0; };
    const bool usable = isUsable(range) && isUsable(table.m_guessesPerUnit) &&
                        std::all_of(table.m_intervals.begin(), table.m_intervals.end() - 1,
                                    [&](const Interval& interval) { return isUsable(interval.inverseWidth); });
    return usable ? std::optional(std::move(table)) : std::nullopt;
}

std::size_t AxisTable::search(double key) const {
    const auto after =
        std::upper_bound(m_intervals.begin() + 1, m_intervals.end() - 1, key,
                         [](double wanted, const Interval& interval) { return wanted < interval.begin; });
    return static_cast<std::size_t>(after - m_intervals.begin()) - 1;
}

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
    // The entries are counted first, then filled in: bin after bin in one list.
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
            if (QuadInverse(lattice.cell(plane, node)).anyPlaceOf(point, isInCell)) {
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
    if (lattice.columns * lattice.rows <= NO_SHORT_GUESS) {
        std::transform(m_guesses.begin(), m_guesses.end(), std::back_inserter(m_shortGuesses),
                       [](std::uint32_t node) { return static_cast<std::uint16_t>(node); });
        m_guesses = {};
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

CellLocator::CellLocator(const CellLattice& lattice, const std::vector<Point<double, 2>>& plane,
                         const Point<double, 2>& tolerance)
    : m_lattice(lattice), m_plane(plane), m_tolerance(tolerance), m_axes(axesOf(lattice, plane)) {
    if (!m_axes) {
        m_index.emplace(lattice, plane, tolerance);
        return;
    }
    m_mapped.assign(plane.size(), 0);
    for (std::size_t row = 0; row + 1 < lattice.rows; ++row) {
        for (std::size_t column = 0; column + 1 < lattice.columns; ++column) {
            m_mapped[row * lattice.columns + column] = lattice.isMapped(column, row) ? 1 : 0;
        }
    }
}

std::optional<CellLocator::Axes> CellLocator::axesOf(const CellLattice& lattice,
                                                     const std::vector<Point<double, 2>>& plane) {
    for (std::size_t node = 0; node < plane.size(); ++node) {
        const std::size_t column = node % lattice.columns;
        if (plane[node][0] != plane[column][0] || plane[node][1] != plane[node - column][1]) {
            return std::nullopt;
        }
    }
    std::vector<double> across;
    std::vector<double> along;
    for (std::size_t column = 0; column < lattice.columns; ++column) {
        across.push_back(plane[column][0]);
    }
    for (std::size_t row = 0; row < lattice.rows; ++row) {
        along.push_back(plane[row * lattice.columns][1]);
    }
    std::optional<AxisTable> acrossTable = AxisTable::of(across);
    std::optional<AxisTable> alongTable = AxisTable::of(along);
    if (!acrossTable || !alongTable) {
        return std::nullopt;
    }
    return Axes{std::move(*acrossTable), std::move(*alongTable)};
}

bool CellLocator::locateNearAxes(const Point<double, 2>& point, CellPlace& place) const {
    // The corners of the tolerance around the point: every cell that it touches holds one of them.
    const Point<double, 2> low = point - m_tolerance;
    const Point<double, 2> high = point + m_tolerance;
    std::optional<CellPlace> found;
    for (const double x : {low[0], high[0]}) {
        for (const double y : {low[1], high[1]}) {
            std::size_t column = 0;
            std::size_t row = 0;
            CellPlace corner;
            if (!m_axes->across.find(x, column, corner.a) || !m_axes->along.find(y, row, corner.b)) {
                continue;
            }
            corner = {row * m_lattice.columns + column, m_axes->across.partOf(point[0], column),
                      m_axes->along.partOf(point[1], row)};
            if (m_mapped[corner.node] != 0 && (!found || corner.node < found->node)) {
                found = corner;
            }
        }
    }
    if (!found) {
        return false;
    }
    place = *found;
    return true;
}

bool CellLocator::locateBySearch(const Point<double, 2>& point, CellPlace& place) const {
    return m_axes ? locateNearAxes(point, place) : locateAmongNear(point, place);
}

bool CellLocator::locateBeside(std::size_t node, const Point<double, 2>& point, CellPlace& place) const {
    Point<double, 2> beyond;
    QuadInverse(m_lattice.cell(m_plane, node)).anyPlaceOf(point, [&beyond](const Point<double, 2>& found) {
        beyond = found;
        return true;
    });
    const auto stepped = [](std::size_t index, double part, std::size_t cells, std::size_t& neighbour) {
        const bool isBefore = part < 0;
        const bool isBehind = part > 1;
        neighbour = index - static_cast<std::size_t>(isBefore) + static_cast<std::size_t>(isBehind);
        return !(isBefore && index == 0) && neighbour < cells;
    };
    std::size_t column = 0;
    std::size_t row = 0;
    return stepped(node % m_lattice.columns, beyond[0], m_lattice.columns - 1, column) &&
           stepped(node / m_lattice.columns, beyond[1], m_lattice.rows - 1, row) && m_lattice.isMapped(column, row) &&
           locateIn(row * m_lattice.columns + column, point, place);
}

bool CellLocator::locateAmongNear(const Point<double, 2>& point, CellPlace& place) const {
    // Where the guess is wrong, the point is mostly just beyond an edge of that cell.
    const std::uint32_t guess = m_index->guess(point);
    if (guess != CellIndex::NO_GUESS && locateBeside(guess, point, place)) {
        return true;
    }
    constexpr Point<double, 2> NO_MARGIN;
    for (const std::uint32_t node : m_index->near(point)) {
        if (m_lattice.cell(m_plane, node).boxHolds(point, NO_MARGIN) && locateIn(node, point, place)) {
            return true;
        }
    }
    return locateNear(point, place);
}

bool CellLocator::locateNear(const Point<double, 2>& point, CellPlace& place) const {
    for (const std::uint32_t node : m_index->near(point)) {
        const QuadCell cell = m_lattice.cell(m_plane, node);
        const auto accept = [&](const Point<double, 2>& found) {
            const CellPlace nearest{node, toPart(found[0]), toPart(found[1])};
            const Point<double, 2> miss = cell.at(nearest.a, nearest.b) - point;
            if (std::abs(miss[0]) <= m_tolerance[0] && std::abs(miss[1]) <= m_tolerance[1]) {
                place = nearest;
                return true;
            }
            return false;
        };
        // The places of the formula alone would leave out the edges of a slanted cell: outside of it they lie in the
        // direction of its rows, far along the edge.
        if (cell.boxHolds(point, m_tolerance) &&
            (QuadInverse(cell).anyPlaceUpToFold(point, accept) || cell.anyEdgePlaceOf(point, m_tolerance, accept))) {
            return true;
        }
    }
    return false;
}

}  // namespace Veltrani::KelvoControlDetail
