#include "DisplayReport/MeshThinner.h"

#include <gtest/gtest.h>

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
    // An open edge moves inwards by up to half a cell, of which there are about 20 along a side.
    EXPECT_GT(areaOf(surface), 0.85);
    EXPECT_LE(areaOf(surface), 1.0 + 1e-9);
    for (const P3& vertex : surface.vertices) {
        EXPECT_EQ(vertex[1], 0.0);
    }
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

TEST(MeshThinner, TrianglesWithoutAnAreaDoNotKeepItBusy) {
    TriangleMesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}};
    mesh.triangles.assign(100, {0, 1, 2});
    EXPECT_LE(MeshThinner(10).thin(mesh).triangles.size(), 10U);
    mesh.vertices = {{5, 5, 5}, {5, 5, 5}, {5, 5, 5}};
    EXPECT_TRUE(MeshThinner(10).thin(mesh).triangles.empty());
}

}  // namespace
