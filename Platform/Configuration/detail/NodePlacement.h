#pragma once

#include <libxml/tree.h>

/// Adding, moving and removing elements in a way that leaves the text of the document as a person would have written
/// it: indentation is kept, comments are never lost.
namespace Veltrani::ConfigurationDetail::Xml {

/// Puts a new element behind the last child of `parent`, on a line of its own and indented like its siblings when the
/// document is written in lines.
void appendIndented(xmlNode* parent, xmlNode* element);

/// Exchanges an element with a later sibling. Each takes along the comments that belong to it: those on the lines
/// directly above it and those behind it on its own line.
void exchange(xmlNode* earlier, xmlNode* later);

/// Removes and frees an element with its line; comments stay.
void removeIndented(xmlNode* element);

}  // namespace Veltrani::ConfigurationDetail::Xml
