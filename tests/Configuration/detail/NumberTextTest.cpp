#include "Configuration/detail/ValueText.h"

#include "support/ForeignLocale.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cmath>
#include <limits>
#include <optional>

namespace {

using Veltrani::ConfigurationDetail::NumberState;
using Veltrani::ConfigurationDetail::parseFourBytes;
using Veltrani::ConfigurationDetail::parseNumber;
using Veltrani::ConfigurationDetail::parsePixelCount;

TEST(NumberText, ReadsDecimalNumbers) {
    EXPECT_EQ(parseNumber("0").value, 0.0);
    EXPECT_EQ(parseNumber("-2.5").value, -2.5);
    EXPECT_EQ(parseNumber(".5").value, 0.5);
    EXPECT_EQ(parseNumber("5.").value, 5.0);
    EXPECT_EQ(parseNumber("1e3").value, 1000.0);
    EXPECT_EQ(parseNumber("25E-1").value, 2.5);
    EXPECT_EQ(parseNumber("0.1").value, 0.1);
    EXPECT_EQ(parseNumber("1.7976931348623157e308").value, std::numeric_limits<double>::max());
    EXPECT_EQ(parseNumber("4.9406564584124654e-324").value, std::numeric_limits<double>::denorm_min());
    EXPECT_TRUE(std::signbit(parseNumber("-0").value));
}

TEST(NumberText, RefusesEverythingElse) {
    for (const char* text : {"",     " ",   "-",   ".",    "e5",       "1e",  "1,5",   "1 ",    " 1", "+1",  "1.2.3",
                             "0x10", "nan", "inf", "-inf", "infinity", "NaN", "1_000", "1'000", "1d", "--1", "one"}) {
        EXPECT_EQ(parseNumber(text).state, NumberState::WRONG_FORM) << text;
        EXPECT_EQ(parseNumber(text).value, 0.0) << text;
    }
}

TEST(NumberText, TellsNumbersThatNoDoubleHolds) {
    for (const char* text : {"1e999", "-1e999", "1e-999", "1.8e308"}) {
        EXPECT_EQ(parseNumber(text).state, NumberState::OUT_OF_RANGE) << text;
    }
    EXPECT_EQ(parseNumber("1e999x").state, NumberState::WRONG_FORM);
}

TEST(NumberText, DoesNotAskTheLocale) {
    const ForeignLocale german;
    EXPECT_EQ(parseNumber("1234.5").value, 1234.5);
    EXPECT_EQ(parseNumber("1,5").state, NumberState::WRONG_FORM);
    EXPECT_EQ(Veltrani::ConfigurationDetail::numberText(1234567), "1234567");
    EXPECT_EQ(Veltrani::ConfigurationDetail::fourBytesText({1, 2, 3, 255}), "1 2 3 255");
}

TEST(NumberText, PixelCountsAreWholeAndPositive) {
    EXPECT_EQ(parsePixelCount("1920").value, 1920);
    EXPECT_EQ(parsePixelCount("01").value, 1);
    EXPECT_EQ(parsePixelCount("2147483647").value, INT_MAX);
    EXPECT_EQ(parsePixelCount("2147483648").state, NumberState::OUT_OF_RANGE);
    for (const char* text : {"", "0", "000", "-1", "-0", "+1", "1.0", "1e3", " 1", "1 ", "x", "-99999999999"}) {
        EXPECT_EQ(parsePixelCount(text).state, NumberState::WRONG_FORM) << text;
    }
}

TEST(NumberText, FourBytesAreExactlyFour) {
    EXPECT_EQ(parseFourBytes("14 7 0 255"), (std::array<unsigned char, 4>{14, 7, 0, 255}));
    EXPECT_EQ(parseFourBytes("  1\t2\n3\r4 "), (std::array<unsigned char, 4>{1, 2, 3, 4}));
    for (const char* text :
         {"", " ", "1 2 3", "1 2 3 4 5", "1 2 3 256", "1 2 3 -1", "1,2,3,4", "1 2 3 x", "1 2 3 4x"}) {
        EXPECT_EQ(parseFourBytes(text), std::nullopt) << text;
    }
}

TEST(NumberText, WholeNumbersSurviveTheRoundTrip) {
    for (const int value : {1, 9, 1920, INT_MAX}) {
        EXPECT_EQ(parsePixelCount(Veltrani::ConfigurationDetail::numberText(value)).value, value);
    }
    EXPECT_EQ(Veltrani::ConfigurationDetail::numberText(INT_MIN), "-2147483648");
    EXPECT_EQ(parseFourBytes(Veltrani::ConfigurationDetail::fourBytesText({0, 1, 99, 255})),
              (std::array<unsigned char, 4>{0, 1, 99, 255}));
}

TEST(NumberText, DoublesSurviveTheRoundTripWithTheFewestDigits) {
    using Veltrani::ConfigurationDetail::numberText;
    for (const double value : {0.1, 0.1 + 0.2, -22.5, 1e22, 5e-324, std::numeric_limits<double>::max()}) {
        EXPECT_EQ(parseNumber(numberText(value)).value, value);
    }
    EXPECT_EQ(numberText(0.1), "0.1");
    EXPECT_EQ(numberText(-0.0), "-0");
    EXPECT_EQ(numberText(std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(numberText(-std::numeric_limits<double>::infinity()), "-inf");
}

}  // namespace
