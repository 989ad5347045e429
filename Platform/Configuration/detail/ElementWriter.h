#pragma once

#include "Configuration/detail/DisplayFormat.h"
#include "Configuration/detail/ElementReader.h"
#include "Configuration/detail/StatedNumber.h"
#include "Configuration/detail/XmlNode.h"

#include <libxml/tree.h>

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Veltrani::ConfigurationDetail {

/// A number of a record that is to be changed, in native units or radians.
struct NumberChange {
    const char* attribute = nullptr;
    double* current = nullptr;  ///< what it is read as by now; receives what it is read as afterwards
    double wanted = 0.0;
};

/// A text that is to be changed; without one, the attribute is removed.
struct TextChange {
    const char* attribute = nullptr;
    std::optional<std::wstring> wanted;
};

/// The numbers of one row of a table or a rail, in the order of its attributes.
using StatedRow = std::vector<StatedNumber>;

/// The rows of an element: their name and the attributes of each.
struct RowForm {
    const char* table = nullptr;
    const char* row = nullptr;
    std::vector<const char*> attributes;
};

/// Writes values into the children of one element of a checked document, in the units that hold there.
///
/// A value that the format refuses throws `VeltraniException` with owner, element, attribute, value, expectation and
/// remedy, before anything has changed. What is there already is not written again. A child that is missing is created
/// at its place in the order of the format, and states a unit where none holds.
class ElementWriter {
public:
    /// @param owner names the record in messages
    ElementWriter(xmlNode* parent, const ElementReader& reader, std::wstring owner)
        : m_parent(parent), m_reader(reader), m_owner(std::move(owner)) {}

    /// Receives what the numbers will be read as, in their order. What it throws goes on, and nothing has changed.
    using Check = std::function<void(const std::vector<double>&)>;

    /// Writes the numbers of a child that change, or all of them into a new one.
    /// @return whether anything was written
    bool writeNumbers(const char* child, const std::vector<NumberChange>& changes, const Check& check = {}) const;

    /// Writes the texts of a child. The first one is never without a value.
    void writeTexts(const char* child, const std::vector<TextChange>& changes) const;

    /// Removes an attribute of a child; nothing where there is none.
    void removeAttribute(const char* child, const char* attribute) const;

    /// Returns rows as the table can state them: in the unit of the row that stands in that place, else in that of the
    /// table.
    [[nodiscard]] std::vector<StatedRow> statedRows(const RowForm& form,
                                                    const std::vector<std::vector<double>>& wanted) const;

    /// Throws what `writeRows` would throw for rows that cannot be removed.
    void requireRemovableRows(const RowForm& form, std::size_t rowsThatStay) const;

    /// Makes the rows of a table these ones, at least one: those that are there change their numbers, more follow the
    /// last one, and those that are too many are removed from the end.
    void writeRows(const RowForm& form, const std::vector<StatedRow>& rows) const;

    /// Removes a child with its line; nothing where there is none. Refused where it holds anything of other programs,
    /// or a comment.
    void remove(const char* child) const;

    /// Returns the child of this name, created empty where there is none.
    [[nodiscard]] xmlNode* childToWrite(const char* child) const;

    /// Throws for a value that is not written.
    /// @param attribute empty for the element itself
    [[noreturn]] void refuse(std::string_view child, std::string_view attribute, std::string_view found,
                             std::string_view expected, std::string_view remedy) const;

private:
    [[nodiscard]] const AttributeRule& ruleOf(const ElementRule* child, std::string_view childName,
                                              std::string_view attribute) const;
    [[nodiscard]] StatedRow statedNumbers(const char* child, const std::vector<NumberChange>& changes) const;
    void putNumbers(const char* child, const std::vector<NumberChange>& changes, const StatedRow& numbers) const;
    void changeRow(const RowForm& form, const ElementRule& rule, xmlNode* row, const StatedRow& numbers,
                   Xml::AttributeChanges& writing) const;
    [[nodiscard]] StatedNumber stated(const xmlNode* place, std::string_view element, const AttributeRule& rule,
                                      double wanted) const;
    [[nodiscard]] std::string statedText(const char* child, const TextChange& change) const;
    void requireRemovable(const xmlNode* element) const;

    xmlNode* m_parent;
    const ElementReader& m_reader;
    std::wstring m_owner;
};

}  // namespace Veltrani::ConfigurationDetail
