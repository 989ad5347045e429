#pragma once

#include "Common/Point.h"
#include "DisplayExport/ChannelWarp.h"

#include <cstddef>
#include <span>
#include <vector>

namespace Veltrani::DisplayExport {

class ChannelSight;
class ContentInput;
struct SeenPlace;

/// The nodes of a warp, and what its cells have to know of them.
struct WarpGrid {
    std::vector<double> across;                ///< where its columns stand in the picture, ascending
    std::vector<double> upwards;               ///< and its rows
    std::vector<WarpNode> nodes;               ///< row by row from the bottom
    std::vector<Point<double, 3>> points;      ///< on the screen, as many; empty unless kept
    std::vector<Point<double, 3>> directions;  ///< of usable nodes, of length one, as many; empty unless kept

    [[nodiscard]] std::size_t columns() const { return across.size(); }
    [[nodiscard]] std::size_t rows() const { return upwards.size(); }
    [[nodiscard]] std::size_t cellColumns() const { return columns() - 1; }
    /// Cells are counted row by row from the bottom left one.
    [[nodiscard]] std::size_t cells() const { return cellColumns() * (rows() - 1); }
    /// The four corners of a cell: bottom left, bottom right, top right, top left.
    [[nodiscard]] std::array<std::size_t, 4> cornersOf(std::size_t cell) const {
        const std::size_t first = cell / cellColumns() * columns() + cell % cellColumns();
        return {first, first + 1, first + columns() + 1, first + columns()};
    }
    [[nodiscard]] Point<double, 2> pictureOf(std::size_t node) const {
        return {across[node % columns()], upwards[node / columns()]};
    }
    /// A place in a cell, by parts of its width and height.
    [[nodiscard]] Point<double, 2> pictureIn(std::size_t cell, const Point<double, 2>& part) const {
        const std::size_t column = cell % cellColumns();
        const std::size_t row = cell / cellColumns();
        return {across[column] + part[0] * (across[column + 1] - across[column]),
                upwards[row] + part[1] * (upwards[row + 1] - upwards[row])};
    }
};

/// Samples the nodes of grids.
class WarpSampler {
public:
    /// What is kept beside the nodes.
    struct Kept {
        bool points = false;
        bool directions = false;
    };
    /// Whether a cell of which no corner is lit is looked into.
    enum class DarkCells { LEFT_OUT, LOOKED_INTO };

    /// Refers to both.
    WarpSampler(const ChannelSight& sight, const ContentInput& input) : m_sight(sight), m_input(input) {}

    /// @param across where the columns stand, @param upwards where the rows stand
    [[nodiscard]] WarpGrid sample(std::vector<double> across, std::vector<double> upwards, const Kept& kept,
                                  const DisplayReport::Progress& progress) const;

    /// Continues the content to those corners of cells with lit places that are not lit themselves.
    void continueOver(WarpGrid& grid, DarkCells dark) const;

    /// Nodes anywhere in the picture, with their directions; continued where they are not lit.
    /// @param step to the next nodes around them
    /// @param nodes, directions as long as `picture`
    void sampleAt(std::span<const Point<double, 2>> picture, const Point<double, 2>& step, std::span<WarpNode> nodes,
                  std::span<Point<double, 3>> directions) const;

private:
    /// A node that is not lit, continued as far as anything around it is.
    /// @param seen what is seen there; receives what is seen as it were
    [[nodiscard]] WarpNode continuedAt(const Point<double, 2>& picture, const Point<double, 2>& step,
                                       SeenPlace& seen) const;
    struct Part;
    class PartSampler;

    [[nodiscard]] std::vector<bool> wantedNodes(const WarpGrid& grid, DarkCells dark) const;
    /// Which of some cells without a lit corner have a lit place.
    [[nodiscard]] std::vector<bool> areLit(const WarpGrid& grid, const std::vector<std::size_t>& cells) const;
    void continueTo(WarpGrid& grid, std::size_t node) const;

    const ChannelSight& m_sight;
    const ContentInput& m_input;
};

}  // namespace Veltrani::DisplayExport
