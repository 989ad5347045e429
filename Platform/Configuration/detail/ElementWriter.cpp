#include "Configuration/detail/ElementWriter.h"

#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/detail/NodePlacement.h"
#include "Configuration/detail/ValueText.h"
#include "Configuration/detail/XmlNode.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Veltrani::ConfigurationDetail {

namespace {

std::string selectedBy(const xmlNode* element, const ElementRule& rule) {
    return rule.selector.empty() ? std::string() : Xml::attribute(element, rule.selector.data()).value_or("");
}

bool isRoot(const xmlNode* element) {
    return element->parent == nullptr || element->parent->type != XML_ELEMENT_NODE;
}

/// Returns the rule of the child of this name; null when the format has no such child there.
const ElementRule* childRule(const xmlNode* parent, std::string_view name);

const ElementRule& ruleOfElement(const xmlNode* element) {
    const ElementRule* const rule =
        isRoot(element) ? &displayFormat() : childRule(element->parent, Xml::view(element->name));
    if (rule == nullptr) {
        throw std::logic_error("an element of a checked document that the format does not have");
    }
    return *rule;
}

const ElementRule* childRule(const xmlNode* parent, std::string_view name) {
    const ElementRule& outer = ruleOfElement(parent);
    for (const ChildRule& child : childrenOf(outer, selectedBy(parent, outer))) {
        if (child.element->name == name) {
            return child.element;
        }
    }
    return nullptr;
}

std::vector<std::string_view> orderBelow(const xmlNode* parent) {
    const ElementRule& rule = ruleOfElement(parent);
    return writingOrder(rule, selectedBy(parent, rule));
}

const xmlNode* unitsOf(const xmlNode* element) {
    return Xml::child(xmlDocGetRootElement(element->doc), "Units");
}

/// The attribute that states the unit of a value; null for a plain number.
const AttributeRule* unitRuleOf(const AttributeRule& rule) {
    return isLength(rule.type)             ? &LENGTH_UNIT_ATTRIBUTE
           : rule.type == ValueType::ANGLE ? &ANGLE_UNIT_ATTRIBUTE
                                           : nullptr;
}

/// The unit that a new element states where none holds: the one that every number is taken over in without rounding.
std::string exactUnit(const xmlNode* place, const AttributeRule& unitRule) {
    return unitRule.type == ValueType::ANGLE_UNIT ? std::string(RADIANS)
                                                  : Xml::attribute(unitsOf(place), "native").value_or("");
}

/// Returns the unit of a value of this element, or of a new element in it; empty for a plain number.
std::string unitAt(const xmlNode* place, const AttributeRule& rule) {
    const AttributeRule* const unitRule = unitRuleOf(rule);
    if (unitRule == nullptr) {
        return {};
    }
    return ElementReader::unitInScope(place, unitRule->name.data()).value_or(exactUnit(place, *unitRule));
}

std::function<double(double)> readingOf(const ElementReader& reader, const AttributeRule& rule,
                                        const std::string& unit) {
    if (isLength(rule.type)) {
        return [&reader, type = UnitConversionTable::getUnitSubTypeFromName(fromUtf8(unit))](double number) {
            return reader.lengthOf(number, type);
        };
    }
    if (rule.type == ValueType::ANGLE) {
        return [unit](double number) { return ElementReader::angleOf(number, unit); };
    }
    return [](double number) { return number; };
}

/// Makes a new element state the units that its values need and that do not hold where it will stand.
void stateUnits(xmlNode* element, const ElementRule& rule, const xmlNode* place) {
    for (const AttributeRule& attribute : rule.attributes) {
        const AttributeRule* const unit = unitRuleOf(attribute);
        const bool isStated = unit == nullptr || ElementReader::unitInScope(place, unit->name.data()) ||
                              Xml::attribute(element, unit->name.data());
        if (!isStated) {
            Xml::setAttribute(element, unit->name.data(), exactUnit(place, *unit));
        }
    }
}

Xml::OwnedNode newRow(const xmlNode* table, const ElementRule& rule, const RowForm& form, const StatedRow& row) {
    Xml::OwnedNode element(Xml::newElement(table->doc, form.row));
    for (std::size_t i = 0; i < row.size(); ++i) {
        Xml::setAttribute(element.get(), form.attributes[i], row[i].text);
    }
    stateUnits(element.get(), rule, table);
    return element;
}

}  // namespace

const AttributeRule& ElementWriter::ruleOf(const ElementRule* child, std::string_view childName,
                                           std::string_view attribute) const {
    const std::span<const AttributeRule> rules =
        child == nullptr ? std::span<const AttributeRule>() : child->attributes;
    const auto found =
        std::find_if(rules.begin(), rules.end(), [&](const AttributeRule& rule) { return rule.name == attribute; });
    if (found == rules.end()) {
        const ElementRule& parent = ruleOfElement(m_parent);
        const std::string selector(parent.selector);
        refuse(childName, attribute, selector + "=" + inQuotes(selectedBy(m_parent, parent)),
               "a " + selector + " that has this number", "set a number that it has");
    }
    return *found;
}

StatedNumber ElementWriter::stated(const xmlNode* place, std::string_view element, const AttributeRule& rule,
                                   double wanted) const {
    const std::string expected = expectedValue(rule.type);
    const std::string found = numberText(wanted);
    if (!std::isfinite(wanted)) {
        refuse(element, rule.name, found, expected, "give a finite number");
    }
    if (isPositive(rule.type) && !(wanted > 0.0)) {
        refuse(element, rule.name, found, expected, "correct the value");
    }
    const std::string unit = unitAt(place, rule);
    const std::optional<StatedNumber> number = nearestStated(wanted, readingOf(m_reader, rule, unit));
    if (!number || (isPositive(rule.type) && !(number->value > 0.0))) {
        refuse(element, rule.name, found, expected + " that can be represented in " + inQuotes(unit),
               "give a value of sensible size, or state another unit in the file");
    }
    return *number;
}

bool ElementWriter::writeNumbers(const char* child, const std::vector<NumberChange>& changes,
                                 const Check& check) const {
    const auto isThereAlready = [](const NumberChange& change) { return isSameNumber(*change.current, change.wanted); };
    if (std::all_of(changes.begin(), changes.end(), isThereAlready)) {
        return false;
    }
    const StatedRow numbers = statedNumbers(child, changes);
    if (check) {
        std::vector<double> values(numbers.size());
        std::transform(numbers.begin(), numbers.end(), values.begin(), [](const auto& number) { return number.value; });
        check(values);
    }
    const auto isCurrent = [](const NumberChange& change, const StatedNumber& number) {
        return isSameNumber(*change.current, number.value);
    };
    if (std::equal(changes.begin(), changes.end(), numbers.begin(), isCurrent)) {
        return false;
    }
    putNumbers(child, changes, numbers);
    for (std::size_t i = 0; i < changes.size(); ++i) {
        *changes[i].current = numbers[i].value;
    }
    return true;
}

StatedRow ElementWriter::statedNumbers(const char* child, const std::vector<NumberChange>& changes) const {
    const xmlNode* const existing = Xml::child(m_parent, child);
    const ElementRule* const rule = childRule(m_parent, child);
    StatedRow numbers;
    for (const NumberChange& change : changes) {
        numbers.push_back(stated(existing != nullptr ? existing : m_parent, child,
                                 ruleOf(rule, child, change.attribute), change.wanted));
    }
    return numbers;
}

void ElementWriter::putNumbers(const char* child, const std::vector<NumberChange>& changes,
                               const StatedRow& numbers) const {
    xmlNode* const existing = Xml::child(m_parent, child);
    Xml::OwnedNode added(existing == nullptr ? Xml::newElement(m_parent->doc, child) : nullptr);
    Xml::AttributeChanges writing;
    for (std::size_t i = 0; i < changes.size(); ++i) {
        if (existing == nullptr) {
            Xml::setAttribute(added.get(), changes[i].attribute, numbers[i].text);
        } else if (!isSameNumber(*changes[i].current, numbers[i].value)) {
            writing.set(existing, changes[i].attribute, numbers[i].text);
        }
    }
    if (existing == nullptr) {
        stateUnits(added.get(), *childRule(m_parent, child), m_parent);
        Xml::insertInOrder(m_parent, std::move(added), orderBelow(m_parent));
    }
    writing.apply();
}

std::string ElementWriter::statedText(const char* child, const TextChange& change) const {
    const AttributeRule& rule = ruleOf(childRule(m_parent, child), child, change.attribute);
    const std::string text =
        xmlText(*change.wanted, m_owner + L": <" + fromUtf8(child) + L"> " + fromUtf8(change.attribute));
    if (checkValue(rule.type, text) != NumberState::GOOD) {
        refuse(child, change.attribute, inQuotes(text), expectedValue(rule.type), "correct the name");
    }
    return text;
}

void ElementWriter::writeTexts(const char* child, const std::vector<TextChange>& changes) const {
    xmlNode* const existing = Xml::child(m_parent, child);
    Xml::OwnedNode added(existing == nullptr ? Xml::newElement(m_parent->doc, child) : nullptr);
    xmlNode* const element = existing != nullptr ? existing : added.get();
    Xml::AttributeChanges writing;
    for (const TextChange& change : changes) {
        const std::string text = change.wanted ? statedText(child, change) : std::string();
        if (change.wanted && Xml::attribute(element, change.attribute) != text) {
            writing.set(element, change.attribute, text);
        }
    }
    writing.apply();
    if (added) {
        Xml::insertInOrder(m_parent, std::move(added), orderBelow(m_parent));
    }
    for (const TextChange& change : changes) {
        if (!change.wanted) {
            Xml::removeAttribute(element, change.attribute);
        }
    }
}

void ElementWriter::removeAttribute(const char* child, const char* attribute) const {
    if (xmlNode* const existing = Xml::child(m_parent, child)) {
        Xml::removeAttribute(existing, attribute);
    }
}

std::vector<StatedRow> ElementWriter::statedRows(const RowForm& form,
                                                 const std::vector<std::vector<double>>& wanted) const {
    const xmlNode* const table = Xml::child(m_parent, form.table);
    const std::vector<xmlNode*> existing = Xml::children(table, form.row);
    const ElementRule* const tableRule = childRule(m_parent, form.table);
    const ElementRule* const rule = tableRule == nullptr ? nullptr : tableRule->children.front().element;
    std::vector<StatedRow> rows(wanted.size());
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const xmlNode* const place = i < existing.size() ? existing[i] : table != nullptr ? table : m_parent;
        for (std::size_t k = 0; k < form.attributes.size(); ++k) {
            rows[i].push_back(stated(place, form.row, ruleOf(rule, form.table, form.attributes[k]), wanted[i][k]));
        }
    }
    return rows;
}

void ElementWriter::requireRemovableRows(const RowForm& form, std::size_t rowsThatStay) const {
    const std::vector<xmlNode*> existing = Xml::children(Xml::child(m_parent, form.table), form.row);
    for (std::size_t i = rowsThatStay; i < existing.size(); ++i) {
        requireRemovable(existing[i]);
    }
}

void ElementWriter::writeRows(const RowForm& form, const std::vector<StatedRow>& rows) const {
    requireRemovableRows(form, rows.size());
    xmlNode* const table = childToWrite(form.table);
    const std::vector<xmlNode*> existing = Xml::children(table, form.row);
    const ElementRule& rule = *ruleOfElement(table).children.front().element;
    Xml::AttributeChanges writing;
    for (std::size_t i = 0; i < std::min(rows.size(), existing.size()); ++i) {
        changeRow(form, rule, existing[i], rows[i], writing);
    }
    std::vector<Xml::OwnedNode> added;
    for (std::size_t i = existing.size(); i < rows.size(); ++i) {
        added.push_back(newRow(table, rule, form, rows[i]));
    }
    // From here on hardly any memory is needed.
    for (Xml::OwnedNode& row : added) {
        Xml::insertInOrder(table, std::move(row), orderBelow(table));
    }
    writing.apply();
    for (std::size_t i = existing.size(); i > rows.size(); --i) {
        Xml::removeIndented(existing[i - 1]);
    }
}

void ElementWriter::changeRow(const RowForm& form, const ElementRule& rule, xmlNode* row, const StatedRow& numbers,
                              Xml::AttributeChanges& writing) const {
    for (std::size_t i = 0; i < form.attributes.size(); ++i) {
        const AttributeRule& attribute = ruleOf(&rule, form.row, form.attributes[i]);
        const auto read = readingOf(m_reader, attribute, unitAt(row, attribute));
        const std::string stands = Xml::attribute(row, form.attributes[i]).value_or("");
        if (!isSameNumber(read(parseNumber(stands).value), numbers[i].value)) {
            writing.set(row, form.attributes[i], numbers[i].text);
        }
    }
}

void ElementWriter::remove(const char* child) const {
    if (xmlNode* const existing = Xml::child(m_parent, child)) {
        requireRemovable(existing);
        Xml::removeIndented(existing);
    }
}

void ElementWriter::requireRemovable(const xmlNode* element) const {
    if (Xml::holdsForeign(element)) {
        refuse(Xml::view(element->name), "", "comments, or elements or attributes of another program in it",
               "nothing of others in what is removed", "remove it in the file");
    }
}

xmlNode* ElementWriter::childToWrite(const char* child) const {
    if (xmlNode* const existing = Xml::child(m_parent, child)) {
        return existing;
    }
    Xml::insertInOrder(m_parent, Xml::OwnedNode(Xml::newElement(m_parent->doc, child)), orderBelow(m_parent));
    return Xml::child(m_parent, child);
}

void ElementWriter::refuse(std::string_view child, std::string_view attribute, std::string_view found,
                           std::string_view expected, std::string_view remedy) const {
    std::string text = ": <" + std::string(child) + ">";
    text.append(attribute.empty() ? "" : " ").append(attribute);
    text.append(": found ").append(found).append(", expected ").append(expected).append("; ").append(remedy);
    throw VeltraniException(__FILE__, __LINE__, m_owner + fromUtf8(text));
}

}  // namespace Veltrani::ConfigurationDetail
