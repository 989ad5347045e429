#include "Configuration/UnitConverter.h"

#include <gtest/gtest.h>

namespace {

using Unit = UnitConversionTable::UnitSubType;

double native(double value, Unit target, Unit nativeUnit) {
    return UnitConverter<5, 0, 5>(nativeUnit, 1).getNativeFromTarget(value, target);
}

TEST(UnitConverter, ConvertsLengths) {
    EXPECT_DOUBLE_EQ(native(1.0, Unit::UNIT_M, Unit::UNIT_MM), 1000.0);
    EXPECT_DOUBLE_EQ(native(250.0, Unit::UNIT_CM, Unit::UNIT_M), 2.5);
    EXPECT_DOUBLE_EQ(native(12.0, Unit::UNIT_INCH, Unit::UNIT_FOOT), 1.0);
    EXPECT_DOUBLE_EQ(native(1.0, Unit::UNIT_INCH, Unit::UNIT_MM), 25.4);
}

TEST(UnitConverter, TheSameUnitChangesNothing) {
    for (const Unit unit : {Unit::UNIT_MM, Unit::UNIT_CM, Unit::UNIT_M, Unit::UNIT_INCH, Unit::UNIT_FOOT}) {
        EXPECT_DOUBLE_EQ(native(1.7, unit, unit), 1.7);
    }
}

TEST(UnitConverter, AUnitWithoutALengthOfItsOwnHasFactorOne) {
    for (const Unit lengthless : {Unit::UNIT_NONE, Unit::UNIT_CUSTOM}) {
        EXPECT_EQ(native(1.7, lengthless, Unit::UNIT_MM), 1.7);
        EXPECT_EQ(native(1.7, Unit::UNIT_MM, lengthless), 1.7);
    }
}

}  // namespace
