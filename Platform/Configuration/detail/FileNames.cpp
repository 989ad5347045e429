#include "Configuration/detail/FileNames.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/detail/DisplayFormat.h"
#include "Configuration/detail/XmlNode.h"

#include <filesystem>
#include <system_error>

namespace Veltrani::ConfigurationDetail::FileNames {

namespace {

namespace fs = std::filesystem;

/// Every element of the format names its file in this attribute.
constexpr const char* FILE_NAME = "file";

fs::path placeOf(const FolderPath& folder) {
    const std::string named = folder.text().empty() ? "." : toUtf8(folder.text());
    std::error_code reason;
    fs::path place = fs::canonical(named, reason);
    if (reason) {
        throw VeltraniException(__FILE__, __LINE__,
                                fromUtf8OrBytes(named + ": the folder cannot be used: " + reason.message()));
    }
    return place;
}

bool namesFile(const ElementRule& rule) {
    for (const AttributeRule& attribute : rule.attributes) {
        if (attribute.name == FILE_NAME) {
            return true;
        }
    }
    return false;
}

void prefixBelow(xmlNode* element, const ElementRule& rule, const std::string& text) {
    if (namesFile(rule)) {
        const auto name = Xml::attribute(element, FILE_NAME);
        if (name && !name->empty() && name->front() != '/') {
            Xml::setAttribute(element, FILE_NAME, text + *name);
        }
    }
    const std::string selected =
        rule.selector.empty() ? std::string() : Xml::attribute(element, rule.selector.data()).value_or("");
    for (const ChildRule& child : childrenOf(rule, selected)) {
        for (xmlNode* const node : Xml::children(element, child.element->name)) {
            prefixBelow(node, *child.element, text);
        }
    }
}

}  // namespace

std::string wayBetween(const FolderPath& from, const FolderPath& to) {
    const fs::path start = placeOf(from);
    const fs::path end = placeOf(to);
    if (start == end) {
        return {};
    }
    const auto firstFolder = [](const fs::path& place) {
        return place.relative_path().empty() ? fs::path() : *place.relative_path().begin();
    };
    // Where nothing but the root is in common, nothing could move together.
    const bool isApart = firstFolder(start) != firstFolder(end);
    return ((isApart ? end : end.lexically_relative(start)) / "").string();
}

void prefix(xmlNode* root, const std::string& text) {
    prefixBelow(root, displayFormat(), text);
}

}  // namespace Veltrani::ConfigurationDetail::FileNames
