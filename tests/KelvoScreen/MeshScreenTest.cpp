#include "KelvoScreen/MeshScreen.h"

#include "Common/VeltraniException.h"
#include "Configuration/BaseConfig.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/Meshes.h"
#include "support/ScreenConfigDouble.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

namespace {

using Vector = Point<double, 3>;
using Grid = ScreenGeometry::Grid;

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

std::string hex(const std::array<unsigned char, 20>& hash) {
    const char* digits = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : hash) {
        text += {digits[byte >> 4], digits[byte & 15]};
    }
    return text;
}

template <class Operation>
std::wstring messageOf(const Operation& operation) {
    try {
        operation();
    } catch (const VeltraniException& exception) {
        return exception.message;
    }
    return L"no exception";
}

/// A mesh screen that is filled as the reader of a file fills it.
class ReadScreen : public MeshScreen {
public:
    using MeshScreen::setMesh;
};

TEST(MeshScreen, AnswersTheNearestHitAlone) {
    const MeshScreen screen(meshes::bumpyBall(5, 24, 40));
    EXPECT_TRUE(screen.isValid());
    const IntersectionSet hits = screen.intersect({0.0, -20.0, 0.0}, {0.1, 0.0, 0.2});
    ASSERT_EQ(hits.size(), 1U);
    EXPECT_LT(hits.first().point[1], -4);
    EXPECT_EQ(screen.intersect({0.0, -20.0, 0.0}, {0.0, -21.0, 0.0}).size(), 0U);
}

TEST(MeshScreen, ItsHitsNormalsAndSidesAgreeWithTheOracle) {
    const TriangleMesh mesh = meshes::room(6);
    const MeshScreen screen(mesh);
    oracle::Random random(81);
    for (int i = 0; i < 2000; ++i) {
        const Vector from = random.inCube();
        const Vector to = from + random.inCube();
        const IntersectionSet hits = screen.intersect(from, to);
        const auto expected = oracle::nearestHit(mesh, from, to);
        ASSERT_EQ(hits.size(), expected ? 1U : 0U);
        ASSERT_LE(norm(hits.first().point - expected->point), 1e-9);
        const Vector normal = screen.getScreenNormal(hits.first().point);
        ASSERT_LE(norm(normal - oracle::normal(mesh, expected->triangle)), 1e-12);
        ASSERT_EQ(sideOfSurface(to - from, normal),
                  dot(to - from, oracle::normal(mesh, expected->triangle)) > 0 ? 1 : -1);
    }
}

TEST(MeshScreen, TheSliversOfAFanAgreeWithTheOracle) {
    const TriangleMesh mesh = meshes::fan(3, 700);
    const MeshScreen screen(mesh);
    oracle::Random random(82);
    int met = 0;
    for (int i = 0; i < 1000; ++i) {
        const Vector from = random.inCube();
        // Every fourth ray at the middle, where all slivers meet.
        const Vector to = mesh.vertices[0] + (i % 4 == 0 ? 1e-3 : 3.0) * random.inCube();
        const IntersectionSet hits = screen.intersect(from, to);
        const auto expected = oracle::nearestHit(mesh, from, to);
        ASSERT_EQ(hits.size(), expected ? 1U : 0U) << "ray " << i;
        met += expected ? 1 : 0;
        if (expected) {
            ASSERT_LE(norm(hits.first().point - expected->point), 1e-12) << "ray " << i;
        }
        const Vector nearby = mesh.vertices[0] + 2.0 * random.inCube();
        ASSERT_GT(norm(screen.getScreenNormal(nearby)), 0.5);
    }
    EXPECT_GT(met, 500);
}

TEST(MeshScreen, AFaceThatIsRepeatedIsOneFace) {
    const TriangleMesh wall = meshes::wall(4, 2, 2, 1);
    TriangleMesh many = wall;
    for (int i = 0; i < 100; ++i) {
        many = meshes::joined(many, wall);
    }
    const MeshScreen once(wall);
    const MeshScreen repeated(many);
    oracle::Random random(83);
    for (int i = 0; i < 500; ++i) {
        const Vector from{random.uniform(-1, 5), random.uniform(-3, 3), random.uniform(-1, 3)};
        const Vector to{random.uniform(0, 4), 0.0, random.uniform(0, 2)};
        const IntersectionSet expected = once.intersect(from, to);
        const IntersectionSet hits = repeated.intersect(from, to);
        ASSERT_EQ(hits.size(), expected.size());
        EXPECT_EQ(hits.first().point, expected.first().point);
        EXPECT_EQ(repeated.getScreenNormal(from), once.getScreenNormal(from));
        Vector expectedPoint;
        Vector point;
        const Point<double, 2> st{random.uniform(-0.1, 1.1), random.uniform(-0.1, 1.1)};
        EXPECT_EQ(repeated.mapInto3D(st, point, true), once.mapInto3D(st, expectedPoint, true));
        EXPECT_EQ(point, expectedPoint);
    }
}

TEST(MeshScreen, AnEyeInsideADomeSeesSideOne) {
    const MeshScreen screen(meshes::bumpyBall(5, 24, 40));
    oracle::Random random(85);
    for (int i = 0; i < 1000; ++i) {
        const Vector from = random.inCube();
        const Vector direction = random.inCube();
        const Vector point = screen.intersect(from, from + direction).first().point;
        ASSERT_EQ(sideOfSurface(direction, screen.getScreenNormal(point)), 1);
    }
}

TEST(MeshScreen, TheNormalAtABarePointIsThatOfTheNearestTriangle) {
    const TriangleMesh mesh = meshes::bumpyBall(5, 20, 30);
    const MeshScreen screen(mesh);
    oracle::Random random(82);
    for (int i = 0; i < 500; ++i) {
        const Vector point = 8.0 * random.inCube();
        const Vector normal = screen.getScreenNormal(point);
        ASSERT_NEAR(norm(normal), 1, 1e-14);
        const double nearest = oracle::distance(mesh, point);
        double best = INFINITE;
        for (std::uint32_t k = 0; k < mesh.triangles.size(); ++k) {
            if (oracle::distance(mesh, k, point) <= nearest + 1e-12) {
                best = std::min(best, norm(normal - oracle::normal(mesh, k)));
            }
        }
        ASSERT_LE(best, 1e-12) << "point " << i;
    }
}

TEST(MeshScreen, TheLastHitIsRememberedForTheSameBitsOnly) {
    // Two coincident triangles with opposite windings: the ray takes the lower, and so does every bare point.
    const TriangleMesh wall = meshes::wall(1, 1, 1, 1);
    TriangleMesh mesh = meshes::joined(wall, wall);
    for (std::size_t i = 2; i < 4; ++i) {
        std::swap(mesh.triangles[i][1], mesh.triangles[i][2]);
    }
    const MeshScreen screen(mesh);
    // Seen along -y with side +1 wanted, only the turned copies (2 and 3) qualify.
    const IntersectionSet hits =
        screen.intersectExtrapolatedWithSpecifiedNormal({0.25, 1.0, 0.5}, {0.25, -1.0, 0.5}, 1);
    ASSERT_EQ(hits.size(), 1U);
    const Vector point = hits.first().point;
    EXPECT_EQ(screen.getScreenNormal(point), (Vector{0.0, -1.0, 0.0})) << "the triangle that was hit";
    Vector other = point;
    other[1] = std::nextafter(other[1], 1);
    EXPECT_EQ(screen.getScreenNormal(other), (Vector{0.0, 1.0, 0.0})) << "the lowest nearest one";
    other = point;
    other[1] = -point[1];
    EXPECT_EQ(other, point);
    EXPECT_EQ(screen.getScreenNormal(other), (Vector{0.0, 1.0, 0.0})) << "0.0 and -0.0 are different bits";
}

TEST(MeshScreen, MapsByItsTextureCoordinates) {
    const MeshScreen screen(meshes::wall(10, 3, 7, 5));
    ASSERT_TRUE(screen.isParameterised());
    oracle::Random random(83);
    for (int i = 0; i < 2000; ++i) {
        const Point<double, 2> st{random.uniform(0, 1), random.uniform(0, 1)};
        Vector out;
        ASSERT_TRUE(screen.mapInto3D(st, out, false));
        ASSERT_LE(norm(out - Vector{10 * st[0], 0.0, 3 * st[1]}), 1e-14);
    }
}

TEST(MeshScreen, BeyondTheTextureItContinuesAFlatMeshExactly) {
    const MeshScreen screen(meshes::wall(10, 3, 7, 5));
    Vector out{7.0, 8.0, 9.0};
    for (const Point<double, 2> st : {Point<double, 2>{-0.5, 0.3}, {1.7, 2.0}, {0.2, -3.0}}) {
        EXPECT_FALSE(screen.mapInto3D(st, out, false));
        EXPECT_EQ(out, (Vector{7.0, 8.0, 9.0})) << "untouched";
        Vector beyond;
        ASSERT_TRUE(screen.mapInto3D(st, beyond, true));
        EXPECT_LE(norm(beyond - Vector{10 * st[0], 0.0, 3 * st[1]}), 1e-13);
    }
    EXPECT_FALSE(screen.mapInto3D({NOT_A_NUMBER, 0.5}, out, true));
    EXPECT_FALSE(screen.mapInto3D({INFINITE, 0.5}, out, true));
    EXPECT_EQ(out, (Vector{7.0, 8.0, 9.0}));
}

TEST(MeshScreen, SamplesARowAndKeepsItsLastColumn) {
    const MeshScreen screen(meshes::wall(10, 4, 7, 5));
    Grid grid;
    // ((1.0 - 0.2) * 3) / 3 + 0.2 is one last bit above 1.
    screen.sampleHorizontally(0.25, 0.2, 1.0, 4, 6, grid, false);
    ASSERT_EQ(grid.size(), 4U);
    EXPECT_LE(norm(grid[{3, 6}] - Vector{10.0, 0.0, 1.0}), 1e-14);
    EXPECT_LE(norm(grid[{0, 6}] - Vector{2.0, 0.0, 1.0}), 1e-14);
}

TEST(MeshScreen, WithoutTextureCoordinatesItSaysSoAtOnce) {
    const MeshScreen screen(meshes::room(2));
    EXPECT_FALSE(screen.isParameterised());
    Vector out;
    Grid grid;
    const std::wstring expected =
        L"The mesh has no 2D coordinates: export it with a texture coordinate at every corner";
    EXPECT_EQ(messageOf([&] { (void)screen.mapInto3D({0.5, 0.5}, out, true); }), expected);
    EXPECT_EQ(messageOf([&] { screen.sampleHorizontally(0.5, 0, 1, 3, 0, grid, false); }), expected);
    EXPECT_EQ(messageOf([&] { screen.sampleHorizontally(0.5, 0, 1, 0, 0, grid, false); }), expected)
        << "also when there is nothing to sample";
}

TEST(MeshScreen, TextureCoordinatesThatAreNotFiniteAreNone) {
    TriangleMesh mesh = meshes::wall(1, 1, 1, 1);
    mesh.textureCoordinates[2][0] = NOT_A_NUMBER;
    const MeshScreen screen(mesh);
    EXPECT_TRUE(screen.isValid());
    EXPECT_FALSE(screen.isParameterised());
}

TEST(MeshScreen, ArraysThatDoNotFitTogetherAreRefused) {
    TriangleMesh mesh = meshes::wall(1, 1, 1, 1);
    mesh.triangles[1][2] = 4;
    EXPECT_EQ(messageOf([&] { const MeshScreen screen(mesh); }),
              L"Triangle 1 of the mesh refers to vertex 4, but there are 4");
    mesh = meshes::wall(1, 1, 1, 1);
    mesh.textureTriangles[0][0] = 99;
    EXPECT_EQ(messageOf([&] { const MeshScreen screen(mesh); }),
              L"Triangle 0 of the mesh refers to texture coordinate 99, but there are 4");
    mesh = meshes::wall(1, 1, 1, 1);
    mesh.textureTriangles.pop_back();
    EXPECT_EQ(messageOf([&] { const MeshScreen screen(mesh); }),
              L"The mesh has 1 texture triangles for 2 triangles; give one for each or none");
}

TEST(MeshScreen, AFaultyMeshLeavesTheOldOne) {
    ReadScreen screen;
    screen.setMesh(meshes::wall(1, 1, 1, 1), MeshScreen::calcUniqueDataHash("old"));
    TriangleMesh faulty = meshes::wall(2, 2, 1, 1);
    faulty.triangles[0][0] = 77;
    EXPECT_THROW(screen.setMesh(faulty, MeshScreen::calcUniqueDataHash("new")), VeltraniException);
    EXPECT_EQ(screen.getUniqueDataHash(), MeshScreen::calcUniqueDataHash("old"));
    EXPECT_TRUE(screen.isValid());
}

void expectNothing(const MeshScreen& screen) {
    EXPECT_FALSE(screen.isValid());
    for (const Vector& to : {Vector{0.5, 0.0, 0.25}, Vector{0.0, 0.0, 0.0}, Vector{1.0, 2.0, 3.0}}) {
        EXPECT_TRUE(screen.intersect({0.5, -1.0, 0.25}, to).empty());
        EXPECT_TRUE(screen.intersectExtrapolatedWithSpecifiedNormal({0.5, -1.0, 0.25}, to, 1).empty());
        EXPECT_EQ(screen.getScreenNormal(to), Vector{});
    }
    EXPECT_TRUE(screen.intersectChannelBoundary({{{0.5, -1.0, 0.25}, {0.5, 0.0, 0.25}}}, {}).empty());
}

TEST(MeshScreen, AnEmptyMeshIsNotValid) {
    expectNothing(MeshScreen(TriangleMesh{}));
    expectNothing(ReadScreen());
    TriangleMesh noFaces = meshes::wall(1, 1, 1, 1);
    noFaces.triangles.clear();
    noFaces.textureTriangles.clear();
    expectNothing(MeshScreen(noFaces));
}

TEST(MeshScreen, AMeshWithoutAreaIsNotValid) {
    expectNothing(MeshScreen(meshes::triangle({0.5, 0.0, 0.25}, {0.5, 0.0, 0.25}, {0.5, 0.0, 0.25})));
    expectNothing(MeshScreen(meshes::triangle({0.1, 0.1, 0.1}, {0.2, 0.2, 0.2}, {0.7, 0.7, 0.7})));
}

TEST(MeshScreen, VerticesThatAreNotFiniteMakeItNotValid) {
    for (const double bad : {NOT_A_NUMBER, INFINITE, -INFINITE}) {
        for (std::size_t i = 0; i < 3; ++i) {
            TriangleMesh mesh = meshes::wall(1, 1, 2, 2);
            mesh.vertices[4][i] = bad;
            const MeshScreen screen(mesh);
            expectNothing(screen);
            Vector out;
            EXPECT_FALSE(screen.mapInto3D({0.25, 0.1}, out, true));
        }
    }
}

TEST(MeshScreen, ExtremeNumbersDoNoHarm) {
    const double numbers[] = {0,     -0.0, 1,     -1,   0.1,   1e-320, 1e-200, 1e-100, 1e-70,
                              -1e-8, 1e8,  -1e20, 1e39, -1e70, 1e78,   1e100,  1e200,  -1.7e308};
    oracle::Random random(86);
    const auto anyPoint = [&] {
        const auto any = [&] { return numbers[random.below(std::size(numbers))]; };
        const double x = any();
        const double y = any();
        return Vector{x, y, any()};
    };
    int hits = 0;
    for (int i = 0; i < 3000; ++i) {
        TriangleMesh mesh;
        for (std::uint32_t k = 0; k < 12; ++k) {
            const Vector place = anyPoint();
            mesh.vertices.push_back(place);
            mesh.textureCoordinates.push_back({place[1], place[2]});
        }
        mesh.triangles = {{0, 1, 2}, {3, 4, 5}, {6, 7, 8}, {9, 10, 11}};
        mesh.textureTriangles = mesh.triangles;
        const MeshScreen screen(mesh);
        for (int k = 0; k < 10; ++k) {
            const Vector from = anyPoint();
            const Vector to = k % 2 == 0 ? anyPoint() : 0.3 * (mesh.vertices[0] + mesh.vertices[1] + mesh.vertices[2]);
            for (const IntersectionSet& set :
                 {screen.intersect(from, to), screen.intersectExtrapolatedWithSpecifiedNormal(from, to, 1)}) {
                if (!set.empty()) {
                    ++hits;
                    ASSERT_GE(set.first().t, 0);
                    const double length = norm(screen.getScreenNormal(set.first().point));
                    ASSERT_TRUE(std::abs(length - 1) < 1e-9) << "mesh " << i << " length " << length;
                }
            }
            const double length = norm(screen.getScreenNormal(from));
            ASSERT_TRUE(length == 0 || std::abs(length - 1) < 1e-9) << "mesh " << i << " length " << length;
            Vector out;
            const bool mapped = screen.mapInto3D({from[0], from[1]}, out, true);
            ASSERT_TRUE(!mapped || std::isfinite(out[0] + 0 * out[1] + 0 * out[2]));
        }
    }
    EXPECT_GT(hits, 100);
}

TEST(MeshScreen, APointThatIsNotFiniteHasNoNormal) {
    const MeshScreen screen(meshes::wall(1, 1, 1, 1));
    EXPECT_EQ(screen.getScreenNormal({NOT_A_NUMBER, 0.0, 0.0}), Vector{});
    EXPECT_EQ(screen.getScreenNormal({INFINITE, 0.0, 0.0}), Vector{});
}

TEST(MeshScreen, ADegenerateTriangleAmongOthersMakesNoNaN) {
    TriangleMesh mesh = meshes::wall(1, 1, 1, 1);
    mesh.triangles.insert(mesh.triangles.begin(), {0, 0, 1});
    mesh.textureTriangles.insert(mesh.textureTriangles.begin(), {0, 0, 1});
    const MeshScreen screen(mesh);
    EXPECT_TRUE(screen.isValid());
    EXPECT_EQ(screen.getScreenNormal({0.0, 0.0, 0.0}), (Vector{0.0, 1.0, 0.0}));
    EXPECT_EQ(screen.intersect({0.0, -1.0, 0.0}, {0.0, 0.0, 0.0}).size(), 1U);
    Vector out;
    ASSERT_TRUE(screen.mapInto3D({0.0, 0.0}, out, false));
    EXPECT_EQ(out, Vector{});
}

TEST(MeshScreen, ARealHitComesBeforeAnyContinuation) {
    const MeshScreen screen(meshes::wall(4, 3, 4, 3));
    const Vector from{2.0, -2.0, 1.5};
    const IntersectionSet real = screen.intersectExtrapolatedWithSpecifiedNormal(from, {2.5, 0.0, 1.0}, 1);
    ASSERT_EQ(real.size(), 1U);
    EXPECT_EQ(real.first().point, screen.intersect(from, {2.5, 0.0, 1.0}).first().point);
    const IntersectionSet continued = screen.intersectExtrapolatedWithSpecifiedNormal(from, {6.0, 0.0, -1.0}, 1);
    ASSERT_EQ(continued.size(), 1U);
    EXPECT_LE(norm(continued.first().point - Vector{6.0, 0.0, -1.0}), 1e-13);
    EXPECT_TRUE(screen.intersectExtrapolatedWithSpecifiedNormal(from, {2.5, 0.0, 1.0}, -1).empty());
    EXPECT_TRUE(screen.intersectExtrapolatedWithSpecifiedNormal(from, {6.0, 0.0, -1.0}, -1).empty());
}

TEST(MeshScreen, OutlinesAChannelLikeTheFlatScreenOfTheSamePlace) {
    ScreenConfigDouble config;
    config.centre = {2.0, 0.0, 1.5};
    config.width = 4;
    config.height = 3;
    const FlatScreen flat(&config);
    const MeshScreen mesh(meshes::wall(4, 3, 8, 6));
    const Vector eye{1.0, -3.0, 1.0};
    std::vector<Ray> boundary;
    for (int i = 0; i < 40; ++i) {
        const double angle = 0.157 * i;
        boundary.push_back({eye, eye + Vector{0.9 * std::cos(angle), 1.0, 0.7 * std::sin(angle)}});
    }
    const std::vector<Ray> centre{{eye, eye + Vector{0.0, 1.0, 0.0}}};
    const std::vector<Vector> expected = flat.intersectChannelBoundary(boundary, centre);
    const std::vector<Vector> outline = mesh.intersectChannelBoundary(boundary, centre);
    ASSERT_EQ(outline.size(), boundary.size());
    ASSERT_EQ(expected.size(), boundary.size());
    for (std::size_t i = 0; i < outline.size(); ++i) {
        EXPECT_LE(norm(outline[i] - expected[i]), 1e-12) << "ray " << i;
    }
}

TEST(MeshScreen, ABatchAnswersAsTheRaysDoOneByOne) {
    const MeshScreen screen(meshes::room(4));
    oracle::Random random(84);
    std::vector<Ray> rays;
    for (int i = 0; i < 100; ++i) {
        const Vector from = (i % 5 == 0 ? 30.0 : 1.0) * random.inCube();
        rays.push_back({from, from + random.inCube()});
    }
    std::vector<SurfaceHit> hits(rays.size());
    screen.intersectRays(rays, hits);
    for (std::size_t i = 0; i < rays.size(); ++i) {
        const IntersectionSet single = screen.intersect(rays[i].first, rays[i].second);
        ASSERT_EQ(hits[i].hit, !single.empty());
        if (hits[i].hit) {
            EXPECT_EQ(hits[i].point, single.first().point);
            EXPECT_EQ(hits[i].normal, screen.getScreenNormal(single.first().point));
        }
    }
}

TEST(MeshScreen, TheHashOfAReadMeshIsThatOfTheBytesAlone) {
    EXPECT_EQ(hex(MeshScreen::calcUniqueDataHash("abc")), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(hex(MeshScreen::calcUniqueDataHash("")), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    ReadScreen screen;
    screen.setMesh(meshes::wall(1, 1, 1, 1), MeshScreen::calcUniqueDataHash("abc"));
    EXPECT_EQ(screen.getUniqueDataHash(), MeshScreen::calcUniqueDataHash("abc"));
}

TEST(MeshScreen, TheHashOfAMeshOfNumbersFollowsEveryNumber) {
    const TriangleMesh mesh = meshes::wall(1, 1, 1, 1);
    std::vector<std::array<unsigned char, 20>> seen{MeshScreen(mesh).getUniqueDataHash()};
    EXPECT_EQ(MeshScreen(mesh).getUniqueDataHash(), seen.front());
    const auto expectNew = [&](const std::function<void(TriangleMesh&)>& change) {
        TriangleMesh changed = mesh;
        change(changed);
        const auto hash = MeshScreen(changed).getUniqueDataHash();
        EXPECT_EQ(std::count(seen.begin(), seen.end(), hash), 0) << "change " << seen.size();
        seen.push_back(hash);
    };
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            expectNew([=](TriangleMesh& m) { m.vertices[i][k] = std::nextafter(m.vertices[i][k], 2); });
        }
        for (std::size_t k = 0; k < 2; ++k) {
            expectNew(
                [=](TriangleMesh& m) { m.textureCoordinates[i][k] = std::nextafter(m.textureCoordinates[i][k], 2); });
        }
    }
    for (std::size_t i = 0; i < 2; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            expectNew([=](TriangleMesh& m) { m.triangles[i][k] = (m.triangles[i][k] + 1) % 4; });
            expectNew([=](TriangleMesh& m) { m.textureTriangles[i][k] = (m.textureTriangles[i][k] + 1) % 4; });
        }
    }
    expectNew([](TriangleMesh& m) { m.vertices.push_back({}); });
    expectNew([](TriangleMesh& m) { m.textureTriangles.clear(); });
    EXPECT_EQ(seen.size(), 35U);
    TriangleMesh negativeZero = mesh;
    negativeZero.vertices[0][1] = -0.0;
    EXPECT_EQ(MeshScreen(negativeZero).getUniqueDataHash(), seen.front()) << "equal numbers, equal hash";
}

TEST(MeshScreen, StaysAsItIsWhenTheConfigurationChanges) {
    MeshScreen screen(meshes::wall(1, 1, 1, 1));
    const auto before = screen.getUniqueDataHash();
    ScreenConfigDouble config;
    config.shape = BaseConfig::SHAPE_MESH;
    screen.updateGeometry(&config);
    screen.updateGeometry(nullptr);
    EXPECT_EQ(screen.getUniqueDataHash(), before);
    EXPECT_TRUE(screen.isValid());
}

TEST(MeshScreen, ReplacingTheMeshForgetsEverythingDerived) {
    ReadScreen screen;
    screen.setMesh(meshes::wall(1, 1, 1, 1), MeshScreen::calcUniqueDataHash("1"));
    const Vector from{0.5, -1.0, 0.25};
    const Vector point = screen.intersect(from, {0.5, 0.0, 0.25}).first().point;
    Vector out;
    ASSERT_TRUE(screen.mapInto3D({0.5, 0.5}, out, false));
    TriangleMesh turned = meshes::wall(2, 2, 1, 1);
    std::swap(turned.triangles[0][0], turned.triangles[0][1]);
    std::swap(turned.triangles[1][0], turned.triangles[1][1]);
    screen.setMesh(turned, MeshScreen::calcUniqueDataHash("2"));
    EXPECT_EQ(screen.getScreenNormal(point), (Vector{0.0, -1.0, 0.0}));
    EXPECT_EQ(screen.intersect(from, {1.5, 0.0, 1.25}).size(), 1U) << "outside the first mesh";
}

}  // namespace
