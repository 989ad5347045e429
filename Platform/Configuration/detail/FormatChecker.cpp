#include "Configuration/detail/FormatChecker.h"

#include "Common/QuotedText.h"
#include "Configuration/detail/XmlNode.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <utility>

namespace Veltrani::ConfigurationDetail {

namespace {

using Kind = FaultList::Kind;
using Unit = UnitConversionTable::UnitSubType;

std::string assignment(std::string_view name, std::string_view value) {
    return concatenated({name, "=", inQuotes(value)});
}

std::string tag(std::string_view name) {
    return concatenated({"<", name, ">"});
}

std::string oneOf(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) {
        list += list.empty() ? "" : ", ";
        list += name;
    }
    return names.empty() ? "none" : names.size() == 1 ? list : "one of " + list;
}

std::vector<AttributeRule> attributesOf(const ElementRule& rule) {
    std::vector<AttributeRule> attributes(rule.attributes.begin(), rule.attributes.end());
    if (holdsLengths(rule)) {
        attributes.push_back(LENGTH_UNIT_ATTRIBUTE);
    }
    if (holdsAngles(rule)) {
        attributes.push_back(ANGLE_UNIT_ATTRIBUTE);
    }
    return attributes;
}

const AttributeRule* find(const std::vector<AttributeRule>& rules, std::string_view name) {
    const auto found =
        std::find_if(rules.begin(), rules.end(), [&](const AttributeRule& rule) { return rule.name == name; });
    return found == rules.end() ? nullptr : &*found;
}

std::vector<ChildRule> childrenOf(const xmlNode* element, const ElementRule& rule) {
    const std::string selected =
        rule.selector.empty() ? std::string() : Xml::attribute(element, rule.selector.data()).value_or("");
    return childrenOf(rule, selected);
}

}  // namespace

void FormatChecker::check(const xmlNode* root, FaultList& faults) {
    FormatChecker checker(ElementReader::ofDisplay(root), faults);
    const ElementRule& rule = displayFormat();
    if (Xml::isOwnElement(root, rule.name)) {
        checker.checkElement(root, rule);
    } else if (root->ns != nullptr) {
        checker.add(Kind::STRUCTURE, root, "the namespace " + inQuotes(Xml::view(root->ns->href)), "no namespace",
                    "remove the declaration of a default namespace");
    } else {
        checker.add(Kind::STRUCTURE, root, tag(Xml::view(root->name)), tag(rule.name),
                    "check that this is a display configuration");
    }
}

void FormatChecker::checkElement(const xmlNode* element, const ElementRule& rule) {
    checkAttributes(element, rule);
    if (rule.content != ElementContent::ANYTHING) {
        checkContent(element, rule);
    }
}

void FormatChecker::checkAttributes(const xmlNode* element, const ElementRule& rule) {
    const std::vector<AttributeRule> rules = attributesOf(rule);
    for (const xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
        if (attribute->ns != nullptr) {
            continue;
        }
        const std::string name(Xml::view(attribute->name));
        if (const AttributeRule* known = find(rules, name)) {
            checkValue(element, *known, Xml::attribute(element, name.c_str()).value_or(""));
            continue;
        }
        std::vector<std::string> names;
        std::transform(rules.begin(), rules.end(), std::back_inserter(names),
                       [](const AttributeRule& other) { return std::string(other.name); });
        add(Kind::STRUCTURE, element, "the attribute " + inQuotes(name), oneOf(names), "remove it or correct its name");
    }
    for (const AttributeRule& wanted : rules) {
        if (wanted.required && !Xml::attribute(element, wanted.name.data())) {
            add(Kind::STRUCTURE, element, "no attribute \"" + std::string(wanted.name) + "\"",
                "it with " + expectedValue(wanted.type), "add " + std::string(wanted.name) + "=\"...\"");
        }
    }
}

void FormatChecker::checkValue(const xmlNode* element, const AttributeRule& rule, const std::string& value) {
    const NumberState state = Veltrani::ConfigurationDetail::checkValue(rule.type, value);
    if (state == NumberState::WRONG_FORM) {
        add(Kind::STRUCTURE, element, assignment(rule.name, value), expectedValue(rule.type), "correct the value");
    } else if (state == NumberState::OUT_OF_RANGE) {
        add(Kind::MEANING, element, assignment(rule.name, value), expectedValue(rule.type) + " that can be represented",
            "state a value of sensible size");
    } else if (isLength(rule.type) || rule.type == ValueType::ANGLE) {
        checkUnit(element, rule, value);
    } else if (rule.type == ValueType::LENGTH_UNIT && (value == "custom") != (m_reader.native() == Unit::UNIT_CUSTOM)) {
        // A native unit without a length of its own can be converted neither from nor to.
        add(Kind::MEANING, element, assignment(rule.name, value) + " beside another kind of native unit",
            "\"custom\" together with <Units native=\"custom\">, and only then",
            "state the unit that the numbers are in, here or in <Units>");
    }
}

void FormatChecker::checkUnit(const xmlNode* element, const AttributeRule& rule, const std::string& value) {
    const AttributeRule& unitRule = isLength(rule.type) ? LENGTH_UNIT_ATTRIBUTE : ANGLE_UNIT_ATTRIBUTE;
    const std::string name(unitRule.name);
    const std::optional<std::string> unit = ElementReader::unitInScope(element, name.c_str());
    if (!unit) {
        add(Kind::MEANING, element, assignment(rule.name, value) + " without a unit",
            name + " with " + expectedValue(unitRule.type), "state " + name + " on the element or around it");
    } else if (Veltrani::ConfigurationDetail::checkValue(unitRule.type, *unit) == NumberState::GOOD) {
        checkConverted(element, rule, value);
    }
}

void FormatChecker::checkConverted(const xmlNode* element, const AttributeRule& rule, const std::string& value) {
    const char* const name = rule.name.data();
    const std::optional<double> converted =
        isLength(rule.type) ? m_reader.length(element, name) : m_reader.angle(element, name);
    if (!converted || (isPositive(rule.type) && !(*converted > 0.0))) {
        add(Kind::MEANING, element, assignment(rule.name, value),
            expectedValue(rule.type) + " that can be represented in native units", "state a value of sensible size");
    }
}

void FormatChecker::checkContent(const xmlNode* element, const ElementRule& rule) {
    const std::vector<ChildRule> rules = childrenOf(element, rule);
    std::vector<int> counts(rules.size(), 0);
    for (const xmlNode* node = element->children; node != nullptr; node = node->next) {
        if (Xml::isOwnElement(node)) {
            checkChild(node, rules, counts);
        } else if (rule.content == ElementContent::ELEMENTS) {
            checkStrayText(element, node);
        }
    }
    checkCounts(element, rules, counts);
}

void FormatChecker::checkStrayText(const xmlNode* element, const xmlNode* node) {
    const bool isText = node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE;
    const std::string_view text = isText ? Xml::view(node->content) : std::string_view();
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) {
        return;
    }
    // The tree knows the line on which a text ends, and that on which a CDATA section begins.
    const auto linesBehind = node->type == XML_TEXT_NODE
                                 ? std::count(text.begin() + static_cast<std::ptrdiff_t>(first), text.end(), '\n')
                                 : 0;
    m_faults.add(Kind::STRUCTURE, {std::max(Xml::lineOf(node) - static_cast<int>(linesBehind), Xml::lineOf(element)),
                                   std::string(Xml::view(element->name)), "the text " + inQuotes(text.substr(first)),
                                   "elements only", "remove the text or make it a comment"});
}

void FormatChecker::checkChild(const xmlNode* child, const std::vector<ChildRule>& rules, std::vector<int>& counts) {
    const auto found = std::find_if(rules.begin(), rules.end(), [&](const ChildRule& rule) {
        return rule.element->name == Xml::view(child->name);
    });
    if (found == rules.end()) {
        std::vector<std::string> names;
        std::transform(rules.begin(), rules.end(), std::back_inserter(names),
                       [](const ChildRule& rule) { return tag(rule.element->name); });
        add(Kind::STRUCTURE, child, "this element in " + tag(Xml::view(child->parent->name)), oneOf(names),
            "remove it, correct its name or move it");
        return;
    }
    int& count = counts[static_cast<std::size_t>(found - rules.begin())];
    ++count;
    if (count > found->maximum) {
        add(Kind::STRUCTURE, child, "this element once more in " + tag(Xml::view(child->parent->name)),
            "at most " + std::to_string(found->maximum), "remove all but one");
    }
    checkElement(child, *found->element);
}

void FormatChecker::checkCounts(const xmlNode* element, const std::vector<ChildRule>& rules,
                                const std::vector<int>& counts) {
    for (std::size_t i = 0; i < rules.size(); ++i) {
        if (counts[i] < rules[i].minimum) {
            const std::string name = tag(rules[i].element->name);
            add(Kind::STRUCTURE, element, std::to_string(counts[i]) + " of " + name,
                (rules[i].maximum == 1 ? "exactly " : "at least ") + std::to_string(rules[i].minimum), "add " + name);
        }
    }
}

void FormatChecker::add(FaultList::Kind kind, const xmlNode* at, std::string found, std::string expected,
                        std::string remedy) {
    m_faults.add(kind, {Xml::lineOf(at), std::string(Xml::view(at->name)), std::move(found), std::move(expected),
                        std::move(remedy)});
}

}  // namespace Veltrani::ConfigurationDetail
