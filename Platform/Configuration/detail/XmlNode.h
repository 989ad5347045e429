#pragma once

#include <libxml/tree.h>
#include <libxml/xmlerror.h>

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

[[nodiscard]] std::string_view view(const xmlChar* text);
[[nodiscard]] const xmlChar* chars(const char* text);

[[nodiscard]] bool isOwnElement(const xmlNode* node);
[[nodiscard]] bool isOwnElement(const xmlNode* node, std::string_view name);
/// A text node of nothing but white space.
[[nodiscard]] bool isBlankText(const xmlNode* node);

/// Returns the line on which the start tag of an element ends; for a text, the line that the tree remembers.
[[nodiscard]] int lineOf(const xmlNode* node);

[[nodiscard]] std::optional<std::string> attribute(const xmlNode* element, const char* name);
void setAttribute(xmlNode* element, const char* name, const std::string& value);

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
