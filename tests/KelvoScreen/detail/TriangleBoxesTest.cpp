#include "KelvoScreen/detail/TriangleBoxes.h"

#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/Meshes.h"
#include "KelvoScreen/detail/TriangleMath.h"
#include "support/Sanitizers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

class WholeMesh final : public TriangleSource {
public:
    explicit WholeMesh(const TriangleMesh& mesh) : m_mesh(mesh) {}
    bool corners(std::uint32_t triangle, Corners& out) const override {
        out = cornersOf(m_mesh, triangle);
        return true;
    }

private:
    const TriangleMesh& m_mesh;
};

TriangleBoxes boxesOf(const TriangleMesh& mesh) {
    return {static_cast<std::uint32_t>(mesh.triangles.size()), WholeMesh(mesh)};
}

/// Long triangles side by side in a square of 4 x 4 at y = 5, turned by an angle in its plane.
TriangleMesh strips(int count, double angle) {
    TriangleMesh mesh = meshes::wall(4, 4, 1, count);
    for (Vector& vertex : mesh.vertices) {
        vertex = {std::cos(angle) * vertex[0] - std::sin(angle) * vertex[2], 5.0,
                  std::sin(angle) * vertex[0] + std::cos(angle) * vertex[2]};
    }
    return mesh;
}

/// The boxes of every triangle.
std::vector<std::vector<Box>> byTriangle(const TriangleBoxes& all) {
    const std::size_t count = all.isPaired.size();
    std::vector<std::vector<Box>> boxes(count);
    for (std::size_t i = 0; i < all.numbers.size(); ++i) {
        if (all.numbers[i] != TriangleBoxes::NO_BOX) {
            const std::size_t triangle = i < count ? i : all.furtherOf.at(i - count);
            boxes[triangle].push_back(all.boxes.at(all.numbers[i]));
            if (i < count && all.isPaired[i]) {
                boxes.at(i + 1).push_back(all.boxes[all.numbers[i]]);
            }
        }
    }
    return boxes;
}

/// The most boxes of different triangles that stand at one of some points of a mesh.
std::size_t mostAtOnePoint(const TriangleMesh& mesh) {
    const auto boxes = byTriangle(boxesOf(mesh));
    oracle::Random random(71);
    std::size_t most = 0;
    for (int i = 0; i < repetitions(200); ++i) {
        const Corners corners = cornersOf(mesh, random.below(mesh.triangles.size()));
        const Vector point = pointWithWeights(corners, {0.2, 0.4, 0.4});
        most = std::max(
            most,
            static_cast<std::size_t>(std::count_if(boxes.begin(), boxes.end(), [&point](const std::vector<Box>& own) {
                return std::any_of(own.begin(), own.end(), [&point](const Box& box) { return box.contains(point); });
            })));
    }
    return most;
}

TEST(TriangleBoxes, EveryPointOfATriangleIsInOneOfItsBoxes) {
    oracle::Random random(72);
    for (const TriangleMesh& mesh : {meshes::fan(3, 2000), strips(1500, 0.6), meshes::bumpyBall(5, 30, 40),
                                     meshes::place(meshes::fan(3, 500), {1e-6, {1e4, -1e4, 3.0}})}) {
        auto boxes = byTriangle(boxesOf(mesh));
        // Much less than single precision loses, for which boxes are enlarged later.
        const double margin = 1e-9 * boxesOf(mesh).all.halfSize();
        for (std::vector<Box>& own : boxes) {
            for (Box& box : own) {
                box.add(box.lower - Vector{margin, margin, margin});
                box.add(box.upper + Vector{margin, margin, margin});
            }
        }
        for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i) {
            const Corners corners = cornersOf(mesh, i);
            for (int k = 0; k < 20; ++k) {
                double u = k < 3 ? k % 2 : random.uniform(0, 1);
                double v = k < 3 ? k / 2 : random.uniform(0, 1);
                if (u + v > 1) {
                    u = 1 - u;
                    v = 1 - v;
                }
                const Vector point = pointWithWeights(corners, {1 - u - v, u, v});
                ASSERT_TRUE(std::any_of(boxes[i].begin(), boxes[i].end(),
                                        [&point](const Box& box) { return box.contains(point); }))
                    << "triangle " << i << " of " << mesh.triangles.size() << " at " << u << ' ' << v;
            }
        }
    }
}

TEST(TriangleBoxes, FewSliversOfAFanAreNearAPoint) {
    // A box over all of a sliver holds most points of the quarter disc that it lies in.
    EXPECT_LT(mostAtOnePoint(meshes::fan(3, 3000)), 3000U / 25);
    EXPECT_LT(mostAtOnePoint(strips(2000, 0.8)), 4000U / 25);
    EXPECT_FALSE(boxesOf(meshes::fan(3, 700)).furtherOf.empty()) << "which other tests ask";
}

TEST(TriangleBoxes, WhatGainsNothingStaysWhole) {
    EXPECT_TRUE(boxesOf(meshes::bumpyBall(5, 100, 150)).furtherOf.empty());
    EXPECT_TRUE(boxesOf(meshes::room(8)).furtherOf.empty());
    EXPECT_TRUE(boxesOf(strips(3000, 0)).furtherOf.empty());
    // Many layers are many boxes behind each other, and none too large.
    TriangleMesh layers;
    for (int i = 0; i < 50; ++i) {
        layers = meshes::joined(layers, meshes::place(meshes::wall(1, 1, 4, 4), {1, {0.0, 0.01 * i, 0.0}}));
    }
    EXPECT_TRUE(boxesOf(layers).furtherOf.empty());
    EXPECT_EQ(boxesOf(layers).boxes.size(), 50U * 16) << "still in pairs";
}

TEST(TriangleBoxes, OfEqualTrianglesInOneWindingTheLowestHasABox) {
    TriangleMesh mesh = meshes::triangle({0.0, 5.0, 0.0}, {1.0, 5.0, 0.0}, {0.0, 5.0, 1.0});
    mesh.vertices.push_back({-0.0, 5.0, -0.0});
    mesh.vertices.push_back({0.0, 5.0, 1.5});
    mesh.triangles = {{0, 1, 2}, {0, 1, 2}, {1, 2, 3}, {2, 1, 0}, {0, 2, 1}, {3, 1, 2}, {0, 1, 4}, {2, 0, 1}};
    const auto boxes = byTriangle(boxesOf(mesh));
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        // The first of each winding, and the one that is another.
        EXPECT_EQ(boxes[i].size(), i == 0 || i == 3 || i == 6 ? 1U : 0U) << i;
    }
}

TEST(TriangleBoxes, ASingleRepeatInALargeMeshIsFound) {
    const TriangleMesh ball = meshes::withoutSharedVertices(meshes::bumpyBall(5, 100, 150));
    const auto count = static_cast<std::uint32_t>(ball.triangles.size());
    oracle::Random random(73);
    for (int i = 0; i < 20; ++i) {
        const std::size_t repeated = random.below(count);
        TriangleMesh mesh = ball;
        const auto [a, b, c] = ball.triangles[repeated];
        mesh.triangles.push_back({b, c, a});
        EXPECT_EQ(boxesOf(mesh).numbers[count], TriangleBoxes::NO_BOX) << repeated;
        mesh.triangles.back() = {c, b, a};
        EXPECT_NE(boxesOf(mesh).numbers[count], TriangleBoxes::NO_BOX) << repeated << " in the other winding";
    }
}

TEST(TriangleBoxes, AMeshWithinAMeshCostsNoBoxes) {
    const TriangleMesh ball = meshes::bumpyBall(5, 40, 60);
    const TriangleMesh twice = meshes::joined(ball, meshes::withoutSharedVertices(ball));
    const TriangleBoxes once = boxesOf(ball);
    const TriangleBoxes both = boxesOf(twice);
    EXPECT_EQ(both.boxes.size(), once.boxes.size());
    EXPECT_EQ(both.typicalSize, once.typicalSize);
    EXPECT_TRUE(std::equal(once.numbers.begin(), once.numbers.end(), both.numbers.begin()));
}

}  // namespace
