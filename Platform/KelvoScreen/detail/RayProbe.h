#pragma once

#include "KelvoScreen/detail/Rounding.h"
#include "KelvoScreen/detail/TriangleMath.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace KelvoScreenDetail {

/// The axis of the largest component: a direction runs most along it.
[[nodiscard]] std::size_t largestAxis(const Point<double, 3>& direction);

/// False when a ray sees a triangle edge-on: it then runs along the triangle and has no hit.
/// @param heading the direction, scaled so that it can be squared
[[nodiscard]] inline bool isSeen(const Point<double, 3>& heading, const Point<double, 3>& area) {
    const double along = dot(heading, area);
    return along * along > ROUNDING * ROUNDING * (dot(area, area) * dot(heading, heading));
}

/// Where a ray meets a triangle.
struct Meeting {
    double t = 0;                     ///< in units of the ray's direction; may be negative
    std::array<double, 3> weights{};  ///< barycentric weights of the point, each within [0, 1]
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
    [[nodiscard]] bool meets(const Point<double, 3>& a, const Point<double, 3>& b, const Point<double, 3>& c,
                             Meeting& meeting) const {
        const std::array<Flat, 3> flat{flatten(a), flatten(b), flatten(c)};
        const std::array<double, 3> edges{edgeFunction(flat[1].x, flat[1].y, flat[2].x, flat[2].y),
                                          edgeFunction(flat[2].x, flat[2].y, flat[0].x, flat[0].y),
                                          edgeFunction(flat[0].x, flat[0].y, flat[1].x, flat[1].y)};
        const double area = edges[0] + edges[1] + edges[2];
        const double least = std::min(std::min(edges[0], edges[1]), edges[2]);
        const double greatest = std::max(std::max(edges[0], edges[1]), edges[2]);
        if (area == 0) {
            return false;
        }
        if (least >= 0 || greatest <= 0) {
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
        const double depth = corner[m_along] - m_originDepth;
        return {corner[m_x] - m_originX - m_shearX * depth, corner[m_y] - m_originY - m_shearY * depth,
                depth * m_perDepth};
    }

    [[nodiscard]] bool meetsEdge(const std::array<Flat, 3>& flat, const std::array<double, 3>& edges, double area,
                                 std::array<double, 3>& weights) const;

    double m_tolerance2;
    std::size_t m_along;  ///< the axis along which the ray runs most
    std::size_t m_x, m_y;
    double m_originX, m_originY, m_originDepth;
    double m_shearX, m_shearY;
    double m_perDepth;  ///< t per length along that axis
};

}  // namespace KelvoScreenDetail
