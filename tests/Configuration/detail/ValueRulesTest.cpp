#include "Configuration/detail/ValueRules.h"

#include "Common/Utf8.h"
#include "Configuration/BaseConfig.h"
#include "Configuration/UnitConversionTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Veltrani::checkValue;
using Veltrani::expectedValue;
using Veltrani::NumberState;
using Veltrani::ValueType;

void expectOnly(ValueType type, const std::vector<std::string>& accepted) {
    for (const std::string& word : accepted) {
        EXPECT_EQ(checkValue(type, word), NumberState::Good) << word;
        EXPECT_EQ(checkValue(type, word + " "), NumberState::NotANumber) << word;
        EXPECT_NE(expectedValue(type).find("\"" + word + "\""), std::string::npos) << word;
    }
    EXPECT_EQ(checkValue(type, ""), NumberState::NotANumber);
    EXPECT_EQ(checkValue(type, "other"), NumberState::NotANumber);
}

TEST(ValueRules, ChoicesAreExact) {
    expectOnly(ValueType::Version, {"1"});
    expectOnly(ValueType::AngleUnit, {"deg", "rad"});
    expectOnly(ValueType::Axis, {"X", "-X", "Y", "-Y", "Z", "-Z"});
    expectOnly(ValueType::Shape, {"Flat", "Sphere", "Cylinder", "Ruled", "Mesh"});
    expectOnly(ValueType::TargetData, {"PlanarBasic", "PlanarAdvanced", "Spherical", "SphericalCollimated",
                                       "CustomPlanar", "ProjectorCentric", "3D"});
}

TEST(ValueRules, UnitsAreThoseOfTheConversionTable) {
    for (const ValueType type : {ValueType::NativeUnit, ValueType::FileUnit, ValueType::LengthUnit}) {
        expectOnly(type, {"mm", "cm", "m", "in", "ft", "custom"});
    }
    for (const std::string name : {"mm", "cm", "m", "in", "ft", "custom"}) {
        EXPECT_NE(UnitConversionTable::getUnitSubTypeFromName(Veltrani::fromUtf8(name)), 0) << name;
    }
}

TEST(ValueRules, PositiveMeansAboveZero) {
    for (const ValueType type : {ValueType::PositiveNumber, ValueType::PositiveLength}) {
        EXPECT_EQ(checkValue(type, "0.001"), NumberState::Good);
        EXPECT_EQ(checkValue(type, "1e999"), NumberState::OutOfRange);
        for (const char* text : {"0", "0.0", "-0", "-1", "-1e999", "x", ""}) {
            EXPECT_EQ(checkValue(type, text), NumberState::NotANumber) << text;
        }
    }
}

TEST(ValueRules, NumbersLengthsAndAnglesHaveOneForm) {
    for (const ValueType type : {ValueType::Number, ValueType::Length, ValueType::Angle}) {
        EXPECT_EQ(checkValue(type, "-0.25"), NumberState::Good);
        EXPECT_EQ(checkValue(type, "1e999"), NumberState::OutOfRange);
        EXPECT_EQ(checkValue(type, "0,25"), NumberState::NotANumber);
        EXPECT_EQ(checkValue(type, ""), NumberState::NotANumber);
    }
}

TEST(ValueRules, Texts) {
    EXPECT_EQ(checkValue(ValueType::Text, ""), NumberState::Good);
    EXPECT_EQ(checkValue(ValueType::NonEmptyText, ""), NumberState::NotANumber);
    EXPECT_EQ(checkValue(ValueType::NonEmptyText, " "), NumberState::Good);
    EXPECT_EQ(checkValue(ValueType::ModelName, "BrownConrady"), NumberState::Good);
    EXPECT_EQ(checkValue(ValueType::ModelName, "BrownConrady:lens.yml"), NumberState::NotANumber);
    EXPECT_EQ(checkValue(ValueType::ModelName, ""), NumberState::NotANumber);
}

}  // namespace
