#pragma once

#include "DisplayReport/check/Finding.h"
#include "DisplayReport/check/Rule.h"

#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::DisplayReport {

/// Collects what the rules find, and leaves out what is allowed.
class FindingList {
public:
    /// @param findings receives the findings; must outlive this object
    /// @param allowed the names that hold for the whole display
    FindingList(std::vector<Finding>& findings, std::vector<std::string> allowed);

    /// @param allowedHere what the element concerned allows: names of rules with blanks between them
    void add(const Rule& rule, const std::string& where, const std::string& allowedHere, const std::string& what);

private:
    std::vector<Finding>* m_findings;  ///< not owned
    std::vector<std::string> m_allowed;
};

/// The words of a text, at blanks, tabs and line feeds.
[[nodiscard]] std::vector<std::string> wordsOf(const std::string& text);

}  // namespace Veltrani::DisplayReport
