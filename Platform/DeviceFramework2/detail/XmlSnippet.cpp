#include "DeviceFramework2/detail/XmlSnippet.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/MacAddress.h"

#include <algorithm>
#include <new>

namespace Veltrani::DeviceFramework2Detail {

using DeviceFramework2::DeviceException;
using DeviceFramework2::MacAddress;

namespace {

/// Characters of a found value that a message shows.
constexpr std::size_t LONGEST_QUOTATION = 40;

std::wstring faultText(const HardenedXml::FirstFault& fault) {
    return L"line " + std::to_wstring(fault.line()) + L": " + fromUtf8OrBytes(fault.text());
}

}  // namespace

XmlSnippet::XmlSnippet(const std::wstring& text) : m_name(nameOf(text)) {
    const std::string bytes = toUtf8(text);
    if (text.find_first_not_of(L" \t\r\n") == std::wstring::npos) {
        fail(L"it is empty: the entry names no device");
    }
    if (bytes.empty() || bytes.find('\0') != std::string::npos) {
        fail(L"it contains characters that are no text");
    }
    if (bytes.size() > LONGEST_SNIPPET) {
        fail(L"it is longer than " + std::to_wstring(LONGEST_SNIPPET) + L" bytes");
    }
    HardenedXml::FirstFault fault(true);
    m_document = HardenedXml::read(bytes, {.isUtf8 = true}, fault);
    if (!fault.text().empty()) {
        fail(faultText(fault));
    }
}

xmlNode* XmlSnippet::root() const {
    return xmlDocGetRootElement(m_document.get());
}

void XmlSnippet::fail(const std::wstring& fault) const {
    throw DeviceException(__FILE__, __LINE__, m_name + L": " + fault);
}

void XmlSnippet::requireName(const xmlNode* element, const std::string& name) const {
    if (element->ns != nullptr || nameOf(element) != name) {
        fail(L"found element " + quoted(fromUtf8OrBytes(nameOf(element))) + L", expected " + fromUtf8(name));
    }
}

std::map<std::string, std::wstring> XmlSnippet::attributesOf(const xmlNode* element) {
    std::map<std::string, std::wstring> attributes;
    for (const xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
        if (attribute->ns != nullptr) {
            continue;
        }
        const std::unique_ptr<xmlChar, decltype(xmlFree)> value(
            xmlNodeListGetString(element->doc, attribute->children, 1), xmlFree);
        if (attribute->children != nullptr && value == nullptr) {
            throw std::bad_alloc();
        }
        attributes[reinterpret_cast<const char*>(attribute->name)] =
            value ? fromUtf8(reinterpret_cast<const char*>(value.get())) : std::wstring();
    }
    return attributes;
}

bool XmlSnippet::isBlank(const xmlNode* node) {
    return node->type == XML_COMMENT_NODE || (node->type == XML_TEXT_NODE && xmlIsBlankNode(node) == 1);
}

std::string XmlSnippet::nameOf(const xmlNode* node) {
    return node->name != nullptr ? reinterpret_cast<const char*>(node->name) : "";
}

std::wstring XmlSnippet::nameOf(const std::wstring& text) {
    const auto mac = MacAddress::find(text);
    return L"Device snippet " + (mac ? L"of " + mac->text() : std::wstring(L"without a MAC address"));
}

std::wstring XmlSnippet::quoted(const std::wstring& value) {
    std::wstring shown = value.substr(0, LONGEST_QUOTATION);
    std::replace_if(
        shown.begin(), shown.end(), [](wchar_t character) { return character < L' ' || character == 0x7F; }, L' ');
    return L"\"" + shown + (value.size() > LONGEST_QUOTATION ? L"...\"" : L"\"");
}

}  // namespace Veltrani::DeviceFramework2Detail
