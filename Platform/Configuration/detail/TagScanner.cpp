#include "Configuration/detail/TagScanner.h"

#include <algorithm>

namespace Veltrani {

namespace {

/// Where `end` is over, looked for from `from` on; the end of the text when it does not occur.
std::size_t past(std::string_view text, std::size_t from, std::string_view end) {
    const std::size_t found = text.find(end, from);
    return found == std::string_view::npos ? text.size() : found + end.size();
}

struct Tag {
    std::size_t end = 0;  ///< first position behind the tag
    std::size_t attributes = 0;
};

/// The start tag at `begin`; a quoted value may hold anything, a closing bracket included.
Tag scanTag(std::string_view text, std::size_t begin) {
    Tag tag;
    std::size_t at = begin + 1;
    while (at < text.size() && text[at] != '>') {
        if (text[at] == '"' || text[at] == '\'') {
            ++tag.attributes;
            at = past(text, at + 1, text.substr(at, 1));
        } else {
            ++at;
        }
    }
    tag.end = at;
    return tag;
}

int lineAt(std::string_view text, std::size_t position) {
    return 1 + static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(position), '\n'));
}

}  // namespace

int lineOfOverfullTag(std::string_view text, std::size_t limit) {
    std::size_t at = text.find('<');
    while (at < text.size()) {
        const std::string_view rest = text.substr(at);
        if (rest.starts_with("<!--")) {
            at = past(text, at + 4, "-->");
        } else if (rest.starts_with("<![CDATA[")) {
            at = past(text, at + 9, "]]>");
        } else if (rest.starts_with("<?")) {
            at = past(text, at + 2, "?>");
        } else {
            const Tag tag = scanTag(text, at);
            if (tag.attributes > limit) {
                return lineAt(text, at);
            }
            at = tag.end;
        }
        at = text.find('<', at);
    }
    return 0;
}

}  // namespace Veltrani
