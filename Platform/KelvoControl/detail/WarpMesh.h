#pragma once

#include "KelvoControl/detail/CellLattice.h"
#include "KelvoControl/detail/CellLocator.h"

namespace KelvoControlDetail {

/// A warp mesh as two maps, from the picture to the screen and back. Immutable.
///
/// What comes out up to `EDGE_TOLERANCE` beyond the edge of the picture, or of the screen's range, is on that edge:
/// there it is within the picture for callers that compare exactly. A mesh that really reaches further keeps its
/// places.
class WarpMesh {
public:
    /// @param pictureSize width and height in pixels: the unit of the tolerance at the edges of cells
    WarpMesh(CellLattice lattice, const Point<double, 2>& pictureSize);
    WarpMesh(const WarpMesh&) = delete;
    WarpMesh& operator=(const WarpMesh&) = delete;

    /// False, with `screen` untouched, outside of the mapped cells and for NaN; so is the way back.
    bool toScreen(const Point<double, 2>& pixel, Point<double, 2>& screen) const;
    bool toPicture(const Point<double, 2>& screen, Point<double, 2>& pixel) const;

    [[nodiscard]] const CellLattice& lattice() const { return m_lattice; }

    /// A point this much outside of a cell, in parts of the picture or the screen, is on its edge: what rounding adds
    /// on the way through both maps, with room to spare.
    static constexpr double EDGE_TOLERANCE = 1e-9;

private:
    CellLattice m_lattice;
    Point<double, 2> m_pictureSize;
    CellLocator m_picture;
    CellLocator m_screen;
};

}  // namespace KelvoControlDetail
