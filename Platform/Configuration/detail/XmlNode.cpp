#include "Configuration/detail/XmlNode.h"

#include <libxml/xmlsave.h>

#include <cstdint>
#include <memory>
#include <new>
#include <utility>

namespace Veltrani::ConfigurationDetail::Xml {

namespace {

struct FreeText {
    void operator()(xmlChar* text) const { xmlFree(text); }
};
struct FreeBuffer {
    void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
};
struct FreeDocument {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using OwnedText = std::unique_ptr<xmlChar, FreeText>;
using OwnedBuffer = std::unique_ptr<xmlBuffer, FreeBuffer>;
using OwnedDocument = std::unique_ptr<xmlDoc, FreeDocument>;

/// The library returns null when memory ran out.
template <class T>
T* allocated(T* pointer) {
    if (pointer == nullptr) {
        throw std::bad_alloc();
    }
    return pointer;
}

/// Old releases of the library take nodes that they do not change as non-constant.
xmlNode* mutableNode(const xmlNode* node) {
    return const_cast<xmlNode*>(node);
}

void removeContent(xmlNode* element) {
    while (element->children != nullptr) {
        xmlNode* const first = element->children;
        xmlUnlinkNode(first);
        xmlFreeNode(first);
    }
}

/// Returns the node with everything in it, for a document; owned by the caller.
xmlNode* copyOf(xmlNode* node, xmlDoc* document) {
    const MemoryWatch memory;
    OwnedNode copy(allocated(xmlDocCopyNode(node, document, 1)));
    memory.requireEnough();
    return copy.release();
}

std::string serialised(xmlNode* node) {
    const OwnedBuffer buffer(allocated(xmlBufferCreate()));
    const MemoryWatch memory;
    xmlSaveCtxt* const saving = allocated(xmlSaveToBuffer(buffer.get(), "UTF-8", XML_SAVE_NO_DECL));
    xmlSaveTree(saving, node);
    xmlSaveClose(saving);
    memory.requireEnough();
    return std::string(view(xmlBufferContent(buffer.get())));
}

}  // namespace

MemoryWatch::MemoryWatch() : m_previous(xmlStructuredError), m_previousContext(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(this, &note);
}

MemoryWatch::~MemoryWatch() {
    xmlSetStructuredErrorFunc(m_previousContext, m_previous);
}

void MemoryWatch::requireEnough() const {
    if (m_isExhausted) {
        throw std::bad_alloc();
    }
}

void MemoryWatch::note(void* watch, xmlErrorPtr error) {
    if (error->code == XML_ERR_NO_MEMORY) {
        static_cast<MemoryWatch*>(watch)->m_isExhausted = true;
    }
}

std::string_view view(const xmlChar* text) {
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

const xmlChar* chars(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

bool isOwnElement(const xmlNode* node) {
    return node->type == XML_ELEMENT_NODE && node->ns == nullptr;
}

bool isOwnElement(const xmlNode* node, std::string_view name) {
    return isOwnElement(node) && view(node->name) == name;
}

bool holdsForeign(const xmlNode* element) {
    for (const xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
        if (attribute->ns != nullptr) {
            return true;
        }
    }
    for (const xmlNode* node = element->children; node != nullptr; node = node->next) {
        if (isOwnElement(node) ? holdsForeign(node) : !isBlankText(node)) {
            return true;
        }
    }
    return false;
}

bool isBlankText(const xmlNode* node) {
    return node->type == XML_TEXT_NODE && view(node->content).find_first_not_of(" \t\r\n") == std::string_view::npos;
}

int lineOf(const xmlNode* node) {
    if (node->type == XML_ELEMENT_NODE && node->_private != nullptr) {
        // The parser's own line counter of an element ends at 65535.
        return static_cast<int>(reinterpret_cast<std::intptr_t>(node->_private));
    }
    return static_cast<int>(xmlGetLineNo(node));
}

std::optional<std::string> attribute(const xmlNode* element, const char* name) {
    const OwnedText value(xmlGetNoNsProp(mutableNode(element), chars(name)));
    if (value == nullptr) {
        // The library returns null for an attribute that is not there, and for one that there is no memory for.
        if (xmlHasNsProp(mutableNode(element), chars(name), nullptr) != nullptr) {
            throw std::bad_alloc();
        }
        return std::nullopt;
    }
    return std::string(view(value.get()));
}

void setAttribute(xmlNode* element, const char* name, const std::string& value) {
    const MemoryWatch memory;
    allocated(xmlSetNsProp(element, nullptr, chars(name), chars(value.c_str())));
    memory.requireEnough();
}

void removeAttribute(xmlNode* element, const char* name) {
    xmlUnsetNsProp(element, nullptr, chars(name));
}

void AttributeChanges::set(xmlNode* element, const char* name, const std::string& value) {
    const MemoryWatch memory;
    std::unique_ptr<xmlAttr, FreeAttribute> attribute(allocated(xmlNewDocProp(element->doc, chars(name), nullptr)));
    // Never parsed: an ampersand stays an ampersand.
    attribute->children = attribute->last = allocated(xmlNewDocText(element->doc, chars(value.c_str())));
    attribute->children->parent = reinterpret_cast<xmlNode*>(attribute.get());
    memory.requireEnough();
    m_changes.push_back({element, std::move(attribute)});
}

void AttributeChanges::apply() noexcept {
    for (Change& change : m_changes) {
        xmlAttr* const existing = xmlHasNsProp(change.element, change.attribute->name, nullptr);
        if (existing == nullptr) {
            xmlAddChild(change.element, reinterpret_cast<xmlNode*>(change.attribute.release()));
            continue;
        }
        std::swap(existing->children, change.attribute->children);
        std::swap(existing->last, change.attribute->last);
        for (xmlNode* node = existing->children; node != nullptr; node = node->next) {
            node->parent = reinterpret_cast<xmlNode*>(existing);
        }
    }
    m_changes.clear();
}

xmlNode* child(const xmlNode* parent, std::string_view name) {
    xmlNode* node = parent == nullptr ? nullptr : parent->children;
    while (node != nullptr && !isOwnElement(node, name)) {
        node = node->next;
    }
    return node;
}

std::vector<xmlNode*> children(const xmlNode* parent, std::string_view name) {
    std::vector<xmlNode*> found;
    for (xmlNode* node = parent == nullptr ? nullptr : parent->children; node != nullptr; node = node->next) {
        if (isOwnElement(node, name)) {
            found.push_back(node);
        }
    }
    return found;
}

std::string content(const xmlNode* element) {
    std::string text;
    for (const xmlNode* node = element->children; node != nullptr; node = node->next) {
        if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
            text += view(node->content);
        }
    }
    return text;
}

void setContent(xmlNode* element, const std::string& text) {
    // Made before anything is removed, and never parsed: an ampersand stays an ampersand.
    xmlNode* const node = allocated(xmlNewDocText(element->doc, chars(text.c_str())));
    removeContent(element);
    xmlAddChild(element, node);
}

std::string innerXml(const xmlNode* element) {
    const OwnedDocument scratch(allocated(xmlNewDoc(chars("1.0"))));
    // Without it, attributes would be written in pure ASCII with numeric references.
    scratch->encoding = allocated(xmlStrdup(chars("UTF-8")));
    std::string text;
    for (xmlNode* node = element->children; node != nullptr; node = node->next) {
        const OwnedNode copy(copyOf(node, scratch.get()));
        text += serialised(copy.get());
    }
    return text;
}

void setInnerXml(xmlNode* element, const xmlNode* source) {
    removeContent(element);
    for (xmlNode* node = source->children; node != nullptr; node = node->next) {
        xmlAddChild(element, copyOf(node, element->doc));
    }
}

xmlNode* newElement(xmlDoc* document, const char* name) {
    return allocated(xmlNewDocNode(document, nullptr, chars(name), nullptr));
}

}  // namespace Veltrani::ConfigurationDetail::Xml
