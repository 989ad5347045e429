#pragma once

#include "KelvoControl/detail/CellLattice.h"
#include "KelvoControl/detail/CellLocator.h"

#include <memory>
#include <string>
#include <string_view>

namespace Veltrani::KelvoControlDetail {

/// A warp mesh as two maps, from the picture to the screen and back. Immutable.
///
/// A result up to `EDGE_TOLERANCE` beyond the edge of the picture, or of the screen's range, is on that edge: there it
/// is within the picture for callers that compare exactly. A mesh that really reaches further keeps its places.
class WarpMesh {
public:
    /// @param pictureSize width and height in pixels: the unit of the tolerance at the edges of cells
    WarpMesh(CellLattice lattice, const Point<double, 2>& pictureSize);
    WarpMesh(const WarpMesh&) = delete;
    WarpMesh& operator=(const WarpMesh&) = delete;

    /// False, with `screen` untouched, outside of the mapped cells and for NaN; so is the way back.
    bool toScreen(const Point<double, 2>& pixel, Point<double, 2>& screen) const {
        if (!m_picture.hasAxes()) {
            return toScreenByIndex(pixel, screen);
        }
        CellPlace place;
        if (!m_picture.locateByAxes(pixel, place)) {
            return toScreenBySearch(pixel, screen);
        }
        screen = screenAt(place);
        return true;
    }
    bool toPicture(const Point<double, 2>& screen, Point<double, 2>& pixel) const {
        if (!m_screen.hasAxes()) {
            return toPictureByIndex(screen, pixel);
        }
        CellPlace place;
        if (!m_screen.locateByAxes(screen, place)) {
            return toPictureBySearch(screen, pixel);
        }
        pixel = pictureAt(place);
        return true;
    }

    [[nodiscard]] const CellLattice& lattice() const { return m_lattice; }
    /// Width and height in pixels.
    [[nodiscard]] const Point<double, 2>& pictureSize() const { return m_pictureSize; }

    /// A point this much outside of a cell, in parts of the picture or the screen, is on its edge: what rounding adds
    /// on the way through both maps, with room to spare.
    static constexpr double EDGE_TOLERANCE = 1e-9;

private:
    // Each kind of lattice has functions of its own, and so has what few points need: together they would be slower.
    bool toScreenByIndex(const Point<double, 2>& pixel, Point<double, 2>& screen) const;
    bool toScreenBySearch(const Point<double, 2>& pixel, Point<double, 2>& screen) const;
    bool toPictureByIndex(const Point<double, 2>& screen, Point<double, 2>& pixel) const;
    bool toPictureBySearch(const Point<double, 2>& screen, Point<double, 2>& pixel) const;

    [[nodiscard]] Point<double, 2> screenAt(const CellPlace& place) const {
        return ontoEdges(m_lattice.cell(m_lattice.screen, place.node).at(place.a, place.b), SCREEN_SIZE);
    }
    [[nodiscard]] Point<double, 2> pictureAt(const CellPlace& place) const {
        return ontoEdges(m_lattice.cell(m_lattice.picture, place.node).at(place.a, place.b), m_pictureSize);
    }
    /// The mean of two nodes on an edge may round to beyond it.
    static Point<double, 2> ontoEdges(const Point<double, 2>& place, const Point<double, 2>& size) {
        const bool isWithin = place[0] >= 0 && place[0] <= size[0] && place[1] >= 0 && place[1] <= size[1];
        return isWithin ? place : Point<double, 2>{ontoEdge(place[0], size[0]), ontoEdge(place[1], size[1])};
    }
    static double ontoEdge(double value, double last);

    static constexpr Point<double, 2> SCREEN_SIZE{1.0, 1.0};

    CellLattice m_lattice;
    Point<double, 2> m_pictureSize;
    CellLocator m_picture;
    CellLocator m_screen;
};

/// Reads a warp mesh:
///
///     2                      rectangular
///     nx ny                  nodes in a row, rows; both at least 2
///     x y u v i              nx * ny nodes, x fastest
///     pixels W H             size of the channel's picture
///
/// (x, y) is the node in the picture: y from -1 (bottom) to 1 (top), x from -a to a, where a is the largest x of the
/// file; in pixels ((x + a) / (2 a) W, (y + 1) / 2 H). (u, v) is the node on the screen. i is the brightness, up to 1;
/// below 0 the node is unused. Lines without text are skipped, and the last line needs no end: a file that was cut off
/// within its very last number cannot be distinguished from a whole one.
class WarpMeshFile {
public:
    /// Throws `VeltraniMissingFileException` when there is no such file and `VeltraniParseException`, which names file
    /// and line, when it cannot be understood.
    [[nodiscard]] static std::shared_ptr<const WarpMesh> read(const std::wstring& file);

    /// As `read`, from a text.
    /// @param document named in messages, UTF-8
    [[nodiscard]] static std::shared_ptr<const WarpMesh> parse(std::string_view text, const std::string& document);
};

}  // namespace Veltrani::KelvoControlDetail
