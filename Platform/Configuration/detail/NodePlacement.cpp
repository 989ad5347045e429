#include "Configuration/detail/NodePlacement.h"

#include "Configuration/detail/XmlNode.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::ConfigurationDetail::Xml {

namespace {

constexpr std::string_view USUAL_INDENTATION = "    ";

std::size_t lineFeeds(const xmlNode* blank) {
    const std::string_view text = view(blank->content);
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

bool isNote(const xmlNode* node) {
    return node->type == XML_COMMENT_NODE || node->type == XML_PI_NODE;
}

/// Returns the line feed and the blanks that put `node` on its own line; empty when it is not on its own line.
std::string indentationOf(const xmlNode* node) {
    const xmlNode* const before = node->prev;
    if (before == nullptr || !isBlankText(before) || lineFeeds(before) == 0) {
        return {};
    }
    const std::string_view text = view(before->content);
    return std::string(text.substr(text.rfind('\n')));
}

const xmlNode* firstElementBelow(const xmlNode* parent) {
    const xmlNode* node = parent->children;
    while (node != nullptr && node->type != XML_ELEMENT_NODE) {
        node = node->next;
    }
    return node;
}

/// What one more level of nesting adds in this document.
std::string levelOf(const xmlNode* element) {
    const xmlNode* const root = xmlDocGetRootElement(element->doc);
    const xmlNode* const first = firstElementBelow(root);
    const std::string indentation = first == nullptr ? std::string() : indentationOf(first);
    return indentation.size() > 1 ? indentation.substr(1) : std::string(USUAL_INDENTATION);
}

/// How the children of `parent` are, or would be, indented; empty in a document without lines.
std::string indentationBelow(const xmlNode* parent) {
    if (const xmlNode* first = firstElementBelow(parent)) {
        return indentationOf(first);
    }
    const bool isRoot = parent->parent == nullptr || parent->parent->type != XML_ELEMENT_NODE;
    const std::string own = isRoot ? "\n" : indentationOf(parent);
    return own.empty() ? own : own + levelOf(parent);
}

std::string indentationOfEndTag(const xmlNode* parent) {
    const std::string own = indentationOf(parent);
    return own.empty() ? "\n" : own;
}

xmlNode* lastSolidChild(const xmlNode* parent) {
    xmlNode* node = parent->last;
    while (node != nullptr && isBlankText(node)) {
        node = node->prev;
    }
    return node;
}

xmlNode* newText(xmlDoc* document, const std::string& text) {
    xmlNode* const node = xmlNewDocText(document, chars(text.c_str()));
    if (node == nullptr) {
        throw std::bad_alloc();
    }
    return node;
}

/// Returns a text to be put beside an element; null for an empty one.
OwnedNode newGap(xmlDoc* document, const std::string& text) {
    return OwnedNode(text.empty() ? nullptr : newText(document, text));
}

void free(xmlNode* node) {
    xmlUnlinkNode(node);
    xmlFreeNode(node);
}

/// Returns the element with the comments that belong to it, in document order. It begins and ends with something solid.
std::vector<xmlNode*> blockOf(xmlNode* element) {
    std::vector<xmlNode*> block{element};
    for (xmlNode* at = element; at->prev != nullptr && isBlankText(at->prev) && lineFeeds(at->prev) == 1;) {
        xmlNode* const note = at->prev->prev;
        if (note == nullptr || !isNote(note) || indentationOf(note).empty()) {
            break;
        }
        block.insert(block.begin(), {note, at->prev});
        at = note;
    }
    for (xmlNode* at = element->next; at != nullptr; at = at->next) {
        const bool isGap = isBlankText(at) && lineFeeds(at) == 0 && at->next != nullptr && isNote(at->next);
        if (!isGap && !isNote(at)) {
            break;
        }
        block.push_back(at);
    }
    return block;
}

/// No two texts ever meet at the marker, so the library has nothing to merge: blocks begin and end with other nodes.
void moveBefore(xmlNode* marker, const std::vector<xmlNode*>& block) {
    for (xmlNode* node : block) {
        xmlUnlinkNode(node);
        xmlAddPrevSibling(marker, node);
    }
}

xmlNode* newMarkerBefore(xmlNode* node) {
    xmlNode* const marker = xmlNewDocComment(node->doc, chars(""));
    if (marker == nullptr) {
        throw std::bad_alloc();
    }
    return xmlAddPrevSibling(node, marker);
}

bool endsItsLine(const xmlNode* node) {
    return node->next == nullptr || (isBlankText(node->next) && lineFeeds(node->next) > 0);
}

/// What needs memory is made before anything is changed. No two texts meet, so the library has nothing to merge.
void insertBehind(xmlNode* sibling, OwnedNode element) {
    OwnedNode gap = newGap(sibling->doc, indentationOf(sibling));
    xmlNode* const added = element.get();
    xmlAddNextSibling(blockOf(sibling).back(), element.release());
    if (gap) {
        xmlAddPrevSibling(added, gap.release());
    }
}

void insertBefore(xmlNode* sibling, OwnedNode element) {
    xmlNode* const front = blockOf(sibling).front();
    OwnedNode gap = newGap(sibling->doc, indentationOf(front));
    xmlAddPrevSibling(front, element.release());
    if (gap) {
        xmlAddPrevSibling(front, gap.release());
    }
}

void shorten(xmlNode* text, std::size_t characters) {
    const std::string rest(view(text->content).substr(0, view(text->content).size() - characters));
    if (rest.empty()) {
        free(text);
    } else {
        xmlNodeSetContent(text, chars(rest.c_str()));
    }
}

/// Two texts that are adjacent once what parts them is removed become one, as they would be when read again.
void joinTexts(xmlNode* before, xmlNode* behind) {
    if (before != nullptr && behind != nullptr && before->type == XML_TEXT_NODE && behind->type == XML_TEXT_NODE) {
        xmlNodeAddContent(before, behind->content);
        free(behind);
    }
}

}  // namespace

void appendIndented(xmlNode* parent, xmlNode* element) {
    const std::string indentation = indentationBelow(parent);
    OwnedNode before = newGap(parent->doc, indentation);
    OwnedNode behind = newGap(parent->doc, indentation.empty() ? indentation : indentationOfEndTag(parent));
    xmlNode* const last = lastSolidChild(parent);
    if (last == nullptr) {
        while (parent->children != nullptr) {
            free(parent->children);
        }
        xmlAddChild(parent, element);
    } else {
        xmlAddNextSibling(last, element);
    }
    if (before) {
        xmlAddPrevSibling(element, before.release());
        if (element->next == nullptr) {
            xmlAddNextSibling(element, behind.release());
        }
    }
}

void insertInOrder(xmlNode* parent, OwnedNode element, const std::vector<std::string_view>& order) {
    const auto place = std::find(order.begin(), order.end(), view(element->name));
    for (auto earlier = place == order.end() ? place : place + 1; earlier != order.begin();) {
        const std::vector<xmlNode*> siblings = children(parent, *--earlier);
        if (!siblings.empty()) {
            insertBehind(siblings.back(), std::move(element));
            return;
        }
    }
    for (auto later = place; later != order.end(); ++later) {
        if (xmlNode* const sibling = child(parent, *later)) {
            insertBefore(sibling, std::move(element));
            return;
        }
    }
    appendIndented(parent, element.get());
    static_cast<void>(element.release());
}

void exchange(xmlNode* earlier, xmlNode* later) {
    const std::vector<xmlNode*> first = blockOf(earlier);
    const std::vector<xmlNode*> second = blockOf(later);
    xmlNode* const placeOfFirst = newMarkerBefore(first.front());
    xmlNode* const placeOfSecond = newMarkerBefore(second.front());
    moveBefore(placeOfFirst, second);
    moveBefore(placeOfSecond, first);
    free(placeOfFirst);
    free(placeOfSecond);
}

void removeIndented(xmlNode* element) {
    xmlNode* const before = element->prev;
    const std::string indentation = indentationOf(element);
    if (!indentation.empty() && endsItsLine(element)) {
        shorten(before, indentation.size());
    } else if (!indentation.empty() && isBlankText(element->next)) {
        free(element->next);
    } else if (indentation.empty() && before != nullptr && isBlankText(before)) {
        free(before);
    }
    joinTexts(element->prev, element->next);
    free(element);
}

}  // namespace Veltrani::ConfigurationDetail::Xml
