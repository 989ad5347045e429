#pragma once

#include "DisplayExport/CellCutter.h"
#include "DisplayExport/WarpErrorMeter.h"
#include "DisplayExport/WarpGrid.h"

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace Veltrani::DisplayExport {

/// A rectangle of cells around a pole, so large that the cells around it keep the error as they are.
class PoleBlock {
public:
    /// None where no cell holds the pole, and where the light ends before there is a cell on each side.
    [[nodiscard]] static std::optional<PoleBlock> around(const Point<double, 3>& pole, const WarpGrid& grid,
                                                         const CellCutter& cutter, const WarpErrorMeter& meter);

    /// By their numbers, ascending.
    [[nodiscard]] std::vector<std::size_t> cells() const;
    /// In the picture: bottom left, bottom right, top right, top left.
    [[nodiscard]] std::array<Point<double, 2>, 4> corners() const;

private:
    /// Columns and rows of cells, the last ones included.
    struct Range {
        std::ptrdiff_t left, right, bottom, top;
    };

    PoleBlock(const WarpGrid& grid, const CellCutter& cutter, const WarpErrorMeter& meter)
        : m_grid(&grid), m_cutter(&cutter), m_meter(&meter) {}

    [[nodiscard]] bool startAt(const Point<double, 3>& pole);
    /// By as many rows and columns of cells as need it.
    void grow();
    /// Takes the cells of a range in, if they are lit; false when they are not, or lie beyond the grid.
    [[nodiscard]] bool take(const Range& more);
    [[nodiscard]] bool isLit(const Range& range) const;
    [[nodiscard]] bool needsFan(const Range& range) const;
    [[nodiscard]] std::vector<WarpCell> cellsIn(const Range& range) const;
    /// The line of cells beyond one of the four sides: left, right, bottom, top.
    [[nodiscard]] Range beyond(int side) const;

    const WarpGrid* m_grid;
    const CellCutter* m_cutter;
    const WarpErrorMeter* m_meter;
    Range m_range{};
};

}  // namespace Veltrani::DisplayExport
