#include "KelvoScreen/MeshOracle.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace oracle {

namespace {

using Exact = Point<long double, 3>;
using Vector = Point<double, 3>;

Exact exact(const Vector& p) {
    return {static_cast<long double>(p[0]), static_cast<long double>(p[1]), static_cast<long double>(p[2])};
}

Vector rounded(const Exact& p) {
    return {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])};
}

std::array<Exact, 3> cornersOf(const TriangleMesh& mesh, std::uint32_t triangle) {
    const TriangleMesh::Triangle& t = mesh.triangles[triangle];
    return {exact(mesh.vertices[t[0]]), exact(mesh.vertices[t[1]]), exact(mesh.vertices[t[2]])};
}

long double clamped(long double value) {
    return std::clamp(value, 0.0L, 1.0L);
}

long double segmentDistance(const Exact& a, const Exact& b, const Exact& p) {
    const Exact along = b - a;
    const long double length2 = dot(along, along);
    const long double position = length2 > 0 ? clamped(dot(p - a, along) / length2) : 0;
    return norm(a + position * along - p);
}

}  // namespace

std::optional<Hit> nearestHit(const TriangleMesh& mesh, const Vector& from, const Vector& to) {
    const Exact origin = exact(from);
    const Exact direction = exact(to) - origin;
    std::optional<Hit> best;
    for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i) {
        const auto [a, b, c] = cornersOf(mesh, i);
        const Exact across = cross(direction, c - a);
        const long double determinant = dot(b - a, across);
        if (determinant == 0) {
            continue;
        }
        const long double u = dot(origin - a, across) / determinant;
        const Exact other = cross(origin - a, b - a);
        const long double v = dot(direction, other) / determinant;
        const long double t = dot(c - a, other) / determinant;
        if (u >= 0 && v >= 0 && u + v <= 1 && t >= 0 && (!best || t < best->t)) {
            best = Hit{rounded(origin + t * direction), static_cast<double>(t), i};
        }
    }
    return best;
}

double distance(const TriangleMesh& mesh, std::uint32_t triangle, const Vector& point) {
    const auto [a, b, c] = cornersOf(mesh, triangle);
    const Exact p = exact(point);
    const Exact ab = b - a;
    const Exact ac = c - a;
    const Exact area = cross(ab, ac);
    const long double area2 = dot(area, area);
    if (area2 > 0) {
        const long double gamma = dot(cross(ab, p - a), area) / area2;
        const long double beta = dot(cross(p - a, ac), area) / area2;
        if (beta >= 0 && gamma >= 0 && beta + gamma <= 1) {
            return static_cast<double>(std::abs(dot(p - a, area)) / std::sqrt(area2));
        }
    }
    return static_cast<double>(
        std::min({segmentDistance(a, b, p), segmentDistance(b, c, p), segmentDistance(c, a, p)}));
}

double distance(const TriangleMesh& mesh, const Vector& point) {
    double nearest = std::numeric_limits<double>::infinity();
    for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i) {
        nearest = std::min(nearest, distance(mesh, i, point));
    }
    return nearest;
}

double distanceFromRay(const Vector& from, const Vector& to, const Vector& point) {
    const Exact direction = exact(to) - exact(from);
    return static_cast<double>(norm(cross(exact(point) - exact(from), direction)) / norm(direction));
}

Vector normal(const TriangleMesh& mesh, std::uint32_t triangle) {
    const auto [a, b, c] = cornersOf(mesh, triangle);
    const Exact area = cross(b - a, c - a);
    return rounded(area * (1 / norm(area)));
}

double Random::uniform(double low, double high) {
    return low + (high - low) * (static_cast<double>(m_generator() >> 11) * 0x1p-53);
}

Vector Random::inCube() {
    const double x = uniform(-1, 1);
    const double y = uniform(-1, 1);
    return {x, y, uniform(-1, 1)};
}

std::uint32_t Random::below(std::size_t count) {
    return static_cast<std::uint32_t>(m_generator() % count);
}

}  // namespace oracle
