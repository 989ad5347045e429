#include "Configuration/detail/XmlDocument.h"

#include "Common/QuotedText.h"
#include "Configuration/detail/XmlNode.h"

#include <utf8.h>

#include <algorithm>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace Veltrani::ConfigurationDetail {

namespace {

/// Returns the position behind the first `end` from `from` on; the end of the text when it does not occur.
std::size_t past(std::string_view text, std::size_t from, std::string_view end) {
    const std::size_t found = text.find(end, from);
    return found == std::string_view::npos ? text.size() : found + end.size();
}

struct Tag {
    std::size_t end = 0;  ///< first position behind the tag
    std::size_t attributes = 0;
};

/// Returns the start tag at `begin`; a quoted value may hold anything, a closing bracket included.
Tag scanTag(std::string_view text, std::size_t begin) {
    Tag tag;
    std::size_t at = begin + 1;
    while (at < text.size() && text[at] != '>') {
        if (text[at] == '"' || text[at] == '\'') {
            ++tag.attributes;
            at = past(text, at + 1, text.substr(at, 1));
        } else {
            ++at;
        }
    }
    tag.end = at;
    return tag;
}

int lineAt(std::string_view text, std::size_t position) {
    return 1 + static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(position), '\n'));
}

constexpr std::size_t MOST_ATTRIBUTES = 256;
constexpr const char* ROOT = "Display";

std::string_view withoutLineEnd(std::string_view text) {
    return text.substr(0, text.find_last_not_of(" \r\n") + 1);
}

/// What one run of the parser reports. A fault that ends the parsing counts alone: what the parser reports after it
/// follows from that fault, and a prefix that seemed to be undeclared may have been declared behind it.
class Findings : public HardenedXml::Observer {
public:
    bool onFinding(const HardenedXml::Finding& finding) override {
        // A vendor's own identifiers may look unusual and a duplicate `xml:id` is not our concern: only what breaks the
        // document as such counts.
        if (m_end || !(finding.isFatal || finding.isOfNamespaces)) {
            return m_end.has_value();
        }
        const std::string_view message = finding.message == nullptr ? "unknown" : finding.message;
        FileFault fault{std::max(finding.line, 1), finding.element.empty() ? ROOT : std::string(finding.element),
                        concatenated({"broken XML (", inQuotes(withoutLineEnd(message)), ")"}),
                        "a well-formed XML document", "correct the text at this line or just before it"};
        if (finding.isFatal) {
            m_end = std::move(fault);
        } else if (m_undeclared.size() < FaultList::MOST_FAULTS_SHOWN) {
            m_undeclared.push_back(std::move(fault));
        }
        return m_end.has_value();
    }

    void onDocumentType(int line, std::string_view name) override {
        m_end = FileFault{line, ROOT, concatenated({"a document type declaration (DOCTYPE ", inQuotes(name), ")"}),
                          "a document without one", "remove the declaration and write out what its entities stand for"};
    }

    /// Returns true when there was one.
    bool report(FaultList& faults) {
        if (m_end) {
            m_undeclared = {std::move(*m_end)};
        }
        for (FileFault& fault : m_undeclared) {
            faults.add(FaultList::Kind::STRUCTURE, std::move(fault));
        }
        return !m_undeclared.empty();
    }

private:
    std::optional<FileFault> m_end;
    std::vector<FileFault> m_undeclared;
};

FileFault encodingFault(int line, std::string found) {
    return {line, ROOT, std::move(found), "text in UTF-8", "save the file in the encoding UTF-8"};
}

/// Returns the faults that can be found in the bytes alone.
std::optional<FileFault> faultOfBytes(std::string_view text) {
    if (text.size() > XmlDocument::LARGEST_BYTES) {
        return FileFault{1, ROOT, std::to_string(text.size()) + " bytes",
                         "at most " + std::to_string(XmlDocument::LARGEST_BYTES) + " bytes",
                         "check that this is a display configuration"};
    }
    if (text.empty()) {
        return FileFault{1, ROOT, "an empty text", "a <Display> document", "start from an example"};
    }
    if (const std::size_t zero = text.find('\0'); zero != std::string_view::npos) {
        return encodingFault(lineAt(text, zero), "a zero byte");
    }
    const auto invalid = utf8::find_invalid(text.begin(), text.end());
    if (invalid != text.end()) {
        return encodingFault(lineAt(text, static_cast<std::size_t>(invalid - text.begin())),
                             "bytes that are not UTF-8");
    }
    if (const int line = lineOfOverfullTag(text, MOST_ATTRIBUTES); line != 0) {
        return FileFault{line, ROOT, "a tag with more than " + std::to_string(MOST_ATTRIBUTES) + " attributes",
                         "at most that many", "check that this is a display configuration"};
    }
    return std::nullopt;
}

/// What the first line declares: another encoding would turn the bytes into other characters.
std::optional<FileFault> faultOfDeclaration(const xmlDoc& document) {
    const std::string_view version = Xml::view(document.version);
    if (version != "1.0") {
        return FileFault{1, ROOT, "XML version " + inQuotes(version), "version \"1.0\"",
                         "declare <?xml version=\"1.0\"?>"};
    }
    if (document.encoding != nullptr && xmlStrcasecmp(document.encoding, Xml::chars("UTF-8")) != 0) {
        return encodingFault(1, "encoding " + inQuotes(Xml::view(document.encoding)));
    }
    return std::nullopt;
}

/// Returns null when faults were added.
HardenedXml::Tree read(std::string_view text, FaultList& faults) {
    Findings findings;
    HardenedXml::Tree tree = HardenedXml::read(text, {.isChanged = true, .hasElementLines = true}, findings);
    if (findings.report(faults)) {
        return nullptr;
    }
    return tree;
}

}  // namespace

int lineOfOverfullTag(std::string_view text, std::size_t limit) {
    std::size_t at = text.find('<');
    while (at < text.size()) {
        const std::string_view rest = text.substr(at);
        if (rest.starts_with("<!--")) {
            at = past(text, at + 4, "-->");
        } else if (rest.starts_with("<![CDATA[")) {
            at = past(text, at + 9, "]]>");
        } else if (rest.starts_with("<?")) {
            at = past(text, at + 2, "?>");
        } else {
            const Tag tag = scanTag(text, at);
            if (tag.attributes > limit) {
                return lineAt(text, at);
            }
            at = tag.end;
        }
        at = text.find('<', at);
    }
    return 0;
}

XmlDocument XmlDocument::parse(std::string_view text, FaultList& faults) {
    if (std::optional<FileFault> fault = faultOfBytes(text)) {
        faults.add(FaultList::Kind::STRUCTURE, std::move(*fault));
        return {};
    }
    XmlDocument parsed;
    parsed.m_document = read(text, faults);
    if (parsed.m_document == nullptr) {
        return {};
    }
    if (std::optional<FileFault> fault = faultOfDeclaration(*parsed.m_document)) {
        faults.add(FaultList::Kind::STRUCTURE, std::move(*fault));
        return {};
    }
    if (parsed.m_document->encoding == nullptr) {
        // Without it, a save would write attributes in pure ASCII with numeric references.
        parsed.m_document->encoding = xmlStrdup(Xml::chars("UTF-8"));
    }
    return parsed;
}

xmlNode* XmlDocument::root() const {
    return m_document == nullptr ? nullptr : xmlDocGetRootElement(m_document.get());
}

std::string XmlDocument::text() const {
    xmlChar* bytes = nullptr;
    int size = 0;
    const Xml::MemoryWatch memory;
    xmlDocDumpMemoryEnc(m_document.get(), &bytes, &size, "UTF-8");
    const std::unique_ptr<xmlChar, void (*)(xmlChar*)> owned(bytes, [](xmlChar* text) { xmlFree(text); });
    // A document that is cut off where memory ran out must never be saved.
    memory.requireEnough();
    if (owned == nullptr) {
        throw std::bad_alloc();
    }
    return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)};
}

}  // namespace Veltrani::ConfigurationDetail
