#include "Configuration/detail/FaultList.h"

#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <algorithm>
#include <utility>

namespace Veltrani::ConfigurationDetail {

namespace {

std::string lineOf(const std::string& document, const FileFault& fault) {
    return onOneLine(concatenated({document, ":", std::to_string(fault.line), ": <", fault.element, ">: found ",
                                   fault.found, ", expected ", fault.expected, "; ", fault.remedy}));
}

}  // namespace

FaultList::FaultList(std::string documentName) : m_documentName(std::move(documentName)) {}

void FaultList::add(Kind kind, FileFault fault) {
    ++m_count;
    m_hasStructureFault = m_hasStructureFault || kind == Kind::STRUCTURE;
    if (m_faults.size() < MOST_FAULTS_SHOWN) {
        m_faults.push_back(std::move(fault));
    }
}

std::wstring FaultList::message() const {
    std::vector<FileFault> ordered = m_faults;
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const FileFault& a, const FileFault& b) { return a.line < b.line; });
    std::string text;
    for (const FileFault& fault : ordered) {
        text += text.empty() ? "" : "\n";
        text += lineOf(m_documentName, fault);
    }
    if (m_count > m_faults.size()) {
        text += concatenated({"\n(and ", std::to_string(m_count - m_faults.size()), " more faults)"});
    }
    return fromUtf8(text);
}

void FaultList::throwIfAny() const {
    if (!empty()) {
        throw VeltraniParseException(message());
    }
}

std::string concatenated(std::initializer_list<std::string_view> pieces) {
    std::string text;
    for (const std::string_view piece : pieces) {
        text += piece;
    }
    return text;
}

}  // namespace Veltrani::ConfigurationDetail
