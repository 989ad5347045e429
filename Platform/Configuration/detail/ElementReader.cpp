#include "Configuration/detail/ElementReader.h"

#include "Common/Utf8.h"
#include "Configuration/UnitConverter.h"
#include "Configuration/detail/DisplayFormat.h"
#include "Configuration/detail/ValueRules.h"
#include "Configuration/detail/ValueText.h"
#include "Configuration/detail/XmlNode.h"

#include <cmath>
#include <numbers>

namespace Veltrani::ConfigurationDetail {

namespace {

using Unit = UnitConversionTable::UnitSubType;

constexpr double DEGREES_OF_HALF_TURN = 180.0;

/// Every unit is a whole number of tenths of a millimetre; 0 for one without a length.
double tenthsOfMillimetresPer(Unit unit) {
    constexpr double PER_METRE = 1e4;
    return std::round(PER_METRE * UnitConversionTable::metresPer(unit));
}

/// `value` * `numerator` / `denominator`, rounded once: the product and the division would round one after the other,
/// and neighbours come out up to four units in the last place apart, between which no number could be stated.
double ratioOf(double value, double numerator, double denominator) {
    if (value == 0 || !std::isfinite(value)) {
        return value;
    }
    int exponent = 0;  // apart from it, nothing can leave the range of a double
    const double part = std::frexp(value, &exponent);
    const double product = part * numerator;
    const double ofProduct = std::fma(part, numerator, -product);
    const double quotient = product / denominator;
    const double ofQuotient = std::fma(-quotient, denominator, product);
    return std::ldexp(quotient + (ofQuotient + ofProduct) / denominator, exponent);
}

std::optional<double> finite(double value) {
    return std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
}

}  // namespace

ElementReader ElementReader::ofDisplay(const xmlNode* root) {
    const std::string native = Xml::child(root, "Units") == nullptr
                                   ? std::string()
                                   : Xml::attribute(Xml::child(root, "Units"), "native").value_or("");
    return ElementReader(UnitConversionTable::getUnitSubTypeFromName(fromUtf8(native)));
}

std::optional<std::string> ElementReader::text(const xmlNode* element, const char* attribute) const {
    return element == nullptr ? std::nullopt : Xml::attribute(element, attribute);
}

std::optional<double> ElementReader::number(const xmlNode* element, const char* attribute) const {
    const std::optional<std::string> value = text(element, attribute);
    const ParsedNumber<double> parsed = parseNumber(value.value_or(""));
    return parsed.state == NumberState::GOOD ? std::optional<double>(parsed.value) : std::nullopt;
}

std::optional<double> ElementReader::length(const xmlNode* element, const char* attribute) const {
    const std::optional<double> value = number(element, attribute);
    const std::optional<std::string> name = unitInScope(element, LENGTH_UNIT_ATTRIBUTE.name.data());
    if (!value || !name) {
        return std::nullopt;
    }
    const Unit unit = UnitConversionTable::getUnitSubTypeFromName(fromUtf8(*name));
    if (unit == Unit::UNIT_NONE) {
        return std::nullopt;
    }
    return finite(lengthOf(*value, unit));
}

double ElementReader::lengthOf(double stated, Unit unit) const {
    // A value in the native unit is not converted, which could change its last bit.
    if (unit == m_native) {
        return stated;
    }
    const double numerator = tenthsOfMillimetresPer(unit);
    const double denominator = tenthsOfMillimetresPer(m_native);
    // From and to metres one of the two factors is 1, and one rounding is left.
    const bool isRoundedOnce = unit == Unit::UNIT_M || m_native == Unit::UNIT_M || numerator == 0 || denominator == 0;
    return isRoundedOnce ? UnitConverter<5, 0, 5>(m_native).getNativeFromTarget(stated, unit)
                         : ratioOf(stated, numerator, denominator);
}

std::optional<double> ElementReader::angle(const xmlNode* element, const char* attribute) const {
    const std::optional<double> value = number(element, attribute);
    const std::optional<std::string> unit = unitInScope(element, ANGLE_UNIT_ATTRIBUTE.name.data());
    if (!value || !unit || (*unit != DEGREES && *unit != RADIANS)) {
        return std::nullopt;
    }
    return finite(angleOf(*value, *unit));
}

/// In degrees the division comes first: the quarter, half and full turns become exactly the multiples of pi that limits
/// are compared with.
double ElementReader::angleOf(double stated, std::string_view unit) {
    return unit == RADIANS ? stated : stated / DEGREES_OF_HALF_TURN * std::numbers::pi;
}

std::optional<int> ElementReader::pixels(const xmlNode* element, const char* attribute) const {
    const std::optional<std::string> value = text(element, attribute);
    const ParsedNumber<int> parsed = parsePixelCount(value.value_or(""));
    return parsed.state == NumberState::GOOD ? std::optional<int>(parsed.value) : std::nullopt;
}

Point<double, 3> ElementReader::position(const xmlNode* element) const {
    return {length(element, "x").value_or(0.0), length(element, "y").value_or(0.0), length(element, "z").value_or(0.0)};
}

Point<double, 3> ElementReader::orientation(const xmlNode* element) const {
    return {angle(element, "z").value_or(0.0), angle(element, "x").value_or(0.0), angle(element, "y").value_or(0.0)};
}

std::optional<std::string> ElementReader::unitInScope(const xmlNode* element, const char* unitAttribute) {
    for (const xmlNode* node = element; node != nullptr && node->type == XML_ELEMENT_NODE; node = node->parent) {
        if (std::optional<std::string> unit = Xml::attribute(node, unitAttribute)) {
            return unit;
        }
    }
    return std::nullopt;
}

}  // namespace Veltrani::ConfigurationDetail
