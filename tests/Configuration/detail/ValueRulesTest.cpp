#include "Configuration/detail/ValueRules.h"

#include "Common/Utf8.h"
#include "Configuration/BaseConfig.h"
#include "Configuration/UnitConversionTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Veltrani::ConfigurationDetail::checkValue;
using Veltrani::ConfigurationDetail::expectedValue;
using Veltrani::ConfigurationDetail::NumberState;
using Veltrani::ConfigurationDetail::ValueType;

void expectOnly(ValueType type, const std::vector<std::string>& accepted) {
    for (const std::string& word : accepted) {
        EXPECT_EQ(checkValue(type, word), NumberState::GOOD) << word;
        EXPECT_EQ(checkValue(type, word + " "), NumberState::WRONG_FORM) << word;
        EXPECT_NE(expectedValue(type).find("\"" + word + "\""), std::string::npos) << word;
    }
    EXPECT_EQ(checkValue(type, ""), NumberState::WRONG_FORM);
    EXPECT_EQ(checkValue(type, "other"), NumberState::WRONG_FORM);
}

TEST(ValueRules, ChoicesAreExact) {
    expectOnly(ValueType::VERSION, {"1"});
    expectOnly(ValueType::ANGLE_UNIT, {"deg", "rad"});
    expectOnly(ValueType::AXIS, {"X", "-X", "Y", "-Y", "Z", "-Z"});
    expectOnly(ValueType::SHAPE, {"Flat", "Sphere", "Cylinder", "Ruled", "Mesh"});
    expectOnly(ValueType::TARGET_DATA, {"PlanarBasic", "PlanarAdvanced", "Spherical", "SphericalCollimated",
                                        "CustomPlanar", "ProjectorCentric", "3D"});
}

TEST(ValueRules, UnitsAreThoseOfTheConversionTable) {
    for (const ValueType type : {ValueType::NATIVE_UNIT, ValueType::FILE_UNIT, ValueType::LENGTH_UNIT}) {
        expectOnly(type, {"mm", "cm", "m", "in", "ft", "custom"});
    }
    for (const std::string name : {"mm", "cm", "m", "in", "ft", "custom"}) {
        EXPECT_NE(UnitConversionTable::getUnitSubTypeFromName(Veltrani::fromUtf8(name)), 0) << name;
    }
}

TEST(ValueRules, PositiveMeansAboveZero) {
    for (const ValueType type : {ValueType::POSITIVE_NUMBER, ValueType::POSITIVE_LENGTH}) {
        EXPECT_EQ(checkValue(type, "0.001"), NumberState::GOOD);
        EXPECT_EQ(checkValue(type, "1e999"), NumberState::OUT_OF_RANGE);
        for (const char* text : {"0", "0.0", "-0", "-1", "-1e999", "x", ""}) {
            EXPECT_EQ(checkValue(type, text), NumberState::WRONG_FORM) << text;
        }
    }
}

TEST(ValueRules, NumbersLengthsAndAnglesHaveOneForm) {
    for (const ValueType type : {ValueType::NUMBER, ValueType::LENGTH, ValueType::ANGLE}) {
        EXPECT_EQ(checkValue(type, "-0.25"), NumberState::GOOD);
        EXPECT_EQ(checkValue(type, "1e999"), NumberState::OUT_OF_RANGE);
        EXPECT_EQ(checkValue(type, "0,25"), NumberState::WRONG_FORM);
        EXPECT_EQ(checkValue(type, ""), NumberState::WRONG_FORM);
    }
}

TEST(ValueRules, Texts) {
    EXPECT_EQ(checkValue(ValueType::TEXT, ""), NumberState::GOOD);
    EXPECT_EQ(checkValue(ValueType::NON_EMPTY_TEXT, ""), NumberState::WRONG_FORM);
    EXPECT_EQ(checkValue(ValueType::NON_EMPTY_TEXT, " "), NumberState::GOOD);
    EXPECT_EQ(checkValue(ValueType::MODEL_NAME, "BrownConrady"), NumberState::GOOD);
    EXPECT_EQ(checkValue(ValueType::MODEL_NAME, "BrownConrady:lens.yml"), NumberState::WRONG_FORM);
    EXPECT_EQ(checkValue(ValueType::MODEL_NAME, ""), NumberState::WRONG_FORM);
}

}  // namespace
