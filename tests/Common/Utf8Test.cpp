#include "Common/Utf8.h"

#include <gtest/gtest.h>

#include <clocale>

namespace {

using Veltrani::fromUtf8;
using Veltrani::fromUtf8OrBytes;
using Veltrani::toUtf8;

TEST(Utf8, EncodesEveryLength) {
    EXPECT_EQ(toUtf8(L"A\u00e9\u20ac\U0001f4fd"), "A\xc3\xa9\xe2\x82\xac\xf0\x9f\x93\xbd");
}

TEST(Utf8, EmptyGivesEmpty) {
    EXPECT_EQ(toUtf8(L""), "");
    EXPECT_EQ(fromUtf8(""), L"");
}

TEST(Utf8, EveryCodePointSurvivesTheRoundTrip) {
    for (char32_t code = 1; code <= 0x10FFFF; ++code) {
        const std::wstring text(1, static_cast<wchar_t>(code));
        if (code >= 0xD800 && code <= 0xDFFF) {
            ASSERT_EQ(toUtf8(text), "") << "surrogate " << static_cast<unsigned>(code);
        } else {
            ASSERT_EQ(fromUtf8(toUtf8(text)), text) << "code point " << static_cast<unsigned>(code);
        }
    }
}

TEST(Utf8, IllFormedWideTextGivesEmpty) {
    EXPECT_EQ(toUtf8(std::wstring(L"left ") + static_cast<wchar_t>(0xD83D)), "");
    EXPECT_EQ(toUtf8(std::wstring(1, static_cast<wchar_t>(0x110000))), "");
    EXPECT_EQ(toUtf8(std::wstring(1, static_cast<wchar_t>(-61))), "");
}

TEST(Utf8, IllFormedBytesGiveEmpty) {
    EXPECT_EQ(fromUtf8("abc\x80"), L"") << "stray continuation";
    EXPECT_EQ(fromUtf8("abc\xc3"), L"") << "cut off";
    EXPECT_EQ(fromUtf8("\xc0\xaf"), L"") << "overlong";
    EXPECT_EQ(fromUtf8("\xed\xa0\x80"), L"") << "encoded surrogate";
    EXPECT_EQ(fromUtf8("\xf4\x90\x80\x80"), L"") << "above U+10FFFF";
    EXPECT_EQ(fromUtf8("\xff"), L"");
}

TEST(Utf8, DoesNotAskTheLocale) {
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
    EXPECT_EQ(toUtf8(L"B\u00fchne"), "B\xc3\xbchne");
    EXPECT_EQ(fromUtf8("B\xc3\xbchne"), L"B\u00fchne");
}

TEST(Utf8, ForeignBytesAreKeptWhenTheTextMustNotBeLost) {
    EXPECT_EQ(fromUtf8OrBytes("caf\xe9"), L"caf\u00e9");
    EXPECT_EQ(fromUtf8OrBytes("caf\xc3\xa9"), L"caf\u00e9");
}

}  // namespace
