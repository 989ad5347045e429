#include "DisplayReport/basics/TableReader.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using testing::ElementsAre;
using testing::Optional;
using Veltrani::DisplayReport::inLowerCase;
using Veltrani::DisplayReport::placesOf;
using Veltrani::DisplayReport::TableReader;

using Places = std::vector<std::size_t>;

/// A reader and the text that it reads.
struct Table {
    explicit Table(const std::string& text) : in(text) {}

    std::istringstream in;
    TableReader reader{in, "table.csv", {"row", "write a row"}};
};

template <class Action>
std::string refusalOf(Action action) {
    try {
        action();
    } catch (const VeltraniParseException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
    return "";
}

TEST(TableReader, LinesEndWithOrWithoutACarriageReturnAndTheLastMayLackItsEnd) {
    Table table(
        "\xEF\xBB\xBF"
        "a\r\nb\n\nc");
    std::vector<std::string> lines;
    while (table.reader.next()) {
        lines.push_back(table.reader.text());
        EXPECT_EQ(table.reader.isEmpty(), table.reader.text().empty());
    }
    EXPECT_THAT(lines, ElementsAre("a", "b", "", "c"));
    EXPECT_EQ(table.reader.line(), 4);
    EXPECT_EQ(table.reader.bytesRead(), 10U);
    EXPECT_FALSE(table.reader.next()) << "the end stays the end";
}

TEST(TableReader, ACarriageReturnAloneEndsNoLine) {
    for (const char* const text : {"a\rb\r", "a\nb\rc\n", "a\r\r\n"}) {
        EXPECT_THAT(refusalOf([text] {
                        Table table(text);
                        while (table.reader.next()) {
                        }
                    }),
                    testing::HasSubstr("row: found a carriage return alone, expected lines that end with a line feed; "
                                       "save the table with line ends of Unix or Windows"))
            << text;
    }
    Table quoted("a\n\"b\rc\"\n");
    EXPECT_TRUE(quoted.reader.next());
    quoted.reader.holdsQuotes();
    EXPECT_TRUE(quoted.reader.next());
    EXPECT_EQ(quoted.reader.text(), "\"b\rc\"");
}

TEST(TableReader, WhatIsNoTextInUtf8IsNamed) {
    using namespace std::string_literals;
    for (const auto& [text, found] :
         {std::pair("\xFF\xFE#\0a\0"s, "a text in UTF-16"), std::pair("\xFE\xFF\0a"s, "a text in UTF-16"),
          std::pair("a\0b"s, "a zero byte")}) {
        Table table(text);
        EXPECT_EQ(refusalOf([&table] { static_cast<void>(table.reader.readHead()); }),
                  "table.csv:1: row: found " + std::string(found) +
                      ", expected a table as text in UTF-8; save it as comma-separated values in the encoding UTF-8");
    }
}

TEST(TableReader, CommasBehindALineOfItsHeadDoNotMatter) {
    Table table("# x, y, z: here; unit m,, ,\n#,,\na,b\n");
    std::vector<std::string> comments;
    EXPECT_TRUE(table.reader.readHead([&comments](std::string_view line) { comments.emplace_back(line); }));
    EXPECT_THAT(comments, ElementsAre("# x, y, z: here; unit m", "#"));
    EXPECT_EQ(table.reader.head().unit, "m");
    EXPECT_EQ(table.reader.text(), "a,b");
}

TEST(TableReader, CellsStandBetweenCommasInQuotesOrWithout) {
    EXPECT_THAT(TableReader::cellsOf(" a ,, \"b, \"\"c\"\"\" ,"), Optional(ElementsAre("a", "", "b, \"c\"", "")));
    EXPECT_THAT(TableReader::cellsOf(""), Optional(ElementsAre("")));
    for (const char* const broken : {"\"a", "\"a\"b", "a,\"b\" c"}) {
        EXPECT_EQ(TableReader::cellsOf(broken), std::nullopt) << broken;
    }
}

TEST(TableReader, QuotesHoldLineFeedsBelowAHeaderOnly) {
    Table table("say \"hi\n\"a\nb\",c\nd\n");
    ASSERT_TRUE(table.reader.next());
    EXPECT_EQ(table.reader.text(), "say \"hi");
    table.reader.holdsQuotes();
    ASSERT_TRUE(table.reader.next());
    EXPECT_THAT(table.reader.cells(), Optional(ElementsAre("a\nb", "c")));
    EXPECT_EQ(table.reader.line(), 3);
    ASSERT_TRUE(table.reader.next());
    EXPECT_EQ(table.reader.text(), "d");
}

TEST(TableReader, TheLinesBeforeTheHeaderSayWhatTheTableIs) {
    const Veltrani::DisplayReport::ReportHead written{"targets", "mm"};
    Table table("# by hand\n" + written.comment() + "u,v\n");
    std::vector<std::string> comments;
    ASSERT_TRUE(table.reader.readHead([&comments](std::string_view line) { comments.emplace_back(line); }));
    EXPECT_EQ(table.reader.text(), "u,v");
    EXPECT_EQ(table.reader.head().report, "targets");
    EXPECT_EQ(table.reader.head().unit, "mm");
    ASSERT_EQ(comments.size(), 4U);
    EXPECT_EQ(comments.front(), "# by hand");
    Table empty("# nothing else\n");
    EXPECT_FALSE(empty.reader.readHead());
}

TEST(TableReader, WhatItCannotReadIsRefusedWithItsLine) {
    Table later("# screenmanager/targets version 2\n");
    EXPECT_EQ(refusalOf([&] { static_cast<void>(later.reader.readHead()); }),
              "table.csv:1: row: found \"# screenmanager/targets version 2\", expected a table of version 1; write a "
              "row");
    Table longOne("a\n" + std::string(TableReader::LONGEST_LINE_BYTES + 1, 'b'));
    ASSERT_TRUE(longOne.reader.next());
    EXPECT_THAT(refusalOf([&] { static_cast<void>(longOne.reader.next()); }),
                testing::AllOf(testing::StartsWith("table.csv:2: row: found \"bbb"),
                               testing::EndsWith("expected lines of at most 4096 bytes; write a row")));
    Table any("a");
    EXPECT_EQ(refusalOf([&] {
                  any.reader.refuse(7, "x", "y", {"cell", "z"});
              }),
              "table.csv:7: cell: found x, expected y; z");
}

TEST(TableReader, ColumnsAreFoundByTheirNamesWhenEachStandsOnce) {
    EXPECT_THAT(placesOf({"x", "y"}, {"y", "a", "x"}), Optional(Places{2, 0}));
    EXPECT_EQ(placesOf({"x", "y"}, {"x", "x", "y"}), std::nullopt);
    EXPECT_EQ(placesOf({"x", "y"}, {"x"}), std::nullopt);
    EXPECT_EQ(inLowerCase("Px \xC3\x84Z"), "px \xC3\x84z") << "other letters stay";
}

}  // namespace
