#include "Common/QuotedText.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::inQuotes;
using Veltrani::onOneLine;

TEST(QuotedText, ControlCharactersAreSpelledOut) {
    EXPECT_EQ(onOneLine("plain \u20ac"), "plain \u20ac");
    EXPECT_EQ(onOneLine("a\nb\tc\x7f"), "a\\nb\\x09c\\x7f");
    EXPECT_EQ(onOneLine(std::string("nul\0", 4)), "nul\\x00");
}

TEST(QuotedText, QuotesStayOnTheirLineAndShort) {
    EXPECT_EQ(inQuotes(""), "\"\"");
    EXPECT_EQ(inQuotes("a\nb"), "\"a\\nb\"");
    EXPECT_EQ(inQuotes(std::string(120, 'x')), "\"" + std::string(120, 'x') + "\"");
    EXPECT_EQ(inQuotes(std::string(121, 'x')), "\"" + std::string(120, 'x') + "...\"");
}

TEST(QuotedText, WhatIsSpelledOutCountsAsItIsShown) {
    std::string thirty;
    for (int i = 0; i < 30; ++i) {
        thirty += "\\x00";
    }
    EXPECT_EQ(inQuotes(std::string(30, '\0')), "\"" + thirty + "\"");
    EXPECT_EQ(inQuotes(std::string(31, '\0')), "\"" + thirty + "...\"");
}

TEST(QuotedText, AQuoteIsNeverCutInsideACharacter) {
    EXPECT_EQ(inQuotes(std::string(119, 'x') + "\u20ac and more"), "\"" + std::string(119, 'x') + "...\"");
    EXPECT_EQ(inQuotes(std::string(200, '\x80')), "\"...\"") << "no character at all";
}

}  // namespace
