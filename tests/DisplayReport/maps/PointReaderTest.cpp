#include "DisplayReport/maps/PointReader.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "support/ForeignLocale.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using P3 = Point<double, 3>;

struct Reading {
    std::vector<P3> points;
    std::string fault;  ///< empty when the input was read to its end
};

Reading read(const std::string& text, PointKind kind = PointKind::PICTURE) {
    std::istringstream in(text);
    PointReader reader(in, "points.csv", kind);
    Reading reading;
    try {
        P3 point;
        while (reader.next(point)) {
            reading.points.push_back(point);
        }
        EXPECT_EQ(reader.bytesRead(), text.size());
    } catch (const VeltraniParseException& thrown) {
        reading.fault = Veltrani::toUtf8(thrown.message);
    }
    return reading;
}

TEST(PointReader, ReadsOnePointPerLine) {
    const Reading picture = read("0.5,0.25\n-1e-3,+2\n");
    EXPECT_THAT(picture.points, ElementsAre(P3{0.5, 0.25, 0.0}, P3{-0.001, 2.0, 0.0}));
    EXPECT_EQ(picture.fault, "");
    EXPECT_THAT(read("1,2,3\n4,5,6", PointKind::LAYOUT).points, ElementsAre(P3{1, 2, 3}, P3{4, 5, 6}))
        << "the last line may lack its end";
}

TEST(PointReader, AHeaderMayStandFirst) {
    EXPECT_THAT(read("u,v\n1,2\n").points, ElementsAre(P3{1, 2, 0}));
    EXPECT_THAT(read(" X , y ,Z\n1,2,3\n", PointKind::LAYOUT).points, ElementsAre(P3{1, 2, 3}));
    EXPECT_THAT(read("1,2\nu,v\n").fault, StartsWith("points.csv:2: point: found \"u,v\""));
    EXPECT_THAT(read("u,v\nu,v\n").fault, StartsWith("points.csv:2: "));
    EXPECT_THAT(read("x,y,z\n").fault,
                StartsWith("points.csv:1: point: found \"x,y,z\", expected the columns u,v, each "
                           "once, or points that are mapped the other way; "));
    EXPECT_THAT(read("u,u,v\n1,2,3\n").fault, StartsWith("points.csv:1: point: found \"u,u,v\""));
}

TEST(PointReader, ColumnsAreReadByTheirNames) {
    EXPECT_THAT(read("v,u\n1,2\n").points, ElementsAre(P3{2, 1, 0}));
    const std::string table = "u,v,x,y,z,mapped\n0.5,0.25,1,2,3,1\n";
    EXPECT_THAT(read(table).points, ElementsAre(P3{0.5, 0.25, 0}));
    EXPECT_THAT(read(table, PointKind::LAYOUT).points, ElementsAre(P3{1, 2, 3}));
    EXPECT_THAT(read("name, \"Z\" ,y,x\n\"a, \"\"b\"\"\",3,2,1\n\"line\nfeed\",6,5,4\n", PointKind::LAYOUT).points,
                ElementsAre(P3{1, 2, 3}, P3{4, 5, 6}));
    for (const char* row : {"1,2,3,4,5", "1,2,3,4,5,1,9", "\"1,2,3,4,5,6", "\"1\"1,2,3,4,5,6"}) {
        EXPECT_THAT(read("u,v,x,y,z,mapped\n" + std::string(row) + "\n").fault,
                    HasSubstr("expected 6 columns, as the header names them"))
            << row;
    }
    EXPECT_THAT(read("a,u,v\nx,1,\n").fault, StartsWith("points.csv:2: point: found \"x,1,\", expected u,v: 2 finite"))
        << "half a point";
    EXPECT_THAT(read("a,u,v\n\"x\ny\",1,2\nx,1,two\n").fault, StartsWith("points.csv:4: "));
}

PointReader::PassedOver passedOver(const std::string& text, const std::string& projector, std::vector<P3>& points) {
    std::istringstream in(text);
    PointReader reader(in, "points.csv", PointKind::PICTURE);
    reader.takeOnly(projector);
    for (P3 point; reader.next(point);) {
        points.push_back(point);
    }
    return reader.passedOver();
}

TEST(PointReader, RowsOfOtherChannelsAndRowsWithoutAPlaceArePassedOver) {
    const std::string table = "Projector,u,v\nA,1,2\nB,3,4\nA,,\nB,,\nA,5,6\n";
    std::vector<P3> points;
    const auto ofOne = passedOver(table, "A", points);
    EXPECT_THAT(points, ElementsAre(P3{1, 2, 0}, P3{5, 6, 0}));
    EXPECT_EQ(ofOne.ofOthers, 2U);
    EXPECT_EQ(ofOne.withoutPlace, 1U);
    points.clear();
    const auto ofAll = passedOver(table, "", points);
    EXPECT_EQ(points.size(), 3U);
    EXPECT_EQ(ofAll.ofOthers, 0U);
    EXPECT_EQ(ofAll.withoutPlace, 2U);
    points.clear();
    EXPECT_EQ(passedOver("u,v\n1,2\n", "A", points).ofOthers, 0U) << "a table that names no channels";
    EXPECT_EQ(points.size(), 1U);
}

TEST(PointReader, TheHeadOfATableIsKnownBeforeItsFirstPoint) {
    Veltrani::DisplayReport::ReportHead written{"targets", "mm"};
    std::istringstream in(written.comment() + "u,v\n1,2\n");
    PointReader reader(in, "points.csv", PointKind::PICTURE);
    EXPECT_EQ(reader.head().report, "targets");
    EXPECT_EQ(reader.head().unit, "mm");
    EXPECT_EQ(reader.head().frame, written.frame);
    P3 point;
    EXPECT_TRUE(reader.next(point));
    std::istringstream bare("1,2\n3,4\n");
    PointReader plain(bare, "points.csv", PointKind::PICTURE);
    EXPECT_EQ(plain.head().report + plain.head().unit + plain.head().frame, "");
    EXPECT_TRUE(plain.next(point) && plain.next(point));
    EXPECT_EQ(point, (P3{3, 4, 0})) << "no line is lost";
    EXPECT_FALSE(plain.next(point));
}

TEST(PointReader, LinesThatSayWhatATableIsMayStandFirst) {
    EXPECT_THAT(read("# screenmanager/map version 1\r\n# a,b\n\t#\nu,v\n1,2\n").points, ElementsAre(P3{1, 2, 0}));
    EXPECT_THAT(read("\xEF\xBB\xBF#\n1,2\n").points, ElementsAre(P3{1, 2, 0}));
    EXPECT_THAT(read("# alone\n").points, ElementsAre());
    EXPECT_THAT(read("u,v\n# late\n1,2\n").fault, StartsWith("points.csv:2: point: found \"# late\""));
    EXPECT_THAT(read("1,2\n# late\n").fault, StartsWith("points.csv:2: "));
    EXPECT_THAT(read("# a\n\n1,2\n").fault, StartsWith("points.csv:2: ")) << "an empty line";
}

TEST(PointReader, LineEndsBlanksAndAByteOrderMarkDoNotMatter) {
    EXPECT_THAT(read("\xEF\xBB\xBFu,v\r\n 1 ,\t2\r\n3,4\r\n").points, ElementsAre(P3{1, 2, 0}, P3{3, 4, 0}));
    EXPECT_EQ(read("1,2\n\xEF\xBB\xBF"
                   "3,4\n")
                  .points.size(),
              1U);
}

TEST(PointReader, AnEmptyInputHasNoPoints) {
    for (const char* text : {"", "\n", "\r\n\r\n", "u,v\n", "\xEF\xBB\xBF"}) {
        const Reading reading = read(text);
        EXPECT_TRUE(reading.points.empty());
        EXPECT_EQ(reading.fault, "");
    }
}

TEST(PointReader, EmptyLinesMayStandAtTheEndAlone) {
    EXPECT_EQ(read("1,2\n\n \r\n").fault, "");
    const Reading gap = read("1,2\n\n\n3,4\n");
    EXPECT_EQ(gap.points.size(), 1U);
    EXPECT_THAT(gap.fault, StartsWith("points.csv:2: point: found an empty line, expected a point on every line"));
}

// Each is one change of a good line.
TEST(PointReader, WhatIsNoPointIsRefusedWithItsPlace) {
    for (const char* line : {"1", "1,2,3", "1,", ",2", "1;2", "0,5;0,25", "nan,1", "1,inf", "-Infinity,0", "1e999,0",
                             "0x10,1", "1 2", "1,2,", "1,two", "\"1\",2", "1_000,2", "1,--2", "1,1e"}) {
        const Reading reading = read("0,0\n" + std::string(line) + "\n7,7\n");
        EXPECT_EQ(reading.points.size(), 1U) << line;
        EXPECT_THAT(reading.fault, StartsWith("points.csv:2: point: found \"")) << line;
        EXPECT_THAT(reading.fault, HasSubstr("expected u,v: 2 finite numbers with decimal points, a comma between "
                                             "them; write one point per line, such as 0.5,0.25"))
            << line;
    }
    EXPECT_THAT(read("1,2\n", PointKind::LAYOUT).fault, HasSubstr("x,y,z: 3 finite numbers"));
}

TEST(PointReader, BinaryDataIsRefusedOnOneLine) {
    for (const auto& [bytes, found] : {std::pair(std::string("\x89PNG\x1a\xff\xfe,1\n", 10), "\""),
                                       std::pair(std::string("\x89PNG\x1a\0\xff\xfe,1\n", 11), "a zero byte")}) {
        const Reading reading = read(bytes);
        EXPECT_THAT(reading.fault, StartsWith("points.csv:1: point: found " + std::string(found)));
        EXPECT_EQ(reading.fault.find_first_of(std::string("\n\0\x1a", 3)), std::string::npos);
    }
}

TEST(PointReader, ALineHasALimit) {
    const std::string blanks(PointReader::LONGEST_LINE_BYTES - 3, ' ');
    EXPECT_EQ(read("1," + blanks + "2\n").fault, "");
    const std::string fault = read("1,2\n1,  " + blanks + "2\n").fault;
    EXPECT_THAT(fault, StartsWith("points.csv:2: point: found \"1,   "));
    EXPECT_THAT(fault, HasSubstr("expected lines of at most 4096 bytes"));
    EXPECT_LT(fault.size(), 300U);
}

TEST(PointReader, NumbersReadBackExactly) {
    const Reading reading = read("0.1,0.30000000000000004\n5e-324,1.7976931348623157e308\n");
    EXPECT_THAT(reading.points, ElementsAre(P3{0.1, 0.1 + 0.2, 0.0}, P3{5e-324, 1.7976931348623157e308, 0.0}));
}

TEST(PointReader, TheLocaleDoesNotMatter) {
    const ForeignLocale german;
    EXPECT_THAT(read("1.5,2.25\n").points, ElementsAre(P3{1.5, 2.25, 0.0}));
}

TEST(PointReader, APointOfACommandLineIsReadAlike) {
    EXPECT_EQ(PointReader::parse("1,2,3", PointKind::LAYOUT), (P3{1, 2, 3}));
    EXPECT_EQ(PointReader::parse("1,2", PointKind::LAYOUT), std::nullopt);
    EXPECT_EQ(PointReader::parse("", PointKind::PICTURE), std::nullopt);
}

std::vector<P3> allOf(PointInput input) {
    std::vector<P3> points;
    for (P3 point; input.next(point);) {
        points.push_back(point);
    }
    return points;
}

std::string refusalOf(const std::string& path) {
    try {
        static_cast<void>(PointInput::ofFile(path, PointKind::LAYOUT));
    } catch (const std::runtime_error& refusal) {
        return refusal.what();
    }
    return "";
}

TEST(PointInput, GivesThePointsOfAListAStreamAndAFileAlike) {
    const std::vector<P3> expected{{1, 2, 3}, {-4, 5.5, 0}};
    const std::string text = "x,y,z\n1,2,3\n-4,5.5,0\n";
    std::istringstream stream(text);
    const TemporaryFolder folder;
    const std::string file = folder.write("points.csv", text);
    EXPECT_EQ(allOf(PointInput::ofPoints(expected)), expected);
    EXPECT_EQ(allOf(PointInput::ofStream(stream, "points", PointKind::LAYOUT)), expected);
    EXPECT_EQ(allOf(PointInput::ofFile(file, PointKind::LAYOUT)), expected);
}

TEST(PointInput, KnowsHowFarAFileIsReadButNotHowLongAStreamIs) {
    const TemporaryFolder folder;
    const std::string file = folder.write("points.csv", "1,2,3\n4,5,6\n");
    PointInput input = PointInput::ofFile(file, PointKind::LAYOUT);
    EXPECT_EQ(input.size(), 12U);
    EXPECT_EQ(input.bytesRead(), 0U);
    P3 point;
    ASSERT_TRUE(input.next(point));
    EXPECT_EQ(input.bytesRead(), 6U);
    std::istringstream stream("1,2,3\n");
    EXPECT_EQ(PointInput::ofStream(stream, "points", PointKind::LAYOUT).size(), 0U);
    EXPECT_EQ(PointInput::ofFile("/dev/null", PointKind::LAYOUT).size(), 0U);
}

TEST(PointInput, RefusesAFolderAndAMissingFileWithTheReason) {
    const TemporaryFolder folder;
    EXPECT_EQ(refusalOf(folder.path()), "Is a directory");
    EXPECT_EQ(refusalOf(folder.file("none.csv")), "No such file or directory");
}

TEST(PointInput, NamesItsFileInAFault) {
    const TemporaryFolder folder;
    const std::string file = folder.write("points.csv", "1,2\n");
    PointInput input = PointInput::ofFile(file, PointKind::LAYOUT);
    P3 point;
    try {
        input.next(point);
        FAIL() << "nothing was thrown";
    } catch (const VeltraniParseException& fault) {
        EXPECT_THAT(Veltrani::toUtf8(fault.message), StartsWith(file + ":1: point: "));
    }
}

}  // namespace
