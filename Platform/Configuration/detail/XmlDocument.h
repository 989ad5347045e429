#pragma once

#include "Common/HardenedXml.h"
#include "Configuration/detail/FaultList.h"

#include <libxml/tree.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace Veltrani::ConfigurationDetail {

/// Returns the line (from 1) of the first start tag with more than `limit` attributes; 0 when there is none.
///
/// The XML parser compares every attribute of a tag with every other, so that one tag with a million attributes would
/// keep it busy for minutes. This scan is linear, understands comments, CDATA sections and processing instructions
/// enough to pass over them, and leaves every other judgement to the parser.
[[nodiscard]] int lineOfOverfullTag(std::string_view text, std::size_t limit);

/// An XML document held as a tree, comments, white space and foreign content included.
///
/// Only a closed world is read: UTF-8, no document type and hence no entities of its own, nothing fetched from
/// anywhere. Nesting deeper than the parser's limit of 256, texts above 10 million bytes and tags with more than 256
/// attributes are faults.
class XmlDocument {
public:
    /// @return the document, or none (null root) when something was added to `faults`
    [[nodiscard]] static XmlDocument parse(std::string_view text, FaultList& faults);

    /// Returns the root element; null when there is no document.
    [[nodiscard]] xmlNode* root() const;

    /// Returns the whole document as UTF-8 text. What was not changed since it was parsed is the same XML again; the
    /// spelling of tags is normalised (double quotes, `<a/>` for empty elements, line feeds alone at line ends).
    [[nodiscard]] std::string text() const;

    /// The largest document that is read or written.
    static constexpr std::size_t LARGEST_BYTES = std::size_t{32} * 1024 * 1024;

private:
    HardenedXml::Tree m_document;
};

}  // namespace Veltrani::ConfigurationDetail
