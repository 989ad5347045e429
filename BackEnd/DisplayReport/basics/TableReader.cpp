#include "DisplayReport/basics/TableReader.h"

#include "Common/FileFault.h"
#include "Common/QuotedText.h"

#include <algorithm>
#include <istream>
#include <limits>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

constexpr std::string_view CELL_BLANKS = " \t";
/// Of the tables that can be read.
constexpr int NEWEST_TABLE = 1;
constexpr std::string_view MARK_OF_BYTE_ORDER = "\xEF\xBB\xBF";
/// How a text begins in UTF-16, of either order of bytes.
constexpr std::string_view MARKS_OF_UTF16[] = {"\xFF\xFE", "\xFE\xFF"};

std::string_view withoutBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(CELL_BLANKS);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(CELL_BLANKS) - first + 1);
}

/// Takes a cell in quotes from the front of `text`, with the blanks around it; none where it does not end as such.
std::optional<std::string> takeQuoted(std::string_view& text) {
    std::string cell;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] != '"') {
            cell += text[i];
        } else if (text.substr(i + 1).starts_with('"')) {
            cell += text[i++];
        } else {
            text = withoutBlanks(text.substr(i + 1));
            return text.empty() || text.front() == ',' ? std::optional(cell) : std::nullopt;
        }
    }
    return std::nullopt;
}

}  // namespace

TableReader::TableReader(std::istream& in, std::string document, Wording wording)
    : m_in(in), m_document(std::move(document)), m_wording(std::move(wording)) {}

bool TableReader::readHead(const std::function<void(std::string_view)>& comment) {
    while (next()) {
        requireText();
        if (!withoutBlanks(m_text).starts_with('#')) {
            return true;
        }
        // A spreadsheet fills up every line to as many cells.
        m_text.erase(m_text.find_last_not_of(", \t") + 1);
        m_head.read(m_text);
        if (m_head.version > NEWEST_TABLE) {
            refuse(m_line, inQuotes(m_text), "a table of version " + std::to_string(NEWEST_TABLE));
        }
        if (comment) {
            comment(m_text);
        }
    }
    return false;
}

void TableReader::requireText() const {
    const bool isUtf16 = m_line == 1 && std::any_of(std::begin(MARKS_OF_UTF16), std::end(MARKS_OF_UTF16),
                                                    [this](auto mark) { return m_text.starts_with(mark); });
    if (isUtf16 || m_text.find('\0') != std::string::npos) {
        refuse(m_line, isUtf16 ? "a text in UTF-16" : "a zero byte", "a table as text in UTF-8",
               {m_wording.element, "save it as comma-separated values in the encoding UTF-8"});
    }
}

bool TableReader::next() {
    using Traits = std::istream::traits_type;
    m_text.clear();
    std::streambuf& buffer = *m_in.rdbuf();
    bool isAny = false;
    bool isQuoted = false;
    bool isEnded = false;  // by a carriage return, behind which nothing but a line feed may stand
    for (auto next = buffer.sbumpc(); !Traits::eq_int_type(next, Traits::eof()); next = buffer.sbumpc()) {
        ++m_bytes;
        if (!isAny) {
            isAny = true;
            m_line += m_line < std::numeric_limits<int>::max() ? 1 : 0;
        }
        isQuoted = isQuoted != (m_holdsQuotes && Traits::to_char_type(next) == '"');
        const bool isLineFeed = Traits::to_char_type(next) == '\n';
        if (isLineFeed && !isQuoted) {
            break;
        }
        if (isEnded && !isLineFeed) {
            refuse(m_line, "a carriage return alone", "lines that end with a line feed",
                   {m_wording.element, "save the table with line ends of Unix or Windows"});
        }
        isEnded = Traits::to_char_type(next) == '\r' && !isQuoted;
        m_line += isLineFeed ? 1 : 0;
        m_text += Traits::to_char_type(next);
        if (m_text.size() > LONGEST_LINE_BYTES) {
            refuse(m_line, inQuotes(m_text), "lines of at most " + std::to_string(LONGEST_LINE_BYTES) + " bytes");
        }
    }
    if (m_line == 1 && m_text.starts_with(MARK_OF_BYTE_ORDER)) {
        m_text.erase(0, MARK_OF_BYTE_ORDER.size());
    }
    if (m_text.ends_with('\r')) {
        m_text.pop_back();
    }
    return isAny;
}

bool TableReader::isEmpty() const {
    return withoutBlanks(m_text).empty();
}

std::optional<std::vector<std::string>> TableReader::cellsOf(std::string_view line) {
    std::vector<std::string> cells;
    while (true) {
        line = withoutBlanks(line);
        if (line.starts_with('"')) {
            const auto cell = takeQuoted(line);
            if (!cell) {
                return std::nullopt;
            }
            cells.push_back(*cell);
        } else {
            const std::size_t end = std::min(line.find(','), line.size());
            cells.emplace_back(withoutBlanks(line.substr(0, end)));
            line.remove_prefix(end);
        }
        if (line.empty()) {
            return cells;
        }
        line.remove_prefix(1);
    }
}

void TableReader::refuse(int line, const std::string& found, const std::string& expected) const {
    refuse(line, found, expected, m_wording);
}

void TableReader::refuse(int line, const std::string& found, const std::string& expected,
                         const Wording& wording) const {
    throwFault(m_document, {line, wording.element, found, expected, wording.remedy});
}

std::string inLowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return lower;
}

std::optional<std::vector<std::size_t>> placesOf(const std::vector<std::string>& names,
                                                 const std::vector<std::string>& cells) {
    std::vector<std::size_t> places;
    for (const std::string& name : names) {
        if (std::count(cells.begin(), cells.end(), name) != 1) {
            return std::nullopt;
        }
        places.push_back(static_cast<std::size_t>(std::find(cells.begin(), cells.end(), name) - cells.begin()));
    }
    return places;
}

}  // namespace Veltrani::DisplayReport
