#include "Configuration/detail/FaultList.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <algorithm>
#include <utility>

namespace Veltrani {

namespace {

// Long enough to recognise a value, short enough that a message stays readable.
constexpr std::size_t LONGEST_QUOTE_BYTES = 120;

bool isContinuationByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::string_view cutBetweenCharacters(std::string_view text, std::size_t bytes) {
    if (text.size() <= bytes) {
        return text;
    }
    while (bytes > 0 && isContinuationByte(text[bytes])) {
        --bytes;
    }
    return text.substr(0, bytes);
}

std::string onOneLine(std::string_view text) {
    static constexpr std::string_view DIGITS = "0123456789abcdef";
    std::string shown;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '\n') {
            shown += "\\n";
        } else if (code < 0x20U || code == 0x7FU) {
            shown += {'\\', 'x', DIGITS[code >> 4U], DIGITS[code & 0xFU]};
        } else {
            shown += character;
        }
    }
    return shown;
}

std::string lineOf(const std::string& document, const FaultList::Fault& fault) {
    return concatenated({onOneLine(document), ":", std::to_string(fault.line), ": <", fault.element, ">: found ",
                         fault.found, ", expected ", fault.expected, "; ", fault.remedy});
}

}  // namespace

FaultList::FaultList(std::string documentName) : m_documentName(std::move(documentName)) {}

void FaultList::add(Fault fault) {
    ++m_count;
    m_hasStructureFault = m_hasStructureFault || fault.kind == Kind::Structure;
    if (m_faults.size() < MOST_FAULTS_SHOWN) {
        m_faults.push_back(std::move(fault));
    }
}

std::wstring FaultList::message() const {
    std::vector<Fault> ordered = m_faults;
    std::stable_sort(ordered.begin(), ordered.end(), [](const Fault& a, const Fault& b) { return a.line < b.line; });
    std::string text;
    for (const Fault& fault : ordered) {
        text += text.empty() ? "" : "\n";
        text += lineOf(m_documentName, fault);
    }
    if (m_count > m_faults.size()) {
        text += concatenated({"\n(and ", std::to_string(m_count - m_faults.size()), " more faults)"});
    }
    return fromUtf8OrBytes(text);
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

std::string inQuotes(std::string_view text) {
    const std::string_view shown = cutBetweenCharacters(text, LONGEST_QUOTE_BYTES);
    return concatenated({"\"", onOneLine(shown), shown.size() < text.size() ? "..." : "", "\""});
}

}  // namespace Veltrani
