#include "Common/QuotedText.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using Veltrani::inQuotes;
using Veltrani::onOneLine;

TEST(QuotedText, ControlCharactersAreSpelledOut) {
    EXPECT_EQ(onOneLine("plain \u20ac"), "plain \u20ac");
    EXPECT_EQ(onOneLine("a\nb\tc\x7f"), "a\\nb\\x09c\\x7f");
    EXPECT_EQ(onOneLine(std::string("nul\0", 4)), "nul\\x00");
}

TEST(QuotedText, WhatTurnsALineRoundOrEndsItOrIsNotSeenIsSpelledOut) {
    EXPECT_EQ(onOneLine("a\u202eb\u0085c\u2028d\u2066e\u061cf\u200fg"),
              "a\\u202eb\\u0085c\\u2028d\\u2066e\\u061cf\\u200fg");
    EXPECT_EQ(onOneLine("\ufeff\u2064\ufff9\U000e0041"), "\\ufeff\\u2064\\ufff9\\U000e0041");
    EXPECT_EQ(onOneLine("\u009f\u00a0\u200a\u2010\u2027\u202f\u205f\u2070"),
              "\\u009f\u00a0\u200a\u2010\u2027\u202f\u205f\u2070")
        << "their neighbours are seen";
    EXPECT_EQ(onOneLine("B\u00fchne \u20ac \u4e2d \U0001f600"), "B\u00fchne \u20ac \u4e2d \U0001f600");
    EXPECT_EQ(onOneLine(""), "");
}

TEST(QuotedText, BytesThatAreNoTextAreSpelledOut) {
    EXPECT_EQ(onOneLine("\xE2\x80"), "\\xe2\\x80") << "a character that is cut off";
    EXPECT_EQ(onOneLine("a\x9b"
                        "2Jb\xff"),
              "a\\x9b2Jb\\xff")
        << "a control of terminals with eight bits";
    EXPECT_EQ(onOneLine("\xed\xa0\x80\xc0\x8a"), "\\xed\\xa0\\x80\\xc0\\x8a")
        << "a surrogate, a line feed of two bytes";
}

TEST(QuotedText, NothingBehindThePieceOfATextIsShown) {
    const std::string_view text = "a\u00fc\u20ac\U0001f600b";
    EXPECT_EQ(onOneLine(text.substr(0, 2)), "a\\xc3");
    EXPECT_EQ(onOneLine(text.substr(3, 2)), "\\xe2\\x82");
    EXPECT_EQ(onOneLine(text.substr(6, 3)), "\\xf0\\x9f\\x98");
    EXPECT_EQ(onOneLine(text.substr(6, 4)), "\U0001f600");
}

TEST(QuotedText, WhatIsShownTwiceIsShownTheSame) {
    const std::string once = onOneLine("a\nb\u202e\xff\\n");
    EXPECT_EQ(onOneLine(once), once);
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
    EXPECT_EQ(inQuotes("\u202e" + std::string(114, 'x') + "y"), "\"\\u202e" + std::string(114, 'x') + "...\"");
}

}  // namespace
