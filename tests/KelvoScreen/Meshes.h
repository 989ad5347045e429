#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"

#include <functional>

/// Meshes of known shape for the tests.
namespace meshes {

/// How a mesh is placed: point -> offset + scale * point.
struct Placement {
    double scale = 1;
    Point<double, 3> offset;
};

[[nodiscard]] TriangleMesh place(TriangleMesh mesh, const Placement& placement);

/// A flat wall in the plane y = 0 from (0, 0, 0) to (width, 0, height), normal +y, texture coordinates (0, 0) to (1,
/// 1), cut into columns x rows cells of two triangles. Triangles of cell (column, row): 2 (row * columns + column)
/// below its diagonal, which rises to the right, and the next one above.
[[nodiscard]] TriangleMesh wall(double width, double height, int columns, int rows);

/// The surface that a function gives over [0, 1] x [0, 1], cut into columns x rows cells like those of `wall`, with (s,
/// t) as texture coordinates; normal along (d/dt) x (d/ds).
[[nodiscard]] TriangleMesh surface(int columns, int rows,
                                   const std::function<Point<double, 3>(double s, double t)>& pointAt);

/// The same of a screen that maps all of [0, 1] x [0, 1]: its twin.
[[nodiscard]] TriangleMesh sampled(const ScreenGeometry& screen, int columns, int rows);

/// A closed dome-like ball around the origin whose radius varies by a tenth: rows x columns cells, triangles at the
/// poles, wound outwards. No texture coordinates.
[[nodiscard]] TriangleMesh bumpyBall(double radius, int rows, int columns);

/// A closed room of 10 x 8 x 3, centred, with a table 2 x 1 x 1 in it, all faces cut into cells x cells squares and
/// shifted inwards by a few centimetres; the faces share their corners. Wound outwards.
[[nodiscard]] TriangleMesh room(int cells);

/// A disc of this radius around (0, 5, 0) in a plane that is inclined to all axes: so many slivers from the middle to
/// the rim, the first vertex. With texture coordinates on a disc of radius 0.5.
[[nodiscard]] TriangleMesh fan(double radius, int slivers);

/// A single triangle.
[[nodiscard]] TriangleMesh triangle(const Point<double, 3>& a, const Point<double, 3>& b, const Point<double, 3>& c);

/// Everything of both, the triangles of `first` first. Texture coordinates only when both have them.
[[nodiscard]] TriangleMesh joined(const TriangleMesh& first, const TriangleMesh& second);

/// Each triangle with three vertices of its own.
[[nodiscard]] TriangleMesh withoutSharedVertices(const TriangleMesh& mesh);

}  // namespace meshes
