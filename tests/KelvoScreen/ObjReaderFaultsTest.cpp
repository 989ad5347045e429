#include "KelvoScreen/ObjLoadException.h"
#include "KelvoScreen/ObjReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::HasSubstr;

const std::string SQUARE = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";

/// Valid, with every kind of statement; the face stands in line 9.
const std::string FULL =
    "# wall\nv 0 0 0\nv 1 0 0 1\nv 1 1 0 0.5 0.5 0.5\nvt 0 0\nvt 1 0 0\nvt 1\nvn 0 0 1\nf 1/1/1 2/2/1 3/3/1\n";

/// The fault in a text from a block of exactly its size, so that the address sanitizer sees a byte too many.
std::optional<ObjLoadException> faultOf(const std::string& text) {
    const std::vector<char> exact(text.begin(), text.end());
    try {
        (void)ObjReader::read({exact.data(), exact.size()});
    } catch (const ObjLoadException& fault) {
        return fault;
    }
    return std::nullopt;
}

/// What follows each text of what is expected.
std::string remedyFor(const std::string& expected) {
    static const std::vector<std::pair<std::string, std::string>> REMEDIES{
        {"a finite number", "write it as in -1.25 or 1e-3"},
        {"a vertex of", "give x, y and z, with or without a weight and a colour"},
        {"a texture coordinate of", "give s and t"},
        {"a normal of", "give x, y and z"},
        {"a face of at least 3", "give its corners on one line, or remove it"},
        {"a face of at most", "cut it into smaller faces where the mesh was made"},
        {"faces that can be cut", "cut it into smaller faces where the mesh was made"},
        {"a corner such as", "give the number of a vertex, with or without those of a texture coordinate and a normal"},
        {" index other than 0", "correct the index; one that counts from 0 is one too small"},
        {" index no further back", "correct the index, or put what it refers to before this line"},
        {" index no greater than", "correct the index, or export the file again if it is cut off"},
        {" index up to", "correct the index"},
        {"text without NUL bytes", "save the mesh as an OBJ file of text"}};
    for (const auto& [part, remedy] : REMEDIES) {
        if (expected.find(part) != std::string::npos) {
            return remedy;
        }
    }
    return "no remedy is known for this";
}

void expectFault(const std::string& text, std::size_t line, const std::string& found, const std::string& expected) {
    SCOPED_TRACE(text.substr(0, 200));
    const auto fault = faultOf(text);
    ASSERT_TRUE(fault.has_value());
    EXPECT_EQ(fault->line, line);
    EXPECT_EQ(fault->found, found);
    EXPECT_EQ(fault->expected, expected);
    EXPECT_EQ(std::string(fault->what()), "line " + std::to_string(line) + ": found \"" + found + "\", expected " +
                                              expected + "; " + remedyFor(expected));
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
    return text.replace(text.find(what), what.size(), by);
}

TEST(ObjReaderFaults, TheTextThatTheFaultsAreMadeFromIsRight) {
    EXPECT_FALSE(faultOf(FULL).has_value());
}

TEST(ObjReaderFaults, RefusesUnreadableAndNonFiniteNumbers) {
    const std::string expected = "a finite number with a decimal point";
    for (const std::string word :
         {"x",    "nan", "-nan", "inf", "-inf", "Infinity", "0,5", "1e999", "-1e999", "1.2.3",
          "0x10", "1e",  "--1",  "+-1", "1f",   "1/2",      ".",   "-",     "1;",     "\"1\""}) {
        expectFault(replaced(FULL, "v 1 0 0 1", "v 1 " + word + " 0 1"), 3, word, expected);
        expectFault(replaced(FULL, "v 1 0 0 1", "v 1 0 0 " + word), 3, word, expected);
        expectFault(replaced(FULL, "0.5 0.5 0.5", "0.5 0.5 " + word), 4, word, expected);
        expectFault(replaced(FULL, "vt 1 0 0", "vt " + word), 6, word, expected);
        expectFault(replaced(FULL, "vt 1 0 0", "vt 1 0 " + word), 6, word, expected);
        expectFault(replaced(FULL, "vn 0 0 1", "vn 0 0 " + word), 8, word, expected);
    }
}

TEST(ObjReaderFaults, RefusesAWrongCountOfNumbers) {
    const std::string vertex = "a vertex of 3, 4, 6 or 7 numbers";
    for (const std::string line : {"v", "v 1", "v 1 2", "v 1 2 3 4 5", "v 1 2 3 4 5 6 7 8", "v 1 2 3 4 5 6 7 8 9"}) {
        expectFault(replaced(FULL, "v 1 0 0 1", line), 3, line, vertex);
    }
    for (const std::string line : {"vt", "vt 1 2 3 4"}) {
        expectFault(replaced(FULL, "vt 1 0 0", line), 6, line, "a texture coordinate of 1, 2 or 3 numbers");
    }
    for (const std::string line : {"vn", "vn 1 2", "vn 1 2 3 4"}) {
        expectFault(replaced(FULL, "vn 0 0 1", line), 8, line, "a normal of 3 numbers");
    }
}

TEST(ObjReaderFaults, RefusesFacesBelowThreeCorners) {
    for (const std::string line : {"f", "f 1", "f 1/1 2/2"}) {
        expectFault(replaced(FULL, "f 1/1/1 2/2/1 3/3/1", line), 9, line, "a face of at least 3 corners");
    }
}

TEST(ObjReaderFaults, RefusesUnreadableCorners) {
    const std::string expected = "a corner such as 1, 1/1, 1//1 or 1/1/1";
    for (const std::string word : {"x",   "/",   "//",  "1/", "1//", "1/1/", "1/1/1/", "1/1/1/1", "/1", "//1", "1///1",
                                   "1.0", "1,2", "1e0", "-",  "+",   "1-1",  "1/x",    "1/1/x",   "1x", "--1"}) {
        expectFault(replaced(FULL, "2/2/1", word), 9, word, expected);
    }
    expectFault(replaced(FULL, "2/2/1", "1\\2"), 9, "\\2", expected);
}

TEST(ObjReaderFaults, RefusesTheIndexZero) {
    expectFault(replaced(FULL, "2/2/1", "0/2/1"), 9, "0/2/1", "a vertex index other than 0: the first one is 1");
    expectFault(replaced(FULL, "2/2/1", "2/0/1"), 9, "2/0/1",
                "a texture coordinate index other than 0: the first one is 1");
    expectFault(replaced(FULL, "2/2/1", "2//0"), 9, "2//0", "a normal index other than 0: the first one is 1");
    expectFault(replaced(FULL, "2/2/1", "-0"), 9, "-0", "a vertex index other than 0: the first one is 1");
}

TEST(ObjReaderFaults, RefusesIndicesPastTheLastElement) {
    expectFault(replaced(FULL, "2/2/1", "4/2/1"), 9, "4", "a vertex index no greater than 3, their number");
    expectFault(replaced(FULL, "2/2/1", "2/4/1"), 9, "4", "a texture coordinate index no greater than 3, their number");
    expectFault(replaced(FULL, "2/2/1", "2//2"), 9, "2", "a normal index no greater than 1, their number");
}

TEST(ObjReaderFaults, NamesTheFirstLineWithAnIndexPastTheLastElement) {
    expectFault("f 1 2 4\nf 3 2 6\nf 1 5 2\nf 9 8 7\nf 1 2 3\n" + SQUARE, 2, "6",
                "a vertex index no greater than 4, their number");
    expectFault("f 5 2 1\nf 3 2 6\nf 1 5 2\n" + SQUARE, 1, "5", "a vertex index no greater than 4, their number");
}

TEST(ObjReaderFaults, RefusesIndicesThatReachBackBeforeTheFirstElement) {
    expectFault("f -4 -3 -2", 1, "-4", "a vertex index no further back than the 0 before this line");
    expectFault(SQUARE + "f -1 -2 -5\nv 9 9 9\n", 5, "-5",
                "a vertex index no further back than the 4 before this line");
    expectFault("vt 0 0\nf 1/-1 1/-1 1/-2", 2, "1/-2",
                "a texture coordinate index no further back than the 1 before this line");
    expectFault(replaced(FULL, "2/2/1", "2//-2"), 9, "2//-2",
                "a normal index no further back than the 1 before this line");
}

TEST(ObjReaderFaults, RefusesIndicesBeyondAnyInteger) {
    const std::string expected = "a vertex index up to 4294967296";
    for (const std::string index :
         {"4294967297", "9223372036854775808", "18446744073709551617", "340282366920938463463374607431768211457"}) {
        expectFault(replaced(FULL, "2/2/1", index), 9, index, expected);
        expectFault(replaced(FULL, "2/2/1", "-" + index), 9, "-" + index,
                    "a vertex index no further back than the 3 before this line");
    }
    expectFault(replaced(FULL, "2/2/1", "4294967296"), 9, "4294967296",
                "a vertex index no greater than 3, their number");
    expectFault(replaced(FULL, "2/2/1", "4294967295"), 9, "4294967295",
                "a vertex index no greater than 3, their number");
}

TEST(ObjReaderFaults, CountsLinesAsAnEditorDoes) {
    const std::string expected = "a finite number with a decimal point";
    expectFault("v 0 0 0\r\nv 0 0 x\r\n", 2, "x", expected);
    expectFault("v 0 0 0\rv 0 0 x\r", 2, "x", expected);
    expectFault("\n\n\r\n\rv 0 0 x", 5, "x", expected);
    expectFault("v 0 \\\n 0 \\\r\n x\n", 3, "x", expected);
    expectFault("g a \\\n b\n# c \\\nv 0 0 x\n", 4, "x", expected);
    expectFault("v 0 0 0\nv 0 \\\n 0\n", 2, "v 0 \\", "a vertex of 3, 4, 6 or 7 numbers");
    expectFault(SQUARE + "\nf 1 \\\n 2 \\\n 9\n", 8, "9", "a vertex index no greater than 4, their number");
}

TEST(ObjReaderFaults, QuotesWhatCannotBePrintedAndCutsWhatIsLong) {
    const std::string expected = "a finite number with a decimal point";
    expectFault("v 0 0 \xEF\xBC\x91\n", 1, "\\xEF\\xBC\\x91", expected);
    expectFault("v 0 0 1\x01\x7F\n", 1, "1\\x01\\x7F", expected);
    expectFault("v 0 0 " + std::string(100'000, 'x'), 1, std::string(60, 'x') + "...", expected);
}

TEST(ObjReaderFaults, RefusesWhatIsNoText) {
    const std::string expected = "text without NUL bytes";
    const std::string nul(1, '\0');
    expectFault(nul, 1, "\\x00", expected);
    expectFault(SQUARE + "f 1 2 3\nusemtl a" + nul + "b\n", 6, "\\x00", expected);
    expectFault("# a" + nul, 1, "\\x00", expected);
    expectFault("v" + nul + " 1 2 3", 1, "\\x00", expected);
    expectFault("v 1 2 3" + nul, 1, "3\\x00", "a finite number with a decimal point");
    expectFault("\xFF\xFEv" + nul + " " + nul + "0" + nul, 1, "\\x00", expected);
    std::mt19937 random(5);
    std::string rubbish;
    for (int i = 0; i < 10'000; ++i) {
        rubbish += static_cast<char>(random());
    }
    EXPECT_TRUE(faultOf(rubbish).has_value());
}

TEST(ObjReaderFaults, RefusesFacesOfTooManyCorners) {
    std::string face = SQUARE + "f";
    for (std::size_t i = 0; i < ObjReader::MAX_FACE_CORNERS; ++i) {
        face += " 1";
    }
    EXPECT_FALSE(faultOf(face).has_value());
    const auto fault = faultOf(face + " 1");
    ASSERT_TRUE(fault.has_value());
    EXPECT_EQ(fault->line, 5U);
    EXPECT_EQ(fault->expected, "a face of at most 1000000 corners");
    EXPECT_EQ(fault->remedy, remedyFor(fault->expected));
}

/// A comb of so many teeth that cutting it would take longer than a test may.
TEST(ObjReaderFaults, RefusesFacesThatWouldTakeForever) {
    constexpr int TEETH = 200'000;
    std::string text = "v 0 1 0\n";
    std::string face = "f 1";
    for (int i = 0; i < TEETH; ++i) {
        text += "v " + std::to_string(i + 1) + " 1 0\nv " + std::to_string(i + 1) + ".5 0.001 0\n";
    }
    text += "v 200001 0 0\nv 0 0 0\n";
    for (int i = 2 * TEETH + 3; i > 1; --i) {
        face += ' ' + std::to_string(i);
    }
    const auto fault = faultOf(text + "\n\n" + face);
    ASSERT_TRUE(fault.has_value());
    EXPECT_EQ(fault->line, 2U * TEETH + 6U);
    EXPECT_EQ(fault->found, "a face of 400003 corners");
    EXPECT_EQ(fault->remedy, remedyFor(fault->expected));
}

TEST(ObjReaderFaults, EveryPrefixIsReadOrRefusedWithALineOfItsOwn) {
    const std::string text = "\xEF\xBB\xBF" + FULL + "f -1 \\\n -2//-1 1/2/1 2 # quad\r\nusemtl a\rl 1 2\n";
    int read = 0;
    int refused = 0;
    for (std::size_t length = 0; length <= text.size(); ++length) {
        const std::string prefix = text.substr(0, length);
        if (const auto fault = faultOf(prefix)) {
            ++refused;
            EXPECT_GE(fault->line, 1U);
            EXPECT_LE(fault->line, 13U);
            EXPECT_THAT(fault->what(), HasSubstr(fault->expected));
            EXPECT_EQ(fault->remedy, remedyFor(fault->expected));
        } else {
            ++read;
        }
    }
    EXPECT_GT(read, 40);
    EXPECT_GT(refused, 40);
}

/// What every mesh that was read must satisfy, whatever the text.
void expectConsistent(const TriangleMesh& mesh) {
    EXPECT_TRUE(mesh.textureTriangles.empty() || mesh.textureTriangles.size() == mesh.triangles.size());
    for (const auto& triangle : mesh.triangles) {
        for (const std::uint32_t corner : triangle) {
            ASSERT_LT(corner, mesh.vertices.size());
        }
    }
    for (const auto& triangle : mesh.textureTriangles) {
        for (const std::uint32_t corner : triangle) {
            ASSERT_LT(corner, mesh.textureCoordinates.size());
        }
    }
    for (const auto& vertex : mesh.vertices) {
        EXPECT_TRUE(std::isfinite(vertex[0]) && std::isfinite(vertex[1]) && std::isfinite(vertex[2]));
    }
}

TEST(ObjReaderFaults, ChangingAnyByteLeadsToAMeshOrToAFault) {
    std::string text = FULL + "f -1 -2/1 -3/-1/-1 \\\n 1\n";
    int read = 0;
    int refused = 0;
    for (char& place : text) {
        const char original = place;
        for (int byte = 0; byte < 256; ++byte) {
            place = static_cast<char>(byte);
            try {
                expectConsistent(ObjReader::read(text));
                ++read;
            } catch (const ObjLoadException& fault) {
                ++refused;
                EXPECT_GE(fault.line, 1U);
                EXPECT_LE(fault.line, 12U);
            }
        }
        place = original;
    }
    EXPECT_GT(read, 1000);
    EXPECT_GT(refused, 1000);
}

}  // namespace
