#include "DisplayReport/check/FindingList.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

bool contains(const std::vector<std::string>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

FindingList::FindingList(std::vector<Finding>& findings, std::vector<std::string> allowed)
    : m_findings(&findings), m_allowed(std::move(allowed)) {}

void FindingList::add(const Rule& rule, const std::string& where, const std::string& allowedHere,
                      const std::string& what) {
    const bool isAllowed =
        rule.canBeAllowed() && (contains(m_allowed, rule.name) || contains(wordsOf(allowedHere), rule.name));
    if (!isAllowed) {
        m_findings->push_back({rule.severity, std::string(rule.name), where, what, {}});
    }
}

std::vector<std::string> wordsOf(const std::string& text) {
    std::vector<std::string> words;
    std::istringstream in(text);
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

}  // namespace Veltrani::DisplayReport
