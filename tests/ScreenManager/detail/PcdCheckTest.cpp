#include "ScreenManager/detail/PcdCloud.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "PcdSamples.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <filesystem>

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Veltrani::ScreenManagerDetail::PcdCheck;

const std::vector<pcd::Position> POINTS{{1.0F, 2.0F, 3.0F}, {-4.5F, 0.25F, 1e-3F}, {7.0F, 8.0F, 9.0F}};

class PcdCheckTest : public testing::Test {
protected:
    [[nodiscard]] std::string fault(const std::string& content) const {
        return faultOf(Veltrani::RegularFile(folder.write("cloud.pcd", content)));
    }

    /// Why a file must not be read; empty when it may.
    static std::string faultOf(const Veltrani::RegularFile& file) {
        try {
            static_cast<void>(PcdCheck::check(file));
        } catch (const VeltraniParseException& refusal) {
            return Veltrani::toUtf8(refusal.message);
        }
        return "";
    }

    TemporaryFolder folder;
};

/// A header with other fields than x, y and z.
std::string headerOf(const std::string& fields, std::size_t points, const std::string& data) {
    const std::string count = std::to_string(points);
    return fields + "\nWIDTH " + count + "\nHEIGHT 1\nPOINTS " + count + "\nDATA " + data + "\n";
}

std::string sizeFault(std::size_t found, std::size_t expected) {
    return "found a file of " + std::to_string(found) + " bytes, expected " + std::to_string(expected) +
           "; export the cloud again: the file is cut off, or its header is wrong";
}

TEST_F(PcdCheckTest, ValidFilesOfEveryKindPass) {
    EXPECT_EQ(fault(pcd::ascii(POINTS)), "");
    EXPECT_EQ(fault(pcd::binary(POINTS)), "");
    EXPECT_EQ(fault(pcd::compressed(POINTS)), "");
}

TEST_F(PcdCheckTest, EveryPrefixThatLosesSomethingIsRefused) {
    for (const std::string& file : {pcd::ascii(POINTS), pcd::binary(POINTS), pcd::compressed(POINTS)}) {
        // Without its last line feed an ascii file still holds everything, and so it does with a shorter last number.
        const std::size_t end = file.find("DATA ascii") == std::string::npos ? file.size() : file.size() - 1;
        for (std::size_t length = 0; length < end; ++length) {
            EXPECT_NE(fault(file.substr(0, length)), "") << length << " of\n" << file;
        }
        EXPECT_EQ(fault(file.substr(0, end)), "");
    }
}

TEST_F(PcdCheckTest, AnEmptyFileAndOneThatIsNoPointCloudAreRefused) {
    EXPECT_EQ(fault(""), "found an empty file, expected a point cloud; export the cloud again");
    EXPECT_EQ(fault("ply\nformat ascii 1.0\n"),
              "line 1: found \"ply\", expected a keyword of a PCD header; name a point cloud in the format PCD, or "
              "export it again");
    EXPECT_THAT(fault(std::string(100, '\0')),
                StartsWith("found no complete DATA line, expected a header that ends in one; name a point cloud in the "
                           "format PCD, or export it again"));
    EXPECT_THAT(fault(std::string(3'000'000, 'x')),
                StartsWith("found no complete DATA line, expected a header that ends in one; name a point cloud in the "
                           "format PCD, or export it again"));
    EXPECT_EQ(fault("VERSION 0.7\nWIDTH 1\nHEIGHT 1\nDATA ascii\n"),
              "found no FIELDS line, expected FIELDS with x, y and z; add the line, or export the cloud again");
}

TEST_F(PcdCheckTest, CoordinatesMustBeThereOnceAsFloatingPointNumbers) {
    EXPECT_EQ(fault(headerOf("FIELDS x y", 1, "ascii") + "1 2\n"),
              "found no field z, expected it once in FIELDS; export the cloud with one x, y and z per point");
    EXPECT_EQ(fault(headerOf("FIELDS X Y Z", 1, "ascii") + "1 2 3\n"),
              "found no field x, expected it once in FIELDS; export the cloud with one x, y and z per point");
    EXPECT_EQ(fault(headerOf("FIELDS x y z y", 1, "ascii") + "1 2 3 4\n"),
              "found field y 2 times, expected it once in FIELDS; export the cloud with one x, y and z per point");
    EXPECT_EQ(fault(headerOf("FIELDS x y z\nSIZE 8 4 8\nTYPE F F F", 1, "ascii") + "1 2 3\n"), "");
    EXPECT_EQ(fault(headerOf("FIELDS x y z\nSIZE 8 8 8\nTYPE I F F", 1, "ascii") + "1 2 3\n"),
              "found field x with TYPE I, SIZE 8 and COUNT 1, expected TYPE F, SIZE 4 or 8 and COUNT 1; export the "
              "coordinates as floating-point numbers");
    EXPECT_EQ(fault(headerOf("FIELDS x y z\nSIZE 4 4 4\nTYPE F I F", 1, "ascii") + "1 2 3\n"),
              "found field y with TYPE I, SIZE 4 and COUNT 1, expected TYPE F, SIZE 4 or 8 and COUNT 1; export the "
              "coordinates as floating-point numbers");
    EXPECT_EQ(fault(headerOf("FIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 2", 1, "ascii") + "1 2 3 4\n"),
              "found field z with TYPE F, SIZE 4 and COUNT 2, expected TYPE F, SIZE 4 or 8 and COUNT 1; export the "
              "coordinates as floating-point numbers");
}

TEST_F(PcdCheckTest, AnnouncedPointsMustFitIntoTheFile) {
    EXPECT_EQ(fault(pcd::header(10'000'000, "ascii")),
              "found 0 points, expected 10000000; export the cloud again: the file is cut off, or its header "
              "is wrong");
    const std::string binary = pcd::header(10'000'000, "binary");
    EXPECT_EQ(fault(binary), sizeFault(binary.size(), binary.size() + 120'000'000));
    EXPECT_THAT(fault(pcd::header(2147483647, "binary")), HasSubstr("found a file of "));
    EXPECT_EQ(fault(pcd::header(4, "ascii") + "1 2 3\n1 2 3\n1 2 3\n\n\n\n\n\n\n\n"),
              "found 3 points, expected 4; export the cloud again: the file is cut off, or its header is wrong");
    EXPECT_EQ(fault(pcd::replaced(pcd::ascii(POINTS), "WIDTH 3", "WIDTH 4")),
              "found WIDTH 4 x HEIGHT 1 and POINTS 3, expected as many points; correct the header, or export the cloud "
              "again");
}

TEST_F(PcdCheckTest, AsciiValuesThatAReaderMisreadsAreRefusedWithTheirLine) {
    const std::string two = pcd::header(2, "ascii") + "1 2 3\n";
    constexpr const char* EXPECTED =
        ", expected a number of single precision with a decimal point, nan or inf; write it as in -1.25 or 1e-3, in a "
        "larger unit where it is too large";
    for (const char* word : {"x", "1,5", "1e39", "-1e39", "0x1", "1.5.", "#", "nano", "1.#QNAN", "info"}) {
        EXPECT_EQ(fault(two + "4 " + word + " 6\n"), std::string("line 13: found \"") + word + "\"" + EXPECTED);
    }
    EXPECT_EQ(fault(two + "4.125 5.125\n"),
              "line 13: found \"2 values\", expected 3; give every point one value per field");
    EXPECT_EQ(fault(two + "4 5 6 7\n"),
              "line 13: found \"4 values\", expected 3; give every point one value per field");
    EXPECT_EQ(fault(two + "\r\n4 5 6\r\n"),
              "line 13: found \"0 values\", expected 3; give every point one value per field")
        << "the reader counts a line with a carriage return as a point";
    EXPECT_EQ(fault(two + "\n\n4 5 6x\n"), std::string("line 15: found \"6x\"") + EXPECTED);
}

TEST_F(PcdCheckTest, AsciiFilesThatAreOddButCompletePass) {
    const std::string two = pcd::header(2, "ascii");
    EXPECT_EQ(fault(two + "1 2 3\n4 5 6"), "") << "without a line feed at the end";
    EXPECT_EQ(fault(two + "\n1 2 3\n\n\n4 5 6\n"), "") << "with empty lines";
    EXPECT_EQ(fault(two + " 1\t2  3 \r\n4 5 6\r\n"), "") << "with tabs, blanks and carriage returns";
    EXPECT_EQ(fault(two + "nan NaN -nan\ninf -Inf +INFINITY\n"), "") << "with points that were not measured";
    EXPECT_EQ(fault(two + "1 2 3\n4 5 6\n7 8 9\nanything\n"), "") << "with something behind the last point";
    EXPECT_EQ(fault(pcd::header(0, "ascii")), "") << "without points";
}

TEST_F(PcdCheckTest, ValuesThatAreNoCoordinatesNeedOnlyBeNumbers) {
    const std::string file =
        headerOf("FIELDS n x y z rgb\nSIZE 4 4 4 4 4\nTYPE F F F F U\nCOUNT 2 1 1 1 1", 1, "ascii");
    EXPECT_EQ(fault(file + "-nan inf 1 2 3 4.2108e+06\n"), "");
    EXPECT_EQ(fault(file + "0 red 1 2 3 0\n"),
              "line 9: found \"red\", expected a number with a decimal point; write it as in -1.25 or 1e-3");
    EXPECT_EQ(fault(file + "0 0 1 2 1e39 0\n"),
              "line 9: found \"1e39\", expected a number of single precision with a decimal point, nan or inf; write "
              "it as in -1.25 or 1e-3, in a larger unit where it is too large");
}

TEST_F(PcdCheckTest, BinaryFilesAreMeasuredWithAllTheirFields) {
    const std::string file = headerOf("FIELDS x _ y z\nSIZE 4 1 4 4\nTYPE F U F F\nCOUNT 1 7 1 1", 2, "binary");
    EXPECT_EQ(fault(file + std::string(38, '\1')), "");
    EXPECT_EQ(fault(file + std::string(39, '\1')), "") << "with something behind the last point";
    EXPECT_EQ(fault(file + std::string(37, '\1')), sizeFault(file.size() + 37, file.size() + 38));
}

TEST_F(PcdCheckTest, CompressedSizesMustAgreeWithThePointsAndTheFile) {
    const std::string header = pcd::header(2, "binary_compressed");
    const std::string runs = pcd::copiedRuns(std::string(24, '\1'));
    const auto file = [&](std::uint32_t compressed, std::uint32_t uncompressed) {
        return header + pcd::bytes(compressed) + pcd::bytes(uncompressed) + runs;
    };
    EXPECT_EQ(fault(file(25, 24)), "");
    EXPECT_EQ(fault(file(0, 24)),
              "found 0 bytes of compressed data, expected some; export the cloud again: the file is cut off, or its "
              "header is wrong");
    EXPECT_EQ(fault(file(25, 23)),
              "found compressed data for 23 bytes, expected 24 for the points; export the cloud again: the file is cut "
              "off, or its header is wrong");
    EXPECT_EQ(fault(file(25, 0xffffffffU)),
              "found compressed data for 4294967295 bytes, expected 24 for the points; export the cloud again: the "
              "file is cut off, or its header is wrong");
    EXPECT_EQ(fault(file(26, 24)), sizeFault(header.size() + 33, header.size() + 34));
    EXPECT_THAT(fault(file(0xffffffffU, 24)), HasSubstr("found a file of "));
}

TEST_F(PcdCheckTest, FewCompressedBytesCannotStandForManyPoints) {
    // 100 million points would take 1.2 GB before anybody noticed.
    const std::string file = pcd::header(100'000'000, "binary_compressed") + pcd::bytes(std::uint32_t{3}) +
                             pcd::bytes(std::uint32_t{1'200'000'000}) + "abc";
    EXPECT_EQ(fault(file),
              "found 3 bytes of compressed data, expected enough for 1200000000 bytes of points; export the cloud "
              "again: the file is cut off, or its header is wrong");
}

TEST_F(PcdCheckTest, CompressedPaddingIsRefused) {
    const std::string header = headerOf("FIELDS x _ y z\nSIZE 4 4 4 4\nTYPE F F F F", 1, "binary_compressed");
    EXPECT_EQ(fault(header + pcd::bytes(std::uint32_t{17}) + pcd::bytes(std::uint32_t{16}) +
                    pcd::copiedRuns(std::string(16, '\1'))),
              "found padding (\"_\") in compressed data, expected fields with names; export the cloud as DATA binary");
}

TEST_F(PcdCheckTest, DataThatLookLikeMoreHeaderAreRefused) {
    const std::string header = pcd::header(1, "binary");
    for (const std::string data : {"POINTS 100000\n", "\n\nFIELDS a b c d\n", " \tSIZE 8\nabcdef", "#\nDATA ascii\n",
                                   "VERSION\n# a\nWIDTH 7\n", "COLUMNS x abcdefgh"}) {
        EXPECT_EQ(fault(header + data),
                  "found data that begin like a header line, expected points; export the cloud with another of the "
                  "three kinds of DATA")
            << data;
    }
    for (const std::string data : {"#bcdefghijkl", "\n\n\n\n\n\n\n\n\n\n\n\n", "# \nabcdefghij", "POINT 123456",
                                   "            ", "abc\nPOINTS 12"}) {
        EXPECT_EQ(fault(header + data), "") << data;
    }
}

TEST_F(PcdCheckTest, ManyMegabytesOfLineFeedsAreStillABinaryCloud) {
    EXPECT_EQ(fault(pcd::header(1'000'000, "binary") + std::string(12'000'000, '\n')), "");
}

TEST_F(PcdCheckTest, RealScansPass) {
    const std::string data = extraData();
    if (data.empty()) {
        GTEST_SKIP() << "no further data configured";
    }
    for (const char* name : {"bun0.pcd", "milk_color.pcd", "room_scan1.pcd"}) {
        EXPECT_EQ(faultOf(Veltrani::RegularFile(data + "/" + name)), "") << name;
    }
}

}  // namespace
