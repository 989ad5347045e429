#include "ScreenManager/detail/PcdFormat.h"

#include "Common/VeltraniException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Veltrani::ScreenManagerDetail::PcdText;

TEST(PcdText, SplitsAtBlanksTabsAndCarriageReturns) {
    EXPECT_THAT(PcdText::split(" \tFIELDS x\t\ty  z \r"), ElementsAre("FIELDS", "x", "y", "z"));
    EXPECT_THAT(PcdText::split("one"), ElementsAre("one"));
    EXPECT_THAT(PcdText::split(""), IsEmpty());
    EXPECT_THAT(PcdText::split(" \t\r"), IsEmpty());
    EXPECT_THAT(PcdText::split("1\v2"), ElementsAre("1\v2")) << "no other separators";
}

const std::vector<const char*> NOT_FINITE{"nan",  "NaN",  "NAN", "-nan", "+nan",     "nan(ind)",  "-nan(ind)", "inf",
                                          "-inf", "+inf", "Inf", "-INF", "infinity", "-Infinity", "nan()"};

TEST(PcdText, CoordinatesAreNumbersOfSinglePrecisionOrNotFinite) {
    for (const char* word : {"0", "-0", "1", "+1", "-1.5", ".5", "5.", "1e5", "1E+5", "-1.25e-3", "3.4028234e38",
                             "3.4028235e38", "3.40282347e+38", "-3.40282347e+38", "3.4028235677973364e38", "1e-45",
                             "1e-60", "1e-400", "0.1000000000000000055511151231257827"}) {
        EXPECT_TRUE(PcdText::isCoordinate(word)) << word;
        EXPECT_FALSE(PcdText::isNotFinite(word)) << word;
    }
    for (const char* word : NOT_FINITE) {
        EXPECT_TRUE(PcdText::isCoordinate(word)) << word;
        EXPECT_TRUE(PcdText::isNotFinite(word)) << word;
    }
    for (const char* word :
         {"",     "x",      "1,5",    "1.5f",    "0x10",   "1e",    "e5",    "+",        "-",       "--1",
          "+-1",  "++1",    "1 2",    "1.#QNAN", "--inf",  "+-nan", "nan(",  "nan)",     "nan(a b", "nanx",
          "infx", "infini", "3.5e38", "1e400",   "-1e400", "1_000", "1'000", "nan(1,2)", "(nan)",   "i\xeeNf"}) {
        EXPECT_FALSE(PcdText::isCoordinate(word)) << word;
    }
    for (const char* word : {"3.4028235677973367e38", "-3.4028236e38"}) {
        EXPECT_FALSE(PcdText::isCoordinate(word)) << word << " is infinite in single precision";
    }
    EXPECT_FALSE(PcdText::isCoordinate(std::string_view("1\0", 2)));
    EXPECT_FALSE(PcdText::isCoordinate(std::string_view("nan\0", 4)));
}

TEST(PcdText, OtherValuesMayBeAnyNumber) {
    for (const char* word : {"1", "4.2108e+06", "1e300", "1e-400"}) {
        EXPECT_TRUE(PcdText::isNumber(word)) << word;
    }
    for (const char* word : NOT_FINITE) {
        EXPECT_TRUE(PcdText::isNumber(word)) << word;
    }
    for (const char* word : {"", "x", "1,5", "0x10", "1e400", "12a"}) {
        EXPECT_FALSE(PcdText::isNumber(word)) << word;
    }
}

TEST(PcdText, WholeNumbersHaveNoMinusAndFit) {
    std::uint64_t number = 0;
    EXPECT_TRUE(PcdText::readWhole("007", number));
    EXPECT_EQ(number, 7U);
    EXPECT_TRUE(PcdText::readWhole("+3", number));
    EXPECT_EQ(number, 3U);
    EXPECT_TRUE(PcdText::readWhole("18446744073709551615", number));
    EXPECT_EQ(number, 18446744073709551615U);
    for (const char* word : {"", "+", "-1", "++1", "+-1", "1.0", "1e3", "18446744073709551616", "1x"}) {
        EXPECT_FALSE(PcdText::readWhole(word, number)) << word;
    }
}

/// The message of a refusal.
std::wstring refusal(std::string_view found) {
    try {
        PcdText::fail(12, found, "a number", "mend it");
    } catch (const VeltraniParseException& fault) {
        return fault.message;
    }
}

TEST(PcdText, RefusalsNameLineFoundAndExpected) {
    EXPECT_EQ(refusal("1,5"), L"line 12: found \"1,5\", expected a number; mend it");
}

TEST(PcdText, RefusalsOfAWholeFileNameNoLine) {
    try {
        PcdText::fail("no points", "some", "add them");
    } catch (const VeltraniParseException& fault) {
        EXPECT_EQ(fault.message, L"found no points, expected some; add them");
    }
}

TEST(PcdText, RefusalsStayOneShortLineOfPlainText) {
    EXPECT_EQ(refusal("a\nb\x01\xff"), L"line 12: found \"a?b??\", expected a number; mend it");
    EXPECT_EQ(refusal(std::string(1000, 'x')),
              L"line 12: found \"" + std::wstring(60, L'x') + L"...\", expected a number; mend it");
}

}  // namespace
