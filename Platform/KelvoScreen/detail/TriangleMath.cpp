#include "KelvoScreen/detail/TriangleMath.h"

#include "KelvoScreen/detail/Rounding.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// Height of a sliver, relative to its largest coordinate, that rounding its corners to double can produce.
constexpr double SLIVER_HEIGHT = 4 * std::numeric_limits<double>::epsilon();

/// See `TriangleShape::isNeedle`.
constexpr double NEEDLE_SINE2 = 0x1p-16;

/// Squares of area vectors below this lose digits: the range of a double ends.
constexpr double SMALLEST_AREA2 = 1e-301;

/// Height over longest edge below which the nearest point is searched in the frame of the longest edge: where two edges
/// run nearly along each other, rounding alone could place a point between them that lies far beyond their corner.
constexpr double SLENDER = 1.0 / 16;

/// An exact value as the sum of two doubles, the second below the last digit of the first.
struct Double2 {
    double high;
    double low;
};

/// Exact (Knuth): the rounding error of a difference is a double itself.
Double2 exactDifference(double a, double b) {
    const double high = a - b;
    const double shareOfB = a - high;
    const double shareOfA = high + shareOfB;
    return {high, (a - shareOfA) + (shareOfB - b)};
}

/// Returns the product of numbers that are the sum of two doubles, right to 2^-103 of it.
Double2 product(const Double2& a, const Double2& b) {
    const double high = a.high * b.high;
    const double rounding = std::fma(a.high, b.high, -high);
    return {high, rounding + (a.high * b.low + (a.low * b.high + a.low * b.low))};
}

double largestCoordinate(const Corners& corners) {
    double largest = 0;
    for (const Point<double, 3>& corner : corners) {
        largest = std::max(largest, largestComponent(corner));
    }
    return largest;
}

/// Returns the index of the corner at which the longest edge begins.
std::size_t startOfLongestEdge(const Corners& corners) {
    std::size_t start = 0;
    double longest2 = -1;
    for (std::size_t i = 0; i < 3; ++i) {
        const Point<double, 3> edge = corners[(i + 1) % 3] - corners[i];
        if (dot(edge, edge) > longest2) {
            longest2 = dot(edge, edge);
            start = i;
        }
    }
    return start;
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

/// Returns the foot of a point on a slender triangle; nothing when it falls beside the triangle.
///
/// In the frame of the longest edge, x along it and y across it within the triangle, both directions are known to the
/// last digits, and the height of the triangle is as well: whether the foot lies inside is decided exactly for a
/// triangle and a point that are off by no more than their coordinates are rounded.
std::optional<Point<double, 3>> footOnSlender(const Corners& corners, const Point<double, 3>& point) {
    const std::size_t first = startOfLongestEdge(corners);
    const Point<double, 3>& start = corners[first];
    const Point<double, 3> edge = corners[(first + 1) % 3] - start;
    const double length = norm(edge);
    const Point<double, 3> along = edge * (1 / length);
    const Point<double, 3> area = accurateAreaVector(corners);
    const double size = norm(area);
    const Point<double, 3> across = cross(area * (1 / size), along);
    const double x = dot(point - start, along);
    const double y = dot(point - start, across);
    const double apexX = dot(corners[(first + 2) % 3] - start, along);
    const double apexY = size / length;
    const bool isInside =
        y >= 0 && edgeFunction(x, y, apexX, apexY) >= 0 && edgeFunction(apexX - length, apexY, x - length, y) >= 0;
    return isInside ? std::optional(start + x * along + y * across) : std::nullopt;
}

/// Returns the foot of a point on a triangle with area; nothing when it falls beside the triangle.
std::optional<Point<double, 3>> footOf(const Corners& corners, const TriangleShape& shape,
                                       const Point<double, 3>& point) {
    if (shape.isThinner(SLENDER)) {
        return footOnSlender(corners, point);
    }
    if (!isAbove(corners, shape.area, point)) {
        return std::nullopt;
    }
    return point - (dot(point - corners[0], shape.area) / shape.area2) * shape.area;
}

}  // namespace

double accurateEdgeFunction(double px, double py, double qx, double qy) {
    // Kahan: what rounding takes from the second product is added again.
    const double second = py * qx;
    const double rounding = std::fma(-py, qx, second);
    return std::fma(px, qy, -second) + rounding;
}

double accurateArea(const Point<double, 2>& a, const Point<double, 2>& b, const Point<double, 2>& c) {
    const Double2 first = product(exactDifference(b[0], a[0]), exactDifference(c[1], a[1]));
    const Double2 second = product(exactDifference(b[1], a[1]), exactDifference(c[0], a[0]));
    const Double2 difference = exactDifference(first.high, second.high);
    return difference.high + (difference.low + (first.low - second.low));
}

double accurateProjection(const Point<double, 2>& a, const Point<double, 2>& b, const Point<double, 2>& c) {
    const Double2 first = product(exactDifference(b[0], a[0]), exactDifference(c[0], a[0]));
    const Double2 second = product(exactDifference(b[1], a[1]), exactDifference(c[1], a[1]));
    const Double2 sum = exactDifference(first.high, -second.high);
    return sum.high + (sum.low + (first.low + second.low));
}

Point<double, 3> areaVector(const Corners& corners) {
    return TriangleShape(corners).area;
}

Point<double, 3> accurateAreaVector(const Corners& corners) {
    const auto component = [&corners](std::size_t i, std::size_t j) {
        return accurateArea({corners[0][i], corners[0][j]}, {corners[1][i], corners[1][j]},
                            {corners[2][i], corners[2][j]});
    };
    return {component(1, 2), component(2, 0), component(0, 1)};
}

TriangleShape::TriangleShape(const Corners& corners) {
    const Point<double, 3> ab = corners[1] - corners[0];
    const Point<double, 3> ac = corners[2] - corners[0];
    const Point<double, 3> bc = corners[2] - corners[1];
    const double ab2 = dot(ab, ab);
    const double ac2 = dot(ac, ac);
    const Point<double, 3> plain = cross(ab, ac);
    isNeedle = dot(plain, plain) < NEEDLE_SINE2 * (ab2 * ac2);
    area = isNeedle ? accurateAreaVector(corners) : plain;
    area2 = dot(area, area);
    longest2 = std::max({ab2, dot(bc, bc), ac2});
    const double noise = SLIVER_HEIGHT * largestCoordinate(corners);
    leastArea2 = std::max(noise * noise * longest2, SMALLEST_AREA2);
}

bool hasArea(const Corners& corners) {
    return TriangleShape(corners).hasArea();
}

Point<double, 3> unitNormal(const Corners& corners) {
    const TriangleShape shape(corners);
    return shape.hasArea() ? shape.area * (1 / norm(shape.area)) : Point<double, 3>{};
}

Point<double, 3> closestPoint(const Corners& corners, const Point<double, 3>& point) {
    const TriangleShape shape(corners);
    if (shape.hasArea()) {
        const std::optional<Point<double, 3>> foot = footOf(corners, shape, point);
        if (foot) {
            return *foot;
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

}  // namespace Veltrani::KelvoScreenDetail
