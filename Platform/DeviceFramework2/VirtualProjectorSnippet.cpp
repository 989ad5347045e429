#include "DeviceFramework2/VirtualProjectorSnippet.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/detail/AsciiText.h"
#include "DeviceFramework2/detail/XmlSnippet.h"

namespace Veltrani::DeviceFramework2 {

using DeviceFramework2Detail::wholeNumber;
using DeviceFramework2Detail::XmlSnippet;

namespace {

using Attributes = std::map<std::string, std::wstring>;

/// Comments and the like would make the textual search for the wrapped part ambiguous, so only blanks are allowed.
void requireOnlyChild(const XmlSnippet& snippet, const xmlNode* siblings, const xmlNode* element) {
    for (const xmlNode* node = siblings; node != nullptr; node = node->next) {
        if (node != element && (node->type != XML_TEXT_NODE || !XmlSnippet::isBlank(node))) {
            snippet.fail(L"only blanks are allowed around the elements Wrapper and Projector");
        }
    }
}

const xmlNode* projectorOf(const XmlSnippet& snippet) {
    const xmlNode* wrapper = snippet.root();
    snippet.requireName(wrapper, "Wrapper");
    requireOnlyChild(snippet, wrapper->doc->children, wrapper);
    if (wrapper->properties != nullptr) {
        snippet.fail(L"the element Wrapper takes no attributes");
    }
    const xmlNode* projector = wrapper->children;
    while (projector != nullptr && projector->type != XML_ELEMENT_NODE) {
        projector = projector->next;
    }
    if (projector == nullptr) {
        snippet.fail(L"the element Projector is missing in Wrapper");
    }
    snippet.requireName(projector, "Projector");
    requireOnlyChild(snippet, wrapper->children, projector);
    return projector;
}

/// Returns the number of an attribute, which is taken out of the list.
int take(const XmlSnippet& snippet, Attributes& attributes, const std::string& name, bool required) {
    const auto attribute = attributes.find(name);
    if (attribute == attributes.end()) {
        if (required) {
            snippet.fail(L"the attribute " + fromUtf8(name) + L" is missing");
        }
        return 0;
    }
    const auto value = wholeNumber(toUtf8(attribute->second));
    if (!value) {
        snippet.fail(L"attribute " + fromUtf8(name) + L": found " + XmlSnippet::quoted(attribute->second) +
                     L", expected a whole number of 0 or more");
    }
    attributes.erase(attribute);
    return *value;
}

/// Position after the start tag whose '<' is at `start`; a '>' may occur inside an attribute value.
std::size_t endOfTag(const std::wstring& text, std::size_t start) {
    wchar_t quotation = 0;
    for (std::size_t i = start; i < text.size(); ++i) {
        if (quotation != 0) {
            quotation = text[i] == quotation ? wchar_t(0) : quotation;
        } else if (text[i] == L'\'' || text[i] == L'"') {
            quotation = text[i];
        } else if (text[i] == L'>') {
            return i + 1;
        }
    }
    return text.size();
}

/// The XML parser reports no positions, and writing its tree back would change the text. The document is known to be
/// well-formed and to have nothing around the two elements, so their tags are found where they must be.
std::wstring textInside(const std::wstring& text) {
    const std::size_t wrapper = endOfTag(text, text.find(L"<Wrapper"));
    const std::size_t begin = endOfTag(text, text.find(L"<Projector", wrapper));
    if (text[begin - 2] == L'/') {
        return {};
    }
    return text.substr(begin, text.rfind(L"</Projector") - begin);
}

}  // namespace

VirtualProjectorSnippet VirtualProjectorSnippet::parse(const std::wstring& text) {
    const XmlSnippet snippet(text);
    Attributes attributes = XmlSnippet::attributesOf(projectorOf(snippet));
    VirtualProjectorSnippet result;
    result.width = take(snippet, attributes, "Width", true);
    result.height = take(snippet, attributes, "Height", true);
    result.input = take(snippet, attributes, "Input", false);
    if (!attributes.empty()) {
        snippet.fail(L"found attribute " + XmlSnippet::quoted(fromUtf8(attributes.begin()->first)) +
                     L", expected only Width, Height and Input");
    }
    result.wrapped = textInside(text);
    return result;
}

}  // namespace Veltrani::DeviceFramework2
