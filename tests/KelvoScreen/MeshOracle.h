#pragma once

#include "KelvoScreen/TriangleMesh.h"

#include <cstdint>
#include <optional>
#include <random>

/// Answers about meshes by brute force: every triangle, by other formulas than the library, in extended precision.
namespace oracle {

struct Hit {
    Point<double, 3> point;
    double t = 0;
    std::uint32_t triangle = 0;
};

/// The nearest triangle that the ray meets at t >= 0, by Cramer's rule on from + t d = a + u (b - a) + v (c - a).
[[nodiscard]] std::optional<Hit> nearestHit(const TriangleMesh& mesh, const Point<double, 3>& from,
                                            const Point<double, 3>& to);

/// The distance from a point to the nearest triangle, by the regions of the triangle.
[[nodiscard]] double distance(const TriangleMesh& mesh, const Point<double, 3>& point);

/// The distance to one triangle.
[[nodiscard]] double distance(const TriangleMesh& mesh, std::uint32_t triangle, const Point<double, 3>& point);

/// The distance of a point from the line of a ray.
[[nodiscard]] double distanceFromRay(const Point<double, 3>& from, const Point<double, 3>& to,
                                     const Point<double, 3>& point);

/// The unit normal of a triangle.
[[nodiscard]] Point<double, 3> normal(const TriangleMesh& mesh, std::uint32_t triangle);

/// Points and directions from a fixed seed, the same on every run.
class Random {
public:
    explicit Random(std::uint64_t seed) : m_generator(seed) {}

    [[nodiscard]] double uniform(double low, double high);
    /// Within the cube [-1, 1]^3.
    [[nodiscard]] Point<double, 3> inCube();
    [[nodiscard]] std::uint32_t below(std::size_t count);

private:
    std::mt19937_64 m_generator;
};

}  // namespace oracle
