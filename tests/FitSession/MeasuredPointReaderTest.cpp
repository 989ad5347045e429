#include "FitSession/MeasuredPointReader.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/basics/ReportHead.h"
#include "support/Displays.h"
#include "support/ForeignLocale.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Veltrani::FitSession::MeasuredPointReader;
using Veltrani::FitSession::MeasuredPoints;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

class MeasuredPointReaderTest : public testing::Test {
protected:
    [[nodiscard]] MeasuredPoints read(const std::string& text, const std::string& unit = "m",
                                      bool isFromTop = false) const {
        std::istringstream in(text);
        return MeasuredPointReader(*m_config, {unit, isFromTop}).read(in, "points.csv");
    }

    [[nodiscard]] std::string refusalOf(const std::string& text, const std::string& unit = "m") const {
        try {
            static_cast<void>(read(text, unit));
        } catch (const VeltraniParseException& fault) {
            return Veltrani::toUtf8(fault.message);
        }
        return "nothing was refused";
    }

    std::unique_ptr<XMLConfigFile> m_config =
        displays::parsed(displays::FLAT, displays::projector("A", "") + displays::projector("B", "") +
                                             "<Projector id='C'><Name>B</Name></Projector>");
};

TEST_F(MeasuredPointReaderTest, ReadsColumnsByTheirNamesInAnyOrder) {
    const ForeignLocale german;
    const MeasuredPoints points = read("z,Y_note,channel,V,x,y,u\n3,note,A,0.25,1,2,0.5\n1.5,,A,1,-1,1e2,0\n");
    ASSERT_EQ(points.points.size(), 2U);
    EXPECT_EQ(points.points[0].channel, 0U);
    EXPECT_EQ(points.points[0].picture, (P2{0.5, 0.25}));
    EXPECT_EQ(points.points[0].world, (P3{1, 2, 3}));
    EXPECT_EQ(points.points[0].covariance, std::nullopt);
    EXPECT_EQ(points.points[0].pictureDeviation, std::nullopt);
    EXPECT_EQ(points.points[0].row, 2U);
    EXPECT_EQ(points.points[1].world, (P3{-1, 100, 1.5}));
    EXPECT_EQ(points.rows, 2U);
    EXPECT_THAT(points.ignored, ElementsAre("y_note"));
    EXPECT_THAT(points.controls, IsEmpty());
}

TEST_F(MeasuredPointReaderTest, PixelsCountFromTheBottomLeftCornerUnlessStated) {
    const std::string table = "channel,px,py,x,y,z,suv\nA,480,300,1,2,3,0.5\n";
    const MeasuredPoints points = read(table);
    EXPECT_EQ(points.points.at(0).picture, (P2{0.25, 0.25}));
    EXPECT_EQ(points.points.at(0).pictureDeviation, (P2{0.5 / 1920, 0.5 / 1200}));
    EXPECT_EQ(read(table, "m", true).points.at(0).picture, (P2{0.25, 0.75}));
    const MeasuredPoints normalised = read("channel,u,v,x,y,z,suv\nA,0.25,0.25,1,2,3,0.5\n", "m", true);
    EXPECT_EQ(normalised.points.at(0).picture, (P2{0.25, 0.75}));
    EXPECT_EQ(normalised.points.at(0).pictureDeviation, (P2{0.5, 0.5}));
}

TEST_F(MeasuredPointReaderTest, LengthsAndCovariancesBecomeNative) {
    const MeasuredPoints points = read("channel,u,v,x,y,z,sx,sy,sz\nA,0,0,1000,2000,-500,1,2,4\n", "mm");
    EXPECT_DOUBLE_EQ(points.points.at(0).world[0], 1);
    EXPECT_DOUBLE_EQ(points.points.at(0).world[2], -0.5);
    ASSERT_TRUE(points.points[0].covariance);
    EXPECT_DOUBLE_EQ((*points.points[0].covariance)(0, 0), 1e-6);
    EXPECT_DOUBLE_EQ((*points.points[0].covariance)(2, 2), 16e-6);
    EXPECT_EQ((*points.points[0].covariance)(0, 1), 0);
    EXPECT_EQ(read("channel,u,v,x,y,z,sx,sy,sz\nA,1,1,1,2,3,,,\n").points.at(0).covariance, std::nullopt);
    const auto full =
        read("channel,u,v,x,y,z,cxx,cxy,cxz,cyy,cyz,czz\nA,0,0,1,2,3,4,1,0.5,9,-2,16\n", "cm").points.at(0).covariance;
    ASSERT_TRUE(full);
    const double entries[3][3] = {{4, 1, 0.5}, {1, 9, -2}, {0.5, -2, 16}};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            EXPECT_DOUBLE_EQ((*full)(row, column), entries[row][column] * 1e-4);
        }
    }
}

TEST_F(MeasuredPointReaderTest, OfADisplayInAUnitOfItsOwnPointsAreInThatUnit) {
    std::string text = displays::text(displays::FLAT, displays::projector("A", ""));
    for (const std::string& unit : {std::string("lengthUnit='m'"), std::string("native='m'")}) {
        text.replace(text.find(unit), unit.size(), unit.substr(0, unit.find('=')) + "='custom'");
    }
    m_config = XMLConfigFile::parse(text, "display.xml");
    const std::string rows = "channel,u,v,x,y,z\nA,0,0,1000,0,0\n";
    EXPECT_EQ(read(rows, "custom").points.at(0).world[0], 1000);
    EXPECT_EQ(refusalOf(rows, "mm"),
              "points.csv:1: unit of lengths: found \"mm\", expected the unit of the display, \"custom\"; convert the "
              "lengths, since that unit has no length of its own");
}

TEST_F(MeasuredPointReaderTest, TheUnitIsStatedByTheTableOrByTheCallerAndNeverGuessed) {
    const std::string rows = "channel,u,v,x,y,z\nA,0,0,1000,0,0\n";
    for (const char* const line : {"# unit mm\n", "# Unit: mm \n", "#unit=mm\n", "# measured in May\n# unit\tmm\n",
                                   "# x, y, z: station; unit mm\n"}) {
        EXPECT_DOUBLE_EQ(read(line + rows, "").points.at(0).world[0], 1) << line;
    }
    EXPECT_DOUBLE_EQ(read("# unit mm\n" + rows, "mm").points.at(0).world[0], 1);
    EXPECT_EQ(read("# unit m\n" + rows, "").points.at(0).world[0], 1000);
    EXPECT_EQ(refusalOf(rows, ""),
              "points.csv:1: unit of lengths: found none, expected mm, cm, m, in or ft; state --unit, or begin the "
              "table with a line such as \"# unit mm\"");
    EXPECT_THAT(refusalOf("# units mm\n" + rows, ""), HasSubstr("found none")) << "another word";
    EXPECT_THAT(refusalOf("# unit yd\n" + rows, ""), HasSubstr("unit of lengths: found \"yd\", expected mm, cm"));
    EXPECT_THAT(refusalOf("# unit mm\n" + rows, "m"),
                HasSubstr("found \"mm\" in the table, expected --unit m; leave --unit out"));
}

TEST_F(MeasuredPointReaderTest, WhatTargetsWritesIsATable) {
    const std::string head = Veltrani::DisplayReport::ReportHead{"targets", "m"}.comment();
    const MeasuredPoints points = read(head +
                                           "channel,projector,kind,column,row,u,v,x,y,z\n"
                                           "B,C,grid,0,0,0,1,1,2,3\nB,C,boundary,0,,,,1,2,3\n",
                                       "");
    ASSERT_EQ(points.points.size(), 1U);
    EXPECT_EQ(points.points[0].channel, 2U) << "the id decides where two channels have one name";
    EXPECT_EQ(points.withoutPicture, 1U);
    EXPECT_EQ(points.rows, 2U);
}

TEST_F(MeasuredPointReaderTest, RowsThatAreNotMappedArePassedOver) {
    const MeasuredPoints points = read("channel,u,v,x,y,z,mapped\nA,0,0,,,,0\nA,0,1,1,2,3,1\n");
    EXPECT_EQ(points.points.size(), 1U);
    EXPECT_EQ(points.unmapped, 1U);
    EXPECT_THAT(refusalOf("channel,u,v,x,y,z,mapped\nA,0,0,1,2,3,yes\n"),
                StartsWith("points.csv:2: column 7, mapped: found \"yes\", expected 0 or 1; "));
}

TEST_F(MeasuredPointReaderTest, LayoutPointsAreNoPlacesOnTheScreen) {
    Veltrani::DisplayReport::ReportHead head{"map", "m"};
    head.frame = "layout plane, +x right, +y up, z = 0";
    EXPECT_THAT(refusalOf(head.comment() + "u,v,x,y,z,mapped\n", ""),
                AllOf(HasSubstr("found x, y, z that are \"layout plane"), HasSubstr("expected places on the screen")));
    head.frame = Veltrani::DisplayReport::ReportHead::ON_SCREEN;
    EXPECT_THAT(read(head.comment() + "channel,u,v,x,y,z\n", "").points, IsEmpty());
}

TEST_F(MeasuredPointReaderTest, AReportWithoutItsLineOfTheFrameIsNamed) {
    EXPECT_THAT(refusalOf("# screenmanager/targets version 1\nchannel,u,v,x,y,z,mapped\n", ""),
                AllOf(HasSubstr("found a table of screenmanager/targets without its line \"# x, y, z: ...\""),
                      HasSubstr("or remove all of them and state --unit")));
}

TEST_F(MeasuredPointReaderTest, ControlPointsHaveTheirPlaceInCapitals) {
    const MeasuredPoints points = read(
        "set,channel,u,v,x,y,z,X,Y,Z\n"
        "east,,,,1,2,3,10,20,30\nwest,A,0,1,4,5,6,40,50,60\nwest,A,1,1,4,5,6,,,\n",
        "cm");
    ASSERT_EQ(points.controls.size(), 2U);
    EXPECT_EQ(points.controls[0].set, "east");
    EXPECT_DOUBLE_EQ(points.controls[0].measured[1], 0.02);
    EXPECT_DOUBLE_EQ(points.controls[0].known[2], 0.3);
    EXPECT_EQ(points.controls[0].line, 2);
    EXPECT_EQ(points.points.size(), 2U) << "a control point may be one of a picture, too";
    EXPECT_EQ(points.points[0].set, "west");
    EXPECT_THAT(refusalOf("X,Y,Z\n1,2,3\n"), HasSubstr("write x,y,z small: X,Y,Z are the places of control points"));
}

TEST_F(MeasuredPointReaderTest, ADisplayOfOneChannelNeedsNoColumnForIt) {
    const auto one = displays::parsed(displays::FLAT, displays::projector("A", ""));
    std::istringstream in("u,v,x,y,z\n0,0,1,2,3\n");
    EXPECT_EQ(MeasuredPointReader(*one, {"m"}).read(in, "points.csv").points.at(0).channel, 0U);
    EXPECT_THAT(refusalOf("u,v,x,y,z\n0,0,1,2,3\n"),
                HasSubstr("found a row of no channel, expected the channel of each row, since the display has 3; "));
}

TEST_F(MeasuredPointReaderTest, EveryFaultHasItsLineColumnExpectationAndRemedy) {
    const std::string header = "channel,u,v,x,y,z,sx,sy,sz,suv\n";
    const std::string good = "A,0,0,1,2,3,1,1,1,1\n";
    struct Case {
        const char* row;
        const char* expected;
    };
    for (const auto& [row, expected] : {
             Case{"A,0,0,1,2,1e400,1,1,1,1",
                  "column 6, z: found \"1e400\", expected a finite number with a decimal point"},
             Case{"A,0,0,nan,2,3,1,1,1,1", "column 4, x: found \"nan\", expected a finite number"},
             Case{"A,0,0,,2,3,1,1,1,1", "column 4, x: found \"\", expected a finite number"},
             Case{"A,0,,1,2,3,1,1,1,1", "column 3, v: found \"\", expected a number, as the row states the others"},
             Case{"A,1.5,0,1,2,3,1,1,1,1",
                  "column 2, u: found \"1.5\", expected a place in the picture, from 0 to 1; "
                  "name columns of pixels px and py"},
             Case{"A,0,-0.1,1,2,3,1,1,1,1", "column 3, v: found \"-0.1\", expected a place in the picture"},
             Case{"A,0,0,1,2,3,1,0,1,1", "column 8, sy: found \"0\", expected a standard deviation above 0; "},
             Case{"A,0,0,1,2,3,1,,1,1", "column 8, sy: found \"\", expected a number"},
             Case{"A,0,0,1,2,3,1,1,1,-1", "column 10, suv: found \"-1\", expected a standard deviation above 0"},
             Case{",0,0,1,2,3,1,1,1,1",
                  "column 1, channel: found \"\", expected the id or the unique name of a channel"},
             Case{"X,0,0,1,2,3,1,1,1,1",
                  "column 1, channel: found \"X\", expected the id or the unique name of a "
                  "channel; \"X\" is no channel; the channels are: A (A), B (B), B (C)"},
             Case{"A,0,0,1,2,3,,,,1", "column 7, sx: found \"\", expected a number, as the first measurement states"},
             Case{"A,0,0,1,2,3,1,1,1,", "column 10, suv: found \"\", expected a number, as the first measurement"},
             Case{"A,0,0,1,2,3,1,1,1", "measurement: found \"A,0,0,1,2,3,1,1,1\", expected 10 columns, as the header"},
             Case{"\"A,0,0,1,2,3,1,1,1,1", "expected 10 columns, as the header names them; write one measurement"},
         }) {
        const std::string refusal = refusalOf(header + good + row + "\n" + good);
        EXPECT_THAT(refusal, StartsWith("points.csv:")) << row;
        EXPECT_THAT(refusal, HasSubstr(expected)) << row;
        EXPECT_THAT(refusal, HasSubstr("; ")) << row;
        EXPECT_EQ(refusal.find('\n'), std::string::npos) << row;
        if (row[0] != '"') {
            EXPECT_THAT(refusal, StartsWith("points.csv:3: ")) << row;
        }
    }
    EXPECT_THAT(refusalOf(header + "\n" + good), StartsWith("points.csv:2: measurement: found an empty line"));
    EXPECT_EQ(read(header + good + "\n\n").points.size(), 1U) << "empty lines may stand at the end";
}

TEST_F(MeasuredPointReaderTest, AHeaderThatIsNoneIsRefusedWithWhatIsMissing) {
    struct Case {
        const char* header;
        const char* expected;
    };
    for (const auto& [header, expected] : {
             Case{"", "points.csv:1: measurement: found the end of the table, expected a header and measurements"},
             Case{"A,0,0,1,2,3", "expected the columns x,y,z of the places measured; name the columns"},
             Case{"channel,u,v,x,y", "expected all of the columns x,y,z or none of them"},
             Case{"channel,u,v,x,y,z,u", "expected the column u once"},
             Case{"channel,x,y,z", "expected the columns u,v or px,py"},
             Case{"channel,u,v,px,py,x,y,z", "expected u,v or px,py, not both"},
             Case{"channel,u,v,x,y,z,sx,sy", "expected all of the columns sx,sy,sz or none"},
             Case{"channel,u,v,x,y,z,sx,sy,sz,cxx,cxy,cxz,cyy,cyz,czz",
                  "sx,sy,sz or cxx,cxy,cxz,cyy,cyz,czz, not both"},
             Case{"x,y,z,X,Y,Z,suv", "expected u,v or px,py beside suv"},
             Case{"\"channel,u", "names of columns, quotes closed"},
         }) {
        EXPECT_THAT(refusalOf(header), AllOf(StartsWith("points.csv:1: "), HasSubstr(expected))) << header;
    }
}

TEST_F(MeasuredPointReaderTest, NumbersBeyondAllMeasuringAreRefusedAtTheirPlace) {
    const std::string head = "channel,u,v,x,y,z,sx,sy,sz\nA,0.5,0.5,1,2,3,1,1,1\n";
    EXPECT_EQ(refusalOf(head + "A,0.5,0.5,1e300,2,3,1,1,1\n"),
              "points.csv:3: column 4, x: found \"1e300\", expected a number of at most 1e12 in size; correct it, or "
              "remove the row");
    EXPECT_THAT(refusalOf(head + "A,0.5,0.5,1,2,-1e13,1,1,1\n"), StartsWith("points.csv:3: column 6, z: found"));
    EXPECT_THAT(refusalOf(head + "A,0.5,0.5,1,2,3,1,1e200,1\n"), StartsWith("points.csv:3: column 8, sy: found"));
    EXPECT_EQ(read(head + "A,0.5,0.5,1e12,2,3,1,1,1\n").points.size(), 2U);
}

TEST_F(MeasuredPointReaderTest, OtherSeparatorsAndDecimalCommasAreNamed) {
    for (const char* header : {"channel;u;v;x;y;z\n", "channel\tu\tv\tx\ty\tz\n"}) {
        EXPECT_THAT(refusalOf(header),
                    HasSubstr("expected columns apart by commas; write commas between the columns, and "
                              "decimal points"));
    }
    EXPECT_THAT(
        refusalOf("channel,u,v,x,y,z\nA,0,5,0,5,1,2,3\n"),
        HasSubstr("expected 6 columns, as the header names them; write decimal points: commas part the columns"));
    EXPECT_THAT(refusalOf("channel,u,v,x,y,z\nA,0.5,0.5,1,2\n"), HasSubstr("write one measurement per line"));
    EXPECT_THAT(refusalOf("channel,u,v,x,y,z\nA;0.5;0.5;1;2;3\n"),
                HasSubstr("expected 6 columns, as the header names them; write commas between the columns"));
    EXPECT_THAT(refusalOf("channel,u,v,x,y,z\nA,\"0,5\",0.5,1,2,3\n"),
                HasSubstr("found \"0,5\", expected a finite number with a decimal point; write a point for the comma"));
}

TEST_F(MeasuredPointReaderTest, ATableThatASpreadsheetHasSavedIsRead) {
    const std::string table = "\xEF\xBB\xBF# unit mm,,,,,\r\n# remark,,,,,\r\nchannel,u,v,x,y,z\r\nA,0,0,1,2,3\r\n";
    EXPECT_EQ(read(table, "").points.at(0).world, (P3{0.001, 0.002, 0.003}));
    const std::string targets = std::string("# screenmanager/targets, version 1,,\n# x, y, z: ") +
                                Veltrani::DisplayReport::ReportHead::WORLD + "; unit m,,\nchannel,u,v,x,y,z\n";
    EXPECT_EQ(read(targets + "A,0,0,1,2,3\n", "").points.size(), 1U);
}

TEST_F(MeasuredPointReaderTest, RemarksBelowTheHeaderAreNamed) {
    EXPECT_EQ(refusalOf("channel,u,v,x,y,z\nA,0,0,1,2,3\n# moved\n"),
              "points.csv:3: measurement: found \"# moved\", expected 6 columns, as the header names them; remove the "
              "line: remarks stand above the header");
}

TEST_F(MeasuredPointReaderTest, AMissingColumnOfAGroupIsNamed) {
    EXPECT_THAT(refusalOf("channel,u,v,xx,y,z\n"), HasSubstr("; add x, or name that column so"));
    EXPECT_THAT(refusalOf("channel,u,v,x,y,z,cxx,cyy,czz\n"), HasSubstr("; add cxy, cxz, cyz, or name"));
}

TEST_F(MeasuredPointReaderTest, AUnitThatIsNoneIsRefusedAtItsLine) {
    EXPECT_EQ(refusalOf("# unit metre\n# remark\nchannel,u,v,x,y,z\n", ""),
              "points.csv:1: unit of lengths: found \"metre\", expected mm, cm, m, in or ft; write one of these, or "
              "convert the lengths to it");
    EXPECT_THAT(refusalOf("# unit mm\nchannel,u,v,x,y,z\n", "m"), StartsWith("points.csv:1: unit of lengths: "));
    EXPECT_THAT(refusalOf("# remark\nchannel,u,v,x,y,z\n", ""),
                StartsWith("points.csv:2: unit of lengths: found none"));
}

TEST_F(MeasuredPointReaderTest, ReadingEndsWithWhatItsPulseThrows) {
    struct Ended {};
    std::string table = "channel,u,v,x,y,z\n";
    for (int i = 0; i < 3000; ++i) {
        table += "A,0,0,1,2,3\n";
    }
    const auto pulsesOf = [&](int last) {
        int pulses = 0;
        std::istringstream in(table);
        const MeasuredPointReader reader(*m_config, {"m", false, [&pulses, last] {
                                                         if (++pulses == last) {
                                                             throw Ended();
                                                         }
                                                     }});
        EXPECT_EQ(reader.read(in, "points.csv").points.size(), 3000U);
        return pulses;
    };
    EXPECT_GE(pulsesOf(0), 2);
    EXPECT_THROW(pulsesOf(2), Ended);
}

TEST_F(MeasuredPointReaderTest, PlacesFromZeroToOneAreNoPixels) {
    const std::string table = "channel,px,py,x,y,z\nA,0,0,1,2,3\nA,1,0,2,2,3\nA,1,1,2,2,4\n";
    EXPECT_EQ(
        refusalOf(table + "A,0.5,0.5,2,2,4\n"),
        "points.csv:2: column 2, px: found px and py from 0 to 1 in all rows, expected pixels of the picture; name "
        "these columns u and v");
    EXPECT_EQ(read(table + "A,0.5,1.5,2,2,4\n").points.size(), 4U);
    EXPECT_EQ(read(table).points.size(), 3U) << "too few to be sure";
}

TEST_F(MeasuredPointReaderTest, ACovarianceIsPositiveDefinite) {
    const std::string header = "channel,u,v,x,y,z,cxx,cxy,cxz,cyy,cyz,czz\n";
    for (const char* const numbers : {"0,0,0,1,0,1", "1,2,0,1,0,1", "1,0,0,1,0,-1", "1,0.9,0.9,1,-0.9,1"}) {
        EXPECT_THAT(refusalOf(header + "A,0,0,1,2,3," + numbers + "\n"),
                    HasSubstr("column 7, cxx: found \"" + std::string(1, numbers[0]) +
                              "\", expected a covariance, which is positive definite; "))
            << numbers;
    }
}

TEST_F(MeasuredPointReaderTest, PixelsNeedAResolution) {
    EXPECT_THAT(refusalOf("projector,px,py,x,y,z\nC,1,1,1,2,3\n"),
                AllOf(HasSubstr("column 1, projector: found \"C\""), HasSubstr("its picture has no size")));
}

TEST_F(MeasuredPointReaderTest, ReadsAFile) {
    const TemporaryFolder folder;
    const std::string file = folder.write("points.csv", "channel,u,v,x,y,z\nA,0,0,1,2,3\n");
    const MeasuredPointReader reader(*m_config, {"m"});
    EXPECT_EQ(reader.readFile(file).points.size(), 1U);
    EXPECT_THROW(static_cast<void>(reader.readFile(file + "x")), VeltraniMissingFileException);
    EXPECT_THROW(static_cast<void>(reader.readFile(folder.path())), VeltraniMissingFileException);
}

}  // namespace
