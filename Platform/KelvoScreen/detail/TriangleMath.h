#pragma once

#include "Common/Point.h"
#include "KelvoScreen/TriangleMesh.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

/// The arithmetic of triangles: of single ones, and what rays must know of those of a mesh.
namespace Veltrani::KelvoScreenDetail {

/// The three corners of a triangle, in the order of its winding.
using Corners = std::array<Point<double, 3>, 3>;

/// (b - a) x (c - a) as it comes, for triangles that are no needles.
[[nodiscard]] inline Point<double, 3> plainAreaVector(const Corners& corners) {
    return cross(corners[1] - corners[0], corners[2] - corners[0]);
}

/// Returns the area vector in twice the precision of a double: right to a few last digits of its length for every
/// triangle that has an area.
[[nodiscard]] Point<double, 3> accurateAreaVector(const Corners& corners);

/// Twice the area along the normal, by the winding. Only needles cost more than rounded arithmetic.
[[nodiscard]] Point<double, 3> areaVector(const Corners& corners);

/// What the edges determine about a triangle.
struct TriangleShape {
    explicit TriangleShape(const Corners& corners);

    /// See the function of the same name.
    [[nodiscard]] bool hasArea() const { return area2 > leastArea2 && std::isfinite(area2); }
    /// Returns true when the height over the longest edge is below `ratio` times that edge.
    [[nodiscard]] bool isThinner(double ratio) const { return area2 < ratio * ratio * longest2 * longest2; }

    /// True when the sine of the angle at the first corner is below 1/256: the terms of the area vector cancel so far
    /// that rounding them could turn the normal by 2e-13 and more.
    bool isNeedle;
    Point<double, 3> area;  ///< `areaVector`
    double area2;           ///< its square
    double leastArea2;      ///< what that would be without an area, up to rounding
    double longest2;        ///< square of the longest edge
};

/// Returns true when the triangle has an area: its height over its longest edge exceeds what the rounding of its own
/// coordinates can produce. Three points on a line that are not exact in binary leave such a sliver, whose direction is
/// noise. False when a corner is not finite, and where the arithmetic ends: extents below 1e-75 or above 1e75 units,
/// and of needles twice the area below 3.2e-151.
[[nodiscard]] bool hasArea(const Corners& corners);

/// Returns the unit normal by the winding, right to 2e-13, that of a needle to the last digits; zero for a triangle
/// without area.
[[nodiscard]] Point<double, 3> unitNormal(const Corners& corners);

/// Returns the point of a triangle nearest to `point`; for a triangle without area the nearest one of its edges. Along
/// an edge the result does not depend on the order of the corners, so that two triangles with a common edge are equally
/// far from a point that is nearest to that edge.
[[nodiscard]] Point<double, 3> closestPoint(const Corners& corners, const Point<double, 3>& point);

/// Returns the point of a segment nearest to `point`; the same to the last bit when the ends are exchanged.
[[nodiscard]] Point<double, 3> closestOnSegment(const Point<double, 3>& end1, const Point<double, 3>& end2,
                                                const Point<double, 3>& point);

/// a + weights[1] (b - a) + weights[2] (c - a): the point with these barycentric weights, whose sum is 1.
[[nodiscard]] inline Point<double, 3> pointWithWeights(const Corners& corners, const std::array<double, 3>& weights) {
    return corners[0] + weights[1] * (corners[1] - corners[0]) + weights[2] * (corners[2] - corners[0]);
}

/// On which side of the line from (px, py) to (qx, qy) the origin lies: the cross product p x q, positive to the left.
///
/// Never of the wrong sign, exactly zero only on the line, and exactly negated when p and q are exchanged: two
/// triangles that share an edge agree about every point, so that none falls between them. (Products rounded to nearest
/// keep their order; only when they come out equal are their rounding errors compared.)
[[nodiscard]] inline double edgeFunction(double px, double py, double qx, double qy) {
    const double first = px * qy;
    const double second = py * qx;
    const double difference = first - second;
    return difference != 0 ? difference : std::fma(px, qy, -first) - std::fma(py, qx, -second);
}

/// Returns the edge function to one and a half last digits of the result, however much of the products cancels.
[[nodiscard]] double accurateEdgeFunction(double px, double py, double qx, double qy);

/// (b - a) x (c - a) in the plane, in twice the precision of a double: the error is below 2^-100 of the product of the
/// two lengths, or below a last digit of the result.
[[nodiscard]] double accurateArea(const Point<double, 2>& a, const Point<double, 2>& b, const Point<double, 2>& c);

/// (b - a) . (c - a) in the plane, as accurate as the above.
[[nodiscard]] double accurateProjection(const Point<double, 2>& a, const Point<double, 2>& b,
                                        const Point<double, 2>& c);

/// Returns the corners of a triangle of a mesh.
[[nodiscard]] inline Corners cornersOf(const TriangleMesh& mesh, std::uint32_t triangle) {
    const TriangleMesh::Triangle& corners = mesh.triangles[triangle];
    return {mesh.vertices[corners[0]], mesh.vertices[corners[1]], mesh.vertices[corners[2]]};
}

/// What the arithmetic of rays must know of all triangles of a mesh.
struct TriangleShapes {
    double longest2 = 0;     ///< square of the longest edge
    double longestEdge = 0;  ///< its root
    bool hasNeedles = false;
    std::vector<bool> needles;  ///< a bit for each triangle, or none when no triangle is a needle

    void add(const TriangleMesh& mesh, std::uint32_t triangle, const TriangleShape& shape) {
        if (shape.longest2 > longest2) {
            longest2 = shape.longest2;
            longestEdge = std::sqrt(longest2);
        }
        if (shape.isNeedle) {
            hasNeedles = true;
            needles.resize(mesh.triangles.size());
            needles[triangle] = true;
        }
    }

    [[nodiscard]] bool isNeedle(std::uint32_t triangle) const { return hasNeedles && needles[triangle]; }
};

}  // namespace Veltrani::KelvoScreenDetail
