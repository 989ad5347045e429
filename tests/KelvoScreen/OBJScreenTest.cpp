#include "KelvoScreen/OBJScreen.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/ObjLoadException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;
using P3 = Point<double, 3>;

const std::vector<std::wstring> AXES = {L"X", L"-X", L"Y", L"-Y", L"Z", L"-Z"};

const std::string TRIANGLE = "v 1 2 3\nv 4 2 3\nv 1 5 3\nf 1 2 3\n";
const std::string SQUARE = "v 0 0 0\nv 1 0 0\nv 1 0 1\nv 0 0 1\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nf 1/1 2/2 3/3 4/4\n";

/// The direction that the name of an axis stands for, by its letters.
P3 direction(const std::wstring& name) {
    P3 result;
    result[static_cast<std::size_t>(name.back() - L'X')] = name.size() == 2 ? -1 : 1;
    return result;
}

P3 mapped(const Matrix<float, 4>& m, const P3& v) {
    P3 result;
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            result[r] += double{m.data()[4 * r + c]} * v[c];
        }
    }
    return result;
}

std::wstring refusal(const std::wstring& up, const std::wstring& forward, float scale) {
    try {
        (void)OBJScreen::getTransformMatrix(up, forward, scale);
    } catch (const VeltraniException& fault) {
        return fault.message;
    }
    return L"";
}

/// A screen read with axes that leave the coordinates as they are.
void load(OBJScreen& screen, const std::string& text) {
    std::istringstream stream(text);
    screen.deserialize(stream);
}

OBJScreen plainScreen() {
    return OBJScreen(L"Z", L"Y", 1.0F);
}

/// A stream buffer that hands out text in small pieces and fails, if asked to, at the end of it.
class PiecewiseBuffer : public std::streambuf {
public:
    PiecewiseBuffer(std::string text, bool fails) : m_text(std::move(text)), m_fails(fails) {}

protected:
    int_type underflow() override {
        if (m_next == m_text.size()) {
            if (m_fails) {
                throw std::ios_base::failure("the disk is gone");
            }
            return traits_type::eof();
        }
        const std::size_t size = std::min<std::size_t>(7, m_text.size() - m_next);
        setg(m_text.data() + m_next, m_text.data() + m_next, m_text.data() + m_next + size);
        m_next += size;
        return traits_type::to_int_type(*gptr());
    }

private:
    std::string m_text;
    std::size_t m_next = 0;
    bool m_fails;
};

TEST(OBJScreenTransform, IsTheIdentityForAFileInTheWorldFrame) {
    EXPECT_TRUE((OBJScreen::getTransformMatrix(L"Z", L"Y", 1.0F) == Matrix<float, 4>{}));
}

TEST(OBJScreenTransform, MapsTheUsualFileWithYUpAndZForward) {
    const std::array<float, 16> expected = {-2, 0, 0, 0, 0, 0, 2, 0, 0, 2, 0, 0, 0, 0, 0, 1};
    const auto m = OBJScreen::getTransformMatrix(L"Y", L"Z", 2.0F);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), m.data()));
}

TEST(OBJScreenTransform, TakesUpToUpAndForwardToForwardWithoutAMirrorForAllPairsOfAxes) {
    constexpr float SCALE = 0.5F;
    int accepted = 0;
    for (const std::wstring& up : AXES) {
        for (const std::wstring& forward : AXES) {
            if (up.back() == forward.back()) {
                continue;
            }
            ++accepted;
            const auto m = OBJScreen::getTransformMatrix(up, forward, SCALE);
            EXPECT_EQ(mapped(m, direction(up)), (P3{0.0, 0.0, SCALE}));
            EXPECT_EQ(mapped(m, direction(forward)), (P3{0.0, SCALE, 0.0}));
            // Lengths, angles and handedness of three arbitrary directions survive, but for the scale.
            const P3 a{1.0, 2.0, -3.0};
            const P3 b{-0.5, 4.0, 1.0};
            const P3 c{2.0, 0.25, 7.0};
            EXPECT_DOUBLE_EQ(dot(mapped(m, a), mapped(m, b)), SCALE * SCALE * dot(a, b));
            EXPECT_DOUBLE_EQ(dot(mapped(m, a), cross(mapped(m, b), mapped(m, c))),
                             std::pow(SCALE, 3) * dot(a, cross(b, c)));
            for (const std::size_t i : {3U, 7U, 11U, 12U, 13U, 14U}) {
                EXPECT_EQ(m.data()[i], 0.0F);
            }
            EXPECT_EQ(m(3, 3), 1.0F);
            EXPECT_TRUE(std::none_of(m.data(), m.data() + 16, [](float e) { return e == 0 && std::signbit(e); }));
        }
    }
    EXPECT_EQ(accepted, 24);
}

TEST(OBJScreenTransform, RefusesParallelAxes) {
    for (const std::wstring& up : AXES) {
        for (const std::wstring& forward : AXES) {
            if (up.back() == forward.back()) {
                EXPECT_EQ(refusal(up, forward, 1.0F), L"No screen file can be imported with up axis \"" + up +
                                                          L"\" and forward axis \"" + forward +
                                                          L"\": name two different ones of X, Y, Z, each with or "
                                                          L"without a -");
            }
        }
    }
}

TEST(OBJScreenTransform, RefusesUnknownAxes) {
    for (const std::wstring name : {L"", L"x", L"W", L"+X", L"X ", L"--X", L"XY", L"-"}) {
        EXPECT_THAT(refusal(name, L"Y", 1.0F), HasSubstr(L"up axis \"" + name + L"\" and forward axis \"Y\""));
        EXPECT_THAT(refusal(L"Y", name, 1.0F), HasSubstr(L"up axis \"Y\" and forward axis \"" + name + L"\""));
    }
}

TEST(OBJScreenTransform, RefusesAScaleThatFlattensOrMirrors) {
    for (const float scale : {0.0F, -0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN(),
                              std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity()}) {
        EXPECT_THAT(refusal(L"Y", L"Z", scale), HasSubstr(L"give a finite number above zero"));
    }
    EXPECT_EQ(refusal(L"Y", L"Z", std::numeric_limits<float>::min()), L"");
}

TEST(OBJScreen, IsNotValidBeforeItIsRead) {
    EXPECT_FALSE(plainScreen().isValid());
}

TEST(OBJScreen, ReadsAMeshIntoTheWorldFrame) {
    OBJScreen screen(L"Y", L"-Z", 0.5F);
    load(screen, "v 0.1 0.2 0.3\nv 4 2 3\nv 1 5 3\nf 1 2 3\n");
    EXPECT_TRUE(screen.isValid());
    EXPECT_FALSE(screen.isParameterised());
    EXPECT_EQ(screen.mesh().vertices, (std::vector<P3>{{0.05, -0.15, 0.1}, {2.0, -1.5, 1.0}, {0.5, -1.5, 2.5}}));
}

TEST(OBJScreen, AxesAloneChangeNoBitOfACoordinate) {
    OBJScreen screen(L"-X", L"Y", 1.0F);
    load(screen, "v 0.1 1e-300 14678.000001\nv 1 0 0\nv 0 0 1\nf 1 2 3\n");
    EXPECT_EQ(screen.mesh().vertices[0], (P3{14678.000001, 1e-300, -0.1}));
}

TEST(OBJScreen, TheScaleOfAFileHasTheDigitsOfAFloat) {
    OBJScreen screen(L"Z", L"Y", 0.001F);
    load(screen, "v 4000 0 0\nv 0 4000 0\nv 0 0 1234.5\nf 1 2 3\n");
    EXPECT_EQ(screen.mesh().vertices[0][0], 4000 * double{0.001F});
    EXPECT_EQ(screen.mesh().vertices[2][2], 1234.5 * double{0.001F}) << "all other digits are those of a double";
    const double off = std::abs(screen.mesh().vertices[0][0] - 4);
    EXPECT_GT(off, 0.15e-6);
    EXPECT_LT(off, 0.2e-6) << "of four metres";
}

TEST(OBJScreen, IsHitAndMappedWhereItWasModelled) {
    // One unit in front of the eye, 20 wide and high, in centimetres.
    OBJScreen screen(L"Y", L"-Z", 0.01F);
    load(screen,
         "v -10 -10 -100\nv 10 -10 -100\nv 10 10 -100\nv -10 10 -100\n"
         "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nf 1/1 2/2 3/3 4/4\n");
    constexpr double FLOAT_SCALE = 1e-7;  // the scale is a float: about seven digits
    const IntersectionSet hits = screen.intersect({}, {0.05, 1.0, 0.02});
    ASSERT_EQ(hits.size(), 1U);
    EXPECT_NEAR(norm(hits.first().point - P3{0.05, 1.0, 0.02}), 0, FLOAT_SCALE);
    P3 corner;
    ASSERT_TRUE(screen.mapInto3D({1.0, 0.0}, corner, false));
    EXPECT_NEAR(norm(corner - P3{0.1, 1.0, -0.1}), 0, FLOAT_SCALE);
    EXPECT_NEAR(norm(screen.getScreenNormal(corner) - P3{0.0, -1.0, 0.0}), 0, FLOAT_SCALE);
}

TEST(OBJScreen, HashesTheBytesAndNothingElse) {
    OBJScreen screen(L"Y", L"Z", 3.0F);
    for (const std::string& text : {TRIANGLE, TRIANGLE + "\n", SQUARE, std::string()}) {
        load(screen, text);
        EXPECT_EQ(screen.getUniqueDataHash(), MeshScreen::calcUniqueDataHash(text));
        OBJScreen other(L"Z", L"Y", 1.0F);
        load(other, text);
        EXPECT_EQ(other.getUniqueDataHash(), screen.getUniqueDataHash());
    }
}

TEST(OBJScreen, ReadsBytesInMemoryAsAStreamOfThemAndKeepsTheHashThatComesWithThem) {
    const std::array<unsigned char, 20> hash{1, 2, 3};
    OBJScreen fromStream(L"Y", L"Z", 2.0F);
    load(fromStream, SQUARE);
    OBJScreen fromBytes(L"Y", L"Z", 2.0F);
    fromBytes.read(SQUARE, hash);
    EXPECT_TRUE(fromBytes.isValid());
    EXPECT_EQ(fromBytes.mesh().vertices, fromStream.mesh().vertices);
    EXPECT_EQ(fromBytes.mesh().textureCoordinates, fromStream.mesh().textureCoordinates);
    EXPECT_EQ(fromBytes.getUniqueDataHash(), hash);
    EXPECT_THROW(fromBytes.read(SQUARE + "f 1 2 5\n", {}), ObjLoadException);
    EXPECT_EQ(fromBytes.getUniqueDataHash(), hash);
    OBJScreen parallel(L"Y", L"-Y", 1.0F);
    EXPECT_THROW(parallel.read(SQUARE, hash), VeltraniException);
}

TEST(OBJScreen, ATextWithoutFacesIsNoFaultButNotValid) {
    OBJScreen screen = plainScreen();
    load(screen, TRIANGLE);
    load(screen, "v 0 0 0\nv 1 0 0\nl 1 2\n");
    EXPECT_FALSE(screen.isValid());
    load(screen, "");
    EXPECT_FALSE(screen.isValid());
}

TEST(OBJScreen, AScaleThatLeavesTheRangeOfADoubleIsNotValid) {
    OBJScreen screen(L"Z", L"Y", 1e30F);
    load(screen, "v 0 0 0\nv 1e300 0 0\nv 0 1 0\nf 1 2 3\n");
    EXPECT_FALSE(screen.isValid());
}

/// Reads something faulty into a screen that holds the triangle, which must stay.
template <class Fault>
void expectUnchangedAfter(OBJScreen& screen, std::istream& stream) {
    const auto hash = screen.getUniqueDataHash();
    const std::vector<P3> vertices = screen.mesh().vertices;
    EXPECT_THROW(screen.deserialize(stream), Fault);
    EXPECT_EQ(screen.getUniqueDataHash(), hash);
    EXPECT_EQ(screen.mesh().vertices, vertices);
    EXPECT_TRUE(screen.isValid());
}

TEST(OBJScreen, AFaultLeavesTheMeshAsItWas) {
    OBJScreen screen = plainScreen();
    load(screen, TRIANGLE);
    std::istringstream badNumber(SQUARE + "v 0,5 1 1\n");
    expectUnchangedAfter<ObjLoadException>(screen, badNumber);
    std::istringstream badIndex(SQUARE + "f 1 2 5\n");
    expectUnchangedAfter<ObjLoadException>(screen, badIndex);
    std::istringstream failed(SQUARE);
    failed.setstate(std::ios_base::failbit);
    expectUnchangedAfter<VeltraniException>(screen, failed);
    PiecewiseBuffer breaking(SQUARE, true);
    std::istream broken(&breaking);
    expectUnchangedAfter<VeltraniException>(screen, broken);
    std::istream none(nullptr);
    expectUnchangedAfter<VeltraniException>(screen, none);
}

TEST(OBJScreen, RefusesItsAxesAndScaleWhenItReads) {
    OBJScreen parallel(L"Y", L"-Y", 1.0F);
    EXPECT_THROW(load(parallel, TRIANGLE), VeltraniException);
    OBJScreen flat(L"Y", L"Z", 0.0F);
    EXPECT_THROW(load(flat, TRIANGLE), VeltraniException);
    EXPECT_FALSE(flat.isValid());
}

TEST(OBJScreen, ReadsAnyStreamFromItsPositionToItsEnd) {
    OBJScreen expected = plainScreen();
    load(expected, SQUARE);

    std::stringstream both("not OBJ: v\n" + SQUARE);
    std::string header;
    std::getline(both, header);
    PiecewiseBuffer pieces(SQUARE, false);
    std::istream piecewise(&pieces);
    std::stringstream written;
    written << SQUARE;
    for (std::istream* stream : {static_cast<std::istream*>(&both), &piecewise, static_cast<std::istream*>(&written)}) {
        OBJScreen screen = plainScreen();
        screen.deserialize(*stream);
        EXPECT_EQ(screen.getUniqueDataHash(), expected.getUniqueDataHash());
        EXPECT_EQ(screen.mesh().triangles, expected.mesh().triangles);
        EXPECT_TRUE(stream->eof());
        EXPECT_FALSE(stream->fail());
        EXPECT_EQ(stream->rdbuf()->sgetc(), std::char_traits<char>::eof());
    }
}

TEST(OBJScreen, ReadsALongStreamInBlocks) {
    const std::string text = SQUARE + std::string(300'000, '\n') + "f 1/1 3/3 2/2\n";
    PiecewiseBuffer pieces(text, false);
    std::istream stream(&pieces);
    stream.exceptions(std::ios_base::failbit | std::ios_base::badbit);
    OBJScreen screen = plainScreen();
    screen.deserialize(stream);
    EXPECT_EQ(screen.mesh().triangles.size(), 3U);
    EXPECT_EQ(screen.getUniqueDataHash(), MeshScreen::calcUniqueDataHash(text));
}

}  // namespace
