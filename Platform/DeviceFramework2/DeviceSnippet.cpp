#include "DeviceFramework2/DeviceSnippet.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "DeviceFramework2/detail/AsciiText.h"
#include "DeviceFramework2/detail/Endpoint.h"
#include "DeviceFramework2/detail/XmlSnippet.h"

namespace Veltrani::DeviceFramework2 {

using DeviceFramework2Detail::Endpoint;
using DeviceFramework2Detail::wholeNumber;
using DeviceFramework2Detail::XmlSnippet;

namespace {

using Attributes = std::map<std::string, std::wstring>;

void requireEmpty(const XmlSnippet& snippet) {
    for (const xmlNode* child = snippet.root()->children; child != nullptr; child = child->next) {
        if (!XmlSnippet::isBlank(child)) {
            snippet.fail(L"the element Device has content, expected attributes only");
        }
    }
}

void requireKnownAttributes(const XmlSnippet& snippet, const Attributes& attributes) {
    for (const auto& [name, value] : attributes) {
        // The value of an unknown attribute is not shown: it may be a password.
        if (name == "password") {
            snippet.fail(L"a password is not allowed here: it belongs into an environment variable or a file");
        }
        if (name != "type" && name != "mac" && name != "host" && name != "port") {
            snippet.fail(L"found attribute " + XmlSnippet::quoted(fromUtf8(name)) +
                         L", expected only type, mac, host and port");
        }
    }
}

const std::wstring& required(const XmlSnippet& snippet, const Attributes& attributes, const std::string& name) {
    const auto attribute = attributes.find(name);
    if (attribute == attributes.end()) {
        snippet.fail(L"the attribute " + fromUtf8(name) + L" is missing");
    }
    return attribute->second;
}

[[noreturn]] void refuse(const XmlSnippet& snippet, const wchar_t* attribute, const std::wstring& found,
                         const std::wstring& expected) {
    snippet.fail(L"attribute " + std::wstring(attribute) + L": found " + XmlSnippet::quoted(found) + L", expected " +
                 expected);
}

int portOf(const XmlSnippet& snippet, const Attributes& attributes) {
    const auto attribute = attributes.find("port");
    if (attribute == attributes.end()) {
        return DeviceSnippet::STANDARD_PORT;
    }
    const auto port = wholeNumber(toUtf8(attribute->second));
    if (!port || *port < 1 || *port > Endpoint::LARGEST_PORT) {
        refuse(snippet, L"port", attribute->second, L"a whole number from 1 to 65535");
    }
    return *port;
}

std::string hostOf(const XmlSnippet& snippet, const Attributes& attributes, int port) {
    const auto attribute = attributes.find("host");
    if (attribute == attributes.end()) {
        return {};
    }
    std::string host = toUtf8(attribute->second);
    if (!Endpoint::parse(host, port)) {
        refuse(snippet, L"host", attribute->second, L"an IPv4 or IPv6 address (looking a name up has no time limit)");
    }
    return host;
}

std::optional<std::wstring> firstMacAttribute(const xmlNode* element) {
    for (; element != nullptr; element = element->next) {
        if (element->type != XML_ELEMENT_NODE) {
            continue;
        }
        const Attributes attributes = XmlSnippet::attributesOf(element);
        const auto own = attributes.find("mac");
        if (own != attributes.end()) {
            return own->second;
        }
        if (auto below = firstMacAttribute(element->children)) {
            return below;
        }
    }
    return std::nullopt;
}

}  // namespace

DeviceSnippet DeviceSnippet::parse(const std::wstring& text) {
    const XmlSnippet snippet(text);
    snippet.requireName(snippet.root(), "Device");
    requireEmpty(snippet);
    const Attributes attributes = XmlSnippet::attributesOf(snippet.root());
    requireKnownAttributes(snippet, attributes);
    const std::wstring& type = required(snippet, attributes, "type");
    if (type != DeviceTypeManager::pjlinkTypeName()) {
        refuse(snippet, L"type", type, DeviceTypeManager::pjlinkTypeName());
    }
    const std::wstring& macText = required(snippet, attributes, "mac");
    const auto mac = MacAddress::parse(macText);
    if (!mac) {
        refuse(snippet, L"mac", macText, L"a MAC address such as 02:00:00:00:00:01");
    }
    const int port = portOf(snippet, attributes);
    return {type, *mac, hostOf(snippet, attributes, port), port};
}

std::optional<MacAddress> DeviceSnippet::macAddressIn(const std::wstring& text) {
    try {
        const XmlSnippet snippet(text);
        if (const auto attribute = firstMacAttribute(snippet.root())) {
            return MacAddress::parse(*attribute);
        }
    } catch (const DeviceException&) {
        // Not XML: other kinds of text may hold an address too.
    }
    return MacAddress::find(text);
}

std::wstring DeviceSnippet::text() const {
    return L"<Device type='" + type + L"' mac='" + mac.text() + (host.empty() ? L"" : L"' host='" + fromUtf8(host)) +
           L"' port='" + std::to_wstring(port) + L"'/>";
}

}  // namespace Veltrani::DeviceFramework2
