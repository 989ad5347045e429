#include "DisplayReport/coverage/CoverageWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;

std::string written(const std::vector<CoveredPiece>& pieces, const std::string& unit = "m") {
    CoverageReport report;
    report.unit = unit;
    std::ostringstream out;
    CoverageWriter::ofFormat("ply")->write(report, pieces, out);
    return out.str();
}

std::string body(const std::string& text) {
    return text.substr(text.find("end_header\n") + 11);
}

const CoveredPiece LOWER{{{{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}}, 1};
const CoveredPiece UPPER{{{{1, 0, 1}, {0, 0, 1}, {1, 0, 0}}}, 1};

TEST(PlyCoverageWriter, PiecesOfOneColourShareVertices) {
    const std::string text = written({LOWER, UPPER});
    EXPECT_THAT(text, HasSubstr("ply\nformat ascii 1.0\ncomment lengths in m\n"));
    EXPECT_THAT(text, HasSubstr("element vertex 4\n"));
    EXPECT_THAT(text, HasSubstr("element face 2\n"));
    EXPECT_EQ(body(text),
              "0 0 0 0 114 178 1\n1 0 0 0 114 178 1\n0 0 1 0 114 178 1\n1 0 1 0 114 178 1\n3 0 1 2\n3 3 2 1\n");
}

TEST(PlyCoverageWriter, PiecesOfDifferentColoursDoNot) {
    CoveredPiece dark = UPPER;
    dark.channels = 0;
    const std::string text = written({LOWER, dark});
    EXPECT_THAT(text, HasSubstr("element vertex 6\n"));
    EXPECT_THAT(text, HasSubstr("\n1 0 1 40 40 40 0\n"));
}

TEST(PlyCoverageWriter, TwoThreeAndMoreHaveTheirColours) {
    const std::vector<std::pair<std::size_t, const char*>> colours{
        {2, "230 159 0 2"}, {3, "240 228 66 3"}, {11, "240 228 66 11"}};
    for (const auto& [channels, colour] : colours) {
        CoveredPiece piece = LOWER;
        piece.channels = channels;
        EXPECT_THAT(written({piece}), HasSubstr(std::string("\n1 0 0 ") + colour + '\n'));
    }
}

TEST(PlyCoverageWriter, PiecesWithoutExtentAreNoFaces) {
    const CoveredPiece line{{{{0, 0, 0}, {1, 0, 0}, {1, 0, 0}}}, 1};
    EXPECT_THAT(written({line}), HasSubstr("element face 0\n"));
    EXPECT_EQ(body(written({})), "");
}

TEST(PlyCoverageWriter, AUnitCannotBreakTheHeader) {
    EXPECT_THAT(written({}, "m\nelement vertex 99"), HasSubstr("comment lengths in m\\nelement vertex 99\n"));
}

}  // namespace
