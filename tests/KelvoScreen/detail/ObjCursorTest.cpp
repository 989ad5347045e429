#include "KelvoScreen/detail/ObjText.h"

#include "KelvoScreen/ObjLoadException.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Veltrani::KelvoScreenDetail::ObjCursor;

/// The keywords of all statements with the lines that they stand on.
std::string statements(const std::string& text) {
    ObjCursor cursor(text);
    std::string result;
    while (cursor.findStatement()) {
        result += std::to_string(cursor.line()) + ':' + std::string(cursor.takeKeyword()) + ' ';
        cursor.skipStatement();
    }
    return result;
}

TEST(ObjCursor, FindsStatementsAndTheirLines) {
    EXPECT_EQ(statements(""), "");
    EXPECT_EQ(statements("a"), "1:a ");
    EXPECT_EQ(statements("a 1\n\n b\n\t# c\nd # e\n"), "1:a 3:b 5:d ");
    EXPECT_EQ(statements("a\r\nb\rc\n\rd"), "1:a 2:b 3:c 5:d ");
    EXPECT_EQ(statements("\xEF\xBB\xBF"
                         "a\nb"),
              "1:a 2:b ");
    EXPECT_EQ(statements("a#b\nc"), "1:a 2:c ");
}

TEST(ObjCursor, JoinsContinuedLines) {
    EXPECT_EQ(statements("a \\\nb\nc"), "1:a 3:c ");
    EXPECT_EQ(statements("a \\\r\nb\\\r \\\n\nc"), "1:a 5:c ");
    EXPECT_EQ(statements("a \\ \nb"), "1:a 2:b ");
    EXPECT_EQ(statements("# a \\\nb"), "2:b ");
    EXPECT_EQ(statements("a # \\\nb"), "1:a 2:b ");
    EXPECT_EQ(statements("a \\\n# b\nc"), "1:a 3:c ");
    EXPECT_EQ(statements("\\\na"), "2:a ");
    EXPECT_EQ(statements("\\"), "");
    EXPECT_EQ(statements("\\x\\y\na"), "1: 2:a ");
}

TEST(ObjCursor, TakesNumbersWordByWord) {
    ObjCursor cursor("v 1.5\t-2 \\\n 3e2#4\n");
    ASSERT_TRUE(cursor.findStatement());
    EXPECT_EQ(cursor.takeKeyword(), "v");
    ASSERT_TRUE(cursor.findWord());
    EXPECT_EQ(cursor.takeNumber(), 1.5);
    ASSERT_TRUE(cursor.findWord());
    EXPECT_EQ(cursor.takeNumber(), -2);
    ASSERT_TRUE(cursor.findWord());
    EXPECT_EQ(cursor.line(), 2U);
    EXPECT_EQ(cursor.takeNumber(), 300);
    EXPECT_FALSE(cursor.findWord());
}

TEST(ObjCursor, TakesTheIndicesOfACorner) {
    ObjCursor cursor("-12/+3//99999999999999999999 x");
    ASSERT_TRUE(cursor.findWord());
    EXPECT_EQ(cursor.takeIndex(), -12);
    EXPECT_TRUE(cursor.take('/'));
    EXPECT_FALSE(cursor.take('/'));
    EXPECT_EQ(cursor.takeIndex(), 3);
    EXPECT_THROW(cursor.requireWordEnd(), ObjLoadException);
    EXPECT_TRUE(cursor.take('/'));
    EXPECT_TRUE(cursor.take('/'));
    EXPECT_GT(cursor.takeIndex(), std::int64_t{1} << 40);
    cursor.requireWordEnd();
    ASSERT_TRUE(cursor.findWord());
    EXPECT_THROW((void)cursor.takeIndex(), ObjLoadException);
}

}  // namespace
