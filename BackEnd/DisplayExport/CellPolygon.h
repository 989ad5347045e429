#pragma once

#include "DisplayExport/ChannelWarp.h"
#include "DisplayExport/WarpCell.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

// Convex polygons into which cells are cut.
namespace Veltrani::DisplayExport {

class ContentInput;

/// The two triangles of a cell, by its corners; a player that halves cells does so along this diagonal.
inline constexpr std::array<std::array<std::size_t, 3>, 2> HALVES_OF_CELL{{{0, 1, 2}, {0, 2, 3}}};

/// A corner of a polygon that is being cut.
struct CellVertex {
    Point<double, 2> picture;
    Point<double, 2> content;
    Point<double, 3> direction;
};

/// Counter-clockwise.
using CellPolygon = std::vector<CellVertex>;

/// @param contents of the corners of the cell
/// @param corners which of them make the polygon
[[nodiscard]] CellPolygon polygonOf(const WarpCell& cell, const std::array<Point<double, 2>, 4>& contents,
                                    const std::array<std::size_t, 3>& corners);

/// The vertex at a part of the way from one to another, all of it interpolated linearly.
[[nodiscard]] CellVertex between(const CellVertex& a, const CellVertex& b, double part);

/// What is left of a polygon on the side where `height` of a vertex, which is linear in it, is not below zero.
template <class Height>
[[nodiscard]] CellPolygon cutBy(const CellPolygon& polygon, const Height& height) {
    CellPolygon left;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const CellVertex& here = polygon[i];
        const CellVertex& next = polygon[(i + 1) % polygon.size()];
        const double a = height(here);
        const double b = height(next);
        if (a >= 0) {
            left.push_back(here);
        }
        if ((a > 0 && b < 0) || (a < 0 && b > 0)) {
            left.push_back(between(here, next, a / (a - b)));
        }
    }
    return left;
}

/// Twice the area of a triangle; below zero when its corners are clockwise.
[[nodiscard]] inline double areaOf(const Point<double, 2>& a, const Point<double, 2>& b, const Point<double, 2>& c) {
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

/// As a fan of triangles; those without an area are left out.
void addFan(const CellPolygon& polygon, std::uint8_t face, std::vector<WarpPiece>& pieces);

/// A cell over several faces of an input, cut where directions that are interpolated pass their edges.
void addPiecesAtFaces(const WarpCell& cell, const ContentInput& input, std::vector<WarpPiece>& pieces);

}  // namespace Veltrani::DisplayExport
