#include "KelvoScreen/Outlines.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace outlines {

namespace {

using Vector = Point<double, 3>;
using Flat = Point<double, 2>;

std::vector<double> steps(const std::vector<Vector>& polygon) {
    std::vector<double> result;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        result.push_back(norm(polygon[(i + 1) % polygon.size()] - polygon[i]));
    }
    return result;
}

double turn(const Flat& a, const Flat& b, const Flat& c) {
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

bool cross(const Flat& a, const Flat& b, const Flat& c, const Flat& d) {
    return turn(a, b, c) * turn(a, b, d) < 0 && turn(c, d, a) * turn(c, d, b) < 0;
}

}  // namespace

std::vector<Ray> pictureAround(const TriangleMesh& mesh, const Vector& eye, double widening) {
    constexpr double FAR = std::numeric_limits<double>::infinity();
    Flat low{FAR, FAR};
    Flat high{-FAR, -FAR};
    for (const Vector& vertex : mesh.vertices) {
        const Vector seen = vertex - eye;
        const Flat picture{seen[0] / seen[1], seen[2] / seen[1]};
        for (std::size_t i = 0; i < 2; ++i) {
            low[i] = std::min(low[i], picture[i]);
            high[i] = std::max(high[i], picture[i]);
        }
    }
    const double margin = widening * (high[0] - low[0]);
    low -= Flat{margin, margin};
    high += Flat{margin, margin};
    const Flat corners[] = {low, {high[0], low[1]}, high, {low[0], high[1]}};
    constexpr int RAYS_PER_SIDE = 100;
    std::vector<Ray> rays;
    for (std::size_t side = 0; side < 4; ++side) {
        for (int i = 0; i < RAYS_PER_SIDE; ++i) {
            const Flat at = corners[side] + (1.0 * i / RAYS_PER_SIDE) * (corners[(side + 1) % 4] - corners[side]);
            rays.emplace_back(eye, eye + Vector{at[0], 1.0, at[1]});
        }
    }
    return rays;
}

std::vector<Flat> unrolled(const std::vector<Vector>& points, const Vector& centre) {
    std::vector<Flat> angles;
    for (const Vector& point : points) {
        const Vector seen = point - centre;
        angles.push_back({std::atan2(seen[0], seen[1]), std::asin(seen[2] / norm(seen))});
    }
    return angles;
}

int crossings(const std::vector<Flat>& polygon) {
    int count = 0;
    const std::size_t size = polygon.size();
    for (std::size_t i = 0; i < size; ++i) {
        for (std::size_t j = i + 1; j < size; ++j) {
            count += cross(polygon[i], polygon[(i + 1) % size], polygon[j], polygon[(j + 1) % size]) ? 1 : 0;
        }
    }
    return count;
}

double largestStep(const std::vector<Vector>& polygon) {
    const std::vector<double> all = steps(polygon);
    return *std::max_element(all.begin(), all.end());
}

double medianStep(const std::vector<Vector>& polygon) {
    std::vector<double> all = steps(polygon);
    const auto middle = all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2);
    std::nth_element(all.begin(), middle, all.end());
    return *middle;
}

double distanceFromEdges(const ScreenGeometry& screen, const Vector& point) {
    constexpr int POINTS_PER_EDGE = 100;
    double nearest = std::numeric_limits<double>::infinity();
    for (int i = 0; i <= POINTS_PER_EDGE; ++i) {
        const double along = 1.0 * i / POINTS_PER_EDGE;
        for (const Flat& st : {Flat{along, 0.0}, {along, 1.0}, {0.0, along}, {1.0, along}}) {
            Vector other;
            if (screen.mapInto3D(st, other, false)) {
                nearest = std::min(nearest, norm(other - point));
            }
        }
    }
    return nearest;
}

}  // namespace outlines
