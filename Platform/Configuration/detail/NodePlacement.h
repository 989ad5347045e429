#pragma once

#include "Configuration/detail/XmlNode.h"

#include <libxml/tree.h>

#include <string_view>
#include <vector>

/// Adding, moving and removing elements in a way that leaves the text of the document as a person would have written
/// it: indentation is kept, comments are never lost.
namespace Veltrani::ConfigurationDetail::Xml {

/// Puts a new element behind the last child of `parent`, on a line of its own and indented like its siblings when the
/// document is written in lines.
void appendIndented(xmlNode* parent, xmlNode* element);

/// Puts a new element among its siblings, whose names come in this order: behind the nearest that precedes it there,
/// with the comments on that line, else in front of the nearest that follows, with the comments above it, else behind
/// the last child. It is indented like that sibling.
void insertInOrder(xmlNode* parent, OwnedNode element, const std::vector<std::string_view>& order);

/// Exchanges an element with a later sibling. Each takes along the comments that belong to it: those on the lines
/// directly above it and those behind it on its own line.
void exchange(xmlNode* earlier, xmlNode* later);

/// Removes and frees an element with its line; comments stay.
void removeIndented(xmlNode* element);

}  // namespace Veltrani::ConfigurationDetail::Xml
