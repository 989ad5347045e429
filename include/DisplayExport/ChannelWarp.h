#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/Progress.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace Veltrani::DisplayExport {

class ChannelSight;
class ContentInput;

/// What one place of a picture shows.
struct WarpNode {
    enum class State : std::uint8_t {
        UNMAPPED,   ///< nothing: neither its light arrives on the screen, nor does anything beside it
        MAPPED,     ///< its light arrives, and the input has a place for it
        CONTINUED,  ///< its light does not arrive, but that of places between it and its neighbours does: its content
                    ///< is such that what lies between comes out right
    };

    Point<double, 2> content;  ///< (u, v) in the input; beyond 0 and 1 where cells go on over an edge; else zero
    std::uint8_t face = 0;     ///< of a cube
    State state = State::UNMAPPED;

    /// Whether a player may use its content.
    [[nodiscard]] bool isUsable() const { return state != State::UNMAPPED; }
};

/// A corner of a piece.
struct WarpCorner {
    Point<double, 2> picture;  ///< (0, 0) the bottom left corner of the channel's picture, (1, 1) the top right one
    Point<double, 2> content;  ///< (u, v) in the input
};

/// A triangle of the picture in which content is interpolated linearly between the corners. Counter-clockwise, all on
/// one face of the input.
struct WarpPiece {
    std::array<WarpCorner, 3> corners;
    std::uint8_t face = 0;
};

/// What to do where the left edge of an input goes on at its right one.
enum class Seam {
    CONTINUE,  ///< cells go on past 0 and 1, for players that repeat the input
    CUT,       ///< cells are cut there, for players that cannot
};

/// Which places of the picture a warp has.
struct WarpRequest {
    enum class Places {
        PIXELS,  ///< the middle of each pixel
        NODES,   ///< a grid from corner to corner of the picture, `nodes` columns and rows
        AUTO,    ///< such a grid, of the fewest nodes that keep the error below `error`
    };

    Places places = Places::AUTO;
    Point<int, 2> nodes{};  ///< two or more each
    double error = 0.25;    ///< pixels of the input
    /// Whether `AUTO` has more nodes where readers of grids would lose cells, up to as many as it ever has: so that
    /// they lose little of the picture.
    bool forGrids = false;
    Seam seam = Seam::CONTINUE;
    bool withPoints = false;             ///< whether the points on the screen are kept as well
    DisplayReport::Progress progress{};  ///< may be empty
};

/// How near a player that interpolates comes to what belongs there, seen at places between the nodes.
struct WarpError {
    double largest = 0;        ///< pixels of the input; of bilinear interpolation and of both ways to halve a cell
    double largestOfGrid = 0;  ///< the same for readers of grids, who have no cells where these are broken
    std::size_t places = 0;    ///< that were compared; 0: nothing was
    std::size_t beyond = 0;    ///< of these further off than the request allows
    std::size_t leftOut = 0;   ///< lit places that lie in a cell without usable corners

    /// Takes one place into account, but for readers of grids.
    /// @param error, allowed pixels of the input
    void addPlace(double error, double allowed);
    /// Takes what was found elsewhere into account, but for readers of grids.
    void add(const WarpError& other);
};

/// Which part of an input each place of a channel's picture shows.
///
/// A value: a grid of nodes, in rows from the bottom, and what has to be known of the cells between them. A cell is
/// whole when it has four usable corners on one face whose contents lie beside each other; a cell that is not is cut or
/// subdivided in `forEachPiece`, and is broken for readers of grids. So is one around a pole whose error is larger than
/// that of the others. Neighbouring nodes of a panorama have contents beside each other wherever that is
/// possible, beyond 0 and 1 where need be.
class ChannelWarp {
public:
    /// Keeps the memory for a warp within two gigabytes: more than the pixels of an 8K picture.
    static constexpr std::size_t MOST_NODES = 40'000'000;

    /// Throws `VeltraniException`, naming the channel, for a channel without a picture size, for more than `MOST_NODES`
    /// and fewer than 2 x 2 nodes, and for an error that is not above zero; and what progress throws.
    [[nodiscard]] static ChannelWarp of(const ChannelSight& sight, const ContentInput& input,
                                        const WarpRequest& request);

    /// Width and height of the channel's picture.
    [[nodiscard]] const Point<int, 2>& pixels() const { return m_pixels; }
    /// Whether the grid reaches from corner to corner; else it has the middle of each pixel.
    [[nodiscard]] bool reachesCorners() const { return m_reachesCorners; }
    [[nodiscard]] std::size_t columns() const { return m_columns; }
    /// The first one is the bottom one.
    [[nodiscard]] std::size_t rows() const { return m_rows; }
    /// Where a node stands in the picture.
    [[nodiscard]] Point<double, 2> pictureOf(std::size_t column, std::size_t row) const;
    [[nodiscard]] const WarpNode& at(std::size_t column, std::size_t row) const {
        return m_nodes[row * m_columns + column];
    }
    /// Row by row from the bottom.
    [[nodiscard]] const std::vector<WarpNode>& nodes() const { return m_nodes; }
    /// On the screen, world frame, native units, as many as nodes; beside the screen for those that are continued, zero
    /// for those that are not mapped. Empty unless requested.
    [[nodiscard]] const std::vector<Point<double, 3>>& points() const { return m_points; }

    [[nodiscard]] std::size_t count(WarpNode::State state) const;

    /// Calls with every triangle that a player has to draw, cell by cell from the bottom left: whole cells as two
    /// triangles that share the diagonal from the bottom left to the top right, others as what is left of them. A warp
    /// of pixels has none.
    void forEachPiece(const std::function<void(const WarpPiece&)>& take) const;

    /// The same nodes for a format that has a grid and no pieces: with nodes taken out such that no broken cell keeps
    /// four usable corners.
    /// @param broken receives the number of cells with four usable corners that are lost by that
    [[nodiscard]] std::vector<WarpNode> gridNodes(std::size_t& broken) const;

    /// Parts of divided cells, at most a pixel wide and high, that hold a pole of the input, or lie so near to one that
    /// nothing keeps the error in them, and have no pieces.
    [[nodiscard]] std::size_t leftOutAtPoles() const { return m_leftOutAtPoles; }
    /// Their size together, as a part of that of the picture.
    [[nodiscard]] double areaLeftOutAtPoles() const { return m_areaLeftOutAtPoles; }
    /// Cells over the seam of a panorama or the edge of a cube's face, which are broken for readers of grids.
    [[nodiscard]] std::size_t brokenAtSeams() const { return m_brokenAtSeams; }
    /// What error remains; nothing was compared for a warp of pixels.
    [[nodiscard]] const WarpError& error() const { return m_error; }

private:
    friend class WarpBuilder;
    ChannelWarp() = default;
    /// Nodes at the bottom left, bottom right, top right and top left.
    [[nodiscard]] std::array<std::size_t, 4> cornersOf(std::size_t cell) const;

    Point<int, 2> m_pixels;
    bool m_reachesCorners = true;
    std::size_t m_columns = 0;
    std::size_t m_rows = 0;
    std::vector<WarpNode> m_nodes;
    std::vector<Point<double, 3>> m_points;
    /// A cell with pieces of its own.
    struct CutCell {
        std::size_t cell = 0;
        bool isBroken = false;  ///< for readers of grids
        std::vector<WarpPiece> pieces;
    };
    std::vector<CutCell> m_cutCells;  ///< by cell, ascending
    std::size_t m_leftOutAtPoles = 0;
    double m_areaLeftOutAtPoles = 0;
    std::size_t m_brokenAtSeams = 0;
    WarpError m_error;
};

}  // namespace Veltrani::DisplayExport
