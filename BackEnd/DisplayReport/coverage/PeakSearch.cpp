#include "DisplayReport/coverage/PeakSearch.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

/// Bounds for the time of functions that promise everywhere, as jagged ones do: each cell costs up to five pixels. The
/// search ends after so many cells in turn that lead to nothing greater: along a border, of which whole pixels stand
/// away more and less; inside; in what is offered. It also ends after so many in all.
constexpr std::size_t BORDER_PATIENCE = 150;
constexpr std::size_t PATIENCE = 60;
constexpr std::size_t OFFERED_PATIENCE = 25;
constexpr std::size_t MOST_QUARTERED = 1500;
/// The bulge of a cell, as a part of the second difference of the function. A peak between two slopes rises over the
/// higher corner of its cell by as much as that, at most; a parabola by a quarter of it.
constexpr double BULGE = 1.0 / 2;
/// Columns and rows on which an offered window is looked at first.
constexpr int OFFERED_LINES = 3;
/// A cell on the border that is no larger is looked at as a whole, with so many pixels around it: a rim may bulge into
/// cells beside it that have no values in their corners.
constexpr int SMALL = 4;
constexpr int MARGIN = 1;
/// Pixels that a climb sees on all sides of it: a border may be slanted, and a wedge narrow.
constexpr int SIGHT = 5;
constexpr int MOST_CLIMBED = 500;
/// The slope across a cell where none is known: a twentieth.
constexpr double USUAL_SLOPE = 0.05;
/// The least slack of the quarters of a cell, as a part of its own, should a bend not have shown in its middle.
constexpr double HIDDEN = 1.0 / 8;

}  // namespace

class PeakSearch::Lattice {
public:
    Lattice(PeakSearch& search, std::vector<int> columns, std::vector<int> rows)
        : m_columns(std::move(columns)), m_rows(std::move(rows)) {
        for (const int row : m_rows) {
            for (const int column : m_columns) {
                m_values.push_back(search.look(column, row));
            }
        }
    }

    [[nodiscard]] std::size_t columns() const { return m_columns.size(); }
    [[nodiscard]] std::size_t rows() const { return m_rows.size(); }
    /// True when some of its nodes have values and others have none.
    [[nodiscard]] bool hasBorder() const {
        const auto known =
            std::count_if(m_values.begin(), m_values.end(), [](double value) { return !std::isnan(value); });
        return known > 0 && known < static_cast<std::ptrdiff_t>(m_values.size());
    }

    /// The cell above and to the right of a node; it promises nothing when none of its corners has a value.
    /// @param usualSlope along columns or rows that do not determine their own
    [[nodiscard]] Cell cell(std::size_t column, std::size_t row, double usualSlope) const {
        Cell cell{{m_columns[column], m_columns[column + 1], m_rows[row], m_rows[row + 1]}};
        std::size_t known = 0;
        cell.promise = -std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < 4; ++i) {
            const double value = at(column + i % 2, row + i / 2);
            known += std::isnan(value) ? 0 : 1;
            cell.promise = std::fmax(cell.promise, value);
        }
        cell.isOnBorder = known < 4;
        // Up to its border the function may go on as steeply as it comes.
        cell.slack = bulge(column, row) + (cell.isOnBorder ? slope(column, row, usualSlope) : 0.0);
        cell.promise += cell.slack;
        return cell;
    }

    /// The most that the function changes from a node to the next one; NaN when no two such have values.
    [[nodiscard]] double greatestSlope() const {
        double greatest = std::nan("");
        for (std::size_t row = 0; row < rows(); ++row) {
            for (std::size_t column = 0; column < columns(); ++column) {
                const double here = at(column, row);
                greatest = column > 0 ? std::fmax(greatest, std::abs(here - at(column - 1, row))) : greatest;
                greatest = row > 0 ? std::fmax(greatest, std::abs(here - at(column, row - 1))) : greatest;
            }
        }
        return greatest;
    }

private:
    [[nodiscard]] double at(std::size_t column, std::size_t row) const { return m_values[row * columns() + column]; }

    /// Calls `use` for every node of a cell and those around it.
    template <class Use>
    void around(std::size_t column, std::size_t row, const Use& use) const {
        for (std::size_t y = row > 0 ? row - 1 : 0; y < std::min(row + 3, rows()); ++y) {
            for (std::size_t x = column > 0 ? column - 1 : 0; x < std::min(column + 3, columns()); ++x) {
                use(x, y);
            }
        }
    }

    /// How far the function may bulge over the corners of a cell, by its bends in and around it.
    [[nodiscard]] double bulge(std::size_t column, std::size_t row) const {
        double bulgeX = 0;
        double bulgeY = 0;
        around(column, row, [&](std::size_t x, std::size_t y) {
            const double middle = 2 * at(x, y);
            if (x > 0 && x + 1 < columns()) {
                bulgeX = std::fmax(bulgeX, middle - at(x - 1, y) - at(x + 1, y));
            }
            if (y > 0 && y + 1 < rows()) {
                bulgeY = std::fmax(bulgeY, middle - at(x, y - 1) - at(x, y + 1));
            }
        });
        return BULGE * (bulgeX + bulgeY);
    }

    /// The most that the function changes across a cell and upwards along it, by its slopes in and around it.
    [[nodiscard]] double slope(std::size_t column, std::size_t row, double usual) const {
        double slopeX = std::nan("");
        double slopeY = slopeX;
        around(column, row, [&](std::size_t x, std::size_t y) {
            if (x > 0) {
                slopeX = std::fmax(slopeX, std::abs(at(x, y) - at(x - 1, y)));
            }
            if (y > 0) {
                slopeY = std::fmax(slopeY, std::abs(at(x, y) - at(x, y - 1)));
            }
        });
        return (std::isnan(slopeX) ? usual : slopeX) + (std::isnan(slopeY) ? usual : slopeY);
    }

    std::vector<int> m_columns;
    std::vector<int> m_rows;
    std::vector<double> m_values;  ///< row by row
};

std::vector<int> PeakSearch::spread(int first, int last, int most) {
    std::vector<int> numbers;
    const std::int64_t all = static_cast<std::int64_t>(last) - first;
    const int count = static_cast<int>(std::min<std::int64_t>(all + 1, most));
    numbers.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (int i = 0; i < count; ++i) {
        numbers.push_back(count == 1 ? first : first + static_cast<int>(all * i / (count - 1)));
    }
    return numbers;
}

PeakSearch::PeakSearch(Function function, const std::vector<int>& columns, const std::vector<int>& rows)
    : m_function(std::move(function)), m_greatest(-std::numeric_limits<double>::infinity()), m_climbed(m_greatest) {
    if (!columns.empty() && !rows.empty()) {
        m_all = {columns.front(), columns.back(), rows.front(), rows.back()};
    }
    const Lattice lattice(*this, columns, rows);
    const double slope = lattice.greatestSlope();
    add(lattice, 0, slope > 0.0 ? slope : USUAL_SLOPE);
    m_patience = patience();
}

void PeakSearch::offer(const PixelWindow& window) {
    const auto& [left, right, bottom, top] = window;
    m_patience = std::max(m_patience, OFFERED_PATIENCE);
    add(Lattice(*this, spread(left, right, OFFERED_LINES), spread(bottom, top, OFFERED_LINES)), 0, USUAL_SLOPE);
}

void PeakSearch::scan(const PixelWindow& window) {
    for (int row = std::max(window.bottom, m_all.bottom); row <= std::min(window.top, m_all.top); ++row) {
        for (int column = std::max(window.left, m_all.left); column <= std::min(window.right, m_all.right); ++column) {
            look(column, row);
        }
    }
}

double PeakSearch::greatest() {
    const auto isLess = [](const Cell& a, const Cell& b) { return a.promise < b.promise; };
    std::make_heap(m_cells.begin(), m_cells.end(), isLess);
    while (!m_cells.empty() && m_cells.front().promise > m_greatest + TOLERANCE) {
        if (m_patience == 0 || m_quartered == MOST_QUARTERED) {
            m_isCutShort = true;
            break;
        }
        std::pop_heap(m_cells.begin(), m_cells.end(), isLess);
        const Cell cell = m_cells.back();
        m_cells.pop_back();
        const std::size_t before = m_cells.size();
        const double found = m_greatest;
        quarter(cell);
        ++m_quartered;
        m_patience = m_greatest > found ? patience() : m_patience - 1;
        for (std::size_t i = before + 1; i <= m_cells.size(); ++i) {
            std::push_heap(m_cells.begin(), m_cells.begin() + static_cast<std::ptrdiff_t>(i), isLess);
        }
    }
    m_cells.clear();
    climb();
    return m_greatest;
}

std::size_t PeakSearch::patience() const {
    return m_hasBorder ? BORDER_PATIENCE : PATIENCE;
}

double PeakSearch::look(int column, int row) {
    const double value = m_function(column, row);
    if (value > m_greatest) {
        m_greatest = value;
        m_column = column;
        m_row = row;
    }
    return value;
}

void PeakSearch::climb() {
    const bool mayBeAbove = m_hasBorder || m_isCutShort;
    for (int i = 0; mayBeAbove && i < MOST_CLIMBED && m_greatest > m_climbed; ++i) {
        m_climbed = m_greatest;
        scan({m_column - SIGHT, m_column + SIGHT, m_row - SIGHT, m_row + SIGHT});
    }
}

void PeakSearch::add(const Lattice& lattice, double leastSlack, double usualSlope) {
    m_hasBorder = m_hasBorder || lattice.hasBorder();
    for (std::size_t row = 0; row + 1 < lattice.rows(); ++row) {
        for (std::size_t column = 0; column + 1 < lattice.columns(); ++column) {
            Cell cell = lattice.cell(column, row, usualSlope);
            cell.promise += std::max(0.0, leastSlack - cell.slack);
            cell.slack = std::max(cell.slack, leastSlack);
            const PixelWindow& window = cell.window;
            const bool isMore = window.right - window.left > 1 || window.top - window.bottom > 1;
            if (isMore && cell.promise > m_greatest + TOLERANCE) {
                m_cells.push_back(cell);
            }
        }
    }
}

void PeakSearch::quarter(const Cell& cell) {
    const auto& [left, right, bottom, top] = cell.window;
    if (cell.isOnBorder && std::max(right - left, top - bottom) <= SMALL) {
        scan({left - MARGIN, right + MARGIN, bottom - MARGIN, top + MARGIN});
    } else {
        add(Lattice(*this, spread(left, right, 3), spread(bottom, top, 3)), HIDDEN * cell.slack, cell.slack / 2);
    }
}

}  // namespace Veltrani::DisplayReport
