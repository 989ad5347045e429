#include "KelvoScreen/detail/RayProbe.h"

#include <algorithm>
#include <cmath>

namespace KelvoScreenDetail {

std::size_t largestAxis(const Point<double, 3>& direction) {
    const double x = std::abs(direction[0]);
    const double y = std::abs(direction[1]);
    const double z = std::abs(direction[2]);
    if (x > y) {
        return x > z ? 0 : 2;
    }
    return y > z ? 1 : 2;
}

RayProbe::RayProbe(const Point<double, 3>& origin, const Point<double, 3>& direction, double tolerance)
    : m_tolerance2(tolerance * tolerance),
      m_along(largestAxis(direction)),
      m_x((m_along + 1) % 3),
      m_y((m_along + 2) % 3),
      m_originX(origin[m_x]),
      m_originY(origin[m_y]),
      m_originDepth(origin[m_along]),
      m_shearX(direction[m_x] / direction[m_along]),
      m_shearY(direction[m_y] / direction[m_along]),
      m_perDepth(1 / direction[m_along]) {}

bool RayProbe::meetsEdge(const std::array<Flat, 3>& flat, const std::array<double, 3>& edges, double area,
                         std::array<double, 3>& weights) const {
    // A line that the ray passes at more than the tolerance, on its outer side, settles it: nearly always the first.
    for (std::size_t i = 0; i < 3; ++i) {
        const Flat& start = flat[(i + 1) % 3];
        const Flat& end = flat[(i + 2) % 3];
        const double dx = end.x - start.x;
        const double dy = end.y - start.y;
        if (!(edges[i] * area >= 0) && edges[i] * edges[i] > m_tolerance2 * (dx * dx + dy * dy)) {
            return false;
        }
    }
    double nearest2 = m_tolerance2;
    bool met = false;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t first = (i + 1) % 3;
        const std::size_t second = (i + 2) % 3;
        const double dx = flat[second].x - flat[first].x;
        const double dy = flat[second].y - flat[first].y;
        const double length2 = dx * dx + dy * dy;
        const double position =
            length2 > 0 ? std::clamp(-(flat[first].x * dx + flat[first].y * dy) / length2, 0.0, 1.0) : 0.0;
        const double x = flat[first].x + position * dx;
        const double y = flat[first].y + position * dy;
        if (x * x + y * y <= nearest2) {
            nearest2 = x * x + y * y;
            weights[i] = 0;
            weights[first] = 1 - position;
            weights[second] = position;
            met = true;
        }
    }
    return met;
}

}  // namespace KelvoScreenDetail
