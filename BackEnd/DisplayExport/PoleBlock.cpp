#include "DisplayExport/PoleBlock.h"

#include <algorithm>

namespace Veltrani::DisplayExport {

namespace {

using P3 = Point<double, 3>;

constexpr int SIDES = 4;
/// Cells at one pole: four where it lies on a node. Where it has more, the picture itself is bent up there.
constexpr std::ptrdiff_t MOST_AT_POLE = 2;

}  // namespace

std::optional<PoleBlock> PoleBlock::around(const P3& pole, const WarpGrid& grid, const CellCutter& cutter,
                                           const WarpErrorMeter& meter) {
    PoleBlock block(grid, cutter, meter);
    if (!block.startAt(pole)) {
        return std::nullopt;
    }
    block.grow();
    return block;
}

bool PoleBlock::startAt(const P3& pole) {
    const auto columns = static_cast<std::ptrdiff_t>(m_grid->cellColumns());
    std::optional<Range> found;
    for (std::size_t number = 0; number < m_grid->cells(); ++number) {
        const WarpCell cell = WarpCell::of(*m_grid, number);
        const bool isUsable =
            std::all_of(cell.nodes.begin(), cell.nodes.end(), [](const WarpNode& node) { return node.isUsable(); });
        if (isUsable && cell.holds(pole)) {
            const auto column = static_cast<std::ptrdiff_t>(number) % columns;
            const auto row = static_cast<std::ptrdiff_t>(number) / columns;
            found = found.value_or(Range{column, column, row, row});
            found = Range{std::min(found->left, column), std::max(found->right, column), std::min(found->bottom, row),
                          std::max(found->top, row)};
        }
    }
    if (!found || found->right - found->left >= MOST_AT_POLE || found->top - found->bottom >= MOST_AT_POLE ||
        !isLit(*found)) {
        return false;
    }
    m_range = *found;
    // The pole may lie on an edge of them; the light may end there too.
    for (int side = 0; side < SIDES; ++side) {
        static_cast<void>(take(beyond(side)));
    }
    return true;
}

void PoleBlock::grow() {
    bool grows = true;
    while (grows) {
        grows = false;
        for (int side = 0; side < SIDES; ++side) {
            const Range line = beyond(side);
            grows = (isLit(line) && needsFan(line) && take(line)) || grows;
        }
    }
}

bool PoleBlock::take(const Range& more) {
    if (!isLit(more)) {
        return false;
    }
    m_range = {std::min(m_range.left, more.left), std::max(m_range.right, more.right),
               std::min(m_range.bottom, more.bottom), std::max(m_range.top, more.top)};
    return true;
}

bool PoleBlock::isLit(const Range& range) const {
    if (std::min(range.left, range.bottom) < 0 || range.right >= static_cast<std::ptrdiff_t>(m_grid->cellColumns()) ||
        range.top >= static_cast<std::ptrdiff_t>(m_grid->rows()) - 1) {
        return false;
    }
    const std::vector<WarpCell> cells = cellsIn(range);
    return std::all_of(cells.begin(), cells.end(), [](const WarpCell& cell) {
        return std::all_of(cell.nodes.begin(), cell.nodes.end(),
                           [](const WarpNode& node) { return node.state == WarpNode::State::MAPPED; });
    });
}

bool PoleBlock::needsFan(const Range& range) const {
    const std::vector<WarpCell> cells = cellsIn(range);
    const std::vector<WarpError> errors = m_meter->errorsIn(cells, m_cutter->allowed());
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (errors[i].largest > m_cutter->error() && m_meter->zone().turnsIn(cells[i])) {
            return true;
        }
    }
    return false;
}

std::vector<WarpCell> PoleBlock::cellsIn(const Range& range) const {
    std::vector<WarpCell> cells;
    for (std::ptrdiff_t row = range.bottom; row <= range.top; ++row) {
        for (std::ptrdiff_t column = range.left; column <= range.right; ++column) {
            cells.push_back(WarpCell::of(
                *m_grid, static_cast<std::size_t>(row) * m_grid->cellColumns() + static_cast<std::size_t>(column)));
        }
    }
    return cells;
}

PoleBlock::Range PoleBlock::beyond(int side) const {
    const auto& [left, right, bottom, top] = m_range;
    switch (side) {
        case 0:
            return {left - 1, left - 1, bottom, top};
        case 1:
            return {right + 1, right + 1, bottom, top};
        case 2:
            return {left, right, bottom - 1, bottom - 1};
        default:
            return {left, right, top + 1, top + 1};
    }
}

std::vector<std::size_t> PoleBlock::cells() const {
    std::vector<std::size_t> numbers;
    for (std::ptrdiff_t row = m_range.bottom; row <= m_range.top; ++row) {
        for (std::ptrdiff_t column = m_range.left; column <= m_range.right; ++column) {
            numbers.push_back(static_cast<std::size_t>(row) * m_grid->cellColumns() + static_cast<std::size_t>(column));
        }
    }
    return numbers;
}

std::array<Point<double, 2>, 4> PoleBlock::corners() const {
    const double left = m_grid->across[static_cast<std::size_t>(m_range.left)];
    const double right = m_grid->across[static_cast<std::size_t>(m_range.right) + 1];
    const double bottom = m_grid->upwards[static_cast<std::size_t>(m_range.bottom)];
    const double top = m_grid->upwards[static_cast<std::size_t>(m_range.top) + 1];
    return {Point<double, 2>{left, bottom}, {right, bottom}, {right, top}, {left, top}};
}

}  // namespace Veltrani::DisplayExport
