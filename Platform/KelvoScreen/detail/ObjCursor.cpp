#include "KelvoScreen/detail/ObjCursor.h"

#include "KelvoScreen/ObjLoadException.h"

#include <utility>

namespace KelvoScreenDetail {

namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

/// Bytes of the text that a message shows at most.
constexpr std::size_t MAX_QUOTED_BYTES = 60;

/// A piece of text as a message can show it: control characters and bytes outside ASCII as \xNN, cut when long.
std::string quoted(std::string_view text) {
    constexpr std::string_view HEX_DIGITS = "0123456789ABCDEF";
    std::string result;
    for (const char c : text.substr(0, MAX_QUOTED_BYTES)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7F) {
            result += c;
        } else {
            result += {'\\', 'x', HEX_DIGITS[byte >> 4U], HEX_DIGITS[byte & 0xFU]};
        }
    }
    return text.size() > MAX_QUOTED_BYTES ? result + "..." : result;
}

}  // namespace

ObjCursor::ObjCursor(std::string_view text)
    : m_at(text.data()), m_end(text.data() + text.size()), m_word(m_at), m_statement(m_at) {
    if (text.starts_with(BYTE_ORDER_MARK)) {
        m_at += BYTE_ORDER_MARK.size();
    }
}

bool ObjCursor::findStatement() {
    while (!findWord()) {
        if (m_at == m_end) {
            return false;
        }
        if (*m_at == '#') {
            skipComment();
        } else {
            skipLineEnd();
        }
    }
    m_statement = m_at;
    m_statementLine = m_line;
    return true;
}

std::string_view ObjCursor::takeKeyword() {
    for (; !endsWord(m_at); ++m_at) {
        if (*m_at == '\0') {
            failNul();
        }
    }
    return {m_word, static_cast<std::size_t>(m_at - m_word)};
}

void ObjCursor::skipStatement() {
    while (m_at != m_end && !isLineEnd(m_at)) {
        if (*m_at == '#') {
            skipComment();
            return;
        }
        if (*m_at == '\0') {
            failNul();
        }
        const char* const here = m_at;
        if (*m_at == '\\') {
            skipContinuation();
        }
        if (m_at == here) {
            ++m_at;
        }
    }
    skipLineEnd();
}

void ObjCursor::skipComment() {
    for (; m_at != m_end && !isLineEnd(m_at); ++m_at) {
        if (*m_at == '\0') {
            failNul();
        }
    }
    skipLineEnd();
}

/// Goes past a backslash before a line end, that line end and the blanks behind it, as often as they follow each
/// other. Any other backslash is the start of a word.
void ObjCursor::skipContinuation() {
    while (m_at != m_end && *m_at == '\\' && (m_at + 1 == m_end || isLineEnd(m_at + 1))) {
        ++m_at;
        skipLineEnd();
        while (m_at != m_end && (*m_at == ' ' || *m_at == '\t')) {
            ++m_at;
        }
    }
}

void ObjCursor::skipLineEnd() {
    if (m_at == m_end) {
        return;
    }
    const bool isCarriageReturn = *m_at == '\r';
    ++m_at;
    if (isCarriageReturn && m_at != m_end && *m_at == '\n') {
        ++m_at;
    }
    ++m_line;
}

void ObjCursor::failWord(std::string expected, std::string remedy) const {
    const char* end = m_word;
    while (!(end == m_end || *end == ' ' || *end == '\t' || *end == '#' || isLineEnd(end))) {
        ++end;
    }
    throw ObjLoadException(m_line, quoted({m_word, static_cast<std::size_t>(end - m_word)}), std::move(expected),
                           std::move(remedy));
}

void ObjCursor::failStatement(std::string expected, std::string remedy) const {
    const char* end = m_statement;
    while (end != m_end && !isLineEnd(end)) {
        ++end;
    }
    throw ObjLoadException(m_statementLine, quoted({m_statement, static_cast<std::size_t>(end - m_statement)}),
                           std::move(expected), std::move(remedy));
}

void ObjCursor::failCorner() const {
    failWord("a corner such as 1, 1/1, 1//1 or 1/1/1",
             "give the number of a vertex, with or without those of a texture coordinate and a normal");
}

void ObjCursor::failNul() const {
    throw ObjLoadException(m_line, quoted({m_at, 1}), "text without NUL bytes", "save the mesh as an OBJ file of text");
}

}  // namespace KelvoScreenDetail
