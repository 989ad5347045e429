#include "KelvoControl/detail/CellLocator.h"

#include <cmath>
#include <cstdint>
#include <utility>

namespace KelvoControlDetail {

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

bool CellLocator::locateByIndex(const Point<double, 2>& point, CellPlace& place) const {
    const std::uint32_t guess = m_index->guess(point);
    return (guess != CellIndex::NO_GUESS && locateIn(guess, point, place)) || locateAmongNear(point, place);
}

bool CellLocator::locateIn(std::size_t node, const Point<double, 2>& point, CellPlace& place) const {
    return m_lattice.cell(m_plane, node).anyPlaceOf(point, [&](const Point<double, 2>& found) {
        if (!isInCell(found)) {
            return false;
        }
        place = {node, found[0], found[1]};
        return true;
    });
}

bool CellLocator::locateAmongNear(const Point<double, 2>& point, CellPlace& place) const {
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
            (cell.anyPlaceUpToFold(point, accept) || cell.anyEdgePlaceOf(point, m_tolerance, accept))) {
            return true;
        }
    }
    return false;
}

}  // namespace KelvoControlDetail
