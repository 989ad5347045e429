#pragma once

#include "DisplayExport/ChannelWarp.h"
#include "DisplayExport/PoleZone.h"
#include "DisplayExport/WarpCell.h"

#include <cstddef>
#include <limits>
#include <span>
#include <vector>

namespace Veltrani::DisplayExport {

struct InputPlace;
struct SeenPlace;

/// The error of a grid, and what it comes from.
struct MeasuredError {
    WarpError error;
    double searched = 0;        ///< pixels of the input; the largest outside of the zone of poles: more nodes mend it
    std::size_t tooCoarse = 0;  ///< cells that hold a pole and reach beyond its zone
    Point<double, 2> along;     ///< pixels of the input: the largest on edges of cells, from left to right and upwards
    std::vector<std::size_t> worst;  ///< of the cells that were compared, that with the largest error first
    std::size_t step = 1;            ///< from one cell that was compared to the next
};

/// Compares what a player interpolates in the cells of a grid with what belongs there.
class WarpErrorMeter {
public:
    /// Places per side of a cell that are compared, its corners left out.
    static constexpr std::size_t PER_SIDE = 5;

    /// Refers to both.
    WarpErrorMeter(const ChannelSight& sight, const ContentInput& input);

    [[nodiscard]] const PoleZone& zone() const { return m_zone; }

    /// That of each cell. Nothing is compared in one that holds a pole: its lit places count as left out.
    /// @param allowed pixels of the input
    [[nodiscard]] std::vector<WarpError> errorsIn(std::span<const WarpCell> cells, double allowed) const;

    /// Cells that hold a pole are not compared. Those in which contents turn around one are part of `searched` alone,
    /// unless they lie in its zone; what is left of their error once they are divided is not known here.
    /// @param allowed pixels of the input
    /// @param mostCells that are looked at, evenly over the grid
    /// @param enough pixels of the input: once `searched` is above it, the rest is not measured
    [[nodiscard]] MeasuredError measure(const WarpGrid& grid, double allowed, std::size_t mostCells,
                                        double enough = std::numeric_limits<double>::max()) const;

    /// The largest error of a grid: looks closer at its worst cells, with a margin for what lies between the places.
    /// @param measured of the grid
    /// @return pixels of the input
    [[nodiscard]] double boundOf(const WarpGrid& grid, const MeasuredError& measured) const;

private:
    class Comparison;

    /// A cell, and the triangles into which it is cut where it lies over several faces.
    struct Compared {
        WarpCell cell;
        WarpCell::Kind kind;
        std::vector<WarpPiece> pieces;
    };

    /// Where the largest error of a grid may lie.
    [[nodiscard]] std::vector<WarpCell> worstCells(const WarpGrid& grid, const MeasuredError& measured) const;
    [[nodiscard]] Compared comparedOf(const WarpCell& cell) const;
    /// @param parts at which the cells are compared
    [[nodiscard]] std::vector<WarpError> errorsAt(std::span<const WarpCell> cells,
                                                  const std::vector<Point<double, 2>>& parts, double allowed) const;
    /// @param picture, seen places at the parts of the cell
    [[nodiscard]] WarpError errorOf(const Compared& compared, const std::vector<Point<double, 2>>& parts,
                                    std::span<const Point<double, 2>> picture, std::span<const SeenPlace> seen,
                                    double allowed) const;
    /// Of what is interpolated at a place of a cell, by parts of its width and height.
    [[nodiscard]] double errorAt(const Compared& compared, const Point<double, 2>& part, const SeenPlace& seen,
                                 const InputPlace& belongs) const;
    /// Of what the triangles of a cell show at a place of the picture.
    [[nodiscard]] double errorOfPieces(const std::vector<WarpPiece>& pieces, const Point<double, 2>& picture,
                                       const SeenPlace& seen) const;

    const ChannelSight& m_sight;
    const ContentInput& m_input;
    PoleZone m_zone;
};

}  // namespace Veltrani::DisplayExport
