#include "EmbreeReference.h"
#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/SphericalScreen.h"
#include "MeshRays.h"
#include "Ratio.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/SphereTargetLocator.h"

#include <log4cxx/level.h>
#include <log4cxx/logger.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

/// Grids of targets through a sphere locator, against the plain use of what lies below it with a map that is filled in
/// its own order; and the bending of headings by tables, against the same arithmetic on its own.

namespace {

using Vector = Point<double, 3>;
using Grid = std::map<Point<int, 2>, Vector>;
using Table = SphereTargetLocatorParams::HeadingTable;

constexpr double PI = std::numbers::pi;
constexpr double RADIUS = 5;  // metres: a dome
/// The picture of a channel of a dome, pixels, and the columns and rows of a rough look at it.
constexpr int WIDTH = 1920;
constexpr int HEIGHT = 1200;
constexpr int FEW = 100;

/// Forty-five degrees to every side, from an eye off the centre.
SphereTargetLocatorParams camera(const Table& pitches = {}, const Table& yaws = {}) {
    return {{0.5, 1.0, 0.25}, -PI / 4, PI / 4, -PI / 4, PI / 4, 0.0, 0.0, 0.0, pitches, yaws};
}

/// A locator of another class is called for each ray.
class RayByRay : public SphereTargetLocator {
public:
    using SphereTargetLocator::SphereTargetLocator;
};

/// Times `fill` on empty grids; their end is not timed.
template <class Fill>
ratio::Body filling(const Fill& fill) {
    return [fill](benchmark::State& state) {
        ratio::returnMemoryToSystem();
        for (auto _ : state) {
            Grid grid;
            fill(grid);
            benchmark::DoNotOptimize(grid);
            state.PauseTiming();
            grid.clear();
            ratio::returnMemoryToSystem();
            state.ResumeTiming();
        }
    };
}

ratio::Body locating(const std::shared_ptr<ScreenGeometry>& screen, int columns, int rows) {
    return filling([screen, columns, rows](Grid& grid) {
        ScreenManager::getInstance()->setScreenGeometry(screen);
        SphereTargetLocator(camera()).projectOnTargetLocationSurface(0, 1, 0, 1, columns, rows, grid);
    });
}

/// @param ask gets a ray and the point to set; returns whether there is one
template <class Ask>
ratio::Body casting(const Ask& ask, int columns, int rows) {
    return filling([ask, columns, rows](Grid& grid) {
        const Vector eye = camera().eyepoint;
        const double hStep = 2.0 / (columns - 1);
        const double vStep = 2.0 / (rows - 1);
        for (int column = 0; column < columns; ++column) {
            for (int row = 0; row < rows; ++row) {
                Vector point;
                if (ask(Ray{eye, eye + Vector{-1 + column * hStep, 1, 1 - row * vStep}}, point)) {
                    grid.emplace_hint(grid.end(), Point<int, 2>{column, row}, point);
                }
            }
        }
    });
}

void addMeshPair(const std::string& name, int cells, int columns, int rows, double limit) {
    const auto screen = std::make_shared<MeshScreen>(meshRays::bumpySphere(cells));
    // The search structure is built by the first ray.
    (void)screen->intersect({}, {0.0, 1.0, 0.0});
    const auto embree = std::make_shared<EmbreeReference>(screen->mesh());
    const auto ask = [embree](const Ray& ray, Vector& point) {
        const SurfaceHit hit = embree->ask(ray);
        point = hit.point;
        return hit.hit && hit.side >= 0;
    };
    ratio::pair(name, locating(screen, columns, rows), casting(ask, columns, rows), limit);
}

/// The least that a caller with several kinds of screens can do: one virtual call, then the formula.
class BareShape {
public:
    virtual ~BareShape() = default;
    virtual bool intersect(const Vector& from, const Vector& to, Vector& point) const = 0;
};

class BareSphere : public BareShape {
public:
    bool intersect(const Vector& from, const Vector& to, Vector& point) const override {
        const Vector direction = to - from;
        const double a = dot(direction, direction);
        const double b = dot(from, direction);
        const double discriminant = b * b - a * (dot(from, from) - RADIUS * RADIUS);
        const double t = discriminant < 0 ? -1 : (-b + std::sqrt(discriminant)) / a;
        point = from + t * direction;
        return t >= 0;
    }
};

void addSpherePair(const std::string& name, double limit) {
    const auto screen = std::make_shared<SphericalScreen>(Vector{}, RADIUS, -PI, PI, -PI / 2, PI / 2);
    const std::shared_ptr<const BareShape> bare = std::make_shared<BareSphere>();
    const auto ask = [bare](const Ray& ray, Vector& point) { return bare->intersect(ray.first, ray.second, point); };
    ratio::pair(name, locating(screen, WIDTH, HEIGHT), casting(ask, WIDTH, HEIGHT), limit);
}

/// Thirty-two entries over all angles, bent a little.
Table table() {
    constexpr int ENTRIES = 32;
    Table entries;
    for (int i = 0; i < ENTRIES; ++i) {
        const double angle = PI * (2.0 * i / (ENTRIES - 1) - 1);
        entries.emplace_back(angle, angle + 0.02 * std::sin(3 * angle));
    }
    return entries;
}

double lookUp(double x, const Table& entries) {
    for (std::size_t i = 0; i + 1 < entries.size(); ++i) {
        const auto& [x0, y0] = entries[i];
        const auto& [x1, y1] = entries[i + 1];
        if (x0 >= x1 || y0 >= y1) {
            return 0;
        }
        if (x0 <= x && x < x1) {
            return y0 + (y1 - y0) * ((x - x0) / (x1 - x0));
        }
    }
    return x;
}

Vector bend(const Vector& direction, const Table& pitches, const Table& yaws) {
    const double length = norm(direction);
    const double pitch = lookUp(std::asin(direction[2] / length), pitches);
    const double yaw = lookUp(std::atan2(direction[0] / length, direction[1] / length), yaws);
    return {std::sin(yaw) * std::cos(pitch) * length, std::cos(yaw) * std::cos(pitch) * length,
            std::sin(pitch) * length};
}

/// Opens the bending of rays.
class Headings : public SphereTargetLocator {
public:
    using SphereTargetLocator::remapRays;
    using SphereTargetLocator::SphereTargetLocator;
};

template <class Remap>
ratio::Body bending(const Remap& remap) {
    return [remap](benchmark::State& state) {
        const std::vector<Ray> straight = meshRays::sparseRays().rays;
        std::vector<Ray> rays;
        for (auto _ : state) {
            rays = straight;
            remap(rays);
            benchmark::DoNotOptimize(rays.data());
        }
        state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) *
                                static_cast<std::int64_t>(straight.size()));
    };
}

void addHeadingPair(const std::string& name, double limit) {
    const Table entries = table();
    const auto locator = std::make_shared<const Headings>(camera(entries, entries));
    ratio::pair(name, bending([locator](std::vector<Ray>& rays) { locator->remapRays(rays); }),
                bending([entries](std::vector<Ray>& rays) {
                    for (auto& [origin, point] : rays) {
                        point = origin + bend(point - origin, entries, entries);
                    }
                }),
                limit);
}

/// What a grid takes while it is filled, relative to what it holds in the end; 0 when that cannot be determined.
template <class Locator>
double peakOfAGrid() {
    const pid_t child = ::fork();
    if (child == 0) {
        constexpr double KIBIBYTE = 1024;
        constexpr double PERCENT = 100;
        ScreenManager::getInstance()->setScreenGeometry(
            std::make_shared<SphericalScreen>(Vector{}, RADIUS, -PI, PI, -PI / 2, PI / 2));
        ratio::returnMemoryToSystem();
        const auto peak = [] {
            rusage usage{};
            ::getrusage(RUSAGE_SELF, &usage);
            return KIBIBYTE * static_cast<double>(usage.ru_maxrss);
        };
        const double before = peak();
        const std::size_t usedBefore = ::mallinfo2().uordblks;
        Grid grid;
        Locator(camera()).projectOnTargetLocationSurface(0, 1, 0, 1, WIDTH, HEIGHT, grid);
        const auto held = static_cast<double>(::mallinfo2().uordblks - usedBefore);
        ::_exit(static_cast<int>(std::lround(PERCENT * (peak() - before) / held)));
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
        return 0;
    }
    return WEXITSTATUS(status) / 100.0;
}

void printPeak(const char* name, double peak) {
    constexpr double LIMIT = 1.05;
    std::printf("RATIO %-44s peak over held %5.2f  limit %5.2f  %s\n", name, peak, LIMIT,
                peak > 0 && peak <= LIMIT ? "ok" : "ABOVE");
}

}  // namespace

int main(int argc, char** argv) {
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    const double atOnce = peakOfAGrid<SphereTargetLocator>();
    const double oneByOne = peakOfAGrid<RayByRay>();
    addMeshPair("sphere_grid_mesh_1M", meshRays::CELLS_1M, WIDTH, HEIGHT, 0.7);
    addMeshPair("sphere_grid_few_mesh_100k", meshRays::CELLS_100K, FEW, FEW, 1.2);
    addSpherePair("sphere_grid_dome", 1.4);
    addHeadingPair("heading_correction", 1.25);
    const int result = ratio::run(argc, argv);
    printPeak("peak_memory_of_a_grid", atOnce);
    printPeak("peak_memory_of_a_grid_ray_by_ray", oneByOne);
    return result;
}
