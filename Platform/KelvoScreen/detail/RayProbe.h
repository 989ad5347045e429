#pragma once

#include "KelvoScreen/detail/Rounding.h"
#include "KelvoScreen/detail/TriangleMath.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace Veltrani::KelvoScreenDetail {

/// Returns the axis of the largest component: a direction runs most along it.
[[nodiscard]] std::size_t largestAxis(const Point<double, 3>& direction);

/// Returns false when a ray sees a triangle edge-on: it then runs along the triangle and has no hit.
/// @param heading the direction, scaled so that it can be squared
[[nodiscard]] inline bool isSeen(const Point<double, 3>& heading, const Point<double, 3>& area) {
    const double along = dot(heading, area);
    return along * along > ROUNDING * ROUNDING * (dot(area, area) * dot(heading, heading));
}

/// A point where a ray meets a triangle.
struct Meeting {
    double t = 0;                     ///< in units of the ray's direction; may be negative
    std::array<double, 3> weights{};  ///< barycentric weights of the point, each within [0, 1]
};

/// What `WEIGHT_ROUNDING` times x y larger(x, y) must not exceed, with x and y the largest components of the corners of
/// a triangle across the ray, is the tolerance times the doubled area that the ray sees.
///
/// Rounding the edge functions, by up to 2 u x y each with u = 2^-53, moves the point of the weights by up to
/// 6 sqrt(2) u x y larger(x, y) / area: no more than 5.7 tolerances then.
inline constexpr double WEIGHT_ROUNDING = 1.5 * 0x1p-53;

/// One ray, tested against triangles in double precision without gaps.
///
/// Each corner is sheared along the ray into a plane across it, by a rule that does not depend on the triangle; the ray
/// is the origin of that plane, and the edge functions of neighbouring triangles agree about it (see `edgeFunction`).
/// Edges and corners belong to the triangle. Beyond that, a triangle that the ray misses by no more than `tolerance`
/// is met on its edge: where neighbours do not share their corners to the last bit, or an edge carries a corner of one
/// side only, rounding could open a gap of that width.
///
/// The weights place the point within 5.7 tolerances of the ray, besides the rounding of the corners as they are
/// sheared and of the point itself. Where rounding the edge functions could do more, of a needle, or of any triangle
/// that the ray grazes, they are computed again, right to their last digits.
class RayProbe {
public:
    /// @param tolerance length across the ray
    /// @param longestEdge no edge of the triangles is longer
    RayProbe(const Point<double, 3>& origin, const Point<double, 3>& direction, double tolerance, double longestEdge);

    /// Returns false when the ray misses the triangle or sees it edge-on.
    [[nodiscard]] bool meets(const Point<double, 3>& a, const Point<double, 3>& b, const Point<double, 3>& c,
                             Meeting& meeting) const {
        const std::array<Flat, 3> flat{flatten(a), flatten(b), flatten(c)};
        const std::array<double, 3> edges{edgeFunction(flat[1].x, flat[1].y, flat[2].x, flat[2].y),
                                          edgeFunction(flat[2].x, flat[2].y, flat[0].x, flat[0].y),
                                          edgeFunction(flat[0].x, flat[0].y, flat[1].x, flat[1].y)};
        const double area = edges[0] + edges[1] + edges[2];
        const double least = std::min(std::min(edges[0], edges[1]), edges[2]);
        const double greatest = std::max(std::max(edges[0], edges[1]), edges[2]);
        if (least >= 0 || greatest <= 0) {
            if (area == 0) {
                return false;
            }
            const double scale = 1 / area;
            meeting.weights = {edges[0] * scale, edges[1] * scale, edges[2] * scale};
            const double roundingAllowed = m_tolerance * std::abs(area);
            if (!(m_largestRounding <= roundingAllowed) && !(roundingOf(flat) <= roundingAllowed)) {
                meeting.weights = accurateWeights(flat);
            }
        } else if ((-least > m_far && greatest > m_far) || !meetsEdge(flat, meeting.weights)) {
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

    /// See `WEIGHT_ROUNDING`.
    [[nodiscard]] static double roundingOf(const std::array<Flat, 3>& flat);
    [[nodiscard]] static std::array<double, 3> accurateWeights(const std::array<Flat, 3>& flat);
    [[nodiscard]] static bool isEdgeOn(const std::array<Flat, 3>& flat);
    [[nodiscard]] bool meetsEdge(const std::array<Flat, 3>& flat, std::array<double, 3>& weights) const;

    double m_tolerance;
    double m_largestRounding;  ///< no triangle that the ray meets inside has a larger `roundingOf`
    double m_far;  ///< the edge function of an edge whose line passes the ray at more than the tolerance is larger
    std::size_t m_along;  ///< the axis along which the ray runs most
    std::size_t m_x, m_y;
    double m_originX, m_originY, m_originDepth;
    double m_shearX, m_shearY;
    double m_perDepth;  ///< t per length along that axis
};

}  // namespace Veltrani::KelvoScreenDetail
