#include "KelvoScreen/detail/TriangleMath.h"

#include "KelvoScreen/detail/Components.h"

#include <algorithm>
#include <limits>

namespace KelvoScreenDetail {

namespace {

/// Height of a sliver, relative to its largest coordinate, that rounding its corners to double can produce.
constexpr double SLIVER_HEIGHT = 4 * std::numeric_limits<double>::epsilon();

double largestCoordinate(const Corners& corners) {
    double largest = 0;
    for (const Point<double, 3>& corner : corners) {
        largest = std::max(largest, largestComponent(corner));
    }
    return largest;
}

bool isAbove(const Corners& corners, const Point<double, 3>& area, const Point<double, 3>& point) {
    for (std::size_t i = 0; i < 3; ++i) {
        const Point<double, 3>& start = corners[i];
        const Point<double, 3> inward = cross(area, corners[(i + 1) % 3] - start);
        if (!(dot(inward, point - start) >= 0)) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool hasArea(const Corners& corners) {
    const Point<double, 3> ab = corners[1] - corners[0];
    const Point<double, 3> bc = corners[2] - corners[1];
    const Point<double, 3> ca = corners[0] - corners[2];
    const Point<double, 3> area = areaVector(corners);
    const double longest = std::max({dot(ab, ab), dot(bc, bc), dot(ca, ca)});
    const double noise = SLIVER_HEIGHT * largestCoordinate(corners);
    const double area2 = dot(area, area);
    return area2 > noise * noise * longest && std::isfinite(area2);
}

Point<double, 3> unitNormal(const Corners& corners) {
    if (!hasArea(corners)) {
        return {};
    }
    const Point<double, 3> area = areaVector(corners);
    return area * (1 / norm(area));
}

Point<double, 3> closestPoint(const Corners& corners, const Point<double, 3>& point) {
    if (hasArea(corners)) {
        const Point<double, 3> area = areaVector(corners);
        if (isAbove(corners, area, point)) {
            return point - (dot(point - corners[0], area) / dot(area, area)) * area;
        }
    }
    Point<double, 3> nearest;
    double smallest = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < 3; ++i) {
        const Point<double, 3> candidate = closestOnSegment(corners[i], corners[(i + 1) % 3], point);
        const Point<double, 3> away = candidate - point;
        if (dot(away, away) < smallest) {
            smallest = dot(away, away);
            nearest = candidate;
        }
    }
    return nearest;
}

Point<double, 3> closestOnSegment(const Point<double, 3>& end1, const Point<double, 3>& end2,
                                  const Point<double, 3>& point) {
    const bool inOrder = !(end2 < end1);
    const Point<double, 3>& start = inOrder ? end1 : end2;
    const Point<double, 3> along = inOrder ? end2 - end1 : end1 - end2;
    const double length2 = dot(along, along);
    if (!(length2 > 0)) {
        return start;
    }
    const double position = dot(point - start, along) / length2;
    if (position >= 1) {
        return inOrder ? end2 : end1;
    }
    return position > 0 ? start + position * along : start;
}

}  // namespace KelvoScreenDetail
