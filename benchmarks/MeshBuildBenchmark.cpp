#include "EmbreeReference.h"
#include "KelvoScreen/MeshScreen.h"
#include "MeshRays.h"
#include "Ratio.h"

#include <optional>
#include <string>
#include <utility>

/// Building the search structure of a mesh, against Embree's own over the same triangles.

namespace {

constexpr double LIMIT = 1.4;

/// What a caller sees: the mesh is passed, the hit of the first ray is returned.
class AnsweringScreen {
public:
    explicit AnsweringScreen(TriangleMesh mesh) : m_screen(std::move(mesh)) {
        benchmark::DoNotOptimize(m_screen.intersect({0.0, 0.0, 0.0}, {1.0, 2.0, 3.0}));
    }

private:
    MeshScreen m_screen;
};

/// Embree with its copy of the mesh.
class AnsweringEmbree {
public:
    explicit AnsweringEmbree(TriangleMesh mesh) : m_mesh(std::move(mesh)), m_embree(m_mesh) {
        benchmark::DoNotOptimize(m_embree.intersect({{0.0, 0.0, 0.0}, {1.0, 2.0, 3.0}}));
    }

private:
    TriangleMesh m_mesh;
    EmbreeReference m_embree;
};

template <class Structure>
void build(benchmark::State& state, const TriangleMesh& mesh) {
    std::optional<Structure> structure;
    for (auto _ : state) {
        state.PauseTiming();
        structure.reset();
        ratio::returnMemoryToSystem();
        TriangleMesh copy = mesh;
        state.ResumeTiming();
        structure.emplace(std::move(copy));
    }
}

void addPair(const std::string& name, const TriangleMesh& mesh) {
    ratio::pair(
        name, [&mesh](benchmark::State& state) { build<AnsweringScreen>(state, mesh); },
        [&mesh](benchmark::State& state) { build<AnsweringEmbree>(state, mesh); }, LIMIT);
}

}  // namespace

int main(int argc, char** argv) {
    const TriangleMesh small = meshRays::bumpySphere(meshRays::CELLS_10K);
    const TriangleMesh medium = meshRays::bumpySphere(meshRays::CELLS_100K);
    const TriangleMesh large = meshRays::bumpySphere(meshRays::CELLS_1M);
    addPair("mesh_build_10k", small);
    addPair("mesh_build_100k", medium);
    addPair("mesh_build_1M", large);
    return ratio::run(argc, argv);
}
