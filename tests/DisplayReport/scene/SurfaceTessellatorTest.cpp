#include "DisplayReport/scene/SceneSurface.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/SphericalScreen.h"
#include "support/Displays.h"
#include "support/ScreenGeometryDouble.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;
using testing::IsEmpty;
using testing::SizeIs;
using P3 = Point<double, 3>;
using std::numbers::pi;

constexpr std::size_t PLENTY = 60000;

double areaOf(const SceneSurface& surface) {
    double area = 0;
    for (const auto& [a, b, c] : surface.triangles) {
        area += norm(cross(surface.vertices[b] - surface.vertices[a], surface.vertices[c] - surface.vertices[a])) / 2;
    }
    return area;
}

double borderLengthOf(const SceneSurface& surface) {
    double length = 0;
    for (const auto& [a, b] : surface.border) {
        length += norm(surface.vertices[b] - surface.vertices[a]);
    }
    return length;
}

TEST(SurfaceTessellator, AFlatScreenHasItsAreaAndItsFourSides) {
    const SceneSurface surface = SurfaceTessellator(PLENTY).tessellate(FlatScreen());
    EXPECT_NEAR(areaOf(surface), 1, 1e-12);
    EXPECT_NEAR(borderLengthOf(surface), 4, 1e-12);
    EXPECT_EQ(surface.trianglesOfMesh, 0U);
    EXPECT_FALSE(surface.isThinned());
}

TEST(SurfaceTessellator, AWholeSphereHasItsAreaAndNoBorder) {
    const SphericalScreen sphere({1, 2, 3}, 2, -pi, pi, -pi / 2, pi / 2);
    const SceneSurface surface = SurfaceTessellator(PLENTY).tessellate(sphere);
    // Chords of 96 in a turn and 48 from pole to pole cut off less than a thousandth each way.
    EXPECT_NEAR(areaOf(surface) / (16 * pi), 0.9985, 0.001);
    EXPECT_THAT(surface.border, IsEmpty()) << "neither at the seam nor at the poles";
    for (const P3& vertex : surface.vertices) {
        EXPECT_NEAR(norm(vertex - P3{1, 2, 3}), 2, 1e-12);
    }
}

TEST(SurfaceTessellator, AHalfSphereIsBorderedByItsEquator) {
    const SphericalScreen half(P3(), 2, -pi, pi, 0, pi / 2);
    const SceneSurface surface = SurfaceTessellator(PLENTY).tessellate(half);
    EXPECT_NEAR(areaOf(surface) / (8 * pi), 0.9988, 0.001);
    EXPECT_NEAR(borderLengthOf(surface), 96 * 2 * 2 * std::sin(pi / 96), 1e-9);
}

TEST(SurfaceTessellator, ACylinderHasTheAreaOfItsWall) {
    const auto config = displays::parsed(
        "<Screen shape='Cylinder'><Centre x='0' y='0' z='1'/><Radius value='3'/><Size height='2'/><Azimuth min='-90' "
        "max='90'/></Screen>",
        "");
    const SceneSurface surface = SurfaceTessellator(PLENTY).tessellate(CylinderScreen(config->getScreenConfig()));
    // 96 chords of half a turn.
    const double width = 96 * 2 * 3 * std::sin(pi / 2 / 96);
    EXPECT_NEAR(areaOf(surface), 2 * width, 1e-9);
    EXPECT_NEAR(borderLengthOf(surface), 2 * width + 4, 1e-9);
}

TEST(SurfaceTessellator, FewTrianglesAreAskedForAndFewAreGiven) {
    for (const std::size_t most : {std::size_t{2}, std::size_t{10}, std::size_t{500}}) {
        const SceneSurface flat = SurfaceTessellator(most).tessellate(FlatScreen());
        EXPECT_LE(flat.triangles.size(), most);
        EXPECT_NEAR(areaOf(flat), 1, 1e-12) << most;
    }
    const SphericalScreen sphere(P3(), 2, -pi, pi, -pi / 2, pi / 2);
    const SceneSurface coarse = SurfaceTessellator(500).tessellate(sphere);
    EXPECT_LE(coarse.triangles.size(), 500U);
    EXPECT_NEAR(areaOf(coarse) / (16 * pi), 0.97, 0.02);
}

TEST(SurfaceTessellator, AMeshIsShownWithItsOwnTriangles) {
    TriangleMesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}};
    mesh.triangles = {{0, 1, 2}, {0, 2, 3}};
    const SceneSurface surface = SurfaceTessellator(PLENTY).tessellate(MeshScreen(mesh));
    EXPECT_EQ(surface.vertices, mesh.vertices);
    EXPECT_EQ(surface.triangles, mesh.triangles);
    EXPECT_THAT(surface.border, SizeIs(4));
    EXPECT_EQ(surface.trianglesOfMesh, 2U);
    EXPECT_FALSE(surface.isThinned());
    EXPECT_TRUE(SurfaceTessellator(1).tessellate(MeshScreen(mesh)).isThinned());
}

TEST(SurfaceTessellator, WhatHasNoTwoParametersHasNoSurface) {
    ScreenGeometryDouble geometry;
    geometry.mapping = [](const Point<double, 2>&, P3&, bool) -> bool { throw VeltraniException(L"none"); };
    EXPECT_THAT(SurfaceTessellator(PLENTY).tessellate(geometry).triangles, IsEmpty());
}

TEST(SurfaceTessellator, PlacesThatCannotBeHadAreHoles) {
    ScreenGeometryDouble geometry;
    geometry.mapping = [](const Point<double, 2>& st, P3& out, bool) {
        out = {st[0], 0.0, st[1]};
        return st[0] <= 0.5;
    };
    EXPECT_NEAR(areaOf(SurfaceTessellator(PLENTY).tessellate(geometry)), 0.5, 1e-12);
    geometry.mapping = [](const Point<double, 2>&, P3& out, bool) {
        out = {std::numeric_limits<double>::quiet_NaN(), 0, 0};
        return true;
    };
    const SceneSurface nowhere = SurfaceTessellator(PLENTY).tessellate(geometry);
    EXPECT_THAT(nowhere.triangles, IsEmpty());
    EXPECT_THAT(nowhere.vertices, IsEmpty());
}

}  // namespace
