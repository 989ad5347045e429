#include "KelvoScreen/detail/SmoothFaces.h"

#include "KelvoScreen/Meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

/// A mesh with everything that a region refers to.
struct Ground {
    explicit Ground(TriangleMesh theMesh) : mesh(std::move(theMesh)), topology(mesh), faces(mesh, topology) {}

    TriangleMesh mesh;
    MeshTopology topology;
    SmoothFaces faces;
};

TEST(FaceRegion, HoldsTheVerticesAroundAPlaceNearestFirst) {
    const Ground ground(meshes::wall(10, 10, 100, 100));
    FaceRegion region(ground.mesh, ground.topology, ground.faces);
    const Vector place{5.05, 0.0, 0.0};
    region.grow(2 * 50, place, 1);
    std::size_t expected = 0;
    for (const Vector& vertex : ground.mesh.vertices) {
        expected += norm(vertex - place) <= 1 ? 1 : 0;
    }
    EXPECT_GE(region.points().size(), expected) << "all within the radius";
    EXPECT_LE(norm(region.points().back() - place), 1.3) << "and no further than the triangles that begin there";
    EXPECT_TRUE(std::is_sorted(region.points().begin(), region.points().end(),
                               [&](const auto& a, const auto& b) { return norm(a - place) < norm(b - place); }));
    EXPECT_EQ(region.normal(), (Vector{0.0, 1.0, 0.0}));
    EXPECT_NEAR(region.spacing(), 0.1, 0.01);
    region.grow(2 * 50, place, 1);
    EXPECT_GE(region.points().size(), expected) << "again";
}

TEST(FaceRegion, VerticesAtOnePlaceCountOnce) {
    const Ground shared(meshes::wall(10, 10, 20, 20));
    const Ground repeated(meshes::withoutSharedVertices(shared.mesh));
    FaceRegion expected(shared.mesh, shared.topology, shared.faces);
    FaceRegion region(repeated.mesh, repeated.topology, repeated.faces);
    const Vector place{5.25, 0.0, 0.0};
    expected.grow(20, place, 2);
    region.grow(20, place, 2);
    EXPECT_EQ(region.points().size(), expected.points().size());
}

TEST(FaceRegion, IsTheSameWhicheverCornerOfATriangleComesFirst) {
    TriangleMesh mesh = meshes::wall(10, 10, 40, 40);
    std::set<Vector> first;
    for (int turn = 0; turn < 3; ++turn) {
        const Ground ground(mesh);
        FaceRegion region(ground.mesh, ground.topology, ground.faces);
        region.grow(2 * 20, {5.1, 0.0, 0.0}, 2);
        const std::set<Vector> points(region.points().begin(), region.points().end());
        EXPECT_GT(points.size(), 100U);
        EXPECT_TRUE(turn == 0 || points == first) << turn << ": " << points.size() << ", not " << first.size();
        first = turn == 0 ? points : first;
        for (TriangleMesh::Triangle& corners : mesh.triangles) {
            std::rotate(corners.begin(), corners.begin() + 1, corners.end());
        }
    }
}

TEST(FaceRegion, EndsAtACreaseAndWhereTheSurfaceHasTurned) {
    const Ground room(meshes::room(6));
    FaceRegion region(room.mesh, room.topology, room.faces);
    region.grow(0, room.mesh.vertices[0], 100);
    EXPECT_EQ(region.points().size(), 49U) << "one side of the room";
    const Ground ball(meshes::surface(60, 30, [](double s, double t) {
        return Vector{std::cos(6 * s) * std::cos(t), std::sin(6 * s) * std::cos(t), std::sin(t)};
    }));
    FaceRegion cap(ball.mesh, ball.topology, ball.faces);
    cap.grow(0, ball.mesh.vertices[0], 100);
    for (const Vector& point : cap.points()) {
        EXPECT_GE(dot(point * (1 / norm(point)), ball.mesh.vertices[0]), 0.5) << "45 degrees from the mean normal";
    }
}

TEST(FaceRegion, OfACoarseMeshHoldsEnoughAndOfAFineOneNotTooMany) {
    const Ground coarse(meshes::wall(10, 10, 6, 6));
    FaceRegion region(coarse.mesh, coarse.topology, coarse.faces);
    region.grow(0, {0.5, 0.0, 0.0}, 0.01);
    EXPECT_GE(region.points().size(), 16U);
    const Ground fine(meshes::wall(10, 10, 150, 150));
    FaceRegion wide(fine.mesh, fine.topology, fine.faces);
    wide.grow(0, {0.5, 0.0, 0.0}, 100);
    EXPECT_GE(wide.points().size(), 4000U);
    EXPECT_LE(wide.points().size(), 4200U) << "no more than those of the ring at hand";
    const Ground single(meshes::triangle({0.0, 0.0, 0.0}, {0.0, 0.0, 1.0}, {1.0, 0.0, 0.0}));
    FaceRegion all(single.mesh, single.topology, single.faces);
    all.grow(0, {0.5, 0.0, 0.0}, 1);
    EXPECT_EQ(all.points().size(), 3U);
}

}  // namespace
