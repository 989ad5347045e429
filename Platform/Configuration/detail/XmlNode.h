#pragma once

#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Reading and changing nodes of an XML tree. Names are those of elements and attributes without a namespace: what is
/// in a namespace belongs to other programs and is skipped. All text is UTF-8. Where memory runs out, `std::bad_alloc`
/// is thrown; nothing is omitted silently.
namespace Veltrani::ConfigurationDetail::Xml {

/// While it lives, the messages of the library about its trees do not reach standard error.
///
/// Its functions on trees leave out what they have no memory for, a value or a whole branch, and continue as if it had
/// never been there. Only this class detects that they have done so.
class MemoryWatch {
public:
    MemoryWatch();
    ~MemoryWatch();
    MemoryWatch(const MemoryWatch&) = delete;
    MemoryWatch& operator=(const MemoryWatch&) = delete;

    /// Throws `std::bad_alloc` when memory has run out since the start.
    void requireEnough() const;

private:
    static void note(void* watch, xmlErrorPtr error);

    xmlStructuredErrorFunc m_previous;
    void* m_previousContext;
    bool m_isExhausted = false;
};

struct FreeNode {
    void operator()(xmlNode* node) const { xmlFreeNode(node); }
};
/// A node outside of the tree.
using OwnedNode = std::unique_ptr<xmlNode, FreeNode>;

[[nodiscard]] std::string_view view(const xmlChar* text);
[[nodiscard]] const xmlChar* chars(const char* text);

[[nodiscard]] bool isOwnElement(const xmlNode* node);
[[nodiscard]] bool isOwnElement(const xmlNode* node, std::string_view name);
/// Returns whether there is anything in the element, at any depth, that is not of the format and white space: comments,
/// other text, elements and attributes in a namespace.
[[nodiscard]] bool holdsForeign(const xmlNode* element);
/// A text node of nothing but white space.
[[nodiscard]] bool isBlankText(const xmlNode* node);

/// Returns the line on which the start tag of an element ends; for a text, the line that the tree remembers.
[[nodiscard]] int lineOf(const xmlNode* node);

[[nodiscard]] std::optional<std::string> attribute(const xmlNode* element, const char* name);
void setAttribute(xmlNode* element, const char* name, const std::string& value);
/// Nothing where there is none.
void removeAttribute(xmlNode* element, const char* name);

/// Values of attributes that change together: while they are collected memory may run out, afterwards nothing fails.
class AttributeChanges {
public:
    /// Notes a value; an attribute that the element does not have by then is added behind the others.
    void set(xmlNode* element, const char* name, const std::string& value);
    void apply() noexcept;

private:
    struct FreeAttribute {
        void operator()(xmlAttr* attribute) const { xmlFreeProp(attribute); }
    };
    struct Change {
        xmlNode* element;
        std::unique_ptr<xmlAttr, FreeAttribute> attribute;
    };
    std::vector<Change> m_changes;
};

/// Returns the first child element of this name; null when there is none. A null parent has no children.
[[nodiscard]] xmlNode* child(const xmlNode* parent, std::string_view name);
[[nodiscard]] std::vector<xmlNode*> children(const xmlNode* parent, std::string_view name);

/// Returns the text inside an element, comments left out.
[[nodiscard]] std::string content(const xmlNode* element);
/// Replaces everything inside an element.
void setContent(xmlNode* element, const std::string& text);

/// Returns the XML inside an element. The text is complete in itself: a namespace that is declared further out is
/// declared again in it.
[[nodiscard]] std::string innerXml(const xmlNode* element);
/// Replaces everything inside `element` by a copy of the content of `source`, which may be of another document.
void setInnerXml(xmlNode* element, const xmlNode* source);

/// Returns a new element of the document, not yet in its tree: the caller puts it there.
[[nodiscard]] xmlNode* newElement(xmlDoc* document, const char* name);

}  // namespace Veltrani::ConfigurationDetail::Xml
