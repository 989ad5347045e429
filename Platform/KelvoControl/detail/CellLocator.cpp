#include "KelvoControl/detail/CellLocator.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
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

/// About one tile for each cell of mean size: where the cells beside each other are alike, the tangent in its middle is
/// off by a few hundredths of a cell.
constexpr double TILES_ACROSS_BIN = 1 / BINS_ACROSS_CELL;
constexpr double MOST_TILES = 4.0 * 1024 * 1024;

std::vector<std::uint32_t> mappedNodes(const std::vector<unsigned char>& mapped) {
    std::vector<std::uint32_t> nodes;
    for (std::size_t node = 0; node < mapped.size(); ++node) {
        if (mapped[node] != 0) {
            nodes.push_back(static_cast<std::uint32_t>(node));
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

std::vector<unsigned char> mappedCells(const CellLattice& lattice) {
    std::vector<unsigned char> mapped(lattice.columns * lattice.rows);
    for (std::size_t row = 0; row + 1 < lattice.rows; ++row) {
        for (std::size_t column = 0; column + 1 < lattice.columns; ++column) {
            mapped[row * lattice.columns + column] = lattice.isMapped(column, row) ? 1 : 0;
        }
    }
    return mapped;
}

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
    : m_margin(margin), m_columns(lattice.columns), m_mapped(mappedCells(lattice)) {
    const std::vector<std::uint32_t> nodes = mappedNodes(m_mapped);
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
    fillTangents(lattice, plane);
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
    // A single bin has one entry for each cell.
    while (entries(cells) > MOST_ENTRIES_PER_CELL * cells.size()) {
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

void CellIndex::fillTangents(const CellLattice& lattice, const std::vector<Point<double, 2>>& plane) {
    m_lastColumn = static_cast<float>(lattice.columns - 2);
    m_lastRow = static_cast<float>(lattice.rows - 2);
    const auto bins = static_cast<double>(m_bins[0] * m_bins[1]);
    const double perBin = std::min(TILES_ACROSS_BIN, std::sqrt(MOST_TILES / bins));
    for (std::size_t axis = 0; axis < 2; ++axis) {
        m_tileLimit[axis] = std::max(std::floor(static_cast<double>(m_bins[axis]) * perBin), 1.0);
        const double extent = m_high[axis] - m_low[axis];
        m_tilesPerUnit[axis] = extent > 0 ? m_tileLimit[axis] / extent : 0;
    }
    m_tileColumns = static_cast<std::size_t>(m_tileLimit[0]);
    const auto middle = [&](std::size_t tile, std::size_t axis) {
        return m_low[axis] + (static_cast<double>(tile) + 0.5) / m_tilesPerUnit[axis];
    };
    for (std::size_t y = 0; y < static_cast<std::size_t>(m_tileLimit[1]); ++y) {
        for (std::size_t x = 0; x < m_tileColumns; ++x) {
            m_tangents.push_back(tangentAt({middle(x, 0), middle(y, 1)}, lattice, plane));
        }
    }
}

CellIndex::Tangent CellIndex::tangentAt(const Point<double, 2>& middle, const CellLattice& lattice,
                                        const std::vector<Point<double, 2>>& plane) const {
    const std::span<const std::uint32_t> candidates = near(middle);
    if (candidates.empty()) {
        return {};
    }
    // The cell that holds the middle, or else one beside it, continued.
    CellPlace place{candidates.front(), 0.5, 0.5};
    Point<double, 2> offset = middle - lattice.cell(plane, place.node).at(0.5, 0.5);
    for (const std::uint32_t node : candidates) {
        const bool isHeld =
            QuadInverse(lattice.cell(plane, node)).anyPlaceOf(middle, [&](const Point<double, 2>& found) {
                place = isInCell(found) ? CellPlace{node, found[0], found[1]} : place;
                return isInCell(found);
            });
        if (isHeld) {
            offset = {};
            break;
        }
    }
    const QuadCell cell = lattice.cell(plane, place.node);
    const Point<double, 2> alongA = (1 - place.b) * (cell.alongA - cell.origin) + place.b * (cell.across - cell.alongB);
    const Point<double, 2> alongB = (1 - place.a) * (cell.alongB - cell.origin) + place.a * (cell.across - cell.alongA);
    const double area = alongA[0] * alongB[1] - alongA[1] * alongB[0];
    const auto slope = [&](double base, double perUnitX, double perUnitY) {
        const double value = base + (perUnitX * offset[0] + perUnitY * offset[1]) / area;
        const std::array numbers{value, perUnitX / (area * m_tilesPerUnit[0]), perUnitY / (area * m_tilesPerUnit[1])};
        // Of a cell that is nearly flat it is no number that fits.
        const bool isUsable = std::all_of(numbers.begin(), numbers.end(), [](double number) {
            return std::abs(number) < static_cast<double>(std::numeric_limits<float>::max());
        });
        return isUsable ? Slope{static_cast<float>(numbers[0]), static_cast<float>(numbers[1]),
                                static_cast<float>(numbers[2])}
                        : Slope{static_cast<float>(base), 0, 0};
    };
    const std::size_t column = place.node % lattice.columns;
    const std::size_t row = place.node / lattice.columns;
    return {slope(static_cast<double>(column) + place.a, alongB[1], -alongB[0]),
            slope(static_cast<double>(row) + place.b, -alongA[1], alongA[0])};
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
    m_mapped = mappedCells(lattice);
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
