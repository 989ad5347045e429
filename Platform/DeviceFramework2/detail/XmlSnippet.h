#pragma once

#include "Common/HardenedXml.h"

#include <libxml/tree.h>

#include <map>
#include <string>

namespace Veltrani::DeviceFramework2Detail {

/// A device snippet as a checked XML tree. Text from outside: no document type, no entities but the five of XML itself,
/// no network, and limits on size and depth.
class XmlSnippet {
public:
    /// Longest snippet in bytes of UTF-8; our own are below 200, those of other makers a few thousand.
    static constexpr std::size_t LONGEST_SNIPPET = 1048576;

    /// Throws `DeviceException` naming the snippet (`nameOf`), the line and the fault.
    explicit XmlSnippet(const std::wstring& text);

    /// Never null.
    [[nodiscard]] xmlNode* root() const;

    /// Throws `DeviceException`: the name of the snippet, then the fault.
    [[noreturn]] void fail(const std::wstring& fault) const;

    /// Throws `DeviceException` when an element has another name or is in a namespace.
    void requireName(const xmlNode* element, const std::string& name) const;

    /// Returns the attributes of an element outside any namespace; those within one are notes of other programs.
    [[nodiscard]] static std::map<std::string, std::wstring> attributesOf(const xmlNode* element);

    /// Returns true for blank text and for comments.
    [[nodiscard]] static bool isBlank(const xmlNode* node);
    [[nodiscard]] static std::string nameOf(const xmlNode* node);

    /// How messages name a snippet: by the MAC address in it. The text of the snippet is never its name: it may hold a
    /// password.
    [[nodiscard]] static std::wstring nameOf(const std::wstring& text);

    /// Returns a found value for a message: shortened, without control characters, in quotation marks.
    [[nodiscard]] static std::wstring quoted(const std::wstring& value);

private:
    std::wstring m_name;
    HardenedXml::Tree m_document;
};

}  // namespace Veltrani::DeviceFramework2Detail
