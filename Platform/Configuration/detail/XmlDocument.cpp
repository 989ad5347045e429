#include "Configuration/detail/XmlDocument.h"

#include "Common/QuotedText.h"
#include "Configuration/detail/TagScanner.h"
#include "Configuration/detail/XmlNode.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <utf8.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace Veltrani {

namespace {

using Fault = FaultList::Fault;

constexpr std::size_t MOST_ATTRIBUTES = 256;
constexpr const char* ROOT = "Display";
// No entity is replaced, nothing is fetched, and lines count beyond 65535.
constexpr int OPTIONS = XML_PARSE_NONET | XML_PARSE_BIG_LINES | XML_PARSE_NODICT;

struct FreeDocument {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using OwnedDocument = std::unique_ptr<xmlDoc, FreeDocument>;

struct FreeContext {
    void operator()(xmlParserCtxt* context) const {
        // A document that the caller did not take dies with its parser.
        xmlFreeDoc(context->myDoc);
        context->myDoc = nullptr;
        xmlFreeParserCtxt(context);
    }
};

/// What one run of the parser has to say. A fault that ends the parsing is the whole truth: what the parser says after
/// it is about the ruins, and a prefix that seemed to be undeclared may have been declared behind it.
struct Findings {
    std::optional<Fault> end;
    std::vector<Fault> undeclared;
    bool isOutOfMemory = false;
};

Findings& findingsOf(void* context) {
    return *static_cast<Findings*>(static_cast<xmlParserCtxt*>(context)->_private);
}

std::string_view withoutLineEnd(std::string_view text) {
    return text.substr(0, text.find_last_not_of(" \r\n") + 1);
}

std::string elementAt(const xmlParserCtxt* context) {
    const std::string_view name = Xml::view(context->name);
    return name.empty() ? ROOT : std::string(name);
}

/// A vendor's own identifiers may look unusual and a duplicate `xml:id` is not our concern: only what breaks the
/// document as such counts.
bool isFault(const xmlError& error) {
    return error.level == XML_ERR_FATAL || (error.level == XML_ERR_ERROR && error.domain == XML_FROM_NAMESPACE);
}

void onError(void* context, xmlErrorPtr error) {
    Findings& findings = findingsOf(context);
    // No fault of the document, which would otherwise seem to end here.
    // Behind a fault of the document it is only how the parser gives up, for instance on a value that is too long.
    findings.isOutOfMemory = findings.isOutOfMemory || (!findings.end && error->code == XML_ERR_NO_MEMORY);
    if (findings.isOutOfMemory || findings.end || !isFault(*error)) {
        return;
    }
    const std::string_view message = error->message == nullptr ? "unknown" : error->message;
    Fault fault{FaultList::Kind::Structure,
                std::max(error->line, 1),
                elementAt(static_cast<xmlParserCtxt*>(context)),
                concatenated({"broken XML (", inQuotes(withoutLineEnd(message)), ")"}),
                "a well-formed XML document",
                "correct the text at this line or just before it"};
    if (error->level == XML_ERR_FATAL) {
        findings.end = std::move(fault);
    } else if (findings.undeclared.size() < FaultList::MOST_FAULTS_SHOWN) {
        findings.undeclared.push_back(std::move(fault));
    }
}

void onDocumentType(void* context, const xmlChar* name, const xmlChar*, const xmlChar*) {
    auto* const parser = static_cast<xmlParserCtxt*>(context);
    findingsOf(context).end =
        Fault{FaultList::Kind::Structure,
              parser->input->line,
              ROOT,
              concatenated({"a document type declaration (DOCTYPE ", inQuotes(Xml::view(name)), ")"}),
              "a document without one",
              "remove the declaration and write out what its entities stand for"};
    xmlStopParser(parser);
}

void onStartElement(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri, int namespaceCount,
                    const xmlChar** namespaces, int attributeCount, int defaultedCount, const xmlChar** attributes) {
    xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount, defaultedCount,
                          attributes);
    const auto* const parser = static_cast<xmlParserCtxt*>(context);
    if (parser->node != nullptr && parser->input != nullptr) {
        parser->node->_private = reinterpret_cast<void*>(static_cast<std::intptr_t>(parser->input->line));
    }
}

int lineAt(std::string_view text, std::size_t position) {
    return 1 + static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(position), '\n'));
}

Fault encodingFault(int line, std::string found) {
    return {FaultList::Kind::Structure,           line, ROOT, std::move(found), "text in UTF-8",
            "save the file in the encoding UTF-8"};
}

/// What can be told from the bytes alone.
std::optional<Fault> faultOfBytes(std::string_view text) {
    if (text.size() > XmlDocument::LARGEST_BYTES) {
        return Fault{FaultList::Kind::Structure,
                     1,
                     ROOT,
                     std::to_string(text.size()) + " bytes",
                     "at most " + std::to_string(XmlDocument::LARGEST_BYTES) + " bytes",
                     "check that this is a display configuration"};
    }
    if (text.empty()) {
        return Fault{FaultList::Kind::Structure, 1, ROOT, "an empty text", "a <Display> document",
                     "start from an example"};
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
        return Fault{FaultList::Kind::Structure,
                     line,
                     ROOT,
                     "a tag with more than " + std::to_string(MOST_ATTRIBUTES) + " attributes",
                     "at most that many",
                     "check that this is a display configuration"};
    }
    return std::nullopt;
}

/// What the first line declares: another encoding would turn the bytes into other characters.
std::optional<Fault> faultOfDeclaration(const xmlDoc& document) {
    const std::string_view version = Xml::view(document.version);
    if (version != "1.0") {
        return Fault{FaultList::Kind::Structure,       1, ROOT, "XML version " + inQuotes(version), "version \"1.0\"",
                     "declare <?xml version=\"1.0\"?>"};
    }
    if (document.encoding != nullptr && xmlStrcasecmp(document.encoding, Xml::chars("UTF-8")) != 0) {
        return encodingFault(1, "encoding " + inQuotes(Xml::view(document.encoding)));
    }
    return std::nullopt;
}

/// True when there was one.
bool report(Findings& findings, FaultList& faults) {
    if (findings.end) {
        findings.undeclared = {std::move(*findings.end)};
    }
    for (Fault& fault : findings.undeclared) {
        faults.add(std::move(fault));
    }
    return !findings.undeclared.empty();
}

/// The document, owned by the caller; null when faults were added.
xmlDoc* read(std::string_view text, FaultList& faults) {
    const Xml::MemoryWatch memory;
    const std::unique_ptr<xmlParserCtxt, FreeContext> context(xmlNewParserCtxt());
    if (context == nullptr) {
        throw std::bad_alloc();
    }
    Findings findings;
    context->_private = &findings;
    context->sax->serror = onError;
    context->sax->internalSubset = onDocumentType;
    context->sax->startElementNs = onStartElement;
    OwnedDocument document(
        xmlCtxtReadMemory(context.get(), text.data(), static_cast<int>(text.size()), nullptr, nullptr, OPTIONS));
    memory.requireEnough();
    if (findings.isOutOfMemory) {
        throw std::bad_alloc();
    }
    if (report(findings, faults)) {
        return nullptr;
    }
    if (document == nullptr || xmlDocGetRootElement(document.get()) == nullptr) {
        throw std::bad_alloc();  // the only failure that the parser does not report
    }
    return document.release();
}

}  // namespace

XmlDocument XmlDocument::parse(std::string_view text, FaultList& faults) {
    if (std::optional<Fault> fault = faultOfBytes(text)) {
        faults.add(std::move(*fault));
        return {};
    }
    XmlDocument parsed;
    parsed.m_document.reset(read(text, faults));
    if (parsed.m_document == nullptr) {
        return {};
    }
    if (std::optional<Fault> fault = faultOfDeclaration(*parsed.m_document)) {
        faults.add(std::move(*fault));
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

}  // namespace Veltrani
