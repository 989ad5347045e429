#pragma once

#include "DisplayExport/WarpGrid.h"

#include <array>
#include <vector>

namespace Veltrani::DisplayExport {

/// A cell between four nodes: bottom left, bottom right, top right, top left.
struct WarpCell {
    enum class Kind {
        UNUSABLE,    ///< a corner has no content
        WHOLE,       ///< content is interpolated between its corners as they are
        OVER_SEAM,   ///< the same, once the contents of its corners are moved beside each other by whole widths
        OVER_FACES,  ///< its corners lie on several faces of a cube
        OVER_POLE,   ///< it holds a direction around which the input turns
    };

    std::array<Point<double, 2>, 4> picture;
    std::array<WarpNode, 4> nodes;
    std::array<Point<double, 3>, 4> directions;  ///< zero where none are kept

    [[nodiscard]] static WarpCell of(const WarpGrid& grid, std::size_t cell);

    /// @param poles of the input
    [[nodiscard]] Kind kind(const std::vector<Point<double, 3>>& poles, bool wrapsAround) const;

    /// The contents of the corners, those of an input that wraps around moved beside that of the first.
    [[nodiscard]] std::array<Point<double, 2>, 4> contents(bool wrapsAround) const;

private:
    [[nodiscard]] bool holds(const Point<double, 3>& direction) const;
};

/// Cuts cells that are not whole into triangles.
class CellCutter {
public:
    /// Refers to both.
    CellCutter(const WarpSampler& sampler, const ContentInput& input, Seam seam);

    /// Adds what is left of a cell of the kind to `pieces`, and to `leftOut` how many of its parts hold a pole and are
    /// left out.
    void cut(const WarpCell& cell, WarpCell::Kind kind, std::vector<WarpPiece>& pieces, std::size_t& leftOut) const;

    [[nodiscard]] WarpCell::Kind kindOf(const WarpCell& cell) const { return cell.kind(m_poles, m_wrapsAround); }

private:
    void cutAtSeam(const WarpCell& cell, std::vector<WarpPiece>& pieces) const;
    void cutAtFaces(const WarpCell& cell, std::vector<WarpPiece>& pieces) const;
    /// In four, and those of them that hold the pole again, `times` times.
    void subdivide(const WarpCell& cell, int times, std::vector<WarpPiece>& pieces, std::size_t& leftOut) const;

    const WarpSampler& m_sampler;
    const ContentInput& m_input;
    Seam m_seam;
    std::vector<Point<double, 3>> m_poles;
    bool m_wrapsAround;
};

}  // namespace Veltrani::DisplayExport
