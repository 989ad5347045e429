#include "KelvoScreen/detail/SmoothFaces.h"

#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/Meshes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <set>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

std::size_t faceCount(const TriangleMesh& mesh) {
    const MeshTopology topology(mesh);
    const SmoothFaces faces(mesh, topology);
    return std::set<std::uint32_t>(faces.faces().begin(), faces.faces().end()).size();
}

/// A part of a cylinder with its axis upright, `degrees` per column.
TriangleMesh arc(int columns, int rows, double degrees) {
    const double turn = columns * degrees * std::numbers::pi / 180;
    return meshes::surface(columns, rows, [&](double s, double t) {
        return Vector{5 * std::sin((s - 0.5) * turn), 5 * std::cos((s - 0.5) * turn), 3 * t};
    });
}

TEST(SmoothFaces, ACurvedSurfaceIsOneHoweverCoarse) {
    EXPECT_EQ(faceCount(arc(40, 10, 1)), 1U);
    EXPECT_EQ(faceCount(arc(12, 4, 15)), 1U);
    EXPECT_EQ(faceCount(arc(6, 1, 20)), 1U);
    EXPECT_EQ(faceCount(meshes::wall(4, 3, 8, 6)), 1U);
}

TEST(SmoothFaces, ThePanelsOfAWallAndTheSidesOfABoxAreMany) {
    // Panels of ten columns that meet at 15 degrees.
    const TriangleMesh panels = meshes::surface(30, 10, [](double s, double t) {
        const double x = 6 * s - 3;
        return Vector{x, 5 - 0.268 * std::max(0.0, std::abs(x) - 1), t};
    });
    EXPECT_EQ(faceCount(panels), 3U);
    EXPECT_EQ(faceCount(meshes::room(4)), 12U) << "a room and a table in it";
}

TEST(SmoothFaces, NoiseMakesNoCrease) {
    TriangleMesh mesh = meshes::wall(2, 2, 40, 40);
    oracle::Random random(61);
    for (Vector& vertex : mesh.vertices) {
        vertex += Vector{0.0, random.uniform(-0.005, 0.005), 0.0};
    }
    EXPECT_EQ(faceCount(mesh), 1U) << "edges of 5 cm, off by up to 5 mm";
}

TEST(SmoothFaces, ThinTrianglesJoinTheirNeighboursAndHaveNoNormal) {
    TriangleMesh mesh;
    mesh.vertices = {{0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}, {1.0, 1e-5, 0.0}, {1.0, 0.0, 1.0}, {1.0, 0.0, -1.0}};
    mesh.triangles = {{0, 3, 1}, {0, 2, 4}, {2, 1, 4}, {0, 1, 2}};
    const MeshTopology topology(mesh);
    const SmoothFaces faces(mesh, topology);
    EXPECT_EQ(faces.normals()[3], Vector{}) << "it lies across all others";
    EXPECT_EQ(faces.faces(), (std::vector<std::uint32_t>{0, 0, 0, 0}));
}

TEST(SmoothFaces, PartsAreFacesOfTheirOwnLabelledByTheirLowestTriangle) {
    const TriangleMesh wall = meshes::wall(1, 1, 1, 1);
    const TriangleMesh two = meshes::joined(wall, meshes::place(wall, {1, {5.0, 0.0, 0.0}}));
    const MeshTopology topology(two);
    EXPECT_EQ(SmoothFaces(two, topology).faces(), (std::vector<std::uint32_t>{0, 0, 2, 2}));
    const MeshTopology none{TriangleMesh{}};
    EXPECT_TRUE(SmoothFaces(TriangleMesh{}, none).faces().empty());
}

}  // namespace
