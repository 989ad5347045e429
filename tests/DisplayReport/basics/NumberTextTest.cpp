#include "DisplayReport/basics/NumberText.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cstring>
#include <limits>
#include <locale>
#include <random>

namespace {

using Veltrani::DisplayReport::exactText;
using Veltrani::DisplayReport::fixedText;
using Veltrani::DisplayReport::roundedText;
using Veltrani::DisplayReport::significantText;

TEST(ExactText, ReadsBackAsTheSameNumber) {
    std::mt19937_64 random(20240611);
    int compared = 0;
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (value != value) {
            continue;
        }
        const std::string text = exactText(value);
        double back = 0;
        std::from_chars(text.data(), text.data() + text.size(), back);
        ASSERT_EQ(std::memcmp(&back, &value, sizeof value), 0) << text;
        ++compared;
    }
    EXPECT_GT(compared, 90000);
}

TEST(ExactText, IsTheShortestSuchText) {
    EXPECT_EQ(exactText(0.1), "0.1");
    EXPECT_EQ(exactText(1.0000000000000002), "1.0000000000000002");
    EXPECT_EQ(exactText(-0.0), "-0");
    EXPECT_EQ(exactText(std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(RoundedText, HasAtMostThreeDecimals) {
    EXPECT_EQ(roundedText(1.23456), "1.235");
    EXPECT_EQ(roundedText(1.5), "1.5");
    EXPECT_EQ(roundedText(1500.0), "1500");
    EXPECT_EQ(roundedText(-0.0001), "0");
    EXPECT_EQ(roundedText(0.0), "0");
}

TEST(RoundedText, HoldsTheLargestNumber) {
    EXPECT_EQ(roundedText(std::numeric_limits<double>::max()).size(), 309U);
}

TEST(FixedText, HasAsManyDecimalsAsRequested) {
    EXPECT_EQ(fixedText(68, 2), "68.00");
    EXPECT_EQ(fixedText(30.58, 2), "30.58");
    EXPECT_EQ(fixedText(-0.26, 1), "-0.3");
    EXPECT_EQ(fixedText(1234567.5, 0), "1234568");
}

TEST(NumberText, DoesNotAskTheLocale) {
    class Grouping : public std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    EXPECT_EQ(exactText(1234567.5), "1234567.5");
    EXPECT_EQ(roundedText(1234567.5), "1234567.5");
    std::locale::global(before);
}

TEST(SignificantText, KeepsFiveDigitsOfAnySize) {
    EXPECT_EQ(significantText(0.00107583), "0.0010758");
    EXPECT_EQ(significantText(15.0), "15");
    EXPECT_EQ(significantText(314.15926), "314.16");
    EXPECT_EQ(significantText(4.0e18), "4e+18");
    EXPECT_EQ(significantText(0.0), "0");
    EXPECT_EQ(significantText(std::numeric_limits<double>::infinity()), "inf");
}

}  // namespace
