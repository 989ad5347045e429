#include "Configuration/detail/ValueRules.h"

#include "Configuration/detail/DisplayFormat.h"

#include <algorithm>
#include <numbers>
#include <vector>

namespace Veltrani::ConfigurationDetail {

namespace {

using Words = std::vector<std::string>;

constexpr std::string_view FORMAT_VERSION = "1";

constexpr double FULL_TURN = 2.0 * std::numbers::pi;     // radians
constexpr double QUARTER_TURN = 0.5 * std::numbers::pi;  // radians
// Limits written in degrees are each rounded once, by some 1e-15: what differs by less than this is the same turn.
// Radians. Must not exceed the tolerance of the shapes, for which a range that passes here has to be a range.
constexpr double ROUNDING_OF_ANGLES = 1e-12;

Words namesOf(std::span<const VariantRule> variants) {
    Words words;
    for (const VariantRule& variant : variants) {
        words.emplace_back(variant.value);
    }
    return words;
}

/// Returns the words of a type that is a choice; none for every other type.
const Words& wordsOf(ValueType type) {
    static const Words NO_CHOICE;
    static const Words VERSIONS{std::string(FORMAT_VERSION)};
    static const Words LENGTH_UNITS{"mm", "cm", "m", "in", "ft", "custom"};
    static const Words ANGLE_UNITS{std::string(DEGREES), std::string(RADIANS)};
    static const Words SHAPES = namesOf(screenShapes());
    static const Words TARGET_DATA = namesOf(targetDataTypes());
    static const Words AXES{"X", "-X", "Y", "-Y", "Z", "-Z"};
    switch (type) {
        case ValueType::VERSION:
            return VERSIONS;
        case ValueType::NATIVE_UNIT:
        case ValueType::FILE_UNIT:
        case ValueType::LENGTH_UNIT:
            return LENGTH_UNITS;
        case ValueType::ANGLE_UNIT:
            return ANGLE_UNITS;
        case ValueType::SHAPE:
            return SHAPES;
        case ValueType::TARGET_DATA:
            return TARGET_DATA;
        case ValueType::AXIS:
            return AXES;
        case ValueType::TEXT:
        case ValueType::NON_EMPTY_TEXT:
        case ValueType::MODEL_NAME:
        case ValueType::NUMBER:
        case ValueType::POSITIVE_NUMBER:
        case ValueType::LENGTH:
        case ValueType::POSITIVE_LENGTH:
        case ValueType::ANGLE:
        case ValueType::PIXEL_COUNT:
        case ValueType::FOUR_BYTES:
            break;
    }
    return NO_CHOICE;
}

NumberState goodIf(bool condition) {
    return condition ? NumberState::GOOD : NumberState::WRONG_FORM;
}

NumberState checkNumber(ValueType type, std::string_view text) {
    const ParsedNumber<double> parsed = parseNumber(text);
    // Zero and the negative numbers have the wrong form, as they have for the schema.
    if (isPositive(type) && parsed.state == NumberState::GOOD && !(parsed.value > 0.0)) {
        return NumberState::WRONG_FORM;
    }
    if (isPositive(type) && text.starts_with('-')) {
        return NumberState::WRONG_FORM;
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
        case ValueType::TEXT:
            return NumberState::GOOD;
        case ValueType::NON_EMPTY_TEXT:
            return goodIf(!text.empty());
        case ValueType::MODEL_NAME:
            return goodIf(!text.empty() && text.find(':') == std::string_view::npos);
        case ValueType::NUMBER:
        case ValueType::POSITIVE_NUMBER:
        case ValueType::LENGTH:
        case ValueType::POSITIVE_LENGTH:
        case ValueType::ANGLE:
            return checkNumber(type, text);
        case ValueType::PIXEL_COUNT:
            return parsePixelCount(text).state;
        case ValueType::FOUR_BYTES:
            return goodIf(parseFourBytes(text).has_value());
        case ValueType::VERSION:
        case ValueType::NATIVE_UNIT:
        case ValueType::FILE_UNIT:
        case ValueType::LENGTH_UNIT:
        case ValueType::ANGLE_UNIT:
        case ValueType::SHAPE:
        case ValueType::TARGET_DATA:
        case ValueType::AXIS:
            break;
    }
    const Words& words = wordsOf(type);
    return goodIf(std::find(words.begin(), words.end(), text) != words.end());
}

std::string expectedValue(ValueType type) {
    switch (type) {
        case ValueType::TEXT:
            return "a text";
        case ValueType::NON_EMPTY_TEXT:
            return "a text that is not empty";
        case ValueType::MODEL_NAME:
            return "a name without a colon";
        case ValueType::NUMBER:
            return "a number such as 0.25";
        case ValueType::POSITIVE_NUMBER:
            return "a number greater than 0 such as 0.25";
        case ValueType::LENGTH:
            return "a length such as -2.5";
        case ValueType::POSITIVE_LENGTH:
            return "a length greater than 0 such as 2.5";
        case ValueType::ANGLE:
            return "an angle such as -22.5";
        case ValueType::PIXEL_COUNT:
            return "a whole number of pixels greater than 0 such as 1920";
        case ValueType::FOUR_BYTES:
            return "four whole numbers from 0 to 255 such as \"14 14 14 14\"";
        case ValueType::VERSION:
        case ValueType::NATIVE_UNIT:
        case ValueType::FILE_UNIT:
        case ValueType::LENGTH_UNIT:
        case ValueType::ANGLE_UNIT:
        case ValueType::SHAPE:
        case ValueType::TARGET_DATA:
        case ValueType::AXIS:
            break;
    }
    return joined(wordsOf(type));
}

bool isLength(ValueType type) {
    return type == ValueType::LENGTH || type == ValueType::POSITIVE_LENGTH;
}

bool isPositive(ValueType type) {
    return type == ValueType::POSITIVE_NUMBER || type == ValueType::POSITIVE_LENGTH;
}

bool isWithinOneTurn(double min, double max) {
    return max - min <= FULL_TURN + ROUNDING_OF_ANGLES;
}

bool isElevation(double angle) {
    return angle >= -QUARTER_TURN && angle <= QUARTER_TURN;
}

}  // namespace Veltrani::ConfigurationDetail
