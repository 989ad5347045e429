#include "DisplayReport/scene/MeshThinner.h"

#include "Common/Finite.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using namespace Veltrani::DisplayReport;
using P3 = Point<double, 3>;

/// A wall of cells x cells squares, two triangles each, over (0, y, 0) to (1, y, 1), moved by `shift`.
TriangleMesh wall(std::uint32_t cells, const P3& shift = {}) {
    TriangleMesh mesh;
    for (std::uint32_t row = 0; row <= cells; ++row) {
        for (std::uint32_t column = 0; column <= cells; ++column) {
            mesh.vertices.push_back(P3{static_cast<double>(column) / cells, 0.0, static_cast<double>(row) / cells} +
                                    shift);
        }
    }
    for (std::uint32_t row = 0; row < cells; ++row) {
        for (std::uint32_t column = 0; column < cells; ++column) {
            const std::uint32_t a = row * (cells + 1) + column;
            mesh.triangles.push_back({a, a + 1, a + cells + 2});
            mesh.triangles.push_back({a, a + cells + 2, a + cells + 1});
        }
    }
    return mesh;
}

double areaOf(const SceneSurface& surface) {
    double area = 0;
    for (const auto& [a, b, c] : surface.triangles) {
        area += norm(cross(surface.vertices[b] - surface.vertices[a], surface.vertices[c] - surface.vertices[a])) / 2;
    }
    return area;
}

TEST(MeshThinner, FewTrianglesStayAsTheyAre) {
    const TriangleMesh mesh = wall(4);
    const SceneSurface surface = MeshThinner(32).thin(mesh);
    EXPECT_EQ(surface.triangles.size(), 32U);
    EXPECT_EQ(surface.vertices.size(), 25U);
    EXPECT_NEAR(areaOf(surface), 1.0, 1e-12);
}

TEST(MeshThinner, ManyTrianglesBecomeFewOverTheSameSurface) {
    const SceneSurface surface = MeshThinner(1000).thin(wall(100));
    EXPECT_LE(surface.triangles.size(), 1000U);
    EXPECT_GE(surface.triangles.size(), 300U) << "no more than needed is thrown away";
    EXPECT_NEAR(areaOf(surface), 1.0, 1e-9) << "the wall is as large as before";
    for (const P3& vertex : surface.vertices) {
        EXPECT_EQ(vertex[1], 0.0);
    }
}

/// Is on the outline of the square from (0, 0) to (1, 1)?
bool isOnOutline(const P3& point) {
    return point[0] == 0 || point[0] == 1 || point[2] == 0 || point[2] == 1;
}

TEST(MeshThinner, AnOpenEdgeStaysWhereItIs) {
    for (const std::size_t most : {std::size_t{20}, std::size_t{200}, std::size_t{5000}}) {
        const SceneSurface surface = MeshThinner(most).thin(wall(100));
        double length = 0;
        for (const auto& [a, b] : borderOf(surface.vertices, surface.triangles)) {
            EXPECT_TRUE(isOnOutline(surface.vertices[a]) && isOnOutline(surface.vertices[b])) << most;
            length += norm(surface.vertices[b] - surface.vertices[a]);
        }
        EXPECT_NEAR(length, 4, 1e-9) << most << ": nor does it cut corners";
        for (const P3& corner : {P3{0, 0, 0}, P3{1, 0, 0}, P3{0, 0, 1}, P3{1, 0, 1}}) {
            EXPECT_EQ(std::count(surface.vertices.begin(), surface.vertices.end(), corner), 1) << most;
        }
    }
}

TEST(MeshThinner, AVertexOfTheBorderThatIsThereTwiceStaysWhereItIs) {
    // Every triangle with corners of its own, as a file of loose triangles has them.
    const TriangleMesh whole = wall(60);
    TriangleMesh loose;
    for (const auto& triangle : whole.triangles) {
        const auto first = static_cast<std::uint32_t>(loose.vertices.size());
        for (const std::uint32_t corner : triangle) {
            loose.vertices.push_back(whole.vertices[corner]);
        }
        loose.triangles.push_back({first, first + 1, first + 2});
    }
    const SceneSurface surface = MeshThinner(500).thin(loose);
    EXPECT_NEAR(areaOf(surface), 1.0, 1e-9);
    double length = 0;
    for (const auto& [a, b] : borderOf(surface.vertices, surface.triangles)) {
        length += norm(surface.vertices[b] - surface.vertices[a]);
    }
    EXPECT_NEAR(length, 4, 1e-9) << "no crack has opened";
}

/// Does a triangle of the wall cover that place of it?
bool isCovered(const SceneSurface& surface, double x, double z) {
    return std::any_of(surface.triangles.begin(), surface.triangles.end(), [&](const auto& triangle) {
        int turns = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            const P3& a = surface.vertices[triangle[i]];
            const P3& b = surface.vertices[triangle[(i + 1) % 3]];
            turns += (b[0] - a[0]) * (z - a[2]) - (b[2] - a[2]) * (x - a[0]) >= 0 ? 1 : -1;
        }
        return std::abs(turns) == 3;
    });
}

// What was seen once: white specks along the border of the light, where large triangles meet the small ones of a cut.
TEST(MeshThinner, NoHolesOpenWhereLargeTrianglesMeetSmallOnes) {
    // The left half of the wall is eight times as fine; corners of it lie on edges of the right half.
    TriangleMesh mesh = wall(8);
    for (P3& vertex : mesh.vertices) {
        vertex[0] = 0.5 + vertex[0] / 2;
    }
    TriangleMesh fine = wall(64);
    const auto first = static_cast<std::uint32_t>(mesh.vertices.size());
    for (const P3& vertex : fine.vertices) {
        mesh.vertices.push_back({vertex[0] / 2, vertex[1], vertex[2]});
    }
    for (const auto& [a, b, c] : fine.triangles) {
        mesh.triangles.push_back({a + first, b + first, c + first});
    }
    for (const std::size_t most : {300U, 1500U}) {
        const SceneSurface surface = MeshThinner(most).thin(mesh);
        EXPECT_LE(surface.triangles.size(), most);
        int holes = 0;
        for (int i = 0; i < 997; ++i) {
            // Spread over the wall; close to the seam every second time.
            const double x =
                i % 2 == 0 ? std::fmod(i * 0.6180339887, 1.0) : 0.49 + 0.02 * std::fmod(i * 0.7548776662, 1.0);
            holes += isCovered(surface, x, std::fmod(i * 0.5698402910, 1.0)) ? 0 : 1;
        }
        EXPECT_EQ(holes, 0) << most;
    }
}

TEST(MeshThinner, NoVertexOfASurfaceMoves) {
    const TriangleMesh mesh = wall(100);
    const SceneSurface surface = MeshThinner(1000).thin(mesh);
    for (const P3& vertex : surface.vertices) {
        EXPECT_NE(std::find(mesh.vertices.begin(), mesh.vertices.end(), vertex), mesh.vertices.end());
    }
}

TEST(MeshThinner, ManyLoosePartsBecomeFewAsWell) {
    TriangleMesh mesh;
    for (int i = 0; i < 6000; ++i) {
        const P3 place{std::fmod(i * 0.6180339887, 1.0), std::fmod(i * 0.7548776662, 1.0),
                       std::fmod(i * 0.5698402910, 1.0)};
        const auto first = static_cast<std::uint32_t>(mesh.vertices.size());
        mesh.vertices.insert(mesh.vertices.end(), {place, place + P3{0.2, 0, 0}, place + P3{0, 0.2, 0.1}});
        mesh.triangles.push_back({first, first + 1, first + 2});
    }
    const SceneSurface surface = MeshThinner(1000).thin(mesh);
    EXPECT_LE(surface.triangles.size(), 1000U);
    EXPECT_GE(surface.triangles.size(), 100U);
}

TEST(MeshThinner, AHoleStaysAHole) {
    TriangleMesh mesh = wall(100);
    // The middle fifth of both sides.
    const auto isInHole = [&mesh](const TriangleMesh::Triangle& triangle) {
        return std::all_of(triangle.begin(), triangle.end(), [&mesh](std::uint32_t corner) {
            const P3& place = mesh.vertices[corner];
            return place[0] > 0.399 && place[0] < 0.601 && place[2] > 0.399 && place[2] < 0.601;
        });
    };
    mesh.triangles.erase(std::remove_if(mesh.triangles.begin(), mesh.triangles.end(), isInHole), mesh.triangles.end());
    EXPECT_NEAR(areaOf(MeshThinner(1000).thin(mesh)), 0.96, 1e-9);
}

TEST(MeshThinner, FarFromTheOriginTheShapeIsTheSame) {
    const P3 far{1e9, -1e9, 1e9};
    const SceneSurface here = MeshThinner(500).thin(wall(64));
    const SceneSurface there = MeshThinner(500).thin(wall(64, far));
    ASSERT_EQ(here.triangles.size(), there.triangles.size());
    for (std::size_t i = 0; i < here.vertices.size(); ++i) {
        // What is left of a double at 1e9.
        EXPECT_LE(norm(there.vertices[i] - far - here.vertices[i]), 1e-6);
    }
}

// One slip in a file shall not make the wall a speck, or remove it.
TEST(MeshThinner, ATriangleThatReachesVeryFarIsLeftOutAndCounted) {
    for (const std::uint32_t cells : {2U, 40U, 300U}) {
        TriangleMesh mesh = wall(cells);
        mesh.vertices.emplace_back(1e9, -1e9, 1e9);
        mesh.triangles.push_back({0, 1, static_cast<std::uint32_t>(mesh.vertices.size() - 1)});
        const SceneSurface surface = MeshThinner(5000).thin(mesh);
        EXPECT_EQ(surface.trianglesFarOff, 1U) << cells;
        EXPECT_GE(surface.triangles.size(), std::min<std::size_t>(2 * cells * cells, 1000)) << cells;
        for (const P3& vertex : surface.vertices) {
            EXPECT_LE(norm(vertex), 2) << cells;
        }
    }
}

TEST(MeshThinner, LongMeshesAndFarOnesLoseNothing) {
    TriangleMesh mesh = wall(10, {1e9, 1e9, 1e9});
    mesh.vertices.emplace_back(1e9 + 1000, 1e9, 1e9);
    mesh.triangles.push_back({0, 1, static_cast<std::uint32_t>(mesh.vertices.size() - 1)});
    EXPECT_EQ(MeshThinner(5000).thin(mesh).trianglesFarOff, 0U);
    EXPECT_EQ(MeshThinner(5000).thin(mesh).triangles.size(), 201U);
}

TEST(MeshThinner, WhatIsNotFiniteIsLeftOut) {
    TriangleMesh mesh = wall(2);
    mesh.vertices[0] = {std::numeric_limits<double>::quiet_NaN(), 0, 0};
    mesh.vertices[8] = {std::numeric_limits<double>::infinity(), 0, 0};
    for (const std::size_t most : {std::size_t{100}, std::size_t{3}}) {
        const SceneSurface surface = MeshThinner(most).thin(mesh);
        EXPECT_LE(surface.triangles.size(), std::min<std::size_t>(most, 4));
        for (const P3& vertex : surface.vertices) {
            EXPECT_TRUE(std::isfinite(norm(vertex)));
        }
    }
    EXPECT_TRUE(MeshThinner(10).thin({}).triangles.empty());
}

TEST(MeshThinner, MeshesOfAnySizeAreThinned) {
    for (const double scale : {1e-200, 1e-30, 1e60, 1e153}) {
        TriangleMesh mesh = wall(50);
        for (P3& vertex : mesh.vertices) {
            vertex = vertex * scale;
        }
        const SceneSurface surface = MeshThinner(500).thin(mesh);
        EXPECT_LE(surface.triangles.size(), 500U) << scale;
        for (const P3& vertex : surface.vertices) {
            EXPECT_TRUE(isFinite(vertex)) << scale;
        }
    }
}

TEST(MeshThinner, RepeatedTrianglesCountOnce) {
    TriangleMesh mesh = wall(2);
    for (int i = 0; i < 7; ++i) {
        mesh.triangles.insert(mesh.triangles.end(), mesh.triangles.begin(), mesh.triangles.begin() + 8);
    }
    EXPECT_NEAR(areaOf(MeshThinner(20).thin(mesh)), 1.0, 1e-12);
}

TEST(MeshThinner, TrianglesWithoutAnAreaDoNotKeepItBusy) {
    TriangleMesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}};
    mesh.triangles.assign(100, {0, 1, 2});
    EXPECT_LE(MeshThinner(10).thin(mesh).triangles.size(), 10U);
    mesh.vertices = {{5, 5, 5}, {5, 5, 5}, {5, 5, 5}};
    EXPECT_TRUE(MeshThinner(10).thin(mesh).triangles.empty());
}

}  // namespace
