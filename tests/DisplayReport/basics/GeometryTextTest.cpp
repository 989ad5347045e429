#include "DisplayReport/basics/GeometryText.h"

#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/MeshScreen.h"

#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using P3 = Point<double, 3>;

TriangleMesh oneTriangle() {
    TriangleMesh mesh;
    // The last vertex belongs to no triangle: it must not count.
    mesh.vertices = {{0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}, {0.0, 0.0, 3.0}, {90.0, 90.0, 90.0}};
    mesh.triangles = {{0, 1, 2}};
    return mesh;
}

TEST(GeometryText, TellsTrianglesAndTextureCoordinates) {
    TriangleMesh mesh = oneTriangle();
    EXPECT_EQ(geometryText(MeshScreen(mesh)), "1 triangle without texture coordinates");
    mesh.textureCoordinates = {{0.0, 0.0}, {1.0, 0.0}, {0.0, 1.0}};
    mesh.triangles.push_back({0, 2, 1});
    mesh.textureTriangles = {{0, 1, 2}, {0, 2, 1}};
    EXPECT_EQ(geometryText(MeshScreen(mesh)), "2 triangles with texture coordinates");
    EXPECT_EQ(geometryText(FlatScreen()), "given by its numbers");
}

TEST(GeometryText, TheExtentOfAMeshIsThatOfItsTriangles) {
    const Extent extent = extentOf(MeshScreen(oneTriangle()));
    EXPECT_EQ(extent.minimum(), (P3{0.0, 0.0, 0.0}));
    EXPECT_EQ(extent.maximum(), (P3{2.0, 0.0, 3.0}));
}

TEST(GeometryText, TheExtentOfANumericShapeIsSampled) {
    const Extent extent = extentOf(FlatScreen());
    EXPECT_EQ(extent.minimum(), (P3{0.0, 0.0, 0.0}));
    EXPECT_EQ(extent.maximum(), (P3{1.0, 0.0, 1.0}));
}

TEST(GeometryText, TellsWhatKeepsASurfaceFromBeingAddressed) {
    TriangleMesh mesh = oneTriangle();
    EXPECT_EQ(missingParameters(MeshScreen(mesh)),
              "The mesh has no 2D coordinates: export it with a texture coordinate at every corner");
    mesh.textureCoordinates = {{0.0, 0.0}, {1.0, 0.0}, {0.0, 1.0}};
    mesh.textureTriangles = {{0, 1, 2}};
    EXPECT_EQ(missingParameters(MeshScreen(mesh)), "");
    EXPECT_EQ(missingParameters(FlatScreen()), "");
}

TEST(GeometryText, TellsASize) {
    Extent extent;
    EXPECT_EQ(sizeText(extent, "m"), "empty");
    extent.add({0.0, 0.0, 0.0});
    extent.add({6.0, 0.0, 2.5});
    EXPECT_EQ(sizeText(extent, "m"), "6 x 0 x 2.5 m (right x forward x up)");
    EXPECT_EQ(sizeText(extent, ""), "6 x 0 x 2.5 (right x forward x up)");
}

}  // namespace
