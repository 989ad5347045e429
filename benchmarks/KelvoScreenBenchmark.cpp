#include "EmbreeReference.h"
#include "KelvoScreen/MeshScreen.h"
#include "MeshRays.h"
#include "Ratio.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// Rays on meshes, one by one and many at once, against what Embree takes for the same.

namespace {

/// The most that a query may take, relative to a single ray of Embree whose hit is recomputed in double.
struct Limits {
    double intersect = 1.4;
    double normal = 1.5;
    /// Rays in any order gain nothing from company; they must not lose either.
    double batch = 1.5;
};
constexpr Limits COHERENT{.batch = 0.6};
constexpr Limits COHERENT_1M{.intersect = 1.25, .batch = 0.45};
constexpr Limits SCATTERED;
constexpr Limits RANDOM_1M{.intersect = 1.35};

/// A mesh as both sides have it, built when it is first requested.
class Contest {
public:
    explicit Contest(int cells) : m_cells(cells) {}

    [[nodiscard]] const MeshScreen& screen() {
        if (!m_screen) {
            m_screen = std::make_unique<MeshScreen>(meshRays::bumpySphere(m_cells));
        }
        return *m_screen;
    }

    [[nodiscard]] const EmbreeReference& embree() {
        if (!m_embree) {
            m_embree = std::make_unique<EmbreeReference>(screen().mesh());
        }
        return *m_embree;
    }

private:
    int m_cells;
    std::unique_ptr<MeshScreen> m_screen;
    std::unique_ptr<EmbreeReference> m_embree;
};

/// What a target locator requests of a screen: the hit, the normal at the bare point, the side.
SurfaceHit askScreen(const MeshScreen& screen, const Ray& ray) {
    const IntersectionSet hits = screen.intersect(ray.first, ray.second);
    if (hits.empty()) {
        return {};
    }
    const auto [point, t] = hits.first();
    const Point<double, 3> normal = screen.getScreenNormal(point);
    return {point, normal, t, sideOfSurface(ray.second - ray.first, normal), true};
}

void countRays(benchmark::State& state, const std::vector<Ray>& rays) {
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(rays.size()));
}

template <class Ask>
void castAll(benchmark::State& state, const std::vector<Ray>& rays, const Ask& ask) {
    (void)ask(rays.front());
    for (auto _ : state) {
        for (const Ray& ray : rays) {
            benchmark::DoNotOptimize(ask(ray));
        }
    }
    countRays(state, rays);
}

void castAtOnce(benchmark::State& state, const std::vector<Ray>& rays, const MeshScreen& screen) {
    std::vector<SurfaceHit> hits(rays.size());
    screen.intersectRays(rays, hits);
    for (auto _ : state) {
        screen.intersectRays(rays, hits);
        benchmark::DoNotOptimize(hits.data());
    }
    countRays(state, rays);
}

void addRows(const std::string& name, Contest& contest, const std::vector<Ray>& rays, const Limits& limits) {
    const auto embreeAsks = [&](benchmark::State& state) {
        castAll(state, rays, [&embree = contest.embree()](const Ray& ray) { return embree.ask(ray); });
    };
    ratio::pair(
        "intersect_" + name,
        [&](benchmark::State& state) {
            castAll(state, rays,
                    [&screen = contest.screen()](const Ray& ray) { return screen.intersect(ray.first, ray.second); });
        },
        [&](benchmark::State& state) {
            castAll(state, rays, [&embree = contest.embree()](const Ray& ray) { return embree.intersect(ray); });
        },
        limits.intersect);
    ratio::pair(
        "normal_side_" + name,
        [&](benchmark::State& state) {
            castAll(state, rays, [&screen = contest.screen()](const Ray& ray) { return askScreen(screen, ray); });
        },
        embreeAsks, limits.normal);
    ratio::pair(
        "batch_" + name, [&](benchmark::State& state) { castAtOnce(state, rays, contest.screen()); }, embreeAsks,
        limits.batch);
}

}  // namespace

int main(int argc, char** argv) {
    const meshRays::Pattern patterns[] = {meshRays::coherentRays(), meshRays::sparseRays(), meshRays::randomRays()};
    Contest small(meshRays::CELLS_10K);
    Contest medium(meshRays::CELLS_100K);
    Contest large(meshRays::CELLS_1M);
    for (const meshRays::Pattern& pattern : patterns) {
        const bool isCoherent = pattern.name == "coherent";
        const Limits& limits = isCoherent ? COHERENT : SCATTERED;
        addRows(pattern.name + "_10k", small, pattern.rays, limits);
        addRows(pattern.name + "_100k", medium, pattern.rays, limits);
        addRows(pattern.name + "_1M", large, pattern.rays,
                isCoherent                 ? COHERENT_1M
                : pattern.name == "random" ? RANDOM_1M
                                           : SCATTERED);
    }
    return ratio::run(argc, argv);
}
