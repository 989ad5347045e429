#include "Configuration/detail/ElementReader.h"

#include "Configuration/detail/XmlDocument.h"
#include "Configuration/detail/XmlNode.h"

#include <gtest/gtest.h>

#include <numbers>
#include <string>

namespace {

using Veltrani::ConfigurationDetail::ElementReader;
using Veltrani::ConfigurationDetail::FaultList;
using Veltrani::ConfigurationDetail::XmlDocument;
namespace Xml = Veltrani::ConfigurationDetail::Xml;
using Unit = UnitConversionTable::UnitSubType;

constexpr double PI = std::numbers::pi;

XmlDocument parsed(std::string_view text) {
    FaultList faults("t");
    XmlDocument document = XmlDocument::parse(text, faults);
    EXPECT_EQ(faults.message(), L"");
    return document;
}

std::optional<double> length(const std::string& value, const std::string& unit, Unit native) {
    const XmlDocument document = parsed("<a lengthUnit='" + unit + "' v='" + value + "'/>");
    return ElementReader(native).length(document.root(), "v");
}

std::optional<double> angle(const std::string& value, const std::string& unit) {
    const XmlDocument document = parsed("<a angleUnit='" + unit + "' v='" + value + "'/>");
    return ElementReader(Unit::UNIT_M).angle(document.root(), "v");
}

TEST(ElementReader, LengthsComeOutInNativeUnits) {
    EXPECT_DOUBLE_EQ(length("250", "cm", Unit::UNIT_M).value(), 2.5);
    EXPECT_DOUBLE_EQ(length("1", "in", Unit::UNIT_MM).value(), 25.4);
    EXPECT_DOUBLE_EQ(length("3", "ft", Unit::UNIT_INCH).value(), 36.0);
    EXPECT_DOUBLE_EQ(length("-1.5", "m", Unit::UNIT_FOOT).value(), -1.5 / 0.3048);
}

TEST(ElementReader, ALengthInNativeUnitsIsExact) {
    for (const std::string value : {"1.7", "0.1", "4.35", "123456.789", "1e-300"}) {
        EXPECT_EQ(length(value, "mm", Unit::UNIT_MM), std::stod(value)) << value;
        EXPECT_EQ(length(value, "ft", Unit::UNIT_FOOT), std::stod(value)) << value;
        EXPECT_EQ(length(value, "custom", Unit::UNIT_CUSTOM), std::stod(value)) << value;
    }
}

TEST(ElementReader, QuarterTurnsAreExact) {
    EXPECT_EQ(angle("180", "deg"), PI);
    EXPECT_EQ(angle("-180", "deg"), -PI);
    EXPECT_EQ(angle("90", "deg"), PI / 2);
    EXPECT_EQ(angle("360", "deg"), 2 * PI);
    EXPECT_EQ(angle("45", "deg"), PI / 4);
}

TEST(ElementReader, AnglesComeOutInRadians) {
    for (int degrees = -720; degrees <= 720; degrees += 7) {
        const long double expected = degrees * std::numbers::pi_v<long double> / 180.0L;
        EXPECT_DOUBLE_EQ(angle(std::to_string(degrees), "deg").value(), static_cast<double>(expected)) << degrees;
    }
    EXPECT_EQ(angle("1.1", "rad"), 1.1);
}

TEST(ElementReader, TheNearestUnitHolds) {
    const XmlDocument document =
        parsed("<a lengthUnit='mm'><b lengthUnit='cm'><c v='1'/><d v='1' lengthUnit='m'/></b><e v='1'/></a>");
    const ElementReader reader(Unit::UNIT_MM);
    const xmlNode* const b = Xml::child(document.root(), "b");
    EXPECT_DOUBLE_EQ(reader.length(Xml::child(b, "c"), "v").value(), 10.0);
    EXPECT_DOUBLE_EQ(reader.length(Xml::child(b, "d"), "v").value(), 1000.0);
    EXPECT_DOUBLE_EQ(reader.length(Xml::child(document.root(), "e"), "v").value(), 1.0);
}

TEST(ElementReader, NothingSensibleIsNoValue) {
    const XmlDocument document = parsed("<a v='1' x='y' p='0'/>");
    const ElementReader reader(Unit::UNIT_M);
    EXPECT_EQ(reader.length(document.root(), "v"), std::nullopt) << "no unit";
    EXPECT_EQ(reader.angle(document.root(), "v"), std::nullopt) << "no unit";
    EXPECT_EQ(reader.number(document.root(), "x"), std::nullopt);
    EXPECT_EQ(reader.number(document.root(), "none"), std::nullopt);
    EXPECT_EQ(reader.pixels(document.root(), "p"), std::nullopt);
    EXPECT_EQ(reader.text(nullptr, "v"), std::nullopt);
    EXPECT_EQ(reader.length(nullptr, "v"), std::nullopt);
    EXPECT_EQ(length("1", "furlong", Unit::UNIT_M), std::nullopt);
    EXPECT_EQ(angle("1", "gon"), std::nullopt);
    EXPECT_EQ(length("1e308", "m", Unit::UNIT_MM), std::nullopt) << "infinite in millimetres";
}

TEST(ElementReader, PositionsAndOrientationsKeepTheirOrder) {
    const XmlDocument document = parsed("<a lengthUnit='m' angleUnit='rad' x='1' y='2' z='3'/>");
    const ElementReader reader(Unit::UNIT_M);
    EXPECT_EQ(reader.position(document.root()), (Point<double, 3>{1.0, 2.0, 3.0}));
    EXPECT_EQ(reader.orientation(document.root()), (Point<double, 3>{3.0, 1.0, 2.0})) << "Z, X, Y";
    EXPECT_EQ(reader.position(nullptr), (Point<double, 3>{}));
}

TEST(ElementReader, TheDisplayStatesTheNativeUnit) {
    EXPECT_EQ(ElementReader::ofDisplay(parsed("<Display><Units native='ft'/></Display>").root()).native(),
              Unit::UNIT_FOOT);
    EXPECT_EQ(ElementReader::ofDisplay(parsed("<Display/>").root()).native(), Unit::UNIT_NONE);
}

}  // namespace
