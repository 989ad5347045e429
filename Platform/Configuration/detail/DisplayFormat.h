#pragma once

#include "Configuration/detail/ValueRules.h"

#include <climits>
#include <span>
#include <string_view>
#include <vector>

/// The form of a display configuration as one table: which elements there are, what they hold and how often they occur.
/// The checker walks a document along it; `docs/display.rng` states the same for other tools.
namespace Veltrani::ConfigurationDetail {

struct AttributeRule {
    std::string_view name;
    ValueType type = ValueType::TEXT;
    bool required = false;
    /// What is read where the whole element is left out: a number in native units or radians.
    double withoutElement = 0.0;
};

struct ElementRule;

struct ChildRule {
    const ElementRule* element = nullptr;
    int minimum = 0;
    int maximum = 1;
};

/// The further children of an element whose selecting attribute has one particular value.
struct VariantRule {
    std::string_view value;
    std::span<const ChildRule> children;
};

enum class ElementContent {
    ELEMENTS,  ///< the children of the rule and white space
    TEXT,      ///< text alone
    ANYTHING,  ///< any well-formed XML
};

struct ElementRule {
    std::string_view name;
    std::span<const AttributeRule> attributes;
    std::span<const ChildRule> children;
    ElementContent content = ElementContent::ELEMENTS;
    std::string_view selector;  ///< attribute that selects a variant; empty when there are none
    std::span<const VariantRule> variants;
};

inline constexpr int ANY_NUMBER = INT_MAX;

/// The two attributes that are allowed on every element which holds, or contains elements which hold, such values.
inline constexpr AttributeRule LENGTH_UNIT_ATTRIBUTE{"lengthUnit", ValueType::LENGTH_UNIT, false};
inline constexpr AttributeRule ANGLE_UNIT_ATTRIBUTE{"angleUnit", ValueType::ANGLE_UNIT, false};

/// Returns the rule of the root element.
[[nodiscard]] const ElementRule& displayFormat();

/// Returns whether the element or one below it holds lengths, or angles.
[[nodiscard]] bool holdsLengths(const ElementRule& element);
[[nodiscard]] bool holdsAngles(const ElementRule& element);

/// Returns the variant that the value of the selecting attribute selects; null when there is none.
[[nodiscard]] const VariantRule* variantOf(const ElementRule& element, std::string_view selected);

/// Returns the children that an element can have: those of its rule, then those of the variant that `selected` selects.
/// Where there is no such variant, its value is a fault, and those of all variants pass, none of them required: which
/// of them belong to the element is not known.
[[nodiscard]] std::vector<ChildRule> childrenOf(const ElementRule& element, std::string_view selected);

/// Returns the names of these children in the order in which the documentation lists them and new ones are written:
/// those of a variant stand behind the first of the rule.
[[nodiscard]] std::vector<std::string_view> writingOrder(const ElementRule& element, std::string_view selected);

/// The shapes that a screen can have, and the types that target data can have, in the order of messages: the only lists
/// of them in this library.
[[nodiscard]] std::span<const VariantRule> screenShapes();
[[nodiscard]] std::span<const VariantRule> targetDataTypes();

/// What an attribute of a screen's child is read as where that child is left out; 0 for a shape without such a child.
[[nodiscard]] double withoutElement(std::string_view shape, std::string_view child, std::string_view attribute);

}  // namespace Veltrani::ConfigurationDetail
