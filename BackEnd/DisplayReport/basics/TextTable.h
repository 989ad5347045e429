#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// A table for people: columns as wide as their longest cell, two blanks between them, no lines.
///
/// Headings and cells are UTF-8; a character counts as one place. They are shown as `onOneLine` has them, so that no
/// text of a file can move the cursor of a terminal.
class TextTable {
public:
    explicit TextTable(std::vector<std::string> headings);

    /// One row; missing cells are empty, cells beyond the headings are dropped.
    void add(std::vector<std::string> cells);

    [[nodiscard]] bool empty() const { return m_rows.empty(); }

    /// Headings, then the rows, each behind `indent` blanks.
    void print(std::ostream& out, int indent = 0) const;

private:
    std::vector<std::string> m_headings;
    std::vector<std::vector<std::string>> m_rows;
};

/// The first `longest` characters, followed by "..." when there are more. Never cuts inside a character.
[[nodiscard]] std::string shortened(const std::string& utf8, std::size_t longest);

}  // namespace Veltrani::DisplayReport
