#include "KelvoScreen/detail/TextureMap.h"

#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/Meshes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Texture = Point<double, 2>;

/// Where the place lies in the texture.
Texture textureAt(const TriangleMesh& mesh, const TexturePlace& place) {
    Texture st;
    for (std::size_t i = 0; i < 3; ++i) {
        st += place.weights[i] * mesh.textureCoordinates[mesh.textureTriangles[place.triangle][i]];
    }
    return st;
}

/// A mesh with the given texture triangles; its place in space does not matter here.
TriangleMesh textured(std::vector<Texture> coordinates, std::vector<TriangleMesh::Triangle> triangles) {
    TriangleMesh mesh;
    mesh.vertices.resize(coordinates.size());
    mesh.triangles = triangles;
    mesh.textureCoordinates = std::move(coordinates);
    mesh.textureTriangles = std::move(triangles);
    return mesh;
}

/// The texture as a mesh in the plane z = 0, for the oracle.
TriangleMesh asFlatMesh(const TriangleMesh& mesh) {
    TriangleMesh flat;
    for (const Texture& st : mesh.textureCoordinates) {
        flat.vertices.push_back({st[0], st[1], 0.0});
    }
    flat.triangles = mesh.textureTriangles;
    return flat;
}

/// A wall whose texture grid is shaken, so that no edge is parallel to an axis.
TriangleMesh shakenWall(int columns, int rows, std::uint64_t seed) {
    TriangleMesh mesh = meshes::wall(1, 1, columns, rows);
    oracle::Random random(seed);
    for (Texture& st : mesh.textureCoordinates) {
        const Point<double, 3> shake = random.inCube();
        st += Texture{0.3 / columns * shake[0], 0.3 / rows * shake[1]};
    }
    return mesh;
}

TEST(TextureMap, FindsTriangleAndWeights) {
    const TriangleMesh mesh = meshes::wall(10, 5, 4, 3);
    const TextureMap map(mesh);
    oracle::Random random(71);
    for (int i = 0; i < 5000; ++i) {
        const Texture st{random.uniform(0, 1), random.uniform(0, 1)};
        const auto place = map.find(st, false);
        ASSERT_TRUE(place);
        const double x = st[0] * 4;
        const double y = st[1] * 3;
        const bool upper = y - std::floor(y) > x - std::floor(x);
        const double cell = std::floor(y) * 4 + std::floor(x);
        ASSERT_EQ(place->triangle, static_cast<std::uint32_t>(2 * cell) + (upper ? 1 : 0));
        ASSERT_LE(norm(textureAt(mesh, *place) - st), 1e-15);
    }
}

TEST(TextureMap, LeavesNoGapsAlongEdgesAndCorners) {
    const TriangleMesh mesh = shakenWall(30, 20, 72);
    const TextureMap map(mesh);
    const TriangleMesh flat = asFlatMesh(mesh);
    oracle::Random random(73);
    for (int i = 0; i < 50000; ++i) {
        const TriangleMesh::Triangle& corners = mesh.textureTriangles[random.below(mesh.textureTriangles.size())];
        const Texture& a = mesh.textureCoordinates[corners[0]];
        const Texture& b = mesh.textureCoordinates[corners[1]];
        const Texture st = a + (i % 3 == 0 ? 0.0 : random.uniform(0, 1)) * (b - a);
        const auto place = map.find(st, false);
        ASSERT_TRUE(place) << "point " << i;
        ASSERT_LE(norm(textureAt(mesh, *place) - st), 1e-14) << "point " << i;
    }
}

TEST(TextureMap, OfSharedCornersAndEdgesTheLowestTriangleAnswers) {
    const TriangleMesh mesh = meshes::wall(1, 1, 4, 4);
    const TextureMap map(mesh);
    EXPECT_EQ(map.find({0.5, 0.5}, false)->triangle, 10U) << "six triangles meet: 10, 11, 13, 18, 20, 21";
    EXPECT_EQ(map.find({0.5, 0.625}, false)->triangle, 18U) << "18 to the left or 21 to the right";
    EXPECT_EQ(map.find({0.0, 0.0}, false)->triangle, 0U);
}

TEST(TextureMap, OfOverlappingTrianglesTheLowestAnswers) {
    const TriangleMesh mesh = textured(
        {{0.0, 0.0}, {1.0, 0.0}, {0.0, 1.0}, {0.1, 0.1}, {0.9, 0.1}, {0.1, 0.9}, {5.0, 5.0}, {6.0, 5.0}, {5.0, 6.0}},
        {{6, 7, 8}, {3, 5, 4}, {0, 1, 2}});
    const TextureMap map(mesh);
    EXPECT_EQ(map.find({0.2, 0.2}, false)->triangle, 1U);
    EXPECT_EQ(map.find({0.05, 0.2}, false)->triangle, 2U);
    EXPECT_EQ(map.find({5.2, 5.2}, false)->triangle, 0U);
}

TEST(TextureMap, UpToABillionthOutsideIsTheEdge) {
    const TriangleMesh mesh = meshes::wall(1, 1, 3, 3);
    const TextureMap map(mesh);
    for (const bool extrapolate : {false, true}) {
        const auto place = map.find({1 + 1e-9, 0.5}, extrapolate);
        ASSERT_TRUE(place);
        EXPECT_LE(std::abs(textureAt(mesh, *place)[0] - 1), 1e-15) << "on the edge, not beyond it";
        EXPECT_TRUE(map.find({0.5, -1e-9}, extrapolate));
    }
    EXPECT_FALSE(map.find({1 + 1.1e-9, 0.5}, false));
    EXPECT_FALSE(map.find({0.5, -0.01}, false));
}

TEST(TextureMap, BeyondTheEdgeTheNearestTriangleIsContinued) {
    const TriangleMesh mesh = shakenWall(8, 6, 74);
    const TextureMap map(mesh);
    const TriangleMesh flat = asFlatMesh(mesh);
    oracle::Random random(75);
    int outside = 0;
    for (int i = 0; i < 3000; ++i) {
        const Texture st{random.uniform(-1, 2), random.uniform(-1, 2)};
        const Point<double, 3> point{st[0], st[1], 0.0};
        const auto place = map.find(st, true);
        ASSERT_TRUE(place);
        ASSERT_LE(norm(textureAt(mesh, *place) - st), 1e-12) << "linear: the continuation is exact in the texture";
        ASSERT_NEAR(oracle::distance(flat, place->triangle, point), oracle::distance(flat, point), 1e-12);
        ASSERT_EQ(map.find(st, false).has_value(), oracle::distance(flat, point) <= 1e-9);
        outside += map.find(st, false) ? 0 : 1;
    }
    EXPECT_GT(outside, 1000);
}

TEST(TextureMap, OfEquallyNearTrianglesTheLowestIsContinued) {
    const TriangleMesh mesh = meshes::wall(1, 1, 4, 4);
    const TextureMap map(mesh);
    EXPECT_EQ(map.find({-1.0, 0.5}, true)->triangle, 9U) << "the corner of 9, 16 and 17";
    EXPECT_EQ(map.find({-1.0, -1.0}, true)->triangle, 0U);
}

TEST(TextureMap, TrianglesWithoutAreaInTheTextureDoNotTakePart) {
    const TriangleMesh mesh =
        textured({{0.0, 0.0}, {0.5, 0.5}, {1.0, 1.0}, {0.0, 1.0}}, {{0, 1, 2}, {0, 0, 0}, {0, 2, 3}});
    const TextureMap map(mesh);
    EXPECT_EQ(map.find({0.25, 0.25}, false)->triangle, 2U);
    const TriangleMesh nothing = textured({{0.0, 0.0}, {0.5, 0.5}, {1.0, 1.0}}, {{0, 1, 2}});
    EXPECT_FALSE(TextureMap(nothing).find({0.5, 0.5}, true));
}

TEST(TextureMap, PointsThatAreNotFiniteAreNowhere) {
    const TriangleMesh mesh = meshes::wall(1, 1, 1, 1);
    const TextureMap map(mesh);
    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        EXPECT_FALSE(map.find({bad, 0.5}, true));
        EXPECT_FALSE(map.find({0.5, bad}, true));
    }
}

TEST(TextureMap, AnyRangeOfCoordinatesWorks) {
    for (const double scale : {1e-6, 1.0, 4096.0, 1e12}) {
        TriangleMesh mesh = shakenWall(5, 5, 76);
        for (Texture& st : mesh.textureCoordinates) {
            st = scale * st;
        }
        const TextureMap map(mesh);
        oracle::Random random(77);
        for (int i = 0; i < 500; ++i) {
            const Texture st = scale * Texture{random.uniform(0.1, 0.9), random.uniform(0.1, 0.9)};
            const auto place = map.find(st, false);
            ASSERT_TRUE(place) << scale;
            ASSERT_LE(norm(textureAt(mesh, *place) - st), 1e-14 * scale);
        }
    }
}

}  // namespace
