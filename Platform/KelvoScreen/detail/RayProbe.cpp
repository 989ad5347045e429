#include "KelvoScreen/detail/RayProbe.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// Sheared along a ray that is at most at 45 degrees to two axes no edge grows to more than sqrt(3) times its length.
/// The rest is for rounding.
constexpr double LONGEST_SHEARED = 2;
constexpr double FAR = 3;

double cube(double x) {
    return x * x * x;
}

}  // namespace

std::size_t largestAxis(const Point<double, 3>& direction) {
    const double x = std::abs(direction[0]);
    const double y = std::abs(direction[1]);
    const double z = std::abs(direction[2]);
    if (x > y) {
        return x > z ? 0 : 2;
    }
    return y > z ? 1 : 2;
}

RayProbe::RayProbe(const Point<double, 3>& origin, const Point<double, 3>& direction, double tolerance,
                   double longestEdge)
    : m_tolerance(tolerance),
      m_largestRounding(WEIGHT_ROUNDING * cube(LONGEST_SHEARED * longestEdge + tolerance)),
      m_far(FAR * longestEdge * tolerance),
      m_along(largestAxis(direction)),
      m_x((m_along + 1) % 3),
      m_y((m_along + 2) % 3),
      m_originX(origin[m_x]),
      m_originY(origin[m_y]),
      m_originDepth(origin[m_along]),
      m_shearX(direction[m_x] / direction[m_along]),
      m_shearY(direction[m_y] / direction[m_along]),
      m_perDepth(1 / direction[m_along]) {}

double RayProbe::roundingOf(const std::array<Flat, 3>& flat) {
    const double x = std::max(std::max(std::abs(flat[0].x), std::abs(flat[1].x)), std::abs(flat[2].x));
    const double y = std::max(std::max(std::abs(flat[0].y), std::abs(flat[1].y)), std::abs(flat[2].y));
    return x * y * std::max(x, y) * WEIGHT_ROUNDING;
}

std::array<double, 3> RayProbe::accurateWeights(const std::array<Flat, 3>& flat) {
    const std::array<double, 3> edges{accurateEdgeFunction(flat[1].x, flat[1].y, flat[2].x, flat[2].y),
                                      accurateEdgeFunction(flat[2].x, flat[2].y, flat[0].x, flat[0].y),
                                      accurateEdgeFunction(flat[0].x, flat[0].y, flat[1].x, flat[1].y)};
    // The inverse of an area that nearly vanishes would not be finite.
    const double area = edges[0] + edges[1] + edges[2];
    return {edges[0] / area, edges[1] / area, edges[2] / area};
}

bool RayProbe::isEdgeOn(const std::array<Flat, 3>& flat) {
    return accurateArea({flat[0].x, flat[0].y}, {flat[1].x, flat[1].y}, {flat[2].x, flat[2].y}) == 0;
}

bool RayProbe::meetsEdge(const std::array<Flat, 3>& flat, std::array<double, 3>& weights) const {
    double nearest2 = m_tolerance * m_tolerance;
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
    return met && !isEdgeOn(flat);
}

}  // namespace Veltrani::KelvoScreenDetail
