#pragma once

#include "KelvoScreen/detail/TriangleMath.h"

#include <array>
#include <cstddef>

namespace KelvoScreenDetail {

/// Where a ray meets a triangle.
struct Meeting {
    double t = 0;                   ///< in units of the ray's direction; may be negative
    std::array<double, 3> weights;  ///< barycentric weights of the point, each within [0, 1]
};

/// One ray, tested against triangles in double precision without gaps.
///
/// Each corner is sheared along the ray into a plane across it, by a rule that does not depend on the triangle; the ray
/// is the origin of that plane, and the edge functions of neighbouring triangles agree about it (see `edgeFunction`).
/// Edges and corners belong to the triangle. Beyond that, a triangle that the ray misses by no more than `tolerance`
/// is met on its edge: where neighbours do not share their corners to the last bit, or an edge carries a corner of one
/// side only, rounding could open a gap of that width.
class RayProbe {
public:
    /// @param tolerance length across the ray
    RayProbe(const Point<double, 3>& origin, const Point<double, 3>& direction, double tolerance);

    /// False when the ray misses the triangle or sees it edge-on.
    [[nodiscard]] bool meets(const Corners& corners, Meeting& meeting) const {
        Flat flat[3];
        for (std::size_t i = 0; i < 3; ++i) {
            flat[i] = flatten(corners[i]);
        }
        const std::array<double, 3> edges{edgeFunction(flat[1].x, flat[1].y, flat[2].x, flat[2].y),
                                          edgeFunction(flat[2].x, flat[2].y, flat[0].x, flat[0].y),
                                          edgeFunction(flat[0].x, flat[0].y, flat[1].x, flat[1].y)};
        const double area = edges[0] + edges[1] + edges[2];
        const bool outside =
            (edges[0] < 0 || edges[1] < 0 || edges[2] < 0) && (edges[0] > 0 || edges[1] > 0 || edges[2] > 0);
        if (!outside && area != 0) {
            const double scale = 1 / area;
            meeting.weights = {edges[0] * scale, edges[1] * scale, edges[2] * scale};
        } else if (!meetsEdge(flat, edges, area, meeting.weights)) {
            return false;
        }
        meeting.t = meeting.weights[0] * flat[0].t + meeting.weights[1] * flat[1].t + meeting.weights[2] * flat[2].t;
        return true;
    }

private:
    /// A corner as seen along the ray: across it and, as a position t, along it.
    struct Flat {
        double x, y, t;
    };

    [[nodiscard]] Flat flatten(const Point<double, 3>& corner) const {
        const Point<double, 3> relative = corner - m_origin;
        const double depth = relative[m_along];
        return {relative[m_x] - m_shearX * depth, relative[m_y] - m_shearY * depth, depth * m_perDepth};
    }

    [[nodiscard]] bool meetsEdge(const Flat (&flat)[3], const std::array<double, 3>& edges, double area,
                                 std::array<double, 3>& weights) const;

    Point<double, 3> m_origin;
    double m_tolerance2;
    std::size_t m_along;  ///< the axis along which the ray runs most
    std::size_t m_x, m_y;
    double m_shearX, m_shearY;
    double m_perDepth;  ///< t per length along that axis
};

}  // namespace KelvoScreenDetail
