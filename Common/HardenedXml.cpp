#include "Common/HardenedXml.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstdint>
#include <new>

namespace Veltrani {

namespace {

struct FreeParser {
    void operator()(xmlParserCtxt* parser) const {
        // A document that was not taken is destroyed with its parser.
        xmlFreeDoc(parser->myDoc);
        parser->myDoc = nullptr;
        xmlFreeParserCtxt(parser);
    }
};

/// The state of one run of the parser.
struct Run {
    HardenedXml::Observer& observer;
    bool hasFault = false;
    bool isOutOfMemory = false;
};

Run& runOf(void* context) {
    return *static_cast<Run*>(static_cast<xmlParserCtxt*>(context)->_private);
}

std::string_view view(const xmlChar* text) {
    return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

void noteMemory(Run& run, const xmlError& error) {
    run.isOutOfMemory = run.isOutOfMemory || (!run.hasFault && error.code == XML_ERR_NO_MEMORY);
}

void onError(void* context, xmlErrorPtr error) {
    Run& run = runOf(context);
    noteMemory(run, *error);
    if (run.isOutOfMemory || error->level < XML_ERR_ERROR) {
        return;
    }
    run.hasFault =
        run.observer.onFinding({error->line, error->message, view(static_cast<xmlParserCtxt*>(context)->name),
                                error->level == XML_ERR_FATAL, error->domain == XML_FROM_NAMESPACE}) ||
        run.hasFault;
}

/// While it lives, errors that know no parser, such as those of its buffers, are noted and not printed.
class StrayErrors {
public:
    explicit StrayErrors(Run& run) { xmlSetStructuredErrorFunc(&run, &note); }
    ~StrayErrors() { xmlSetStructuredErrorFunc(m_previousContext, m_previous); }
    StrayErrors(const StrayErrors&) = delete;
    StrayErrors& operator=(const StrayErrors&) = delete;

private:
    static void note(void* run, xmlErrorPtr error) { noteMemory(*static_cast<Run*>(run), *error); }

    xmlStructuredErrorFunc m_previous = xmlStructuredError;
    void* m_previousContext = xmlStructuredErrorContext;
};

/// Called where a document type begins, before any of its declarations is read.
void refuseDocumentType(void* context, const xmlChar* name, const xmlChar*, const xmlChar*) {
    auto* const parser = static_cast<xmlParserCtxt*>(context);
    Run& run = runOf(context);
    run.hasFault = true;
    run.observer.onDocumentType(parser->input->line, view(name));
    xmlStopParser(parser);
}

/// The tree itself counts the lines of elements up to 65535 only.
void keepElementLine(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri, int namespaceCount,
                     const xmlChar** namespaces, int attributeCount, int defaultedCount, const xmlChar** attributes) {
    xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount, defaultedCount,
                          attributes);
    const auto* const parser = static_cast<xmlParserCtxt*>(context);
    if (parser->node != nullptr && parser->input != nullptr) {
        parser->node->_private = reinterpret_cast<void*>(static_cast<std::intptr_t>(parser->input->line));
    }
}

}  // namespace

void HardenedXml::FreeTree::operator()(_xmlDoc* tree) const {
    xmlFreeDoc(tree);
}

bool HardenedXml::FirstFault::onFinding(const Finding& finding) {
    if (m_text.empty() && !(m_allowsUndeclaredPrefixes && finding.isOfNamespaces)) {
        m_line = finding.line;
        m_text = finding.message != nullptr ? finding.message : "not readable";
        m_text.erase(m_text.find_last_not_of(" \t\r\n") + 1);
    }
    return !m_text.empty();
}

void HardenedXml::FirstFault::onDocumentType(int line, std::string_view /*name*/) {
    m_line = line;
    m_text = "a document type is not allowed";
}

HardenedXml::Tree HardenedXml::read(std::string_view text, const Options& options, Observer& observer) {
    Run run{observer};
    const StrayErrors strayErrors(run);
    const std::unique_ptr<xmlParserCtxt, FreeParser> parser(xmlNewParserCtxt());
    if (parser == nullptr) {
        throw std::bad_alloc();
    }
    parser->_private = &run;
    parser->sax->serror = &onError;
    parser->sax->internalSubset = &refuseDocumentType;
    if (options.hasElementLines) {
        parser->sax->startElementNs = &keepElementLine;
    }
    // No entity is replaced.
    const int flags = XML_PARSE_NONET | XML_PARSE_BIG_LINES | (options.isUtf8 ? XML_PARSE_IGNORE_ENC : 0) |
                      (options.isChanged ? XML_PARSE_NODICT : 0);
    Tree tree(xmlCtxtReadMemory(parser.get(), text.data(), static_cast<int>(text.size()), nullptr,
                                options.isUtf8 ? "UTF-8" : nullptr, flags));
    // What it has no memory for, the parser leaves out; some of that it does not report.
    if (run.isOutOfMemory || (tree == nullptr && !run.hasFault)) {
        throw std::bad_alloc();
    }
    return tree;
}

}  // namespace Veltrani
