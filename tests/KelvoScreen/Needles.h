#pragma once

#include "KelvoScreen/ExactOracle.h"
#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"

#include <vector>

/// Triangles of every shape, down to needles, and the rays that are hardest on them.
namespace needles {

/// A triangle with its own axes.
struct Shape {
    oracle::Triangle corners;
    double size = 1;          ///< the edge along which it lies
    Point<double, 3> along;   ///< unit vector along that edge
    Point<double, 3> across;  ///< unit vector in the plane
    Point<double, 3> normal;  ///< unit vector
};

/// A triangle in any place and position, in either winding; the height over the edge is this part of it.
[[nodiscard]] Shape anyTriangle(double aspect, oracle::Random& random);

/// 1 to 1e-15, as often in each power of ten.
[[nodiscard]] double anyAspect(oracle::Random& random);

/// Sixteen rays from one eye to places on the triangle, its corners and edges among them. The eye is up to a million
/// sizes away, often nearly in the plane (down to 1e-9) or nearly in line with the long edge.
[[nodiscard]] std::vector<Ray> aimAt(const Shape& shape, oracle::Random& random);

/// The mesh with a needle along the first edge of each triangle: its third corner goes to a random place beside the
/// edge, at this part of the height of the triangle, and all three corners are joined with it.
[[nodiscard]] TriangleMesh splitByNeedles(const TriangleMesh& mesh, double aspect, oracle::Random& random);

/// The largest coordinate of the triangle and the origin of a ray.
[[nodiscard]] double largestCoordinate(const oracle::Triangle& triangle, const Point<double, 3>& from);

}  // namespace needles
