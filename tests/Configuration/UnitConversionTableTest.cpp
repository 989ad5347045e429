#include "Configuration/UnitConversionTable.h"

#include <gtest/gtest.h>

namespace {

TEST(UnitConversionTable, KnowsItsNames) {
    EXPECT_EQ(UnitConversionTable::getUnitSubTypeFromName(L"mm"), 1);
    EXPECT_EQ(UnitConversionTable::getUnitSubTypeFromName(L"cm"), 2);
    EXPECT_EQ(UnitConversionTable::getUnitSubTypeFromName(L"m"), 3);
    EXPECT_EQ(UnitConversionTable::getUnitSubTypeFromName(L"in"), 4);
    EXPECT_EQ(UnitConversionTable::getUnitSubTypeFromName(L"custom"), 5);
    EXPECT_EQ(UnitConversionTable::getUnitSubTypeFromName(L"ft"), 6);
}

TEST(UnitConversionTable, UnknownNamesAreNone) {
    for (const wchar_t* name : {L"", L"M", L"metre", L" m", L"m "}) {
        EXPECT_EQ(UnitConversionTable::getUnitSubTypeFromName(name), 0);
    }
}

TEST(UnitConversionTable, UnitsWithoutALengthHaveNoMetres) {
    EXPECT_EQ(UnitConversionTable::metresPer(UnitConversionTable::UNIT_NONE), 0.0);
    EXPECT_EQ(UnitConversionTable::metresPer(UnitConversionTable::UNIT_CUSTOM), 0.0);
    EXPECT_EQ(UnitConversionTable::metresPer(static_cast<UnitConversionTable::UnitSubType>(7)), 0.0);
}

}  // namespace
