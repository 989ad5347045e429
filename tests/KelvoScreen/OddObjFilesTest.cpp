#include "KelvoScreen/OBJScreen.h"
#include "KelvoScreen/ObjLoadException.h"
#include "support/TestPaths.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

/// Real files, named by the variable SM_EXTRA_DATA: those of other programs, odd ones and broken ones.
namespace {

using P3 = Point<double, 3>;

class OddObjFiles : public testing::Test {
protected:
    void SetUp() override {
        if (extraData().empty()) {
            GTEST_SKIP() << "no folder with further data is configured";
        }
    }

    static std::string textOf(const std::string& name) {
        std::ifstream file(std::filesystem::path(extraData()) / name, std::ios::binary);
        EXPECT_TRUE(file.is_open()) << name;
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

    static void load(OBJScreen& screen, const std::string& name) {
        std::istringstream stream(textOf(name));
        screen.deserialize(stream);
    }

    static std::string faultOf(const std::string& name) {
        OBJScreen screen(L"Z", L"Y", 1.0F);
        try {
            load(screen, name);
        } catch (const ObjLoadException& fault) {
            return fault.what();
        }
        return "";
    }

    /// Lines that start with a keyword, counted without the reader.
    static std::size_t countLines(const std::string& name, const std::string& keyword) {
        std::istringstream text(textOf(name));
        std::size_t count = 0;
        for (std::string line; std::getline(text, line);) {
            count += line.starts_with(keyword + ' ') ? 1 : 0;
        }
        return count;
    }
};

/// The volume that the triangles enclose: independent of where the origin is only when they close.
double volume(const TriangleMesh& mesh, const P3& origin) {
    double sum = 0;
    for (const auto& [a, b, c] : mesh.triangles) {
        sum += dot(mesh.vertices[a] - origin, cross(mesh.vertices[b] - origin, mesh.vertices[c] - origin));
    }
    return sum / 6;
}

TEST_F(OddObjFiles, ReadsAMeshWithTextureCoordinatesWhole) {
    OBJScreen screen(L"Y", L"Z", 1.0F);
    load(screen, "spot.obj");
    EXPECT_EQ(screen.mesh().triangles.size(), 5856U);
    EXPECT_EQ(screen.mesh().vertices.size(), countLines("spot.obj", "v"));
    EXPECT_EQ(screen.mesh().textureCoordinates.size(), countLines("spot.obj", "vt"));
    EXPECT_TRUE(screen.isValid());
    EXPECT_TRUE(screen.isParameterised());
    EXPECT_GT(volume(screen.mesh(), {}), 0);
    EXPECT_NEAR(volume(screen.mesh(), {}), volume(screen.mesh(), {3.0, 4.0, 5.0}), 1e-12);
}

TEST_F(OddObjFiles, ReadsAMeshWithoutTextureCoordinatesWhole) {
    OBJScreen screen(L"Y", L"Z", 1000.0F);
    load(screen, "stanford-bunny.obj");
    EXPECT_EQ(screen.mesh().triangles.size(), 69451U);
    EXPECT_EQ(screen.mesh().vertices.size(), countLines("stanford-bunny.obj", "v"));
    EXPECT_TRUE(screen.isValid());
    EXPECT_FALSE(screen.isParameterised());
}

TEST_F(OddObjFiles, ReadsACubeOfQuadrilateralsWithVertexColours) {
    OBJScreen screen(L"Z", L"Y", 1.0F);
    load(screen, "odd-obj/cube-vertexcol.obj");
    EXPECT_EQ(screen.mesh().triangles.size(), 12U);
    EXPECT_DOUBLE_EQ(volume(screen.mesh(), {}), 8);
    EXPECT_DOUBLE_EQ(volume(screen.mesh(), {1.0, 2.0, 3.0}), 8);
}

TEST_F(OddObjFiles, ReadsAMeshWhoseLastFaceAloneHasNoTextureCoordinates) {
    OBJScreen screen(L"Z", L"Y", 1.0F);
    load(screen, "odd-obj/issue-161-inconsistent-f.obj");
    EXPECT_EQ(screen.mesh().triangles.size(), 12U);
    EXPECT_FALSE(screen.isParameterised());
    EXPECT_TRUE(screen.isValid());
}

/// Unit squares far from the origin: every triangle must have an area of one half.
TEST_F(OddObjFiles, CutsUnitSquaresFarFromTheOriginIntoHalves) {
    OBJScreen screen(L"Z", L"Y", 1.0F);
    load(screen, "odd-obj/issue-295-trianguation-failure.obj");
    const TriangleMesh& mesh = screen.mesh();
    EXPECT_EQ(mesh.triangles.size(), 28U);
    EXPECT_TRUE(screen.isParameterised());
    for (const auto& [a, b, c] : mesh.triangles) {
        EXPECT_DOUBLE_EQ(norm(cross(mesh.vertices[b] - mesh.vertices[a], mesh.vertices[c] - mesh.vertices[a])), 1);
    }
    EXPECT_DOUBLE_EQ(volume(mesh, mesh.vertices[0]), 3);
}

TEST_F(OddObjFiles, ReadsNumbersThatStartWithTheDecimalPoint) {
    OBJScreen screen(L"Z", L"Y", 1.0F);
    load(screen, "odd-obj/leading-decimal-dot-issue-201.obj");
    EXPECT_EQ(screen.mesh().vertices,
              (std::vector<P3>{{0.08, -70.0, -5.532511}, {0.575869, -0.666304, 5.896140}, {0.940448, 1.0, -1.971128}}));
    EXPECT_EQ(screen.mesh().triangles.size(), 1U);
}

TEST_F(OddObjFiles, PointsAndLinesAloneMakeNoTriangles) {
    for (const std::string name : {"odd-obj/line-prim.obj", "odd-obj/points-prim.obj"}) {
        OBJScreen screen(L"Z", L"Y", 1.0F);
        load(screen, name);
        EXPECT_EQ(screen.mesh().vertices.size(), 8U);
        EXPECT_TRUE(screen.mesh().triangles.empty());
        EXPECT_FALSE(screen.isValid());
    }
}

TEST_F(OddObjFiles, RefusesBrokenFilesWithTheLineOfTheFault) {
    const std::map<std::string, std::string> faults = {
        {"odd-obj/invalid-face-definition.obj",
         "line 15: found \"f 1\", expected a face of at least 3 corners; give its corners on one line, or remove it"},
        {"odd-obj/invalid-relative-texture-index.obj",
         "line 2: found \"1/-2\", expected a texture coordinate index no further back than the 1 before this line; "
         "correct the index, or put what it refers to before this line"},
        {"odd-obj/invalid-relative-vertex-index.obj",
         "line 1: found \"-4\", expected a vertex index no further back than the 0 before this line; correct the "
         "index, or put what it refers to before this line"},
        {"odd-obj/issue-140-zero-face-idx.obj",
         "line 16: found \"0/0/0\", expected a vertex index other than 0: the first one is 1; correct the index; one "
         "that counts from 0 is one too small"}};
    for (const auto& [name, fault] : faults) {
        EXPECT_EQ(faultOf(name), fault) << name;
    }
}

/// Whatever else lies in the folder is read or refused with a line.
TEST_F(OddObjFiles, EveryFileIsReadOrRefused) {
    int seen = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(extraData())) {
        if (entry.path().extension() == ".obj") {
            ++seen;
            const std::string name = std::filesystem::relative(entry.path(), extraData()).string();
            const std::string fault = faultOf(name);
            EXPECT_TRUE(fault.empty() || fault.starts_with("line ")) << name << ": " << fault;
        }
    }
    EXPECT_GE(seen, 12);
}

}  // namespace
