#pragma once

#include "Configuration/detail/DisplayFormat.h"
#include "Configuration/detail/ElementReader.h"
#include "Configuration/detail/FaultList.h"

#include <libxml/tree.h>

#include <span>
#include <string>
#include <vector>

namespace Veltrani::ConfigurationDetail {

/// Walks a document along the table of `displayFormat()` and reports everything that departs from it, and every value
/// that has no unit or leaves the range of its type. Elements and attributes in a namespace are not checked.
class FormatChecker {
public:
    /// Adds the faults of a whole document.
    static void check(const xmlNode* root, FaultList& faults);

private:
    FormatChecker(const ElementReader& reader, FaultList& faults) : m_reader(reader), m_faults(faults) {}

    void checkElement(const xmlNode* element, const ElementRule& rule);
    void checkAttributes(const xmlNode* element, const ElementRule& rule);
    void checkValue(const xmlNode* element, const AttributeRule& rule, const std::string& value);
    void checkUnit(const xmlNode* element, const AttributeRule& rule, const std::string& value);
    void checkConverted(const xmlNode* element, const AttributeRule& rule, const std::string& value);
    void checkContent(const xmlNode* element, const ElementRule& rule);
    void checkStrayText(const xmlNode* element, const xmlNode* node);
    void checkChild(const xmlNode* child, const std::vector<ChildRule>& rules, std::vector<int>& counts);
    void checkCounts(const xmlNode* element, const std::vector<ChildRule>& rules, const std::vector<int>& counts);
    void add(FaultList::Kind kind, const xmlNode* at, std::string found, std::string expected, std::string remedy);

    const ElementReader m_reader;
    FaultList& m_faults;
};

}  // namespace Veltrani::ConfigurationDetail
