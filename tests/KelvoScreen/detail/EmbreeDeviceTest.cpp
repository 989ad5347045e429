#include "KelvoScreen/detail/BoxScene.h"

#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/Meshes.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <vector>

namespace {

std::ptrdiff_t threadCount() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

TEST(EmbreeDevice, IsOneForTheWholeProcess) {
    EXPECT_NE(Veltrani::KelvoScreenDetail::embreeDevice(), nullptr);
    EXPECT_EQ(Veltrani::KelvoScreenDetail::embreeDevice(), Veltrani::KelvoScreenDetail::embreeDevice());
}

TEST(EmbreeDevice, BuildingAndSearchingAMeshStartsNoThread) {
    const std::ptrdiff_t before = threadCount();
    {
        const MeshScreen screen(meshes::bumpyBall(5, 100, 100));
        EXPECT_EQ(screen.intersect({0.0, 0.0, 0.0}, {1.0, 2.0, 3.0}).size(), 1U);
        EXPECT_EQ(threadCount(), before);
        std::vector<Ray> rays;
        for (int i = 0; i < 10000; ++i) {
            rays.push_back({{0.0, 0.1, 0.2}, {1.0, 0.0001 * i, 0.5}});
        }
        std::vector<SurfaceHit> hits(rays.size());
        screen.intersectRays(rays, hits);
        EXPECT_TRUE(hits.back().hit);
        EXPECT_EQ(threadCount(), before) << "after many rays at once";
    }
    EXPECT_EQ(threadCount(), before) << "after the mesh is gone";
}

}  // namespace
