#include "Configuration/detail/ValueRules.h"

#include "Configuration/detail/DisplayFormat.h"

#include <algorithm>
#include <vector>

namespace Veltrani {

namespace {

using Words = std::vector<std::string>;

constexpr std::string_view FORMAT_VERSION = "1";

Words namesOf(std::span<const VariantRule> variants) {
    Words words;
    for (const VariantRule& variant : variants) {
        words.emplace_back(variant.value);
    }
    return words;
}

/// The words of a type that is a choice; none for every other type.
const Words& wordsOf(ValueType type) {
    static const Words NO_CHOICE;
    static const Words VERSIONS{std::string(FORMAT_VERSION)};
    static const Words LENGTH_UNITS{"mm", "cm", "m", "in", "ft", "custom"};
    static const Words ANGLE_UNITS{std::string(DEGREES), std::string(RADIANS)};
    static const Words SHAPES = namesOf(screenShapes());
    static const Words TARGET_DATA = namesOf(targetDataTypes());
    static const Words AXES{"X", "-X", "Y", "-Y", "Z", "-Z"};
    switch (type) {
        case ValueType::Version:
            return VERSIONS;
        case ValueType::NativeUnit:
        case ValueType::FileUnit:
        case ValueType::LengthUnit:
            return LENGTH_UNITS;
        case ValueType::AngleUnit:
            return ANGLE_UNITS;
        case ValueType::Shape:
            return SHAPES;
        case ValueType::TargetData:
            return TARGET_DATA;
        case ValueType::Axis:
            return AXES;
        case ValueType::Text:
        case ValueType::NonEmptyText:
        case ValueType::ModelName:
        case ValueType::Number:
        case ValueType::PositiveNumber:
        case ValueType::Length:
        case ValueType::PositiveLength:
        case ValueType::Angle:
        case ValueType::PixelCount:
        case ValueType::FourBytes:
            break;
    }
    return NO_CHOICE;
}

NumberState goodIf(bool condition) {
    return condition ? NumberState::Good : NumberState::NotANumber;
}

NumberState checkNumber(ValueType type, std::string_view text) {
    const ParsedNumber<double> parsed = parseNumber(text);
    // Zero and the negative numbers are another form, as they are for the schema.
    if (isPositive(type) && parsed.state == NumberState::Good && !(parsed.value > 0.0)) {
        return NumberState::NotANumber;
    }
    if (isPositive(type) && text.starts_with('-')) {
        return NumberState::NotANumber;
    }
    return parsed.state;
}

std::string joined(const Words& words) {
    std::string text;
    for (const std::string& word : words) {
        text += text.empty() ? "\"" : ", \"";
        text += word;
        text += "\"";
    }
    return words.size() > 1 ? "one of " + text : text;
}

}  // namespace

NumberState checkValue(ValueType type, std::string_view text) {
    switch (type) {
        case ValueType::Text:
            return NumberState::Good;
        case ValueType::NonEmptyText:
            return goodIf(!text.empty());
        case ValueType::ModelName:
            return goodIf(!text.empty() && text.find(':') == std::string_view::npos);
        case ValueType::Number:
        case ValueType::PositiveNumber:
        case ValueType::Length:
        case ValueType::PositiveLength:
        case ValueType::Angle:
            return checkNumber(type, text);
        case ValueType::PixelCount:
            return parsePixelCount(text).state;
        case ValueType::FourBytes:
            return goodIf(parseFourBytes(text).has_value());
        case ValueType::Version:
        case ValueType::NativeUnit:
        case ValueType::FileUnit:
        case ValueType::LengthUnit:
        case ValueType::AngleUnit:
        case ValueType::Shape:
        case ValueType::TargetData:
        case ValueType::Axis:
            break;
    }
    const Words& words = wordsOf(type);
    return goodIf(std::find(words.begin(), words.end(), text) != words.end());
}

std::string expectedValue(ValueType type) {
    switch (type) {
        case ValueType::Text:
            return "a text";
        case ValueType::NonEmptyText:
            return "a text that is not empty";
        case ValueType::ModelName:
            return "a name without a colon";
        case ValueType::Number:
            return "a number such as 0.25";
        case ValueType::PositiveNumber:
            return "a number greater than 0 such as 0.25";
        case ValueType::Length:
            return "a length such as -2.5";
        case ValueType::PositiveLength:
            return "a length greater than 0 such as 2.5";
        case ValueType::Angle:
            return "an angle such as -22.5";
        case ValueType::PixelCount:
            return "a whole number of pixels greater than 0 such as 1920";
        case ValueType::FourBytes:
            return "four whole numbers from 0 to 255 such as \"14 14 14 14\"";
        case ValueType::Version:
        case ValueType::NativeUnit:
        case ValueType::FileUnit:
        case ValueType::LengthUnit:
        case ValueType::AngleUnit:
        case ValueType::Shape:
        case ValueType::TargetData:
        case ValueType::Axis:
            break;
    }
    return joined(wordsOf(type));
}

bool isLength(ValueType type) {
    return type == ValueType::Length || type == ValueType::PositiveLength;
}

bool isPositive(ValueType type) {
    return type == ValueType::PositiveNumber || type == ValueType::PositiveLength;
}

}  // namespace Veltrani
