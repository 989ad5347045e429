#include "KelvoScreen/detail/DecimalNumber.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using Veltrani::KelvoScreenDetail::DecimalNumber;

struct Parsed {
    double value = 0;
    std::size_t length = 0;  ///< 0: refused
};

/// Parses from a block of exactly the size of the text, so that the address sanitizer sees a byte too many.
Parsed parse(const std::string& text) {
    const std::vector<char> exact(text.begin(), text.end());
    Parsed parsed;
    const char* const first = exact.data();
    parsed.length = static_cast<std::size_t>(DecimalNumber::parse(first, first + exact.size(), parsed.value) - first);
    return parsed;
}

void expectNumber(const std::string& text, double expected) {
    const Parsed parsed = parse(text);
    EXPECT_EQ(parsed.length, text.size()) << text;
    EXPECT_EQ(std::bit_cast<std::uint64_t>(parsed.value), std::bit_cast<std::uint64_t>(expected)) << text;
}

TEST(DecimalNumber, ReadsTheFormsThatMeshFilesHave) {
    expectNumber("0", 0.0);
    expectNumber("-0", -0.0);
    expectNumber("12", 12.0);
    expectNumber("-12.5", -12.5);
    expectNumber("+12.5", 12.5);
    expectNumber(".5", 0.5);
    expectNumber("-.5", -0.5);
    expectNumber("+.5", 0.5);
    expectNumber("5.", 5.0);
    expectNumber(".8e-1", 0.08);
    expectNumber("-.7e+2", -70.0);
    expectNumber("+1E3", 1000.0);
    expectNumber("0.1", 0.1);
    expectNumber("14678.000001", 14678.000001);
    expectNumber("000000000000000000000000000001.5", 1.5);
}

TEST(DecimalNumber, ReadsNumbersBeyondTheShortCut) {
    expectNumber("9007199254740992", 9007199254740992.0);
    expectNumber("9007199254740993", 9007199254740992.0);
    expectNumber("9007199254740995", 9007199254740996.0);
    expectNumber("0.3000000000000000166", 0.3);
    expectNumber("3.141592653589793115997963468544185161590576171875", 3.141592653589793);
    expectNumber("18446744073709551616", 18446744073709551616.0);
    expectNumber("1.7976931348623157e308", std::numeric_limits<double>::max());
    expectNumber("2.2250738585072014e-308", std::numeric_limits<double>::min());
    expectNumber("4.9406564584124654e-324", std::numeric_limits<double>::denorm_min());
}

TEST(DecimalNumber, TooNearToZeroIsZeroWithItsSign) {
    const std::string zeros(400, '0');
    expectNumber("1e-400", 0.0);
    expectNumber("-1e-400", -0.0);
    expectNumber("+123456789e-400", 0.0);
    expectNumber("0." + zeros + "1", 0.0);
    expectNumber("-." + zeros + "1e-5", -0.0);
    expectNumber("1e-99999999999999999999999", 0.0);
    expectNumber("1" + zeros + "e-900", 0.0);
    expectNumber("0e99999", 0.0);
}

TEST(DecimalNumber, RefusesWhatNoDoubleCanHold) {
    const std::string zeros(400, '0');
    for (const std::string& text :
         {std::string("1e309"), std::string("-1e309"), std::string("1e999"), "1" + zeros, "1" + zeros + ".5",
          "0." + zeros + "1e900", std::string("1e99999999999999999999999"), "1" + zeros + "e-50"}) {
        EXPECT_EQ(parse(text).length, 0U) << text;
    }
}

TEST(DecimalNumber, RefusesWhatIsNoNumber) {
    for (const std::string text :
         {"",    "-",   "+",    ".",    "-.",       "+.", "+-5", "-+5", "--5", "++5", "nan", "-nan",
          "NaN", "inf", "-inf", "+inf", "infinity", "e5", ".e5", ",5",  "x",   " 5",  "\t5", "-x"}) {
        EXPECT_EQ(parse(text).length, 0U) << text;
    }
}

TEST(DecimalNumber, StopsWhereTheNumberEnds) {
    const std::vector<std::pair<std::string, std::size_t>> cases = {
        {"1,5", 1}, {"0x10", 1}, {"1e", 1}, {"1e+", 1}, {"1.5.5", 3}, {"1 2", 1}, {"5/6", 1}, {"1e5e5", 3}, {"2f", 1}};
    for (const auto& [text, length] : cases) {
        EXPECT_EQ(parse(text).length, length) << text;
    }
}

/// A random decimal: mostly what files hold, and some of every other form.
std::string randomDecimal(std::mt19937_64& random) {
    const auto upTo = [&](std::uint64_t n) { return random() % (n + 1); };
    std::string text = upTo(2) == 0 ? "-" : "";
    const std::uint64_t whole = upTo(9) == 0 ? upTo(20) : upTo(7);
    const std::uint64_t decimals = upTo(9) == 0 ? upTo(24) : upTo(9);
    for (std::uint64_t i = 0; i < whole; ++i) {
        text += static_cast<char>('0' + upTo(9));
    }
    text += decimals > 0 ? "." : "";
    for (std::uint64_t i = 0; i < decimals; ++i) {
        text += static_cast<char>('0' + upTo(9));
    }
    if (whole + decimals == 0) {
        text += '0';
    }
    if (upTo(9) == 0) {
        text += 'e' + std::to_string(static_cast<int>(upTo(600)) - 300);
    }
    return text;
}

TEST(DecimalNumber, AgreesBitForBitWithTheStandardLibrary) {
    constexpr int COUNT = 2'000'000;
    std::mt19937_64 random(20240611);
    int compared = 0;
    for (int i = 0; i < COUNT; ++i) {
        const std::string text = randomDecimal(random);
        double expected = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), expected);
        double value = 0;
        const char* const stop = DecimalNumber::parse(text.data(), text.data() + text.size(), value);
        if (error == std::errc{}) {
            ASSERT_EQ(stop, end) << text;
            ASSERT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(expected)) << text;
            ++compared;
        }
    }
    EXPECT_GT(compared, COUNT * 9 / 10);
}

TEST(DecimalNumber, ReadsBackEveryDoubleThatWasWrittenInFull) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 200'000; ++i) {
        const auto value = std::bit_cast<double>(random());
        if (std::isfinite(value)) {
            std::array<char, 40> text{};
            const auto written = std::to_chars(text.data(), text.data() + text.size(), value);
            double readBack = 0;
            ASSERT_EQ(DecimalNumber::parse(text.data(), written.ptr, readBack), written.ptr) << text.data();
            ASSERT_EQ(std::bit_cast<std::uint64_t>(readBack), std::bit_cast<std::uint64_t>(value)) << text.data();
        }
    }
}

}  // namespace
