#include "KelvoScreen/ObjReader.h"

#include "KelvoScreen/ObjLoadException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;
using Triangles = std::vector<TriangleMesh::Triangle>;

const std::string TRIANGLE = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
const std::string SQUARE = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";
const std::string BYTE_ORDER_MARK = "\xEF\xBB\xBF";

const std::vector<P3> TRIANGLE_VERTICES = {{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}};

/// The mesh of a text that stands in a block of exactly its size, so that the address sanitizer sees a byte too many.
TriangleMesh read(const std::string& text) {
    const std::vector<char> exact(text.begin(), text.end());
    return ObjReader::read({exact.data(), exact.size()});
}

void expectOneTriangle(const std::string& text) {
    SCOPED_TRACE(text);
    const TriangleMesh mesh = read(text);
    EXPECT_EQ(mesh.vertices, TRIANGLE_VERTICES);
    EXPECT_EQ(mesh.triangles, (Triangles{{0, 1, 2}}));
}

TEST(ObjReader, ReadsVerticesAndAFace) {
    expectOneTriangle(TRIANGLE + "f 1 2 3\n");
    const TriangleMesh mesh = read(TRIANGLE + "f 1 2 3\n");
    EXPECT_TRUE(mesh.textureCoordinates.empty());
    EXPECT_TRUE(mesh.textureTriangles.empty());
}

TEST(ObjReader, ATextWithoutFacesIsAMeshWithoutTriangles) {
    EXPECT_TRUE(read("").vertices.empty());
    EXPECT_TRUE(read("\n\n# nothing\n").triangles.empty());
    EXPECT_TRUE(ObjReader::read({}).triangles.empty());
    const TriangleMesh points = read(TRIANGLE + "vt 0 0\np 1 2 3\nl 1 2\n");
    EXPECT_EQ(points.vertices, TRIANGLE_VERTICES);
    EXPECT_TRUE(points.triangles.empty());
    EXPECT_TRUE(points.textureCoordinates.empty());
}

TEST(ObjReader, ReadsTextureCoordinatesByCorner) {
    const TriangleMesh mesh = read(SQUARE + "vt 0 0\nvt 1 0.5\nvt 0.25\nvt .5 .75 9\nf 1/2 2/1 3/3\nf 1/4 3/3 4/2\n");
    EXPECT_EQ(mesh.textureCoordinates, (std::vector<P2>{{0.0, 0.0}, {1.0, 0.5}, {0.25, 0.0}, {0.5, 0.75}}));
    EXPECT_EQ(mesh.triangles, (Triangles{{0, 1, 2}, {0, 2, 3}}));
    EXPECT_EQ(mesh.textureTriangles, (Triangles{{1, 0, 2}, {3, 2, 1}}));
}

TEST(ObjReader, IsParameterisedOnlyWhenEveryCornerHasATextureCoordinate) {
    const std::string coordinates = SQUARE + "vt 0 0\nvt 1 0\nvt 1 1\nvn 0 0 1\n";
    for (const std::string faces : {"f 1/1 2/2 3/3\nf 1 3 4\n", "f 1 3 4\nf 1/1 2/2 3/3\n",
                                    "f 1/1 2/2 3\nf 1/1 3/3 4/2\n", "f 1/1/1 2/2/1 3//1\n", "f 1/1 2/2 3/3 4\n"}) {
        SCOPED_TRACE(faces);
        const TriangleMesh mesh = read(coordinates + faces);
        EXPECT_FALSE(mesh.triangles.empty());
        EXPECT_TRUE(mesh.textureCoordinates.empty());
        EXPECT_TRUE(mesh.textureTriangles.empty());
    }
    EXPECT_EQ(read(coordinates + "f 1/1 2/2/1 3/3\n").textureTriangles, (Triangles{{0, 1, 2}}));
}

TEST(ObjReader, ReadsAllFormsOfCorners) {
    const std::string elements = TRIANGLE + "vt 0 0\nvt 1 0\nvt 0 1\nvn 0 0 1\n";
    for (const std::string face : {"f 1 2 3", "f 1/1 2/2 3/3", "f 1//1 2//1 3//1", "f 1/1/1 2/2/1 3/3/1", "f -3 -2 -1",
                                   "f -3/-3/-1 -2/-2/-1 -1/-1/-1", "f +1 +2/+2 003", "f\t1 \t2\t3\t"}) {
        expectOneTriangle(elements + face);
    }
}

TEST(ObjReader, NegativeIndicesCountBackFromTheirLine) {
    const TriangleMesh mesh = read(TRIANGLE + "vt 0 0\nf -3/-1 -2/-1 -1/-1\nv 5 5 5\nvt 1 1\nf -2/-1 -1/-2 -4/-1\n");
    EXPECT_EQ(mesh.triangles, (Triangles{{0, 1, 2}, {2, 3, 0}}));
    EXPECT_EQ(mesh.textureTriangles, (Triangles{{0, 0, 0}, {1, 0, 1}}));
}

TEST(ObjReader, AFaceMayStandBeforeItsVertices) {
    expectOneTriangle("f 1 2 3\n" + TRIANGLE);
    const TriangleMesh mesh = read("f 1/1 2/2 3/1 4/2 5/2\nvt 0 0\nvt 1 1\n" + SQUARE + "v -1 0.5 0\n");
    EXPECT_EQ(mesh.triangles.size(), 3U);
    EXPECT_EQ(mesh.textureTriangles.size(), 3U);
}

TEST(ObjReader, ReadsWeightsAndColoursAndDropsThem) {
    expectOneTriangle("v 0 0 0 1\nv 1 0 0 .5 .5 .5\nv 0 1 0 1 .1 .2 .3\nf 1 2 3\n");
}

TEST(ObjReader, ReadsNumbersExactly) {
    const TriangleMesh mesh =
        read("v 0.1 -0.30000000000000004 1e-3\nv +2.5E2 .8e-1 -.7e+2\nv 1e-400 5. 123456789012345678\n");
    EXPECT_EQ(
        mesh.vertices,
        (std::vector<P3>{{0.1, -0.30000000000000004, 1e-3}, {250.0, 0.08, -70.0}, {0.0, 5.0, 123456789012345678.0}}));
}

TEST(ObjReader, PassesOverOtherStatements) {
    expectOneTriangle(
        "mtllib a.mtl\no name\ng a b\ns off\nusemtl gl\xC3\xA4nzend\nvp 0.5 nonsense\ncstype bezier\nF 1 2\nVN x\nvx "
        "y\n"
        "V 1\nfo 1 2 3\n" +
        TRIANGLE + "l 1 2 99\np 77\nf 1 2 3\nend\ncurv 0 1 \\\n 2 3\n");
}

TEST(ObjReader, PassesOverCommentsAndBlanks) {
    expectOneTriangle("# v 1 2 3\n\n \t \n#\n  v 0 0 0 # first\n\tv 1 0 0#second\nv\t0  1\t0 \nf 1 2 3#\n#f 9 9 9");
}

TEST(ObjReader, ReadsEveryKindOfLineEnd) {
    const std::string text = "# comment\n" + TRIANGLE + "\nf 1 2 3";
    for (const std::string end : {"\n", "\r\n", "\r"}) {
        std::string converted;
        for (const char c : text) {
            converted += c == '\n' ? end : std::string(1, c);
        }
        expectOneTriangle(converted);
        expectOneTriangle(converted + end);
    }
}

TEST(ObjReader, PassesOverAByteOrderMark) {
    expectOneTriangle(BYTE_ORDER_MARK + TRIANGLE + "f 1 2 3");
    EXPECT_TRUE(read(BYTE_ORDER_MARK).vertices.empty());
}

TEST(ObjReader, ContinuesLinesAfterABackslash) {
    expectOneTriangle("v 0 0 0\nv 1 \\\n 0 0\nv 0\\\n1\\\r\n0\nf \\\n1 2 \\\n\\\n 3 \\\n\n");
}

TEST(ObjReader, ContinuesOtherStatementsButNoComments) {
    expectOneTriangle("g a \\\nv 9 9 9\n# comment \\\n" + TRIANGLE + "f 1 2 3 # end \\\n");
    expectOneTriangle(TRIANGLE + "f 1 2 3\\");
    expectOneTriangle("mtllib C:\\meshes\\wall.mtl\n" + TRIANGLE + "f 1 2 3");
}

TEST(ObjReader, CutsPolygonsInPlace) {
    const TriangleMesh mesh =
        read(SQUARE + "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nf 1/4 2/3 3/2\nf 1/1 2/2 3/3 4/4\nf 2/1 3/1 4/1\n");
    EXPECT_EQ(mesh.triangles, (Triangles{{0, 1, 2}, {0, 1, 2}, {0, 2, 3}, {1, 2, 3}}));
    EXPECT_EQ(mesh.textureTriangles, (Triangles{{3, 2, 1}, {0, 1, 2}, {0, 2, 3}, {0, 0, 0}}));
}

TEST(ObjReader, CutsAConcavePolygonInsideItsOutline) {
    // An L of area 3; the hollow corner is the fourth.
    const TriangleMesh mesh = read("v 0 0 0\nv 2 0 0\nv 2 1 0\nv 1 1 0\nv 1 2 0\nv 0 2 0\nf 1 2 3 4 5 6\n");
    ASSERT_EQ(mesh.triangles.size(), 4U);
    double area = 0;
    for (const auto& [a, b, c] : mesh.triangles) {
        const P3 doubled = cross(mesh.vertices[b] - mesh.vertices[a], mesh.vertices[c] - mesh.vertices[a]);
        EXPECT_GT(doubled[2], 0);
        area += doubled[2] / 2;
    }
    EXPECT_DOUBLE_EQ(area, 3);
}

TEST(ObjReader, TextureCoordinatesStayWithTheirCornersThroughACut) {
    const std::string text =
        "v 0 0 0\nv 2 0 0\nv 2 1 0\nv 1 1 0\nv 1 2 0\nv 0 2 0\nvt 9 9\n"
        "vt 0 0\nvt 2 0\nvt 2 1\nvt 1 1\nvt 1 2\nvt 0 2\nf 2/3 3/4 4/5 5/6 6/7 1/2\nf 5/6 4/5 3/4 1/2\n";
    const TriangleMesh mesh = read(text);
    ASSERT_EQ(mesh.triangles.size(), 6U);
    ASSERT_EQ(mesh.textureTriangles.size(), 6U);
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_EQ(mesh.textureTriangles[i][k], mesh.triangles[i][k] + 1);
        }
    }
    // Neither of the two faces is the fan around its first corner.
    EXPECT_NE((Triangles{mesh.triangles.begin(), mesh.triangles.begin() + 2}), (Triangles{{1, 2, 3}, {1, 3, 4}}));
    EXPECT_EQ((Triangles{mesh.triangles.begin() + 4, mesh.triangles.end()}), (Triangles{{4, 3, 0}, {3, 2, 0}}));
}

TEST(ObjReader, KeepsFacesWithoutArea) {
    EXPECT_EQ(read(TRIANGLE + "f 1 1 1\nf 1 2 1\n").triangles, (Triangles{{0, 0, 0}, {0, 1, 0}}));
}

}  // namespace
