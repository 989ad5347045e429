#include "DisplayReport/basics/TextTable.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using Veltrani::DisplayReport::shortened;
using Veltrani::DisplayReport::TextTable;

std::string printed(const TextTable& table, int indent = 0) {
    std::ostringstream out;
    table.print(out, indent);
    return out.str();
}

TEST(TextTable, ColumnsAreAsWideAsTheirLongestCell) {
    TextTable table({"a", "long heading", "c"});
    table.add({"wide cell", "x", "1"});
    table.add({"", "yy", "2"});
    EXPECT_EQ(printed(table),
              "a          long heading  c\n"
              "wide cell  x             1\n"
              "           yy            2\n");
}

TEST(TextTable, CountsCharactersAndNotBytes) {
    TextTable table({"name", "n"});
    table.add({"B\xc3\xbchne", "1"});
    table.add({"plain", "2"});
    EXPECT_EQ(printed(table), "name   n\nB\xc3\xbchne  1\nplain  2\n");
}

TEST(TextTable, MissingCellsAreEmptyAndFurtherOnesAreDropped) {
    TextTable table({"a", "b"});
    table.add({"1"});
    table.add({"1", "2", "3"});
    EXPECT_EQ(printed(table, 2), "  a  b\n  1\n  1  2\n");
}

TEST(TextTable, NoTextMovesTheCursor) {
    TextTable table({"a\x9b", "b"});
    table.add({"x\x1b[2Jy\nz\u202e", "1"});
    EXPECT_EQ(printed(table),
              "a\\x9b               b\n"
              "x\\x1b[2Jy\\nz\\u202e  1\n");
}

TEST(Shortened, KeepsWhatFits) {
    EXPECT_EQ(shortened("abc", 3), "abc");
    EXPECT_EQ(shortened("abcd", 3), "abc...");
    EXPECT_EQ(shortened("", 0), "");
}

TEST(Shortened, NeverCutsInsideACharacter) {
    EXPECT_EQ(shortened("\xc3\xbc\xc3\xbc\xc3\xbc", 2), "\xc3\xbc\xc3\xbc...");
}

}  // namespace
