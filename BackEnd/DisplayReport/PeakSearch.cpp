#include "DisplayReport/PeakSearch.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

/// A bound for the time of functions that promise everywhere, as jagged ones do: each costs up to five pixels.
constexpr std::size_t MOST_QUARTERED = 1500;
/// Of the second difference of the function. A peak between two slopes rises over the higher corner of its cell by as
/// much as that, at most; a parabola by a quarter of it.
constexpr double BULGE = 1.0 / 2;
/// Columns and rows on which an offered window is looked at first.
constexpr int OFFERED_LINES = 3;
/// Of the slack of a cell: what its quarters have at least, should a bend not have shown in its middle.
constexpr double HIDDEN = 1.0 / 8;

}  // namespace

class PeakSearch::Lattice {
public:
    Lattice(const Function& function, std::vector<int> columns, std::vector<int> rows)
        : m_columns(std::move(columns)), m_rows(std::move(rows)) {
        for (const int row : m_rows) {
            for (const int column : m_columns) {
                m_values.push_back(function(column, row));
            }
        }
    }

    [[nodiscard]] std::size_t columns() const { return m_columns.size(); }
    [[nodiscard]] std::size_t rows() const { return m_rows.size(); }
    [[nodiscard]] double greatest() const {
        double greatest = -std::numeric_limits<double>::infinity();
        for (const double value : m_values) {
            greatest = std::fmax(greatest, value);
        }
        return greatest;
    }

    /// The cell above and to the right of a node; one without slack when none of its corners has a value.
    [[nodiscard]] Cell cell(std::size_t column, std::size_t row) const {
        Cell cell{{m_columns[column], m_columns[column + 1], m_rows[row], m_rows[row + 1]}};
        std::size_t known = 0;
        cell.promise = -std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < 4; ++i) {
            const double value = at(column + i % 2, row + i / 2);
            known += std::isnan(value) ? 0 : 1;
            cell.promise = std::fmax(cell.promise, value);
        }
        // Up to its border the function may go on as steeply as it comes.
        cell.slack = known == 0 ? 0.0 : bulge(column, row) + (known == 4 ? 0.0 : slope(column, row));
        cell.promise += cell.slack;
        return cell;
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

    /// The most that the function changes across a cell, and upwards along it, in and around it.
    [[nodiscard]] double slope(std::size_t column, std::size_t row) const {
        double slopeX = 0;
        double slopeY = 0;
        around(column, row, [&](std::size_t x, std::size_t y) {
            if (x > 0) {
                slopeX = std::fmax(slopeX, std::abs(at(x, y) - at(x - 1, y)));
            }
            if (y > 0) {
                slopeY = std::fmax(slopeY, std::abs(at(x, y) - at(x, y - 1)));
            }
        });
        return slopeX + slopeY;
    }

    std::vector<int> m_columns;
    std::vector<int> m_rows;
    std::vector<double> m_values;  ///< row by row
};

std::vector<int> PeakSearch::spread(int first, int last, int most) {
    std::vector<int> numbers;
    const std::int64_t all = static_cast<std::int64_t>(last) - first;
    const int count = static_cast<int>(std::min<std::int64_t>(all + 1, most));
    for (int i = 0; i < count; ++i) {
        numbers.push_back(count == 1 ? first : first + static_cast<int>(all * i / (count - 1)));
    }
    return numbers;
}

PeakSearch::PeakSearch(Function function, const std::vector<int>& columns, const std::vector<int>& rows)
    : m_function(std::move(function)), m_greatest(-std::numeric_limits<double>::infinity()) {
    add(Lattice(m_function, columns, rows), 0);
}

void PeakSearch::offer(const PixelWindow& window) {
    const auto& [left, right, bottom, top] = window;
    add(Lattice(m_function, spread(left, right, OFFERED_LINES), spread(bottom, top, OFFERED_LINES)), 0);
}

double PeakSearch::greatest() {
    const auto isLess = [](const Cell& a, const Cell& b) { return a.promise < b.promise; };
    std::make_heap(m_cells.begin(), m_cells.end(), isLess);
    for (; !m_cells.empty() && m_quartered < MOST_QUARTERED; ++m_quartered) {
        std::pop_heap(m_cells.begin(), m_cells.end(), isLess);
        const Cell cell = m_cells.back();
        m_cells.pop_back();
        if (!(cell.promise > m_greatest + TOLERANCE)) {
            break;
        }
        const std::size_t before = m_cells.size();
        quarter(cell);
        for (std::size_t i = before + 1; i <= m_cells.size(); ++i) {
            std::push_heap(m_cells.begin(), m_cells.begin() + static_cast<std::ptrdiff_t>(i), isLess);
        }
    }
    return m_greatest;
}

void PeakSearch::add(const Lattice& lattice, double leastSlack) {
    m_greatest = std::max(m_greatest, lattice.greatest());
    for (std::size_t row = 0; row + 1 < lattice.rows(); ++row) {
        for (std::size_t column = 0; column + 1 < lattice.columns(); ++column) {
            Cell cell = lattice.cell(column, row);
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
    add(Lattice(m_function, spread(left, right, 3), spread(bottom, top, 3)), HIDDEN * cell.slack);
}

}  // namespace Veltrani::DisplayReport
