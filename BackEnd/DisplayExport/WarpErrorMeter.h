#pragma once

#include "DisplayExport/ChannelWarp.h"
#include "DisplayExport/WarpCell.h"

#include <cstddef>
#include <limits>
#include <vector>

namespace Veltrani::DisplayExport {

struct InputPlace;
struct SeenPlace;

/// The error of a grid, and what it comes from.
struct MeasuredError {
    WarpError error;
    Point<double, 2> along;  ///< pixels of the input: the largest on edges of cells, from left to right and upwards
};

/// Compares what a player interpolates in the cells of a grid with what belongs there.
class WarpErrorMeter {
public:
    /// Places per side of a cell that are compared, its corners left out.
    static constexpr std::size_t PER_SIDE = 5;

    /// Refers to both.
    WarpErrorMeter(const ChannelSight& sight, const ContentInput& input);

    /// The largest error of a cell that holds no pole and has usable corners, pixels of the input; else 0.
    [[nodiscard]] double largestIn(const WarpCell& cell) const;

    /// Cells that hold a pole are left out, and those around it from all but the error of readers of grids.
    /// @param allowed pixels of the input
    /// @param mostCells that are looked at, evenly over the grid
    /// @param enough pixels of the input: once the largest is above it, the rest is not measured
    [[nodiscard]] MeasuredError measure(const WarpGrid& grid, double allowed, std::size_t mostCells,
                                        double enough = std::numeric_limits<double>::max()) const;

private:
    class Comparison;

    /// A cell, and the triangles into which it is cut where it lies over several faces.
    struct Compared {
        WarpCell cell;
        WarpCell::Kind kind;
        std::vector<WarpPiece> pieces;
    };

    [[nodiscard]] Compared comparedOf(const WarpCell& cell) const;
    /// Of what is interpolated at a place of a cell, by parts of its width and height.
    [[nodiscard]] double errorAt(const Compared& compared, const Point<double, 2>& part, const SeenPlace& seen,
                                 const InputPlace& belongs) const;
    /// Of what the triangles of a cell show at a place of the picture.
    [[nodiscard]] double errorOfPieces(const std::vector<WarpPiece>& pieces, const Point<double, 2>& picture,
                                       const SeenPlace& seen) const;

    const ChannelSight& m_sight;
    const ContentInput& m_input;
    std::vector<Point<double, 3>> m_poles;
};

}  // namespace Veltrani::DisplayExport
