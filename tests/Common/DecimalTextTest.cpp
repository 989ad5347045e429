#include "Common/DecimalText.h"

#include "support/ForeignLocale.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Veltrani::parseCount;
using Veltrani::parseFinite;

TEST(DecimalText, ReadsWhatFilesHoldInEveryLocale) {
    const ForeignLocale foreign;
    EXPECT_EQ(parseFinite("1."), 1.0);
    EXPECT_EQ(parseFinite(".5"), 0.5);
    EXPECT_EQ(parseFinite("-2.5e-01"), -0.25);
    EXPECT_EQ(parseFinite("+3"), 3.0);
    EXPECT_EQ(parseFinite("0.1"), 0.1);
}

TEST(DecimalText, RefusesWhatIsNoFiniteNumber) {
    for (const char* text : {"", "+", "-", "+-1", ".", "1,5", "1.5x", " 1", "1 ", "nan", "inf", "-inf", ".Nan", ".Inf",
                             "1e400", "-1e400", "0x10", "1e"}) {
        EXPECT_EQ(parseFinite(text), std::nullopt) << text;
    }
    EXPECT_EQ(parseFinite(std::string(400, '9')), std::nullopt);
    EXPECT_EQ(parseFinite("0" + std::string(400, '9')), std::nullopt);
    EXPECT_EQ(parseFinite("1" + std::string(500, '0') + "e-1"), std::nullopt);
    EXPECT_EQ(parseFinite("1e99999999999999999999"), std::nullopt);
}

TEST(DecimalText, WhatIsNearerToZeroThanAnyNumberIsZero) {
    EXPECT_EQ(parseFinite("1e-400"), 0.0);
    EXPECT_EQ(parseFinite("-1e-400"), 0.0);
    EXPECT_EQ(parseFinite("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_EQ(parseFinite("." + std::string(400, '0') + "1e+5"), 0.0);
    EXPECT_EQ(parseFinite("0" + std::string(50, '0') + "1e-400"), 0.0);
    EXPECT_EQ(parseFinite("1e-99999999999999999999"), 0.0);
}

TEST(DecimalText, CountsAreDigitsWithinTheirRange) {
    EXPECT_EQ(parseCount("1", 10), 1);
    EXPECT_EQ(parseCount("10", 10), 10);
    for (const char* text : {"", "0", "11", "-1", "+1", "1.0", "1e1", "99999999999999999999", "4 "}) {
        EXPECT_EQ(parseCount(text, 10), std::nullopt) << text;
    }
}

}  // namespace
