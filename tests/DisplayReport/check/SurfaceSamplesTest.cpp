#include "DisplayReport/check/SurfaceSamples.h"

#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/TriangleMesh.h"

#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;

/// A square of which one triangle is large, and the other one cut into strips.
TriangleMesh unevenSquare(int strips) {
    TriangleMesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 0, 1}};
    mesh.triangles = {{0, 1, 2}};
    for (int i = 0; i <= strips; ++i) {
        const double along = static_cast<double>(i) / strips;
        mesh.vertices.push_back({along, 0, 1});
    }
    for (int i = 0; i < strips; ++i) {
        const auto first = static_cast<std::uint32_t>(3 + i);
        mesh.triangles.push_back({0, first + 1, first});
    }
    return mesh;
}

TEST(SurfaceSamples, CoverAMeshEvenlyWhateverItsTriangles) {
    constexpr int CELLS = 10;
    const MeshScreen screen(unevenSquare(50));
    const std::vector<SurfacePoint> samples = samplesOf(screen, 20000);
    ASSERT_EQ(samples.size(), 20000U);
    int counts[CELLS][CELLS] = {};
    for (const SurfacePoint& sample : samples) {
        EXPECT_FALSE(sample.hasParameters);
        ASSERT_GE(std::min(sample.place[0], sample.place[2]), 0.0);
        ASSERT_LE(std::max(sample.place[0], sample.place[2]), 1.0);
        ++counts[std::min(CELLS - 1, static_cast<int>(sample.place[0] * CELLS))]
                [std::min(CELLS - 1, static_cast<int>(sample.place[2] * CELLS))];
    }
    for (const auto& row : counts) {
        for (const int count : row) {
            EXPECT_NEAR(count, 200, 80);
        }
    }
}

TEST(SurfaceSamples, CarryTheTextureOfTheirPlace) {
    TriangleMesh mesh;
    mesh.vertices = {{0, 5, 0}, {4, 5, 0}, {4, 5, 2}};
    mesh.triangles = {{0, 1, 2}};
    mesh.textureCoordinates = {{0, 0}, {1, 0}, {1, 1}};
    mesh.textureTriangles = {{0, 1, 2}};
    const std::vector<SurfacePoint> samples = samplesOf(MeshScreen(mesh), 100);
    ASSERT_EQ(samples.size(), 100U);
    for (const SurfacePoint& sample : samples) {
        EXPECT_TRUE(sample.hasParameters);
        EXPECT_NEAR(sample.parameters[0], sample.place[0] / 4, 1e-12);
        EXPECT_NEAR(sample.parameters[1], sample.place[2] / 2, 1e-12);
    }
}

TEST(SurfaceSamples, OfAMeshWithoutAreaThereAreNone) {
    EXPECT_TRUE(samplesOf(MeshScreen(TriangleMesh{}), 100).empty());
}

}  // namespace
