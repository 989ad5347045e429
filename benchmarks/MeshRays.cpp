#include "MeshRays.h"

#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>

namespace meshRays {

namespace {

using Vector = Point<double, 3>;

constexpr double RADIUS = 5;  // metres: a dome
constexpr int RANDOM_COUNT = 100000;

Vector bumpyPoint(double polar, double azimuth) {
    const double radius = RADIUS * (1 + 0.05 * std::sin(9 * polar) * std::cos(7 * azimuth));
    return {radius * std::sin(polar) * std::cos(azimuth), radius * std::sin(polar) * std::sin(azimuth),
            radius * std::cos(polar)};
}

std::vector<Ray> frustum(int width, int height) {
    const Vector eye{0.5, 1.0, 0.25};
    std::vector<Ray> rays;
    rays.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const double across = (2.0 * column + 1) / width - 1;
            const double up = (2.0 * row + 1) / height - 1;
            rays.emplace_back(eye, eye + Vector{across, 1.0, up});
        }
    }
    return rays;
}

}  // namespace

TriangleMesh bumpySphere(int cells) {
    TriangleMesh mesh;
    for (int row = 0; row <= cells; ++row) {
        for (int column = 0; column < cells; ++column) {
            mesh.vertices.push_back(bumpyPoint(std::numbers::pi * row / cells, 2 * std::numbers::pi * column / cells));
        }
    }
    const auto index = [cells](int row, int column) {
        return static_cast<std::uint32_t>(row * cells + column % cells);
    };
    for (int row = 0; row < cells; ++row) {
        for (int column = 0; column < cells; ++column) {
            mesh.triangles.push_back({index(row, column), index(row + 1, column), index(row, column + 1)});
            mesh.triangles.push_back({index(row, column + 1), index(row + 1, column), index(row + 1, column + 1)});
        }
    }
    return mesh;
}

Pattern coherentRays() {
    constexpr int WIDTH = 1920;
    constexpr int HEIGHT = 1200;
    return {"coherent", frustum(WIDTH, HEIGHT)};
}

Pattern sparseRays() {
    constexpr int SIDE = 100;
    return {"sparse", frustum(SIDE, SIDE)};
}

Pattern randomRays() {
    std::mt19937_64 generator(1);
    std::uniform_real_distribution<double> uniform(-1, 1);
    const auto random = [&] {
        const double x = uniform(generator);
        const double y = uniform(generator);
        return Vector{x, y, uniform(generator)};
    };
    std::vector<Ray> rays;
    for (int i = 0; i < RANDOM_COUNT; ++i) {
        const Vector from = 1.5 * random();
        rays.emplace_back(from, from + random());
    }
    return {"random", rays};
}

}  // namespace meshRays
