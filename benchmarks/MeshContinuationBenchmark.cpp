#include "KelvoScreen/MeshScreen.h"
#include "Ratio.h"

#include <cmath>
#include <cstdint>
#include <numbers>
#include <utility>
#include <vector>

/// Rays past the border of a mesh, against rays that hit it: outlines have hundreds of the former, grids thousands of
/// the latter.

namespace {

using P3 = Point<double, 3>;
using Ray = std::pair<P3, P3>;

constexpr double RADIUS = 5.0;
constexpr int COLUMNS = 1000;
constexpr int ROWS = 500;
/// The lower border of the dome and its upper one.
constexpr double LOWEST = -0.05 * std::numbers::pi;
constexpr double HIGHEST = 0.35 * std::numbers::pi;

P3 onSphere(double azimuth, double elevation) {
    return RADIUS *
           P3{std::sin(azimuth) * std::cos(elevation), std::cos(azimuth) * std::cos(elevation), std::sin(elevation)};
}

/// Half a sphere with a border, a million triangles.
TriangleMesh domeMesh() {
    TriangleMesh mesh;
    for (int row = 0; row <= ROWS; ++row) {
        for (int column = 0; column <= COLUMNS; ++column) {
            mesh.vertices.push_back(
                onSphere(std::numbers::pi * (1.0 * column / COLUMNS - 0.5), LOWEST + (HIGHEST - LOWEST) * row / ROWS));
        }
    }
    const auto index = [](int row, int column) { return static_cast<std::uint32_t>(row * (COLUMNS + 1) + column); };
    for (int row = 0; row < ROWS; ++row) {
        for (int column = 0; column < COLUMNS; ++column) {
            mesh.triangles.push_back({index(row, column), index(row + 1, column + 1), index(row, column + 1)});
            mesh.triangles.push_back({index(row, column), index(row + 1, column), index(row + 1, column + 1)});
        }
    }
    return mesh;
}

/// Rays along the lower border, `lift` radians above it.
std::vector<Ray> raysAlongBorder(double lift) {
    constexpr int COUNT = 1000;
    std::vector<Ray> rays;
    for (int i = 0; i < COUNT; ++i) {
        rays.emplace_back(P3{0.5, -1.0, 0.25}, onSphere(std::numbers::pi * (0.9 * i / COUNT - 0.45), LOWEST + lift));
    }
    return rays;
}

template <class Ask>
void castAll(benchmark::State& state, const std::vector<Ray>& rays, const Ask& ask) {
    (void)ask(rays.front());
    for (auto _ : state) {
        for (const Ray& ray : rays) {
            benchmark::DoNotOptimize(ask(ray));
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(rays.size()));
}

}  // namespace

int main(int argc, char** argv) {
    constexpr double LIMIT = 60;
    constexpr double LIFT = 0.1;
    const MeshScreen dome(domeMesh());
    const std::vector<Ray> past = raysAlongBorder(-LIFT);
    const std::vector<Ray> within = raysAlongBorder(LIFT);
    ratio::pair(
        "mesh_ray_past_border",
        [&](benchmark::State& state) {
            castAll(state, past, [&dome](const Ray& ray) {
                return dome.intersectExtrapolatedWithSpecifiedNormal(ray.first, ray.second, 1);
            });
        },
        [&](benchmark::State& state) {
            castAll(state, within, [&dome](const Ray& ray) { return dome.intersect(ray.first, ray.second); });
        },
        LIMIT);
    return ratio::run(argc, argv);
}
