#include "KelvoScreen/detail/MeshBorder.h"

#include "KelvoScreen/Meshes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

TEST(MeshBorder, OfAWallAreTheTrianglesAlongItsEdges) {
    // 4 x 3 cells: on the border are the lower triangles of the first row and of the last column, and the upper ones of
    // the last row and of the first column.
    std::vector<std::uint32_t> expected;
    for (std::uint32_t row = 0; row < 3; ++row) {
        for (std::uint32_t column = 0; column < 4; ++column) {
            const std::uint32_t lower = 2 * (4 * row + column);
            if (row == 0 || column == 3) {
                expected.push_back(lower);
            }
            if (row == 2 || column == 0) {
                expected.push_back(lower + 1);
            }
        }
    }
    EXPECT_EQ(MeshBorder(meshes::wall(4, 3, 4, 3)).triangles(), expected);
}

TEST(MeshBorder, AClosedMeshHasNone) {
    EXPECT_TRUE(MeshBorder(meshes::room(3)).triangles().empty());
    EXPECT_TRUE(MeshBorder(meshes::bumpyBall(1, 8, 12)).triangles().empty());
    EXPECT_FALSE(MeshBorder(meshes::room(3)).continuedHit({0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, 1));
    EXPECT_TRUE(MeshBorder(TriangleMesh{}).triangles().empty());
}

TEST(MeshBorder, VerticesAtTheSamePlaceAreOne) {
    EXPECT_TRUE(MeshBorder(meshes::withoutSharedVertices(meshes::room(3))).triangles().empty());
    const TriangleMesh wall = meshes::wall(4, 3, 4, 3);
    EXPECT_EQ(MeshBorder(meshes::withoutSharedVertices(wall)).triangles(), MeshBorder(wall).triangles());
}

TEST(MeshBorder, ASliverBetweenTwoTrianglesIsNoGap) {
    TriangleMesh mesh;
    mesh.vertices = {{0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {1.0, 0.0, 1.0}, {1.0, 0.0, -1.0}};
    // The long edge 0-1 above, its halves 0-2 and 2-1 below, and the sliver 0-1-2 that joins them.
    mesh.triangles = {{0, 3, 1}, {0, 2, 4}, {2, 1, 4}, {0, 1, 2}};
    EXPECT_EQ(MeshBorder(mesh).triangles(), (std::vector<std::uint32_t>{0, 1, 2})) << "the sliver has no plane";
}

TEST(MeshBorder, ContinuesAFlatMeshInItsPlane) {
    const TriangleMesh mesh = meshes::wall(4, 3, 4, 3);
    const MeshBorder border(mesh);
    const Vector from{2.0, -2.0, 1.5};
    const auto hit = border.continuedHit(from, {3.0, -1.0, 0.0}, 1);
    ASSERT_TRUE(hit);
    EXPECT_LE(norm(hit->point - Vector{4.0, 0.0, -1.5}), 1e-14);
    EXPECT_NEAR(hit->t, 2, 1e-14);
    EXPECT_FALSE(border.continuedHit(from, {3.0, -1.0, 0.0}, -1)) << "from the other side";
    EXPECT_FALSE(border.continuedHit(from, {3.0, -3.0, 0.0}, -1)) << "away from the plane";
    EXPECT_FALSE(border.continuedHit(from, {3.0, -2.0, 0.0}, 1)) << "along the plane";
}

TEST(MeshBorder, OfSeveralPlanesTheHitNearestItsTriangleCounts) {
    // Two walls that meet at a right angle along x = 0: one in y = 0 to the right, one in x = 0 towards the viewer.
    TriangleMesh mesh;
    mesh.vertices = {{0.0, 0.0, 0.0}, {2.0, 0.0, 0.0},  {2.0, 0.0, 2.0},
                     {0.0, 0.0, 2.0}, {0.0, -2.0, 0.0}, {0.0, -2.0, 2.0}};
    mesh.triangles = {{0, 2, 1}, {0, 3, 2}, {4, 3, 0}, {4, 5, 3}};
    const MeshBorder border(mesh);
    const Vector from{1.0, -1.0, 1.0};
    // Upwards to the right: the plane of the back wall is met just above it, that of the side wall behind the viewer.
    const auto back = border.continuedHit(from, {1.5, 0.0, 2.5}, 1);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->triangle, 1U);
    EXPECT_LE(norm(back->point - Vector{1.5, 0.0, 2.5}), 1e-14);
    // To the left past the front of the side wall: both planes lie ahead, the side wall is nearer to its hit.
    const auto side = border.continuedHit(from, {-1.0, -2.0, 2.5}, -1);
    const auto sideFront = border.continuedHit(from, {-1.0, -2.0, 2.5}, 1);
    EXPECT_TRUE(side.has_value() != sideFront.has_value());
    const MeshPoint hit = side ? *side : *sideFront;
    EXPECT_EQ(hit.point[0], 0);
    EXPECT_NEAR(hit.point[2], 1.75, 1e-14);
}

TEST(MeshBorder, OfTwoCurvedFacesEachGoesOnAsItBegan) {
    // Two cylinders of radius 5 side by side, around x = -2 and x = 2, with a ridge between them at x = 0.
    const auto trough = [](double x) { return 5 - std::sqrt(25 - (std::abs(x) - 2) * (std::abs(x) - 2)); };
    const TriangleMesh mesh = meshes::surface(80, 20, [&](double s, double t) {
        const double x = 8 * s - 4;
        return Vector{x, trough(x), 3 * t};
    });
    const MeshBorder border(mesh);
    int met = 0;
    for (int i = -39; i <= 39; i += 2) {
        const double x = i / 10.0;
        for (const double z : {-0.2, 3.05, 3.4}) {
            const auto hit = border.continuedHit({x, -5.0, z}, {x, -4.0, z}, 1);
            ASSERT_TRUE(hit) << x << ' ' << z;
            EXPECT_NEAR(hit->point[1], trough(x), 1e-6) << x << ' ' << z;
            ++met;
        }
    }
    EXPECT_EQ(met, 120);
}

TEST(MeshBorder, RaysThatAreNotARayMiss) {
    const MeshBorder border(meshes::wall(1, 1, 1, 1));
    const Vector broken{std::numeric_limits<double>::quiet_NaN(), 0.0, 0.0};
    for (const int side : {-1, 0, 1}) {
        EXPECT_FALSE(border.continuedHit(broken, {0.0, 1.0, 0.0}, side));
        EXPECT_FALSE(border.continuedHit({0.0, 1.0, 0.0}, broken, side));
        EXPECT_FALSE(border.continuedHit({0.0, 1.0, 0.0}, {0.0, 1.0, 0.0}, side));
    }
}

}  // namespace
