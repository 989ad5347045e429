#include "KelvoControl/detail/WarpMesh.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "WarpMeshText.h"
#include "support/ForeignLocale.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::KelvoControlDetail::WarpMeshFile;

std::wstring refusal(const std::string& text) {
    try {
        static_cast<void>(WarpMeshFile::parse(text, "mesh"));
        return {};
    } catch (const VeltraniParseException& fault) {
        return fault.message;
    }
}

void expectRefused(const std::string& text, const std::wstring& said) {
    const std::wstring message = refusal(text);
    EXPECT_NE(message.find(said), std::wstring::npos) << Veltrani::toUtf8(message);
}

const std::string SMALL = "2\n2 2\n-1 -1 0 0 1\n1 -1 1 0 1\n-1 1 0 1 1\n1 1 1 1 1\n";

TEST(WarpMeshFile, ReadsNodesInRowsAndPlacesThemInThePicture) {
    WarpMeshText text;
    text.unused = {5};
    const auto mesh = WarpMeshFile::parse(text.text(), "mesh");
    EXPECT_EQ(mesh->lattice().columns, 4U);
    EXPECT_EQ(mesh->lattice().rows, 3U);
    EXPECT_NEAR(mesh->lattice().picture[1][0], 640.0, 1e-9);
    EXPECT_EQ(mesh->lattice().picture[1][1], 0.0);
    EXPECT_NEAR(mesh->lattice().picture[4][1], 600.0, 1e-9);
    EXPECT_EQ(mesh->lattice().screen[11], (Point<double, 2>{1.0, 1.0}));
    for (std::size_t node = 0; node < 12; ++node) {
        EXPECT_EQ(mesh->lattice().unused[node], node == 5);
    }
}

TEST(WarpMeshFile, LineEndsBlankLinesAndTabsDoNotMatter) {
    std::string text = SMALL + "pixels 20 10\n";
    std::string other;
    for (const char character : text) {
        other += character == '\n' ? "\r\n\r\n" : character == ' ' ? "\t " : std::string(1, character);
    }
    const auto mesh = WarpMeshFile::parse(other, "mesh");
    EXPECT_EQ(mesh->lattice().picture, WarpMeshFile::parse(text, "mesh")->lattice().picture);
    EXPECT_EQ(refusal(SMALL + "pixels 20 10"), L"") << "without the last line end";
}

TEST(WarpMeshFile, NumbersDoNotDependOnTheLocale) {
    const ForeignLocale foreign;
    EXPECT_EQ(refusal("2\n2 2\n-1.5 -1 0 0 1\n1.5 -1 1 0 .5\n-1.5 1 0 1 1\n1.5 1 1 1 1.\npixels 20 10\n"), L"");
}

TEST(WarpMeshFile, AByteOrderMarkIsPassedOver) {
    const TemporaryFolder folder;
    const std::string file = folder.write("mesh.data", "\xEF\xBB\xBF" + SMALL + "pixels 20 10\n");
    EXPECT_EQ(WarpMeshFile::read(Veltrani::fromUtf8(file))->lattice().columns, 2U);
}

TEST(WarpMeshFile, AnotherMeshTypeIsRefused) {
    expectRefused("", L"mesh:1: mesh type: found the end of the file, expected 2 (rectangular)");
    expectRefused("1\n" + SMALL.substr(2) + "pixels 20 10\n", L"mesh:1: mesh type: found \"1\"");
    expectRefused("2.0\n", L"found \"2.0\"");
    expectRefused("2 2\n", L"found \"2 2\"");
}

TEST(WarpMeshFile, WrongCountsAreRefused) {
    const std::string nodes = SMALL.substr(SMALL.find('-'));
    for (const char* counts : {"2", "1 4", "4 1", "0 0", "-2 2", "2 2 2", "2.5 2", "x 2", "2 1000001"}) {
        expectRefused("2\n" + std::string(counts) + "\n" + nodes + "pixels 20 10\n",
                      L"mesh:2: node counts: found \"" + Veltrani::fromUtf8(counts) + L"\"");
    }
    // Long enough for six nodes, so that only the lines tell.
    std::string wide;
    for (const char character : nodes) {
        wide += character == ' ' ? "    " : std::string(1, character);
    }
    expectRefused("2\n2 3\n" + wide + "pixels 20 10\n", L"mesh:7: node (0, 2): found \"pixels 20 10\"");
    expectRefused("2\n3 2\n" + wide + "pixels 20 10\n", L"mesh:7: node (1, 1): found \"pixels 20 10\"");
    expectRefused(SMALL + "1 1 1 1 1\npixels 20 10\n",
                  L"mesh:7: picture size: found \"1 1 1 1 1\", expected pixels W H");
}

TEST(WarpMeshFile, HugeCountsAreRefusedBeforeTheyTakeMemory) {
    expectRefused("2\n1000000 1000000\n" + SMALL.substr(6) + "pixels 20 10\n", L"for which the file has room");
    expectRefused("2\n2001 2000\n" + std::string(45'000'000, '\n'),
                  L"mesh:2: node counts: found \"2001 2000\", expected at most 4000000 nodes; thin the mesh out");
}

TEST(WarpMeshFile, WhatIsNoNodeIsRefusedByItsPlace) {
    for (const char* node : {"1 -1 1 0", "1 -1 1 0 1 1", "nan -1 1 0 1", "1 inf 1 0 1", "1 -1 0,5 0 1", "1 -1 x 0 1",
                             "1e5 -1 1 0 1", "1 -1 -10001 0 1", "1 -1 1 0 1.5", "1 -1 1 0 nan", "1e999 -1 1 0 1"}) {
        std::string text = SMALL + "pixels 20 10\n";
        text.replace(text.find("1 -1 1 0 1"), 10, node);
        expectRefused(text, L"mesh:4: node (1, 0): found \"" + Veltrani::fromUtf8(node) + L"\", expected five numbers");
    }
}

TEST(WarpMeshFile, TheLargestNumbersAreStillRead) {
    std::string text = SMALL + "pixels 20 10\n";
    text.replace(text.find("1 -1 1 0 1"), 10, "10000 -10000 10000 -10000 1");
    EXPECT_EQ(refusal(text), L"");
}

TEST(WarpMeshFile, ThePictureSizeIsNeeded) {
    expectRefused(SMALL, L"mesh:6: picture size: found the end of the file, expected pixels W H");
    for (const char* line : {"pixels", "pixels 20", "pixels 0 10", "pixels 20 -1", "pixels 20 10 1", "pixels 20.5 10",
                             "Pixels 20 10", "pixels 99999999999 10"}) {
        expectRefused(SMALL + line + "\n", L"mesh:7: picture size: found \"" + Veltrani::fromUtf8(line) + L"\"");
    }
}

TEST(WarpMeshFile, NothingMayStandBehindThePictureSize) {
    expectRefused(SMALL + "pixels 20 10\npixels 20 10\n", L"mesh:8: end: found \"pixels 20 10\"");
}

TEST(WarpMeshFile, AMeshLeftOfTheMiddleHasNoAspect) {
    expectRefused("2\n2 2\n-1 -1 0 0 1\n0 -1 1 0 1\n-1 1 0 1 1\n0 1 1 1 1\npixels 20 10\n", L"found no x above zero");
}

TEST(WarpMeshFile, EveryCutOffFileIsRefused) {
    WarpMeshText mesh;
    const std::string text = mesh.text();
    // A number that lost its last digits is a number: up to the last one, every cut shows.
    const std::size_t lastNumber = text.rfind(' ') + 1;
    for (std::size_t size = 0; size <= lastNumber; ++size) {
        ASSERT_NE(refusal(text.substr(0, size)), L"") << size << " bytes";
    }
    EXPECT_EQ(refusal(text), L"");
}

}  // namespace
