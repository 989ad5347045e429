#include "KelvoScreen/detail/BorderSheets.h"

#include "KelvoScreen/Meshes.h"
#include "KelvoScreen/SphericalScreen.h"
#include "KelvoScreen/detail/Box.h"
#include "KelvoScreen/detail/MeshTopology.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

/// Checks that each border triangle is in one stretch, inside its spheres, and that faces are in one piece.
void expectWhole(const TriangleMesh& mesh) {
    const BorderStretches border = borderStretches(mesh);
    std::vector<std::uint32_t> triangles;
    std::uint32_t next = 0;
    for (const BorderStretch& stretch : border.stretches) {
        EXPECT_EQ(stretch.first, next);
        EXPECT_GT(stretch.last, stretch.first);
        next = stretch.last;
        EXPECT_NEAR(norm(stretch.sheet.slope), 1, 0.02) << "heights are distances";
        for (std::uint32_t i = stretch.first; i < stretch.last; ++i) {
            triangles.push_back(border.triangles[i].triangle);
            for (const Vector& corner : border.triangles[i].corners) {
                EXPECT_LE(stretch.bounds.leastDistance(corner), 1e-12);
                EXPECT_LE(border.triangles[i].bounds.leastDistance(corner), 1e-12);
            }
        }
    }
    EXPECT_EQ(next, border.triangles.size());
    EXPECT_TRUE(std::is_sorted(border.stretches.begin(), border.stretches.end(),
                               [](const auto& a, const auto& b) { return a.face < b.face; }));
    std::vector<std::uint32_t> expected;
    const MeshTopology topology(mesh);
    for (const MeshTopology::BorderEdge& edge : topology.border()) {
        expected.push_back(edge.triangle);
    }
    expected.erase(std::unique(expected.begin(), expected.end()), expected.end());
    std::sort(triangles.begin(), triangles.end());
    EXPECT_EQ(triangles, expected);
}

TEST(BorderStretches, HoldEveryBorderTriangleOnce) {
    expectWhole(meshes::wall(4, 3, 20, 15));
    expectWhole(meshes::sampled(SphericalScreen({1.0, 2.0, 3.0}, 5, -1, 1, -0.3, 0.8), 50, 30));
    expectWhole(meshes::joined(meshes::wall(1, 1, 1, 1), meshes::wall(4, 3, 9, 9)));
    EXPECT_TRUE(borderStretches(TriangleMesh{}).stretches.empty());
    EXPECT_TRUE(borderStretches(meshes::bumpyBall(1, 9, 9)).stretches.empty());
}

TEST(BorderStretches, OfADomeAreFewAndEachIsTheSphere) {
    const SphericalScreen dome(Vector{}, 5, -1, 1, -0.3, 0.8);
    const BorderStretches border = borderStretches(meshes::sampled(dome, 200, 110));
    EXPECT_LE(border.stretches.size(), 80U) << "of 620 triangles along the border";
    for (const BorderStretch& stretch : border.stretches) {
        EXPECT_NEAR(stretch.sheet.height({0.0, 0.0, 5.0}), 0, 1e-6);
        EXPECT_NEAR(stretch.sheet.height({0.0, -3.0, -4.0}), 0, 1e-6);
        EXPECT_NEAR(stretch.sheet.height({0.0, 0.0, 0.0}), -2.5, 1e-6);
    }
}

TEST(BorderStretches, OfAFlatMeshArePlanes) {
    const BorderStretches border = borderStretches(meshes::wall(4, 3, 20, 15));
    for (const BorderStretch& stretch : border.stretches) {
        EXPECT_TRUE(stretch.sheet.isPlane());
        EXPECT_EQ(stretch.sheet.slope, (Vector{0.0, 1.0, 0.0}));
    }
}

TEST(BorderStretches, AreShorterWhereTheCurvatureChanges) {
    // A wall whose right half is a wave of a metre.
    const TriangleMesh mesh = meshes::surface(200, 60, [](double s, double t) {
        const double x = 10 * s;
        const double wave = std::max(0.0, x - 5);
        return Vector{x, 0.02 * wave * wave * std::sin(6 * wave), 3 * t};
    });
    const BorderStretches border = borderStretches(mesh);
    double flat = 0;
    double waved = Box::INFINITE;
    for (const BorderStretch& stretch : border.stretches) {
        if (stretch.bounds.centre[0] < 3) {
            flat = std::max(flat, stretch.reach);
        } else if (stretch.bounds.centre[0] > 7) {
            waved = std::min(waved, stretch.reach);
        }
    }
    EXPECT_GT(flat, 2 * waved);
}

TEST(BorderStretches, OfAMeshTooSmallForACurvatureAreItsTriangles) {
    const TriangleMesh mesh = meshes::surface(2, 1, [](double s, double t) { return Vector{s, s * s, t}; });
    const BorderStretches border = borderStretches(mesh);
    ASSERT_EQ(border.stretches.size(), 4U);
    for (const BorderStretch& stretch : border.stretches) {
        EXPECT_TRUE(stretch.sheet.isPlane());
        for (const Vector& corner : border.triangles[stretch.first].corners) {
            EXPECT_NEAR(stretch.sheet.height(corner), 0, 1e-15);
        }
    }
}

}  // namespace
