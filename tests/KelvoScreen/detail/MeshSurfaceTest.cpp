#include "KelvoScreen/detail/MeshSurface.h"

#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/Meshes.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "support/Sanitizers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

constexpr int WATERTIGHT_RAYS = repetitions(100000);

/// A random point of a mesh: a corner, a point of an edge, or a point of a face.
Vector randomTarget(const TriangleMesh& mesh, oracle::Random& random, int kind) {
    const Corners corners = cornersOf(mesh, random.below(mesh.triangles.size()));
    const double along = random.uniform(0, 1);
    const Vector onEdge = corners[0] + along * (corners[1] - corners[0]);
    return kind == 0 ? corners[0] : kind == 1 ? onEdge : onEdge + random.uniform(0, 1) * (corners[2] - onEdge);
}

/// Shoots at corners, edges and faces from near the centre of a closed mesh; each ray must hit something.
void expectWatertight(const TriangleMesh& mesh, const Vector& centre, double spread, std::uint64_t seed) {
    const MeshSurface surface(mesh);
    oracle::Random random(seed);
    int lost = 0;
    for (int i = 0; i < WATERTIGHT_RAYS; ++i) {
        const Vector from = centre + spread * random.inCube();
        const Vector to = i % 4 == 3 ? from + random.inCube() : randomTarget(mesh, random, i % 4);
        lost += surface.nearestHit(from, to, std::nullopt) ? 0 : 1;
    }
    EXPECT_EQ(lost, 0) << "of " << WATERTIGHT_RAYS << " rays, seed " << seed;
}

void expectAgreesWithOracle(const TriangleMesh& mesh, double size, double tolerance, std::uint64_t seed, int allRays,
                            const std::function<Ray(oracle::Random&)>& makeRay) {
    const MeshSurface surface(mesh);
    const int rays = repetitions(allRays);
    oracle::Random random(seed);
    int hits = 0;
    for (int i = 0; i < rays; ++i) {
        const auto [from, to] = makeRay(random);
        const std::optional<MeshPoint> hit = surface.nearestHit(from, to, std::nullopt);
        const std::optional<oracle::Hit> expected = oracle::nearestHit(mesh, from, to);
        ASSERT_EQ(hit.has_value(), expected.has_value()) << "ray " << i << ", seed " << seed;
        if (hit) {
            ++hits;
            ASSERT_LE(norm(hit->point - expected->point), tolerance) << "ray " << i << ", seed " << seed;
            ASSERT_NEAR(hit->t * norm(to - from), expected->t * norm(to - from), tolerance) << "ray " << i;
            ASSERT_LE(oracle::distance(mesh, hit->triangle, hit->point), 1e-12 * size);
            ASSERT_LE(oracle::distanceFromRay(from, to, hit->point), 1e-12 * std::max(size, norm(from)));
        }
    }
    EXPECT_GT(hits, rays / 10);
}

TEST(MeshSurface, InARoomOfTenMetresRaysAreExactToANanometre) {
    const TriangleMesh mesh = meshes::room(8);
    expectAgreesWithOracle(mesh, 10, 1e-9, 51, 3000, [](oracle::Random& random) {
        const Vector from = random.inCube();
        return Ray{from, from + random.inCube()};
    });
}

TEST(MeshSurface, RaysFromAMillionUnitsAwayKeepTheirPrecision) {
    const TriangleMesh mesh = meshes::bumpyBall(5, 24, 40);
    expectAgreesWithOracle(mesh, 10, 2e-8, 52, 2000, [](oracle::Random& random) {
        Vector direction = random.inCube();
        direction = direction * (1 / norm(direction));
        const Vector aim = 5.0 * random.inCube();
        return Ray{aim - 1e6 * direction, aim};
    });
}

TEST(MeshSurface, AMeshOfAMillimetreIsHitAlike) {
    const TriangleMesh mesh = meshes::place(meshes::bumpyBall(1, 24, 40), {1e-3, {}});
    expectAgreesWithOracle(mesh, 1e-3, 1e-13, 53, 2000, [](oracle::Random& random) {
        return Ray{2e-3 * random.inCube(), 1e-3 * random.inCube()};
    });
}

TEST(MeshSurface, TrianglesOfOneUnitAtCoordinatesOfFourteenThousand) {
    const Vector place{14000.0, -14000.0, 14000.0};
    const TriangleMesh mesh = meshes::place(meshes::bumpyBall(10, 40, 60), {1, place});
    expectAgreesWithOracle(mesh, 14000, 1e-9, 54, 2000, [&place](oracle::Random& random) {
        return Ray{place + 20.0 * random.inCube(), place + 8.0 * random.inCube()};
    });
}

TEST(MeshSurface, TrianglesOfOneUnitAcrossAnExtentOfFourteenThousand) {
    TriangleMesh mesh = meshes::wall(1, 1, 1, 1);
    oracle::Random places(55);
    for (int i = 0; i < 400; ++i) {
        mesh = meshes::joined(mesh, meshes::place(meshes::wall(1, 1, 1, 1), {1, 14000.0 * places.inCube()}));
    }
    expectAgreesWithOracle(mesh, 14000, 1e-9, 56, 2000, [&mesh](oracle::Random& random) {
        const Vector aim = randomTarget(mesh, random, 2);
        return Ray{aim + 100.0 * random.inCube(), aim};
    });
}

TEST(MeshSurface, NoRaySlipsOutOfARoom) {
    expectWatertight(meshes::room(6), {0.0, 0.0, 0.5}, 0.4, 57);
}

TEST(MeshSurface, NoRaySlipsOutOfABallWithPoles) {
    expectWatertight(meshes::bumpyBall(5, 60, 700), {0.0, 0.0, 0.0}, 1, 58);
}

TEST(MeshSurface, NoRaySlipsOutOfAMeshThatRepeatsItsVertices) {
    expectWatertight(meshes::withoutSharedVertices(meshes::room(6)), {0.0, 0.0, 0.5}, 0.4, 59);
}

TEST(MeshSurface, NoRaySlipsOutOfAMeshFarFromTheOrigin) {
    const Vector place{14000.0, 3000.0, -500.0};
    expectWatertight(meshes::place(meshes::room(6), {1, place}), place + Vector{0.0, 0.0, 0.5}, 0.4, 60);
}

TEST(MeshSurface, ACornerInTheMiddleOfAnEdgeOpensNoGap) {
    // The left half has one long edge where the right half has two with a corner between that binary cannot place.
    TriangleMesh mesh;
    mesh.vertices = {{0.0, 0.1, 0.0}, {0.3, 0.7, 0.1}, {-1.0, 0.4, 0.0}, {0.1, 0.3, 1.0 / 30}, {1.0, 0.4, 0.0}};
    mesh.triangles = {{0, 1, 2}, {0, 4, 3}, {3, 4, 1}};
    const MeshSurface surface(mesh);
    oracle::Random random(61);
    for (int i = 0; i < 20000; ++i) {
        const Vector aim = mesh.vertices[0] + random.uniform(0.001, 0.999) * (mesh.vertices[1] - mesh.vertices[0]);
        const Vector from = aim + Vector{random.uniform(-1, 1), random.uniform(-1, 1), i % 2 == 0 ? 2.0 : -2.0};
        ASSERT_TRUE(surface.nearestHit(from, aim, std::nullopt)) << "ray " << i;
    }
}

TEST(MeshSurface, TheBorderOfAnOpenMeshBelongsToIt) {
    const TriangleMesh mesh = meshes::place(meshes::wall(10, 3, 7, 5), {0.9, {0.3, 0.7, -0.1}});
    const MeshSurface surface(mesh);
    oracle::Random random(62);
    for (int i = 0; i < 20000; ++i) {
        const Vector edge[] = {mesh.vertices.front(), mesh.vertices[7], mesh.vertices.back(), mesh.vertices[5 * 8]};
        const double along = i % 3 == 0 ? 0.0 : random.uniform(0, 1);
        const Vector aim = edge[i % 4] + along * (edge[(i + 1) % 4] - edge[i % 4]);
        const Vector from = aim + Vector{random.uniform(-3, 3), i % 2 == 0 ? -2.0 : 2.0, random.uniform(-3, 3)};
        ASSERT_TRUE(surface.nearestHit(from, aim, std::nullopt)) << "ray " << i;
        const Vector outside = aim + 1e-9 * (aim - Vector{4.8, 0.7, 1.25});
        ASSERT_FALSE(surface.nearestHit(from, outside, std::nullopt)) << "ray " << i;
    }
}

TEST(MeshSurface, OnlyHitsAheadCount) {
    const TriangleMesh mesh = meshes::wall(1, 1, 1, 1);
    const MeshSurface surface(mesh);
    EXPECT_FALSE(surface.nearestHit({0.5, 1.0, 0.25}, {0.5, 2.0, 0.25}, std::nullopt));
    EXPECT_FALSE(surface.nearestHit({0.5, 1e-9, 0.25}, {0.5, 2.0, 0.25}, std::nullopt)) << "just behind the origin";
    const auto onSurface = surface.nearestHit({0.5, 0.0, 0.25}, {0.5, 2.0, 0.25}, std::nullopt);
    ASSERT_TRUE(onSurface);
    EXPECT_EQ(onSurface->t, 0);
}

TEST(MeshSurface, RaysFromTheSurfaceHitAtTheirOrigin) {
    const TriangleMesh mesh = meshes::bumpyBall(5, 24, 40);
    const MeshSurface surface(mesh);
    oracle::Random random(63);
    for (int i = 0; i < 2000; ++i) {
        const std::uint32_t triangle = random.below(mesh.triangles.size());
        const Corners corners = cornersOf(mesh, triangle);
        const Vector from = (1.0 / 3) * (corners[0] + corners[1] + corners[2]);
        const double side = i % 2 == 0 ? 1 : -1;
        const auto hit = surface.nearestHit(from, from + side * oracle::normal(mesh, triangle), std::nullopt);
        ASSERT_TRUE(hit) << "ray " << i;
        ASSERT_LE(hit->t, 1e-14);
        ASSERT_EQ(hit->triangle, triangle);
    }
}

TEST(MeshSurface, AWantedSideLooksThroughTheOther) {
    const TriangleMesh mesh = meshes::bumpyBall(5, 24, 40);
    const MeshSurface surface(mesh);
    const Vector from{0.3, -20.0, 0.2};
    const Vector to{0.2, 0.0, 0.1};
    const auto front = surface.nearestHit(from, to, -1);
    const auto back = surface.nearestHit(from, to, 1);
    ASSERT_TRUE(front && back);
    EXPECT_LT(front->point[1], 0);
    EXPECT_GT(back->point[1], 0);
    EXPECT_EQ(surface.nearestHit(from, to, std::nullopt)->t, front->t);
    EXPECT_FALSE(surface.nearestHit(from, to, 0));
}

TEST(MeshSurface, OfCoincidentTrianglesTheLowestAnswers) {
    const TriangleMesh single = meshes::wall(1, 1, 1, 1);
    const TriangleMesh mesh = meshes::joined(meshes::joined(single, single), single);
    const MeshSurface surface(mesh);
    EXPECT_EQ(surface.nearestHit({0.7, -1.0, 0.2}, {0.7, 1.0, 0.2}, std::nullopt)->triangle, 0U);
    EXPECT_EQ(surface.nearestHit({0.2, -1.0, 0.7}, {0.2, 1.0, 0.7}, std::nullopt)->triangle, 1U);
    EXPECT_EQ(surface.nearestPoint({0.2, 4.0, 0.7})->triangle, 1U);
    EXPECT_EQ(surface.nearestPoint({0.5, 4.0, 0.5})->triangle, 0U) << "on the common edge";
}

TEST(MeshSurface, RaysThatAreNotARayMiss) {
    const TriangleMesh mesh = meshes::room(2);
    const MeshSurface surface(mesh);
    EXPECT_FALSE(surface.nearestHit({0.0, 0.0, 0.0}, {0.0, 0.0, 0.0}, std::nullopt));
    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), Box::INFINITE, -Box::INFINITE}) {
        for (std::size_t i = 0; i < 3; ++i) {
            Vector broken;
            broken[i] = bad;
            EXPECT_FALSE(surface.nearestHit(broken, {1.0, 2.0, 3.0}, std::nullopt));
            EXPECT_FALSE(surface.nearestHit({1.0, 2.0, 3.0}, broken, std::nullopt));
            EXPECT_FALSE(surface.nearestPoint(broken));
        }
    }
}

TEST(MeshSurface, ExtremeRaysDoNoHarm) {
    const TriangleMesh mesh = meshes::room(2);
    const MeshSurface surface(mesh);
    for (const double size : {1e-320, 1e-200, 1e-12, 1e12, 1e200, 1e308}) {
        const auto hit = surface.nearestHit({0.0, 0.0, 0.0}, {0.3 * size, size, 0.2 * size}, std::nullopt);
        EXPECT_EQ(hit.has_value(), size > 1e-300) << size;
        if (hit) {
            EXPECT_NEAR(hit->point[0], 0.3 * hit->point[1], 1e-12);
        }
    }
    EXPECT_FALSE(surface.nearestHit({-1e308, 0.0, 0.0}, {1e308, 0.0, 0.0}, std::nullopt)) << "its length overflows";
}

TEST(MeshSurface, TheNearestPointAgreesWithTheOracle) {
    oracle::Random random(64);
    for (const meshes::Placement& placement :
         {meshes::Placement{}, meshes::Placement{1e-3, {}}, meshes::Placement{1, {14000.0, 14000.0, 0.0}}}) {
        const TriangleMesh mesh = meshes::place(meshes::bumpyBall(5, 20, 30), placement);
        const MeshSurface surface(mesh);
        for (int i = 0; i < repetitions(500); ++i) {
            const double reach = i % 10 == 0 ? 1e6 : 10;
            const Vector point = placement.offset + placement.scale * reach * random.inCube();
            const auto nearest = surface.nearestPoint(point);
            ASSERT_TRUE(nearest);
            const double expected = oracle::distance(mesh, point);
            ASSERT_NEAR(norm(nearest->point - point), expected, 1e-12 * (norm(point) + expected)) << "point " << i;
        }
    }
}

TEST(MeshSurface, TrianglesWithoutAreaAreNeitherHitNorNearest) {
    TriangleMesh mesh = meshes::wall(1, 1, 1, 1);
    const auto index = static_cast<std::uint32_t>(mesh.vertices.size());
    mesh.vertices.insert(mesh.vertices.end(), {{0.0, -1.0, 0.5}, {0.3, -1.0, 0.5}, {1.0, -1.0, 0.5}});
    mesh.triangles.insert(mesh.triangles.begin(), {index, index + 1, index + 2});
    mesh.triangles.insert(mesh.triangles.begin(), {index, index, index});
    const MeshSurface surface(mesh);
    const auto hit = surface.nearestHit({0.3, -2.0, 0.5}, {0.3, -1.0, 0.5}, std::nullopt);
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->point, (Vector{0.3, 0.0, 0.5}));
    EXPECT_EQ(surface.nearestPoint({0.3, -2.0, 0.5})->point, (Vector{0.3, 0.0, 0.5}));
}

TEST(MeshSurface, WithoutAnyAreaThereIsNothing) {
    const TriangleMesh mesh = meshes::triangle({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, {2.0, 2.0, 2.0});
    const MeshSurface surface(mesh);
    EXPECT_FALSE(surface.nearestHit({0.0, 0.0, -1.0}, {0.0, 0.0, 0.0}, std::nullopt));
    EXPECT_FALSE(surface.nearestPoint({0.0, 0.0, -1.0}));
}

}  // namespace
