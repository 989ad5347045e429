#include "KelvoScreen/detail/ObjText.h"

#include "KelvoScreen/ObjLoadException.h"

#include <algorithm>
#include <string>
#include <utility>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// Many small samples meet the boundaries between vertices and faces of a usual file to within half a percent.
constexpr std::size_t SAMPLES = 256;
constexpr std::size_t SAMPLE_BYTES = 1024;

/// Room beyond the estimate, in percent: growing once costs a copy, unused room costs nothing until it is touched.
constexpr std::size_t MARGIN_PERCENT = 4;

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

/// Returns the triangles that a face line is cut into: two fewer than it has corners.
std::size_t trianglesOf(std::string_view line) {
    std::size_t words = 0;
    for (std::size_t i = 1; i < line.size(); ++i) {
        words += !isBlank(line[i]) && line[i] != '\r' && isBlank(line[i - 1]) ? 1 : 0;
    }
    return words > 2 ? words - 2 : 0;
}

void countLine(std::string_view line, ObjSizeEstimate& counts) {
    if (line.size() < 2) {
        return;
    }
    if (line[0] == 'v' && isBlank(line[1])) {
        ++counts.vertices;
    } else if (line[0] == 'v' && line[1] == 't') {
        ++counts.textureCoordinates;
    } else if (line[0] == 'f' && isBlank(line[1])) {
        counts.triangles += trianglesOf(line);
    }
}

/// Counts the lines that start in the sample, to their end; returns how far it looked.
std::size_t countLines(std::string_view sample, ObjSizeEstimate& counts) {
    std::size_t begin = 0;
    while (begin < sample.size()) {
        const std::size_t end = sample.find('\n', begin);
        countLine(sample.substr(begin, end - begin), counts);
        if (end == std::string_view::npos) {
            return sample.size();
        }
        begin = end + 1;
    }
    return begin;
}

std::size_t scaled(std::size_t count, std::size_t sampledBytes, std::size_t allBytes) {
    if (sampledBytes == 0) {
        return 0;
    }
    const double whole =
        static_cast<double>(count) * (static_cast<double>(allBytes) / static_cast<double>(sampledBytes));
    return static_cast<std::size_t>(whole) / 100 * (100 + MARGIN_PERCENT);
}

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

/// Bytes of the text that a message shows at most.
constexpr std::size_t MAX_QUOTED_BYTES = 60;

/// Returns a piece of text as a message can show it: control characters and bytes outside ASCII as \xNN, cut when long.
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

ObjSizeEstimate ObjSizeEstimate::of(std::string_view text) {
    ObjSizeEstimate counts;
    if (text.size() <= SAMPLES * SAMPLE_BYTES) {
        countLines(text, counts);
        return counts;
    }
    std::size_t sampledBytes = 0;
    const std::size_t stride = text.size() / SAMPLES;
    for (std::size_t i = 0; i < SAMPLES; ++i) {
        std::string_view sample = text.substr(i * stride, SAMPLE_BYTES);
        sample.remove_prefix(std::min(sample.find('\n') + 1, sample.size()));
        sample.remove_suffix(sample.size() - std::min(sample.rfind('\n') + 1, sample.size()));
        sampledBytes += countLines(sample, counts);
    }
    counts.vertices = scaled(counts.vertices, sampledBytes, text.size());
    counts.textureCoordinates = scaled(counts.textureCoordinates, sampledBytes, text.size());
    counts.triangles = scaled(counts.triangles, sampledBytes, text.size());
    return counts;
}

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

std::uint32_t ObjIndices::resolveUnusual(std::int64_t index, const ObjCursor& cursor) {
    if (index == 0) {
        cursor.failWord("a " + std::string(m_kind) + " index other than 0: the first one is 1",
                        "correct the index; one that counts from 0 is one too small");
    }
    if (index < 0) {
        const std::int64_t element = static_cast<std::int64_t>(m_count) + index;
        if (element < 0 || element >= MAX_INDEX) {
            cursor.failWord("a " + std::string(m_kind) + " index no further back than the " + std::to_string(m_count) +
                                " before this line",
                            "correct the index, or put what it refers to before this line");
        }
        return static_cast<std::uint32_t>(element);
    }
    if (index > MAX_INDEX) {
        cursor.failWord("a " + std::string(m_kind) + " index up to " + std::to_string(MAX_INDEX), "correct the index");
    }
    const auto element = static_cast<std::uint32_t>(index - 1);
    if (m_forward.empty() || element > m_forward.back().element) {
        m_forward.push_back({element, cursor.line()});
    }
    return element;
}

void ObjIndices::requireAllDefined() const {
    const auto beyond = std::find_if(m_forward.begin(), m_forward.end(),
                                     [this](const Forward& forward) { return forward.element >= m_count; });
    if (beyond != m_forward.end()) {
        throw ObjLoadException(
            beyond->line, std::to_string(std::uint64_t{beyond->element} + 1),
            "a " + std::string(m_kind) + " index no greater than " + std::to_string(m_count) + ", their number",
            "correct the index, or export the file again if it is cut off");
    }
}

}  // namespace Veltrani::KelvoScreenDetail
