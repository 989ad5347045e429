#include "ScreenManager/detail/PcdFormat.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "PcdSamples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using testing::SizeIs;
using Veltrani::ScreenManagerDetail::PcdHeader;

const std::string VALID = pcd::header(2, "ascii");

/// The message of the refusal, or "accepted".
std::string refusal(const std::string& text) {
    try {
        const PcdHeader header(text);
    } catch (const VeltraniParseException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
    return "accepted";
}

TEST(PcdHeader, ReadsTheUsualHeader) {
    const PcdHeader header(VALID + "1 2 3\n");
    ASSERT_THAT(header.fields(), SizeIs(3));
    EXPECT_EQ(header.fields()[2].name, "z");
    EXPECT_EQ(header.fields()[2].type, 'F');
    EXPECT_EQ(header.fields()[2].size, 4U);
    EXPECT_EQ(header.fields()[2].count, 1U);
    EXPECT_EQ(header.points(), 2U);
    EXPECT_EQ(header.data(), PcdHeader::Data::ASCII);
    EXPECT_EQ(header.bodyOffset(), VALID.size());
    EXPECT_EQ(header.bodyLine(), 12U);
    EXPECT_EQ(header.bytesPerPoint(), 12U);
}

TEST(PcdHeader, ReadsFieldsOfAllKinds) {
    const PcdHeader header(
        "FIELDS x _ label stamp flag\nSIZE 4 1 2 8 1\nTYPE F U I F B\nCOUNT 1 5 3 2 1\nPOINTS 7\nDATA binary\n");
    EXPECT_EQ(header.bytesPerPoint(), 4U + 5U + 6U + 16U + 1U);
    EXPECT_EQ(header.data(), PcdHeader::Data::BINARY);
}

TEST(PcdHeader, OlderAndShorterHeadersAreRead) {
    EXPECT_EQ(PcdHeader("COLUMNS x y z\nPOINTS 2\nDATA binary_compressed\n").data(),
              PcdHeader::Data::BINARY_COMPRESSED);
    EXPECT_EQ(PcdHeader("FIELDS x y z\nPOINTS 5\nDATA ascii\n").points(), 5U);
    EXPECT_EQ(PcdHeader("FIELDS x y z\nWIDTH 5\nPOINTS 5\nDATA ascii\n").points(), 5U);
    EXPECT_EQ(PcdHeader("FIELDS x y z\nWIDTH 0\nHEIGHT 0\nPOINTS 0\nDATA ascii\n").points(), 0U);
    EXPECT_EQ(PcdHeader("FIELDS x y z\nPOINTS 6\nHEIGHT 2\nWIDTH 3\nDATA ascii\n").points(), 6U);
}

TEST(PcdHeader, CommentsEmptyLinesTabsAndCarriageReturnsAreAllowed) {
    EXPECT_EQ(refusal("\n# comment\r\n\nFIELDS\tx y  z\r\nWIDTH 1\r\nPOINTS 1\r\nDATA ascii\r\n"), "accepted");
}

TEST(PcdHeader, WhatMeansTheSameIsAllowed) {
    EXPECT_EQ(PcdHeader(pcd::replaced(VALID, "TYPE F F F", "TYPE f F f")).fields()[2].type, 'F');
    EXPECT_EQ(PcdHeader(pcd::replaced(VALID, "WIDTH 2", "WIDTH +2")).points(), 2U);
    EXPECT_EQ(PcdHeader(pcd::replaced(VALID, "DATA ascii", "DATA ASCII")).data(), PcdHeader::Data::ASCII);
    EXPECT_EQ(PcdHeader(pcd::replaced(VALID, "DATA ascii", "DATA Ascii yes")).data(), PcdHeader::Data::ASCII);
    EXPECT_EQ(PcdHeader(pcd::replaced(VALID, "DATA ascii", "DATA binary ascii")).data(), PcdHeader::Data::BINARY);
}

TEST(PcdHeader, EveryPrefixIsRefused) {
    for (std::size_t length = 0; length < VALID.size(); ++length) {
        EXPECT_NE(refusal(VALID.substr(0, length)), "accepted") << length;
    }
    EXPECT_EQ(refusal(VALID), "accepted");
}

// Found by the fuzz target: the reader took the blanks for the end of the header and answered a cloud without points.
TEST(PcdHeader, ALineOfBlanksIsRefusedAndAnEmptyLineIsSkipped) {
    const std::string expected = "line 2: found \"a line of blanks\", expected a line of a PCD header; remove the line";
    EXPECT_EQ(refusal("FIELDS x y z\n \nWIDTH 1\nPOINTS 1\nDATA ascii\n"), expected);
    EXPECT_EQ(refusal("FIELDS x y z\r\n\r\nWIDTH 1\r\nPOINTS 1\r\nDATA ascii\r\n"), expected);
    EXPECT_EQ(PcdHeader("FIELDS x y z\n\nWIDTH 1\nPOINTS 1\nDATA ascii\n").points(), 1U);
}

TEST(PcdHeader, EveryMissingLineThatIsNeededIsNamed) {
    EXPECT_EQ(refusal(""),
              "found no complete DATA line, expected a header that ends in one; name a point cloud in the format PCD, "
              "or export it again");
    EXPECT_EQ(refusal("POINTS 1\n"),
              "line 1: found \"POINTS\", expected FIELDS before this line; put the lines in the order FIELDS, SIZE, "
              "TYPE, COUNT, WIDTH, HEIGHT, VIEWPOINT, POINTS, DATA");
    EXPECT_EQ(refusal("VERSION 0.7\nDATA ascii\n"),
              "found no FIELDS line, expected FIELDS with x, y and z; add the line, or export the cloud again");
    EXPECT_EQ(refusal("FIELDS x y z\nDATA ascii\n"),
              "found no POINTS line, expected POINTS with their number; add the line, or export the cloud again");
    EXPECT_EQ(refusal("FIELDS x\nSIZE 4\nPOINTS 1\nDATA ascii\n"),
              "found a SIZE line but no TYPE line, expected both or neither; add the line, or export the cloud again");
    EXPECT_EQ(refusal("FIELDS x\nHEIGHT 1\nPOINTS 1\nDATA ascii\n"),
              "found a HEIGHT line but no WIDTH line, expected both; add the line, or export the cloud again");
}

TEST(PcdHeader, LinesThatDependOnEachOtherMustStandInOrder) {
    EXPECT_EQ(refusal("SIZE 4\n"),
              "line 1: found \"SIZE\", expected FIELDS before this line; put the lines in the order FIELDS, SIZE, "
              "TYPE, COUNT, WIDTH, HEIGHT, VIEWPOINT, POINTS, DATA");
    EXPECT_EQ(refusal("FIELDS x\nTYPE F\n"),
              "line 2: found \"TYPE\", expected SIZE before this line; put the lines in the order FIELDS, SIZE, TYPE, "
              "COUNT, WIDTH, HEIGHT, VIEWPOINT, POINTS, DATA");
    EXPECT_EQ(refusal("FIELDS x\nSIZE 4\nCOUNT 1\n"),
              "line 3: found \"COUNT\", expected TYPE before this line; put the lines in the order FIELDS, SIZE, TYPE, "
              "COUNT, WIDTH, HEIGHT, VIEWPOINT, POINTS, DATA");
    EXPECT_EQ(refusal("FIELDS x\nPOINTS 1\nSIZE 4\n"),
              "line 3: found \"SIZE\", expected this line before POINTS; put the lines in the order FIELDS, SIZE, "
              "TYPE, COUNT, WIDTH, HEIGHT, VIEWPOINT, POINTS, DATA");
}

/// One place of a valid header changed, and what is said about it.
struct Change {
    const char* from;
    const char* to;
    const char* refusal;

    friend void PrintTo(const Change& change, std::ostream* out) {
        *out << testing::PrintToString(std::string(change.from)) << " -> "
             << testing::PrintToString(std::string(change.to));
    }
};

class ChangedPcdHeader : public testing::TestWithParam<Change> {};

TEST_P(ChangedPcdHeader, IsRefusedWithTheReason) {
    EXPECT_EQ(refusal(pcd::replaced(VALID, GetParam().from, GetParam().to)), GetParam().refusal);
}

INSTANTIATE_TEST_SUITE_P(
    OnePlace, ChangedPcdHeader,
    testing::Values(
        Change{"FIELDS x y z", "FIELDS",
               "line 3: found \"FIELDS\", expected the names of the fields; name x, y, z and what else a point has"},
        Change{"FIELDS x y z", "FIELDSX x y z",
               "line 3: found \"FIELDSX\", expected a keyword of a PCD header; name a point cloud in the format PCD, "
               "or export it again"},
        Change{"FIELDS x y z", "fields x y z",
               "line 3: found \"fields\", expected a keyword of a PCD header; name a point cloud in the format PCD, or "
               "export it again"},
        Change{"FIELDS x y z", "FIELDS x y z\nFIELDS x y z",
               "line 4: found \"FIELDS\", expected one such line only; remove one of the two"},
        Change{"FIELDS x y z", "FIELDS x y z\nCOLUMNS x y z",
               "line 4: found \"COLUMNS\", expected one such line only; remove one of the two"},
        Change{"SIZE 4 4 4", "SIZE 4 4",
               "line 4: found \"2 values\", expected 3, one per field; give as many as FIELDS has names"},
        Change{"SIZE 4 4 4", "SIZE 4 4 4 4",
               "line 4: found \"4 values\", expected 3, one per field; give as many as FIELDS has names"},
        Change{
            "SIZE 4 4 4", "SIZE 4 -4 4",
            "line 4: found \"-4\", expected a whole number from 1 to 8; correct the number, or export the cloud again"},
        Change{
            "SIZE 4 4 4", "SIZE 4 x 4",
            "line 4: found \"x\", expected a whole number from 1 to 8; correct the number, or export the cloud again"},
        Change{
            "SIZE 4 4 4", "SIZE 4 0 4",
            "line 4: found \"0\", expected a whole number from 1 to 8; correct the number, or export the cloud again"},
        Change{
            "SIZE 4 4 4", "SIZE 4 9 4",
            "line 4: found \"9\", expected a whole number from 1 to 8; correct the number, or export the cloud again"},
        Change{"SIZE 4 4 4", "SIZE 4 3 4",
               "line 5: found \"F\", expected a type of 3 bytes: F, I, U or B; correct SIZE or TYPE: F has 4 or 8 "
               "bytes, I and U 1, 2, 4 or 8, B 1"},
        Change{"TYPE F F F", "TYPE F Q F",
               "line 5: found \"Q\", expected a type of 4 bytes: F, I, U or B; correct SIZE or TYPE: F has 4 or 8 "
               "bytes, I and U 1, 2, 4 or 8, B 1"},
        Change{"TYPE F F F", "TYPE F FF F",
               "line 5: found \"FF\", expected a type of 4 bytes: F, I, U or B; correct SIZE or TYPE: F has 4 or 8 "
               "bytes, I and U 1, 2, 4 or 8, B 1"},
        Change{"TYPE F F F", "TYPE F",
               "line 5: found \"1 values\", expected 3, one per field; give as many as FIELDS has names"},
        Change{"COUNT 1 1 1", "COUNT 1 0 1",
               "line 6: found \"0\", expected a whole number from 1 to 1048576; correct the number, or export the "
               "cloud again"},
        Change{"COUNT 1 1 1", "COUNT 1 -1 1",
               "line 6: found \"-1\", expected a whole number from 1 to 1048576; correct the number, or export the "
               "cloud again"},
        Change{"COUNT 1 1 1", "COUNT 1 1 1048576",
               "found points of more than 1048576 bytes, expected at most that many; leave out the fields that are not "
               "needed"},
        Change{"SIZE 4 4 4\nTYPE F F F", "SIZE 4 2 4\nTYPE F f F",
               "line 5: found \"f\", expected a type of 2 bytes: F, I, U or B; correct SIZE or TYPE: F has 4 or 8 "
               "bytes, I and U 1, 2, 4 or 8, B 1"},
        Change{"WIDTH 2", "WIDTH -2",
               "line 7: found \"-2\", expected a whole number from 0 to 2147483647; correct the number, or export the "
               "cloud again"},
        Change{"WIDTH 2", "WIDTH 2.0",
               "line 7: found \"2.0\", expected a whole number from 0 to 2147483647; correct the number, or export the "
               "cloud again"},
        Change{"WIDTH 2", "WIDTH", "line 7: found \"0 values\", expected 1; give one number"},
        Change{"WIDTH 2", "WIDTH 2 2", "line 7: found \"2 values\", expected 1; give one number"},
        Change{"WIDTH 2", "WIDTH 3",
               "found WIDTH 3 x HEIGHT 1 and POINTS 2, expected as many points; correct the header, or export the "
               "cloud again"},
        Change{"HEIGHT 1", "HEIGHT 0",
               "found WIDTH 2 x HEIGHT 0 and POINTS 2, expected as many points; correct the header, or export the "
               "cloud again"},
        // 65536 x 65536 is 0 in 32 bits.
        Change{"WIDTH 2\nHEIGHT 1", "WIDTH 65536\nHEIGHT 65536",
               "found WIDTH 65536 x HEIGHT 65536 and POINTS 2, expected as many points; correct the header, or export "
               "the cloud again"},
        Change{"VIEWPOINT 0 0 0 1 0 0 0", "VIEWPOINT 0 0 0",
               "line 9: found \"3 values\", expected 7: tx ty tz qw qx qy qz; write VIEWPOINT 0 0 0 1 0 0 0, or remove "
               "the line"},
        Change{"VIEWPOINT 0 0 0 1 0 0 0", "VIEWPOINT 0 0 0 1 0 0 a",
               "line 9: found \"a\", expected a number with a decimal point; write VIEWPOINT 0 0 0 1 0 0 0, or remove "
               "the line"},
        Change{"POINTS 2", "POINTS two",
               "line 10: found \"two\", expected a whole number from 0 to 2147483647; correct the number, or export "
               "the cloud again"},
        Change{"POINTS 2", "POINTS 4294967298",
               "line 10: found \"4294967298\", expected a whole number from 0 to 2147483647; correct the number, or "
               "export the cloud again"},
        Change{"DATA ascii", "DATA",
               "line 11: found \"DATA\", expected DATA ascii, binary or binary_compressed; name the kind that the data "
               "are of"},
        Change{"DATA ascii", "DATA BINARY",
               "line 11: found \"BINARY\", expected DATA ascii, binary or binary_compressed; name the kind that the "
               "data are of"},
        Change{"DATA ascii", "DATA text",
               "line 11: found \"text\", expected DATA ascii, binary or binary_compressed; name the kind that the data "
               "are of"},
        Change{"DATA ascii", "DATA binary_compressedx",
               "line 11: found \"binary_compressedx\", expected DATA ascii, binary or binary_compressed; name the kind "
               "that the data are of"}));

TEST(PcdHeader, KnowsWhatAReaderTakesForAKeyword) {
    EXPECT_TRUE(PcdHeader::startsLikeKeyword("POINTS"));
    EXPECT_TRUE(PcdHeader::startsLikeKeyword("POINTSX"));
    EXPECT_TRUE(PcdHeader::startsLikeKeyword("COLUMNS"));
    EXPECT_FALSE(PcdHeader::startsLikeKeyword("POINT"));
    EXPECT_FALSE(PcdHeader::startsLikeKeyword(""));
}

TEST(PcdHeader, AMillionFieldsAreRefusedWithoutGoingThroughTheRoof) {
    std::string fields = "FIELDS";
    for (int i = 0; i < 400000; ++i) {
        fields += " a";
    }
    EXPECT_THAT(refusal(fields + "\nPOINTS 1\nDATA ascii\n"), HasSubstr("found points of more than"));
}

}  // namespace
