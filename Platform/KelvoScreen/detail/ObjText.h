#pragma once

#include "KelvoScreen/detail/DecimalNumber.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The tools that parse the text of an OBJ file: an estimate of its size, a cursor through its words, and the indices of
// its faces.
namespace Veltrani::KelvoScreenDetail {

/// Roughly how many elements an OBJ text defines, from samples spread over it, so that room for them can be reserved
/// at once. A short text is counted whole. Never more than the text has room for.
struct ObjSizeEstimate {
    /// Reads no more than a quarter of a megabyte, however long the text is.
    [[nodiscard]] static ObjSizeEstimate of(std::string_view text);

    std::size_t vertices = 0;
    std::size_t textureCoordinates = 0;
    std::size_t triangles = 0;
};

/// A position in OBJ text that knows its line: takes the text apart into statements and their words.
///
/// Lines end in LF, CR or CRLF. Blanks and tabs part the words. A `#` starts a comment, anywhere; the comment ends with
/// its line. A backslash right before the end of a line continues the statement on the next one, between two words, and
/// does nothing in a comment. A byte-order mark of UTF-8 at the start is skipped.
///
/// The text is only read, never copied; it must outlive the cursor. Faults throw `ObjLoadException` with the line of
/// the word that they are about.
class ObjCursor {
public:
    explicit ObjCursor(std::string_view text);

    /// Returns the line of the current position; 1 is the first.
    [[nodiscard]] std::size_t line() const { return m_line; }

    /// Goes to the first word of the next statement that is not empty; false at the end of the text.
    [[nodiscard]] bool findStatement();
    /// Returns the first word of the statement; goes past it. Throws when there is a NUL byte in it: that is no text.
    [[nodiscard]] std::string_view takeKeyword();
    /// Goes past the rest of the statement and its line end. Throws when there is a NUL byte in it.
    void skipStatement();

    /// Goes to the next word of the statement; false when there is none.
    [[nodiscard]] bool findWord();
    /// Takes the word, which must be a finite number with a decimal point or none. Throws when it is not.
    [[nodiscard]] double takeNumber();

    /// Takes the whole number that the rest of the word starts with. A number beyond 2^40 is returned as some number
    /// beyond 2^40. Throws when no digit is there.
    [[nodiscard]] std::int64_t takeIndex();
    /// Takes this character if it comes next.
    [[nodiscard]] bool take(char c);
    /// Throws unless the word ends here.
    void requireWordEnd() const;

    /// Throws a fault with the text of the current word, what is expected in its place, and the remedy.
    [[noreturn]] void failWord(std::string expected, std::string remedy) const;
    /// Throws a fault with the text of the current statement, what is expected in its place, and the line that it
    /// starts on.
    [[noreturn]] void failStatement(std::string expected, std::string remedy) const;

private:
    static constexpr std::int64_t INDEX_LIMIT = std::int64_t{1} << 40;

    [[nodiscard]] bool endsWord(const char* at) const;
    [[nodiscard]] bool isLineEnd(const char* at) const { return at != m_end && (*at == '\n' || *at == '\r'); }
    void skipBlanks();
    void skipContinuation();
    void skipComment();
    void skipLineEnd();
    [[noreturn]] void failCorner() const;
    [[noreturn]] void failNul() const;

    const char* m_at;
    const char* m_end;
    std::size_t m_line = 1;
    const char* m_word;               ///< where the current word starts, on the current line
    const char* m_statement;          ///< where the current statement starts
    std::size_t m_statementLine = 1;  ///< the line of that
};

inline bool ObjCursor::endsWord(const char* at) const {
    return at == m_end || *at == ' ' || *at == '\n' || *at == '\r' || *at == '\t' || *at == '#' || *at == '\\';
}

inline void ObjCursor::skipBlanks() {
    while (m_at != m_end && (*m_at == ' ' || *m_at == '\t')) {
        ++m_at;
    }
    if (m_at != m_end && *m_at == '\\') {
        skipContinuation();
    }
}

inline bool ObjCursor::findWord() {
    skipBlanks();
    m_word = m_at;
    return m_at != m_end && !isLineEnd(m_at) && *m_at != '#';
}

inline double ObjCursor::takeNumber() {
    double value = 0;
    const char* const end = DecimalNumber::parse(m_at, m_end, value);
    if (end == m_at || !endsWord(end)) {
        failWord("a finite number with a decimal point", "write it as in -1.25 or 1e-3");
    }
    m_at = end;
    return value;
}

inline std::int64_t ObjCursor::takeIndex() {
    const bool negative = m_at != m_end && *m_at == '-';
    const bool isSigned = negative || (m_at != m_end && *m_at == '+');
    const char* const digits = m_at + (isSigned ? 1 : 0);
    const char* at = digits;
    std::int64_t magnitude = 0;
    for (; at != m_end && static_cast<unsigned char>(*at - '0') <= 9; ++at) {
        if (magnitude < INDEX_LIMIT) {
            magnitude = magnitude * 10 + (*at - '0');
        }
    }
    if (at == digits) {
        failCorner();
    }
    m_at = at;
    return negative ? -magnitude : magnitude;
}

inline bool ObjCursor::take(char c) {
    const bool isNext = m_at != m_end && *m_at == c;
    m_at += isNext ? 1 : 0;
    return isNext;
}

inline void ObjCursor::requireWordEnd() const {
    if (!endsWord(m_at)) {
        failCorner();
    }
}

/// The elements of one kind (vertices, texture coordinates or normals) of an OBJ text, as its faces refer to them.
///
/// Positive indices count from the first element of the whole text, which is 1, so that a face may precede the elements
/// that it refers to; whether they exist is known at the end of the text. Negative ones count back from the last
/// element that precedes the face.
class ObjIndices {
public:
    /// @param kind what a message calls one element
    explicit ObjIndices(std::string_view kind) : m_kind(kind) {}

    /// Counts one more element.
    void define() { ++m_count; }
    [[nodiscard]] std::size_t count() const { return m_count; }

    /// Returns the element, counted from 0, behind an index as the text has it. Throws `ObjLoadException` for the word
    /// that the cursor is in when the index is 0 or out of range.
    [[nodiscard]] std::uint32_t resolve(std::int64_t index, const ObjCursor& cursor) {
        if (index > 0 && static_cast<std::uint64_t>(index) <= m_count && index <= MAX_INDEX) {
            return static_cast<std::uint32_t>(index - 1);
        }
        return resolveUnusual(index, cursor);
    }

    /// To be called at the end of the text: throws `ObjLoadException` with its line for the first index past the last
    /// element.
    void requireAllDefined() const;

private:
    static constexpr std::int64_t MAX_INDEX = std::int64_t{1} << 32;

    struct Forward {
        std::uint32_t element;
        std::size_t line;
    };

    [[nodiscard]] std::uint32_t resolveUnusual(std::int64_t index, const ObjCursor& cursor);

    std::string_view m_kind;
    std::size_t m_count = 0;
    /// The references to elements that were not yet defined, each further ahead than all before it: the first one out
    /// of range is always among them.
    std::vector<Forward> m_forward;
};

}  // namespace Veltrani::KelvoScreenDetail
