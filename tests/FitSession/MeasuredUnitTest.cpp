#include "FitSession/MeasuredUnit.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/basics/TableReader.h"
#include "support/Displays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

using testing::StartsWith;
using Veltrani::DisplayReport::TableReader;
namespace MeasuredUnit = Veltrani::FitSession::MeasuredUnit;

TEST(MeasuredUnit, ALineThatStatesAUnitIsRecognised) {
    for (const char* const line :
         {"# unit mm", "#unit:mm", "# UNIT = mm  ", "unit\tmm", "##  unit :mm", "# unit mm\t"}) {
        EXPECT_EQ(MeasuredUnit::ofComment(line), "mm") << line;
    }
    EXPECT_EQ(MeasuredUnit::ofComment("# unit my own"), "my own");
    for (const char* const line : {"", "#", "# units mm", "# unit", "# unit:", "# uni", "# in unit mm", "# unit-mm"}) {
        EXPECT_EQ(MeasuredUnit::ofComment(line), "") << line;
    }
}

class MeasuredUnitOf : public testing::Test {
protected:
    /// Of a display in a unit.
    static double nativePerUnit(const std::string& native, const MeasuredUnit::Stated& ofTable,
                                const std::string& ofCaller = "") {
        std::string text = displays::text(displays::FLAT, displays::projector("A", ""));
        for (const std::string& unit : {std::string("lengthUnit='m'"), std::string("native='m'")}) {
            text.replace(text.find(unit), unit.size(), unit.substr(0, unit.find('=')) + "='" + native + "'");
        }
        const auto config = XMLConfigFile::parse(text, "display.xml");
        std::istringstream in("u,v,x,y,z\n");
        TableReader table(in, "points.csv", {"row", "write a row"});
        EXPECT_TRUE(table.readHead());
        return MeasuredUnit::nativePerUnit(table, ofTable, ofCaller, *config);
    }
    static std::string refusalOf(const std::string& native, const MeasuredUnit::Stated& ofTable,
                                 const std::string& ofCaller = "") {
        try {
            nativePerUnit(native, ofTable, ofCaller);
        } catch (const VeltraniParseException& fault) {
            return Veltrani::toUtf8(fault.message);
        }
        return "";
    }
};

TEST_F(MeasuredUnitOf, LengthsAreConvertedFromWhatIsStated) {
    EXPECT_DOUBLE_EQ(nativePerUnit("m", {"mm", 1}), 0.001);
    EXPECT_DOUBLE_EQ(nativePerUnit("m", {"", 0}, "ft"), 0.3048);
    EXPECT_DOUBLE_EQ(nativePerUnit("cm", {"in", 1}), 2.54);
    EXPECT_DOUBLE_EQ(nativePerUnit("mm", {"m", 1}, "m"), 1000);
    EXPECT_EQ(nativePerUnit("ft", {"ft", 1}), 1);
    EXPECT_EQ(nativePerUnit("custom", {"custom", 1}), 1);
    EXPECT_EQ(nativePerUnit("custom", {"", 0}, "custom"), 1);
}

TEST_F(MeasuredUnitOf, WhatIsNoUnitIsRefusedAtItsLine) {
    EXPECT_THAT(refusalOf("m", {"", 0}), StartsWith("points.csv:1: unit of lengths: found none, expected mm, cm, m"));
    EXPECT_THAT(refusalOf("m", {"yd", 7}), StartsWith("points.csv:7: unit of lengths: found \"yd\", expected mm, cm"));
    EXPECT_THAT(refusalOf("m", {"mm", 7}, "yd"),
                StartsWith("points.csv:7: unit of lengths: found \"yd\", expected mm"));
    EXPECT_THAT(
        refusalOf("custom", {"mm", 3}),
        StartsWith("points.csv:3: unit of lengths: found \"mm\", expected the unit of the display, \"custom\""));
    EXPECT_THAT(refusalOf("m", {"mm", 3}, "m"),
                StartsWith("points.csv:3: unit of lengths: found \"mm\" in the table, expected --unit m"));
    EXPECT_THAT(refusalOf("custom", {"mm", 3}, "custom"),
                StartsWith("points.csv:3: unit of lengths: found \"mm\" in the table, expected --unit custom"));
    EXPECT_EQ(refusalOf("m", {"mm", 3}, "mm"), "");
}

}  // namespace
