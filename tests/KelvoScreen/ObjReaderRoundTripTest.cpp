#include "KelvoScreen/ObjReader.h"

#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <random>
#include <string>
#include <vector>

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Writes a mesh as OBJ text with all the freedom that the format leaves, drawn at random: spelling of numbers,
/// positive and negative indices, blanks, comments, continued lines, line ends, statements that mean nothing here, and
/// elements that stand after the faces that refer to them.
class FreeWriter {
public:
    FreeWriter(const TriangleMesh& mesh, std::uint64_t seed) : m_mesh(mesh), m_random(seed) {}

    std::string write() {
        m_text = chance(3) ? "\xEF\xBB\xBF" : "";
        m_lineEnd = std::array<const char*, 3>{"\n", "\r\n", "\r"}[upTo(2)];
        while (m_vertex < m_mesh.vertices.size() || m_texture < m_mesh.textureCoordinates.size() ||
               m_face < m_mesh.triangles.size()) {
            writeNext();
            writeNoise();
        }
        return m_text;
    }

private:
    std::size_t upTo(std::size_t n) { return m_random() % (n + 1); }
    bool chance(std::size_t oneIn) { return upTo(oneIn - 1) == 0; }

    void writeNext() {
        const std::size_t kind = upTo(2);
        if (kind == 0 && m_vertex < m_mesh.vertices.size()) {
            const P3& v = m_mesh.vertices[m_vertex++];
            statement("v", {number(v[0]), number(v[1]), number(v[2])});
            endLine();
        } else if (kind == 1 && m_texture < m_mesh.textureCoordinates.size()) {
            const P2& t = m_mesh.textureCoordinates[m_texture++];
            statement("vt", t[1] == 0 && chance(2) ? std::vector<std::string>{number(t[0])}
                                                   : std::vector<std::string>{number(t[0]), number(t[1])});
            endLine();
        } else if (kind == 2 && m_face < m_mesh.triangles.size()) {
            writeFace(m_face++);
        }
    }

    void writeFace(std::size_t face) {
        std::vector<std::string> corners;
        for (std::size_t k = 0; k < 3; ++k) {
            std::string corner = index(m_mesh.triangles[face][k], m_vertex);
            if (!m_mesh.textureTriangles.empty()) {
                corner += '/' + index(m_mesh.textureTriangles[face][k], m_texture);
            }
            corners.push_back(corner);
        }
        statement("f", corners);
        endLine();
    }

    /// Counted from 1, or back from the elements written so far where the element is among them.
    std::string index(std::size_t element, std::size_t written) {
        if (element < written && chance(2)) {
            return std::to_string(static_cast<std::ptrdiff_t>(element) - static_cast<std::ptrdiff_t>(written));
        }
        std::string result(chance(9) ? 1 : 0, '+');
        return result += std::to_string(element + 1);
    }

    std::string number(double value) {
        std::array<char, 400> text{};
        const auto format =
            std::array{std::chars_format::general, std::chars_format::scientific, std::chars_format::fixed};
        const auto end = std::to_chars(text.data(), text.data() + text.size(), value, format[upTo(2)]).ptr;
        std::string result(text.data(), end);
        if (result.starts_with("0.") && chance(2)) {
            result.erase(0, 1);
        }
        if (result[0] != '-' && chance(5)) {
            result.insert(result.begin(), '+');
        }
        return result;
    }

    void statement(const std::string& keyword, const std::vector<std::string>& words) {
        blanks(0);
        m_text += keyword;
        for (const std::string& word : words) {
            blanks(1);
            m_text += word;
        }
        blanks(0);
    }

    void blanks(std::size_t least) {
        const std::size_t count = least + (chance(10) ? upTo(3) : 0);
        for (std::size_t i = 0; i < count; ++i) {
            m_text += chance(3) ? '\t' : ' ';
        }
        if (chance(20)) {
            m_text += '\\';
            m_text += m_lineEnd;
        }
    }

    void endLine() {
        m_text += chance(9) ? "# note" : "";
        m_text += m_lineEnd;
    }

    void writeNoise() {
        if (chance(9)) {
            m_text += std::array<const char*, 5>{"", "# v 1 2", "usemtl wall", "p 1", "g \\x y"}[upTo(4)];
            m_text += m_lineEnd;
        }
    }

    const TriangleMesh& m_mesh;
    std::mt19937_64 m_random;
    std::string m_text;
    std::string m_lineEnd;
    std::size_t m_vertex = 0;
    std::size_t m_texture = 0;
    std::size_t m_face = 0;
};

TriangleMesh randomMesh(std::size_t vertices, std::size_t triangles, bool parameterised, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> coordinate(-20, 20);
    TriangleMesh mesh;
    for (std::size_t i = 0; i < vertices; ++i) {
        const double rough = static_cast<double>(random() % 100) / 8;
        mesh.vertices.push_back({coordinate(random), rough, coordinate(random) * 1e-6});
    }
    const auto any = [&] { return static_cast<std::uint32_t>(random() % vertices); };
    for (std::size_t i = 0; i < triangles; ++i) {
        mesh.triangles.push_back({any(), any(), any()});
    }
    if (parameterised) {
        for (std::size_t i = 0; i < vertices; ++i) {
            mesh.textureCoordinates.push_back({coordinate(random), static_cast<double>(random() % 3)});
        }
        for (std::size_t i = 0; i < triangles; ++i) {
            mesh.textureTriangles.push_back({any(), any(), any()});
        }
    }
    return mesh;
}

void expectSame(const TriangleMesh& mesh, const TriangleMesh& expected) {
    EXPECT_TRUE(mesh.vertices == expected.vertices);
    EXPECT_TRUE(mesh.triangles == expected.triangles);
    EXPECT_TRUE(mesh.textureCoordinates == expected.textureCoordinates);
    EXPECT_TRUE(mesh.textureTriangles == expected.textureTriangles);
}

TEST(ObjReaderRoundTrip, ReadsBackWhatWasWrittenHoweverItWasSpelt) {
    for (std::uint64_t seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE(seed);
        const TriangleMesh mesh = randomMesh(3 + seed % 40, 1 + seed % 60, seed % 2 == 0, seed);
        expectSame(ObjReader::read(FreeWriter(mesh, seed).write()), mesh);
    }
}

TEST(ObjReaderRoundTrip, ReadsALargeMeshWholeWhoseSizeWasOnlyEstimated) {
    for (const bool parameterised : {false, true}) {
        const TriangleMesh mesh = randomMesh(40'000, 80'000, parameterised, 42);
        const std::string text = FreeWriter(mesh, 42).write();
        ASSERT_GT(text.size(), 1'000'000U);
        expectSame(ObjReader::read(text), mesh);
    }
}

}  // namespace
