#include "KelvoScreen/Needles.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace needles {

namespace {

using Vector = Point<double, 3>;

constexpr double DEEPEST_ASPECT = 15;   // powers of ten
constexpr double FLATTEST_GRAZING = 9;  // powers of ten
constexpr double FARTHEST = 6;          // powers of ten, in sizes
constexpr double FULL_TURN = 6.283185307179586;

Vector anyDirection(oracle::Random& random) {
    while (true) {
        const Vector direction = random.inCube();
        const double length = norm(direction);
        if (length > 0.1 && length < 1) {
            return direction * (1 / length);
        }
    }
}

double anyPowerOfTen(double low, double high, oracle::Random& random) {
    return std::pow(10, random.uniform(low, high));
}

/// From the eye to the triangle.
Vector directionTowards(const Shape& shape, oracle::Random& random) {
    const double offset = anyPowerOfTen(-FLATTEST_GRAZING, 0, random);
    const double turn = random.uniform(0, FULL_TURN);
    switch (random.below(4)) {
        case 0:
            return std::cos(turn) * shape.along + std::sin(turn) * shape.across + offset * shape.normal;
        case 1:
            return shape.along + offset * anyDirection(random);
        default:
            return anyDirection(random);
    }
}

Vector placeOn(const oracle::Triangle& corners, oracle::Random& random) {
    const std::uint32_t kind = random.below(6);
    const Vector& a = corners[random.below(3)];
    const Vector onEdge = a + random.uniform(0, 1) * (corners[random.below(3)] - a);
    return kind == 0 ? a : kind == 1 ? onEdge : onEdge + random.uniform(0, 1) * (corners[random.below(3)] - onEdge);
}

}  // namespace

Shape anyTriangle(double aspect, oracle::Random& random) {
    Shape shape;
    shape.size = anyPowerOfTen(-2, 1, random);
    shape.along = anyDirection(random);
    const Vector normal = cross(shape.along, anyDirection(random));
    shape.normal = normal * (1 / norm(normal));
    shape.across = cross(shape.normal, shape.along);
    const double distance = random.below(3) == 0 ? 0 : anyPowerOfTen(-1, 3, random);
    const Vector place = distance * random.inCube();
    const Vector apex =
        place + random.uniform(-0.5, 1.5) * shape.size * shape.along + shape.size * aspect * shape.across;
    shape.corners = {place, place + shape.size * shape.along, apex};
    std::rotate(shape.corners.begin(), shape.corners.begin() + random.below(3), shape.corners.end());
    if (random.below(2) == 0) {
        std::swap(shape.corners[0], shape.corners[1]);
    }
    return shape;
}

double anyAspect(oracle::Random& random) {
    return anyPowerOfTen(-DEEPEST_ASPECT, 0, random);
}

std::vector<Ray> aimAt(const Shape& shape, oracle::Random& random) {
    const Vector direction = directionTowards(shape, random);
    const double distance = shape.size * anyPowerOfTen(-2, random.below(3) == 0 ? FARTHEST : 1, random);
    const Vector eye = placeOn(shape.corners, random) - distance * direction;
    std::vector<Ray> rays;
    for (int i = 0; i < 16; ++i) {
        const Vector aim = placeOn(shape.corners, random);
        rays.emplace_back(eye, i % 2 == 0 ? aim : eye + random.uniform(0.1, 3) * (aim - eye));
    }
    return rays;
}

TriangleMesh splitByNeedles(const TriangleMesh& mesh, double aspect, oracle::Random& random) {
    TriangleMesh split;
    split.vertices = mesh.vertices;
    for (const auto& [a, b, c] : mesh.triangles) {
        const Vector start = mesh.vertices[a];
        const Vector onEdge = start + random.uniform(0.1, 0.9) * (mesh.vertices[b] - start);
        const auto apex = static_cast<std::uint32_t>(split.vertices.size());
        split.vertices.push_back(onEdge + aspect * (mesh.vertices[c] - onEdge));
        split.triangles.insert(split.triangles.end(), {{a, b, apex}, {b, c, apex}, {c, a, apex}});
    }
    return split;
}

double largestCoordinate(const oracle::Triangle& triangle, const Vector& from) {
    double largest = 0;
    for (const Vector& point : {triangle[0], triangle[1], triangle[2], from}) {
        for (std::size_t k = 0; k < 3; ++k) {
            largest = std::max(largest, std::abs(point[k]));
        }
    }
    return largest;
}

}  // namespace needles
