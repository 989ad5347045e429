#include "Configuration/detail/StatedNumber.h"

#include "Configuration/UnitConversionTable.h"
#include "Configuration/detail/ElementReader.h"
#include "Configuration/detail/ValueText.h"
#include "support/ForeignLocale.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numbers>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace {

using Veltrani::ConfigurationDetail::ElementReader;
using Veltrani::ConfigurationDetail::nearestStated;
using Veltrani::ConfigurationDetail::parseNumber;
using Veltrani::ConfigurationDetail::StatedNumber;
using Unit = UnitConversionTable::UnitSubType;
using Reading = std::function<double(double)>;

constexpr double LARGEST = std::numeric_limits<double>::max();
constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr std::array<Unit, 5> UNITS{Unit::UNIT_MM, Unit::UNIT_CM, Unit::UNIT_M, Unit::UNIT_INCH, Unit::UNIT_FOOT};

Reading lengths(Unit native, Unit stated) {
    return [=](double value) { return ElementReader(native).lengthOf(value, stated); };
}

double degrees(double value) {
    return ElementReader::angleOf(value, "deg");
}

/// A number of any size between the given powers of two, of both signs.
double anyNumber(std::mt19937_64& random, int smallestExponent, int largestExponent) {
    std::uniform_real_distribution<double> mantissa(1.0, 2.0);
    std::uniform_int_distribution<int> exponent(smallestExponent, largestExponent);
    const double value = std::ldexp(mantissa(random), exponent(random));
    return (random() & 1U) != 0 ? -value : value;
}

std::int64_t ulpsBetween(double a, double b) {
    return std::abs(std::bit_cast<std::int64_t>(std::abs(a)) - std::bit_cast<std::int64_t>(std::abs(b)));
}

/// How near any of the numbers around a rough inverse comes: an independent way to the same.
double nearestAround(double rough, double wanted, const Reading& read) {
    constexpr int STEPS = 8;
    double number = rough;
    for (int i = 0; i < STEPS; ++i) {
        number = std::nextafter(number, -INF);
    }
    double nearest = INF;
    for (int i = 0; i <= 2 * STEPS; ++i) {
        nearest = std::min(nearest, std::abs(read(number) - wanted));
        number = std::nextafter(number, INF);
    }
    return nearest;
}

void expectNearest(double wanted, double rough, const Reading& read) {
    const std::optional<StatedNumber> stated = nearestStated(wanted, read);
    ASSERT_TRUE(stated.has_value()) << wanted;
    EXPECT_EQ(read(parseNumber(stated->text).value), stated->value) << "what a reader makes of " << stated->text;
    EXPECT_EQ(std::abs(stated->value - wanted), nearestAround(rough, wanted, read)) << stated->text;
    EXPECT_LE(ulpsBetween(stated->value, wanted), 1) << stated->text;
}

TEST(StatedNumber, IsTheNearestThatEveryLengthUnitCanHold) {
    std::mt19937_64 random(1811);
    for (const Unit native : UNITS) {
        for (const Unit stated : UNITS) {
            const double factor = UnitConversionTable::metresPer(stated) / UnitConversionTable::metresPer(native);
            for (int i = 0; i < 400; ++i) {
                const double wanted = anyNumber(random, i < 200 ? -20 : -900, i < 200 ? 20 : 900);
                expectNearest(wanted, wanted / factor, lengths(native, stated));
            }
        }
    }
}

// What a setter may round: one unit in the last place, whatever the file states and the display counts in.
TEST(StatedNumber, EveryUnitHoldsEveryNumberToOneUnitInTheLastPlace) {
    constexpr int VALUES = 5000;
    std::mt19937_64 random(1814);
    int exact = 0;
    for (const Unit native : UNITS) {
        for (const Unit stated : UNITS) {
            const Reading read = lengths(native, stated);
            for (int i = 0; i < VALUES; ++i) {
                const double wanted = anyNumber(random, -12, 14);
                const std::int64_t ulps = ulpsBetween(nearestStated(wanted, read)->value, wanted);
                ASSERT_LE(ulps, 1) << wanted << " from unit " << stated << " to " << native;
                exact += ulps == 0 ? 1 : 0;
            }
        }
    }
    EXPECT_GT(exact, 10 * VALUES) << "most of them, and all in the native unit";
    for (int i = 0; i < 10 * VALUES; ++i) {
        const double wanted = anyNumber(random, -20, 3);
        ASSERT_LE(ulpsBetween(nearestStated(wanted, degrees)->value, wanted), 1) << wanted;
    }
}

// Whole ratios of units, by whole numbers: an independent way.
TEST(StatedNumber, LengthsAreReadToTheNearestDouble) {
    const std::array<long long, 5> tenths{10, 100, 10'000, 254, 3048};  // of a millimetre, in the order of UNITS
    for (std::size_t native = 0; native < UNITS.size(); ++native) {
        for (std::size_t stated = 0; stated < UNITS.size(); ++stated) {
            if (UNITS[native] == Unit::UNIT_M || UNITS[stated] == Unit::UNIT_M) {
                continue;
            }
            for (long long number = 1; number < 3000; ++number) {
                const double nearest =
                    static_cast<double>(number * tenths[stated]) / static_cast<double>(tenths[native]);
                ASSERT_EQ(lengths(UNITS[native], UNITS[stated])(static_cast<double>(number)), nearest) << number;
                ASSERT_EQ(lengths(UNITS[native], UNITS[stated])(static_cast<double>(-number)), -nearest) << number;
            }
        }
    }
}

TEST(StatedNumber, IsTheNearestThatDegreesCanHold) {
    std::mt19937_64 random(1812);
    for (int i = 0; i < 4000; ++i) {
        const double wanted = anyNumber(random, i < 2000 ? -12 : -900, i < 2000 ? 3 : 900);
        expectNearest(wanted, wanted * 180.0 / std::numbers::pi, degrees);
    }
}

TEST(StatedNumber, WhatAReaderReturnsComesBackToTheBit) {
    std::mt19937_64 random(1813);
    for (int i = 0; i < 2000; ++i) {
        const double read = degrees(anyNumber(random, -12, 10));
        EXPECT_EQ(nearestStated(read, degrees)->value, read);
        const Reading feet = lengths(Unit::UNIT_CM, Unit::UNIT_FOOT);
        const double length = feet(anyNumber(random, -12, 10));
        EXPECT_EQ(nearestStated(length, feet)->value, length);
    }
}

TEST(StatedNumber, HasAsFewDigitsAsItTakes) {
    for (const char* text : {"30", "-35", "12.5", "0.25", "90", "180", "-61.5", "1e-07", "0.1", "1e+25", "359.999"}) {
        const double stated = parseNumber(text).value;
        EXPECT_EQ(nearestStated(degrees(stated), degrees)->text, text);
        EXPECT_EQ(nearestStated(stated, lengths(Unit::UNIT_M, Unit::UNIT_M))->text, text);
        const Reading millimetres = lengths(Unit::UNIT_M, Unit::UNIT_MM);
        EXPECT_EQ(nearestStated(millimetres(stated), millimetres)->text, text);
    }
}

TEST(StatedNumber, AUnitWithoutConversionHoldsEveryNumber) {
    const Reading same = [](double value) { return value; };
    for (const double value :
         {0.1 + 0.2, LARGEST, -LARGEST, 1e308, 5e-324, -5e-324, 2.2250738585072014e-308, 1e22, 1.0 / 3.0}) {
        const std::optional<StatedNumber> stated = nearestStated(value, same);
        ASSERT_TRUE(stated.has_value());
        EXPECT_EQ(stated->value, value);
        EXPECT_EQ(parseNumber(stated->text).value, value) << stated->text;
    }
}

TEST(StatedNumber, KeepsTheSignOfZero) {
    EXPECT_EQ(nearestStated(0.0, degrees)->text, "0");
    EXPECT_EQ(nearestStated(-0.0, degrees)->text, "-0");
    EXPECT_TRUE(std::signbit(nearestStated(-0.0, degrees)->value));
}

TEST(StatedNumber, IsNoneWhereNoNumberOfTheUnitComesNear) {
    for (const double value : {INF, -INF, NOT_A_NUMBER}) {
        EXPECT_FALSE(nearestStated(value, degrees).has_value());
        EXPECT_FALSE(nearestStated(value, [](double same) { return same; }).has_value());
    }
    for (const double sign : {1.0, -1.0}) {
        EXPECT_FALSE(nearestStated(sign * 1e308, degrees).has_value()) << "5.7e309 degrees";
        EXPECT_FALSE(nearestStated(sign * 1e306, lengths(Unit::UNIT_M, Unit::UNIT_MM)).has_value()) << "1e309 mm";
        EXPECT_TRUE(nearestStated(sign * 1e305, lengths(Unit::UNIT_M, Unit::UNIT_MM)).has_value());
        EXPECT_TRUE(nearestStated(sign * LARGEST, lengths(Unit::UNIT_MM, Unit::UNIT_M)).has_value());
    }
}

TEST(StatedNumber, NextToZeroTheStepsOfTheUnitDecide) {
    // The smallest double of millimetres is that of metres, too: what lies between its multiples is rounded.
    const Reading metres = lengths(Unit::UNIT_MM, Unit::UNIT_M);
    for (const double value : {5e-324, -5e-324, 1e-321, 3e-320, 1e-310, 2.2250738585072014e-308}) {
        const std::optional<StatedNumber> stated = nearestStated(value, metres);
        ASSERT_TRUE(stated.has_value());
        EXPECT_LE(std::abs(stated->value - value), 0.5 * 5e-321 + 5e-324) << stated->text;
        EXPECT_EQ(metres(parseNumber(stated->text).value), stated->value);
    }
}

TEST(StatedNumber, DoesNotAskTheLocale) {
    const ForeignLocale german;
    EXPECT_EQ(nearestStated(1234.5, [](double same) { return same; })->text, "1234.5");
}

}  // namespace
