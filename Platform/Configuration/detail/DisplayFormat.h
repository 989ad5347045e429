#pragma once

#include "Configuration/detail/ValueRules.h"

#include <climits>
#include <span>
#include <string>
#include <string_view>

/// The form of a display configuration as one table: which elements there are, what they hold and how often. The
/// checker walks a document along it; `docs/display.rng` says the same for other tools.
namespace Veltrani {

struct AttributeRule {
    std::string_view name;
    ValueType type = ValueType::Text;
    bool required = false;
};

struct ElementRule;

struct ChildRule {
    const ElementRule* element = nullptr;
    int minimum = 0;
    int maximum = 1;
};

/// The further children of an element whose selecting attribute has one particular value.
struct VariantRule {
    const std::wstring* value = nullptr;
    std::span<const ChildRule> children;
};

enum class ElementContent {
    Elements,  ///< the children of the rule and white space
    Text,      ///< text alone
    Anything,  ///< any well-formed XML
};

struct ElementRule {
    std::string_view name;
    std::span<const AttributeRule> attributes;
    std::span<const ChildRule> children;
    ElementContent content = ElementContent::Elements;
    std::string_view selector;  ///< attribute that selects a variant; empty when there are none
    std::span<const VariantRule> variants;
};

inline constexpr int ANY_NUMBER = INT_MAX;

/// The two attributes that may stand on every element which holds, or contains elements which hold, such values.
inline constexpr AttributeRule LENGTH_UNIT_ATTRIBUTE{"lengthUnit", ValueType::LengthUnit, false};
inline constexpr AttributeRule ANGLE_UNIT_ATTRIBUTE{"angleUnit", ValueType::AngleUnit, false};

/// The rule of the root element.
[[nodiscard]] const ElementRule& displayFormat();

/// Whether the element or one below it holds lengths, or angles.
[[nodiscard]] bool holdsLengths(const ElementRule& element);
[[nodiscard]] bool holdsAngles(const ElementRule& element);

/// The variant that the value of the selecting attribute selects; null when there is none.
[[nodiscard]] const VariantRule* variantOf(const ElementRule& element, std::string_view selected);

}  // namespace Veltrani
