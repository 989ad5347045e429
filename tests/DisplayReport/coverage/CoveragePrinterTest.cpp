#include "DisplayReport/coverage/CoverageWriter.h"

#include "CoverageReports.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;

std::string printed(const CoverageReport& report) {
    std::ostringstream out;
    CoverageWriter::ofFormat("text")->write(report, {}, out);
    return out.str();
}

TEST(CoveragePrinter, PrintsTablesAndWhatIsWrong) {
    EXPECT_EQ(
        printed(sampleCoverage()),
        "channel             resolution   area (m^2)  of the screen  missed  pixel least (m)  mean       most\n"
        "Left, \"upper\"\\nrow  1920 x 1200  4           50 %           20 %    0.001            0.0014731  0.0025\n"
        "Bare                -            4           50 %           0 %     -                -          -\n"
        "Dark                800 x 600    -           -              -       -                -          -\n"
        "\n"
        "lit by        area (m^2)  of the screen\n"
        "no projector  2           25 %\n"
        "1 projector   4           50 %\n"
        "2 projectors  1.5         18.75 %\n"
        "3 and more    0.5         6.25 %\n"
        "the screen    8           100 %\n"
        "\n"
        "overlap of          and   area (m^2)  pixels of the first  pixels of the second\n"
        "Left, \"upper\"\\nrow  Bare  2           576000 (25 %)        50 %\n"
        "channel Bare: its resolution is not known\n"
        "channel Dark: no screen area\n");
}

TEST(CoveragePrinter, WithoutChannelsSaysSo) {
    CoverageReport report;
    report.screenArea = 8;
    report.areaByCount = {8};
    EXPECT_EQ(printed(report),
              "lit by        area  of the screen\n"
              "no projector  8     100 %\n"
              "1 projector   0     0 %\n"
              "2 projectors  0     0 %\n"
              "3 and more    0     0 %\n"
              "the screen    8     100 %\n"
              "\nthe configuration has no projectors\n");
}

TEST(CoveragePrinter, WithoutAScreenSaysWhy) {
    CoverageReport report;
    report.fault = "there is\nno screen";
    EXPECT_EQ(printed(report), "there is\\nno screen\n");
}

TEST(CoveragePrinter, ChannelsThatDoNotOverlapAreSaidNotTo) {
    CoverageReport report = sampleCoverage();
    report.overlaps.clear();
    EXPECT_NE(printed(report).find("\nno two channels overlap\n"), std::string::npos);
}

TEST(CoverageWriter, MakesAWriterForEachOfItsFormatsAndForNoOther) {
    EXPECT_EQ(CoverageWriter::formats(), (std::vector<std::string>{"text", "json", "ply"}));
    for (const std::string& format : CoverageWriter::formats()) {
        ASSERT_NE(CoverageWriter::ofFormat(format), nullptr) << format;
        EXPECT_EQ(CoverageWriter::ofFormat(format)->showsPieces(), format == "ply");
    }
    EXPECT_EQ(CoverageWriter::ofFormat("JSON"), nullptr);
    EXPECT_EQ(CoverageWriter::ofFormat(""), nullptr);
}

}  // namespace
