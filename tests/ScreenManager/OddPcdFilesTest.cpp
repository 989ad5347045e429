// Files that are not as the format has them: what the reader of the Point Cloud Library takes, and what is read here.
#include "PcdCloudFixture.h"
#include "PcdSamples.h"
#include "support/TestPaths.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <limits>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

class OddPcdFiles : public PcdCloudFixture {};

/// A file that the library reads, answering that all is well, and what it makes of its first point. What is refused all
/// the same has a row in the page, whose first column this is.
struct Odd {
    const char* row;
    std::string content;
    pcd::Position first;
};

constexpr pcd::Position ONE{1, 2, 3};
constexpr pcd::Position ORIGIN{0, 0, 0};

/// A text of two points; the second one tells whether the reader is in step.
const std::string ODD =
    "FIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\nWIDTH 2\nHEIGHT 1\nVIEWPOINT 0 0 0 1 0 0 "
    "0\nPOINTS 2\nDATA ascii\n1 2 3\n4 5 6\n";

/// The same with something else in one place.
std::string odd(std::string_view from, std::string_view to) {
    return pcd::replaced(ODD, from, to);
}

/// The same with one more field.
std::string withField(const std::string& size, const std::string& type, const std::string& count,
                      const std::string& value) {
    std::string content = odd("FIELDS x y z", "FIELDS x y z a");
    content = pcd::replaced(content, "SIZE 4 4 4", "SIZE 4 4 4 " + size);
    content = pcd::replaced(content, "TYPE F F F", "TYPE F F F " + type);
    content = pcd::replaced(content, "COUNT 1 1 1", "COUNT 1 1 1 " + count);
    content = pcd::replaced(content, "1 2 3\n", "1 2 3 " + value + '\n');
    return pcd::replaced(content, "4 5 6\n", "4 5 6 " + value + '\n');
}

/// One point of the three coordinates behind another field.
std::string compressedBehind(const pcd::Column& field) {
    return pcd::file({field, pcd::column("x", 'F', std::vector<float>{1}), pcd::column("y", 'F', std::vector<float>{2}),
                      pcd::column("z", 'F', std::vector<float>{3})},
                     "binary_compressed");
}

std::vector<Odd> oddCoordinates() {
    const float infinity = std::numeric_limits<float>::infinity();
    return {{"no x, y or z", odd("FIELDS x y z", "FIELDS x y a"), {1, 2, 0}},
            {"no x, y or z", odd("FIELDS x y z", "FIELDS X Y Z"), ORIGIN},
            {"the same coordinate twice", pcd::replaced(withField("4", "F", "1", "9"), "x y z a", "x y z y"), ONE},
            {"coordinates of another TYPE than F", odd("TYPE F F F", "TYPE I U F"), {0, 0, 3}},
            {"coordinates of another TYPE than F", odd("TYPE F F F", "TYPE F Q F"), {1, 0, 3}},
            {"coordinates with a SIZE of neither 4 nor 8", odd("SIZE 4 4 4", "SIZE 2 4 16"), {0, 2, 0}},
            {"coordinates with another COUNT than 1", odd("COUNT 1 1 1", "COUNT 0 1 1"), ORIGIN},
            {"coordinates with another COUNT than 1",
             pcd::replaced(pcd::replaced(odd("COUNT 1 1 1", "COUNT 1 1 2"), "1 2 3\n", "1 2 3 4\n"), "4 5 6\n",
                           "4 5 6 7\n"),
             {1, 2, 0}},
            {"words, decimal commas and hexadecimal numbers", odd("1 2 3", "1 2 three"), {1, 2, 0}},
            {"words, decimal commas and hexadecimal numbers", odd("1 2 3", "1 2,5 3"), ONE},
            {"words, decimal commas and hexadecimal numbers", odd("1 2 3", "1 2 1.#QNAN"), {1, 2, 1}},
            {"words, decimal commas and hexadecimal numbers", odd("1 2 3", "0x10 2 3"), {0, 2, 3}},
            {"words, decimal commas and hexadecimal numbers", odd("1 2 3", "1 0x10 3"), {1, 16, 3}},
            {"words, decimal commas and hexadecimal numbers", odd("1 2 3", "1; 2; 3"), ONE},
            {"coordinates beyond single precision", odd("1 2 3", "1 1e39 3"), {1, infinity, 3}}};
}

std::vector<Odd> oddLines() {
    return {{"more or fewer values on a line than the fields have", odd("1 2 3", "1 2 3 4"), ORIGIN},
            {"more or fewer values on a line than the fields have", odd("1 2 3", "1.25 2"), ORIGIN},
            {"values that are not separated by blanks or tabs", odd("1 2 3", "1;2;3"), ORIGIN},
            {"values that are not separated by blanks or tabs", odd("1 2 3", "1\f2\f3"), ORIGIN},
            {"values that are not separated by blanks or tabs", odd("1 2 3", "1\v2 3"), ORIGIN},
            {"comments and lines of blanks among the points", odd("1 2 3", "# scan\n1 2 3"), ORIGIN},
            {"comments and lines of blanks among the points", odd("1 2 3", " \n1 2 3"), ORIGIN},
            {"comments and lines of blanks among the points", odd("1 2 3", "\r\n1 2 3"), ORIGIN},
            {"data that begin like a header line", odd("1 2 3", "VERSION 0.7\nPOINTS 2\n1 2 3"), ORIGIN},
            {"other values that are no decimal numbers", withField("4", "F", "1", "abc"), ONE},
            {"other values that are no decimal numbers", withField("4", "U", "1", "0xff"), ONE},
            {"other values that are no decimal numbers", withField("4", "F", "1", "1,5"), ONE},
            {"other values that are no decimal numbers", withField("4", "F", "1", "1e999"), ONE}};
}

std::vector<Odd> oddHeaders() {
    std::string comments;
    for (int i = 0; i < 11'000; ++i) {
        comments += '#' + std::string(99, 'c') + '\n';
    }
    return {{"a header line twice", odd("WIDTH 2", "WIDTH 3\nWIDTH 2"), ONE},
            {"a header line twice", odd("HEIGHT 1", "VERSION .6\nVERSION .7\nHEIGHT 1"), ONE},
            {"a line of blanks in the header", odd("SIZE", " \nSIZE"), {}},
            {"an unknown line in the header", odd("DATA", "NOTE wall\nDATA"), ORIGIN},
            {"a keyword with something behind it", odd("WIDTH", "WIDTHS"), ONE},
            {"SIZE, TYPE or COUNT after POINTS", pcd::replaced(odd("POINTS 2\n", ""), "SIZE", "POINTS 2\nSIZE"), ONE},
            {"SIZE without TYPE", odd("TYPE F F F\nCOUNT 1 1 1\n", ""), ONE},
            {"a number in the header with something behind it", odd("POINTS 2", "POINTS 2.0"), ONE},
            {"a number in the header with something behind it", odd("POINTS 2", "POINTS 2 7"), ONE},
            {"a number in the header with something behind it", odd("WIDTH 2", "WIDTH 2x"), ONE},
            {"a number in the header with something behind it", odd("SIZE 4 4 4", "SIZE 4.0 4 4"), {1, 0, 0}},
            {"a VIEWPOINT that is not seven decimal numbers", odd("0 0 0 1", "0 0 0 one"), ONE},
            {"a VIEWPOINT that is not seven decimal numbers", odd("0 0 0 1", "0,5 0 0 1"), ONE},
            {"a VIEWPOINT that is not seven decimal numbers", odd("0 0 0 1", "0 0 0 1 0"), ONE},
            {"DATA of another kind", odd("DATA ascii", "DATA text"), ONE},
            {"DATA of another kind", odd("DATA ascii", "DATA BINARY"), ONE},
            {"no line feed behind DATA", "FIELDS x y z\nWIDTH 0\nPOINTS 0\nDATA ascii", {}},
            {"a header of more than 1 MiB", comments + ODD, ONE}};
}

std::vector<Odd> oddFields() {
    std::string many = "0";
    for (int i = 1; i < 262'144; ++i) {
        many += " 0";
    }
    const std::string single = pcd::compressed({ONE});
    const std::string sized = single.substr(0, single.find("binary_compressed\n") + 18);
    return {{"other fields of a TYPE and SIZE that do not go together", withField("3", "U", "1", "9"), ONE},
            {"other fields of a TYPE and SIZE that do not go together", withField("4", "B", "1", "9"), ONE},
            {"other fields of a TYPE and SIZE that do not go together", withField("16", "F", "1", "9"), ONE},
            {"other fields of a TYPE and SIZE that do not go together", withField("4", "Q", "1", "9"), ONE},
            {"other fields of a TYPE and SIZE that do not go together", withField("4", "FF", "1", "9"), ONE},
            {"other fields of a TYPE and SIZE that do not go together",
             compressedBehind({"a", 'B', 4, {"9"}, pcd::bytes(9.0F)}),
             {9, 1, 2}},
            {"other fields with COUNT 0", withField("4", "F", "0", ""), ONE},
            {"padding (`_`) in compressed data", compressedBehind({"_", 'F', 4, {"9"}, pcd::bytes(9.0F)}), {9, 1, 2}},
            // With less than the points take, the reader goes beyond its memory.
            {"compressed data of another length than the points",
             sized + pcd::bytes(std::uint32_t{17}) + pcd::bytes(std::uint32_t{16}) +
                 pcd::copiedRuns(pcd::bytes(std::array<float, 4>{1, 2, 3, 4})),
             ONE},
            {"points of more than 1 MiB", withField("4", "F", "262144", many), ONE}};
}

/// The first column of the table of what is refused although the reader takes it.
std::set<std::string> rowsOfThePage() {
    std::ifstream file(sourceFolder() + "/docs/point-clouds.md");
    std::set<std::string> rows;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("| ") && !line.starts_with("| In the file |")) {
            rows.insert(line.substr(2, line.find(" |") - 2));
        }
    }
    return rows;
}

TEST_F(OddPcdFiles, WhatIsRefusedAlthoughTheReaderTakesItStandsInThePage) {
    std::set<std::string> rows;
    for (const std::vector<Odd>& group : {oddCoordinates(), oddLines(), oddHeaders(), oddFields()}) {
        for (const auto& [row, content, first] : group) {
            const std::string shown = row + (": " + content.substr(0, 200));
            const auto cloud = readByLibrary(content);
            ASSERT_TRUE(cloud.has_value()) << shown << ": the reader refuses it itself";
            if (!cloud->empty()) {
                EXPECT_EQ((pcd::Position{(*cloud)[0].x, (*cloud)[0].y, (*cloud)[0].z}), first) << shown;
            }
            EXPECT_NE(refusal(content), "") << shown;
            rows.insert(row);
        }
    }
    EXPECT_EQ(rows, rowsOfThePage());
}

TEST_F(OddPcdFiles, WhatIsOddAndHarmlessIsReadAsTheReaderDoes) {
    const std::string binary = pcd::binary({ONE, {4, 5, 6}});
    for (const std::string& content :
         {ODD, odd("ascii", "ASCII"), odd("ascii", "Ascii"), odd("ascii", "ascii yes"),
          pcd::replaced(binary, "DATA binary", "DATA binary ascii"), odd("TYPE F F F", "TYPE f F f"),
          pcd::replaced(binary, "TYPE F F F", "TYPE f f f"), withField("1", "b", "1", "0"), odd("WIDTH 2", "WIDTH +2"),
          odd("POINTS 2", "POINTS +2"), odd("SIZE 4 4 4", "SIZE 4 +4 4"), odd("COUNT 1 1 1", "COUNT 1 1 +1"),
          odd("SIZE", " \tSIZE"), odd("4 5 6", "\n\n4 5 6"), odd("4 5 6", "+4 5.0 6e0"), ODD + "anything\n",
          withField("2", "U", "3", "1 2 3"), withField("8", "F", "1", "1e300"), withField("4", "U", "1", "-nan")}) {
        const auto expected = readByLibrary(content);
        ASSERT_TRUE(expected.has_value()) << content;
        const auto cloud = load(content);
        ASSERT_EQ(cloud->size(), 2U) << content;
        ASSERT_EQ(expected->size(), 2U) << content;
        for (std::size_t i = 0; i < 2; ++i) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                EXPECT_EQ((*cloud)[i].data[axis], static_cast<float>(3 * i + axis + 1)) << content;
                EXPECT_EQ((*expected)[i].data[axis], (*cloud)[i].data[axis]) << content;
            }
        }
    }
}

}  // namespace
