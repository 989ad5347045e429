#include "DisplayReport/maps/PointReader.h"

#include "Common/DecimalText.h"
#include "Common/FileFault.h"
#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <istream>
#include <limits>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

constexpr std::string_view BLANKS = " \t";
/// Of the tables that can be read.
constexpr int NEWEST_VERSION = 1;
constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(BLANKS);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

/// The texts between the commas, without the blanks around them; never none.
std::vector<std::string_view> cellsOf(std::string_view text) {
    std::vector<std::string_view> cells;
    for (std::size_t comma = text.find(','); comma != std::string_view::npos; comma = text.find(',')) {
        cells.push_back(trimmed(text.substr(0, comma)));
        text.remove_prefix(comma + 1);
    }
    cells.push_back(trimmed(text));
    return cells;
}

/// Letters of other alphabets stay as they are, in every locale.
std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return lower;
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
            text = trimmed(text.substr(i + 1));
            return text.empty() || text.front() == ',' ? std::optional(cell) : std::nullopt;
        }
    }
    return std::nullopt;
}

/// The cells of a row, without quotes and the blanks around them; none where quotes are not closed.
std::optional<std::vector<std::string>> cellsOfTable(std::string_view text) {
    std::vector<std::string> cells;
    while (true) {
        text = trimmed(text);
        if (text.starts_with('"')) {
            const auto cell = takeQuoted(text);
            if (!cell) {
                return std::nullopt;
            }
            cells.push_back(*cell);
        } else {
            const std::size_t end = std::min(text.find(','), text.size());
            cells.emplace_back(trimmed(text.substr(0, end)));
            text.remove_prefix(end);
        }
        if (text.empty()) {
            return cells;
        }
        text.remove_prefix(1);
    }
}

/// Where each of the names stands among the cells; none unless all of them do, each once.
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

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ",") + name;
    }
    return text;
}

}  // namespace

std::vector<std::string> columnsOf(PointKind kind) {
    return kind == PointKind::PICTURE ? std::vector<std::string>{"u", "v"} : std::vector<std::string>{"x", "y", "z"};
}

PointReader::PointReader(std::istream& in, std::string document, PointKind kind)
    : m_in(in), m_document(std::move(document)), m_kind(kind) {}

bool PointReader::next(Point<double, 3>& point) {
    if (!m_isHeadRead) {
        readHead();
    }
    while (std::exchange(m_isPending, false) || readLine()) {
        if (trimmed(m_text).empty()) {
            m_emptyLine = m_emptyLine == 0 ? m_line : m_emptyLine;
            continue;
        }
        if (m_emptyLine != 0) {
            refuse(m_emptyLine, "an empty line", "a point on every line before the last point");
        }
        if (!m_columns) {
            const auto parsed = parse(m_text, m_kind);
            if (!parsed) {
                refuseLine();
            }
            point = *parsed;
            return true;
        }
        if (readRow(point)) {
            return true;
        }
    }
    return false;
}

const ReportHead& PointReader::head() {
    if (!m_isHeadRead) {
        readHead();
    }
    return m_head;
}

void PointReader::readHead() {
    m_isHeadRead = true;
    while (readLine()) {
        if (!trimmed(m_text).starts_with('#')) {
            m_columns = columnsOfHeader();
            m_isPending = !m_columns;
            return;
        }
        m_head.read(m_text);
        if (m_head.version > NEWEST_VERSION) {
            refuse(m_line, inQuotes(m_text), "a table of version " + std::to_string(NEWEST_VERSION));
        }
    }
}

bool PointReader::readRow(Point<double, 3>& point) {
    const auto cells = cellsOfTable(m_text);
    if (!cells || cells->size() != m_columns->count) {
        refuse(m_line, inQuotes(m_text), std::to_string(m_columns->count) + " columns, as the header names them");
    }
    if (m_columns->projector && !m_projector.empty() && (*cells)[*m_columns->projector] != m_projector) {
        ++m_passedOver.ofOthers;
        return false;
    }
    const auto isEmpty = [&cells](std::size_t column) { return (*cells)[column].empty(); };
    if (std::all_of(m_columns->ofPoint.begin(), m_columns->ofPoint.end(), isEmpty)) {
        ++m_passedOver.withoutPlace;
        return false;
    }
    Point<double, 3> read;
    for (std::size_t i = 0; i < m_columns->ofPoint.size(); ++i) {
        const std::optional<double> number = parseFinite((*cells)[m_columns->ofPoint[i]]);
        if (!number) {
            refuseLine();
        }
        read[i] = *number;
    }
    point = read;
    return true;
}

std::optional<Point<double, 3>> PointReader::parse(std::string_view text, PointKind kind) {
    const std::vector<std::string_view> cells = cellsOf(text);
    if (cells.size() != columnsOf(kind).size()) {
        return std::nullopt;
    }
    Point<double, 3> point;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::optional<double> number = parseFinite(cells[i]);
        if (!number) {
            return std::nullopt;
        }
        point[i] = *number;
    }
    return point;
}

bool PointReader::readLine() {
    using Traits = std::istream::traits_type;
    m_text.clear();
    std::streambuf& buffer = *m_in.rdbuf();
    bool isAny = false;
    bool isQuoted = false;  // names in a table may hold line feeds
    for (auto next = buffer.sbumpc(); !Traits::eq_int_type(next, Traits::eof()); next = buffer.sbumpc()) {
        ++m_bytes;
        if (!isAny) {
            isAny = true;
            m_line += m_line < std::numeric_limits<int>::max() ? 1 : 0;
        }
        isQuoted = isQuoted != (m_columns && Traits::to_char_type(next) == '"');
        const bool isLineFeed = Traits::to_char_type(next) == '\n';
        if (isLineFeed && !isQuoted) {
            break;
        }
        m_line += isLineFeed ? 1 : 0;
        m_text += Traits::to_char_type(next);
        if (m_text.size() > LONGEST_LINE_BYTES) {
            refuse(m_line, inQuotes(m_text), "lines of at most " + std::to_string(LONGEST_LINE_BYTES) + " bytes");
        }
    }
    if (m_line == 1 && m_text.starts_with(BYTE_ORDER_MARK)) {
        m_text.erase(0, BYTE_ORDER_MARK.size());
    }
    if (m_text.ends_with('\r')) {
        m_text.pop_back();
    }
    return isAny;
}

std::optional<PointReader::Columns> PointReader::columnsOfHeader() const {
    const auto cells = cellsOfTable(lowerCase(m_text));
    if (!cells) {
        return std::nullopt;
    }
    const auto ofPoint = placesOf(columnsOf(m_kind), *cells);
    if (!ofPoint) {
        const PointKind other = m_kind == PointKind::PICTURE ? PointKind::LAYOUT : PointKind::PICTURE;
        if (placesOf(columnsOf(other), *cells)) {
            refuse(m_line, inQuotes(m_text),
                   "the columns " + joined(columnsOf(m_kind)) + ", each once, or points that are mapped the other way");
        }
        return std::nullopt;
    }
    const auto projector = placesOf({"projector"}, *cells);
    return Columns{cells->size(), *ofPoint, projector ? std::optional(projector->front()) : std::nullopt};
}

void PointReader::refuseLine() const {
    const std::vector<std::string> names = columnsOf(m_kind);
    refuse(m_line, inQuotes(m_text),
           joined(names) + ": " + std::to_string(names.size()) +
               " finite numbers with decimal points, a comma between them");
}

void PointReader::refuse(int line, const std::string& found, const std::string& expected) const {
    const char* const example = m_kind == PointKind::PICTURE ? "0.5,0.25" : "1.5,4,-0.25";
    throwFault(m_document,
               {line, "point", found, expected, std::string("write one point per line, such as ") + example});
}

PointInput::PointInput() = default;
PointInput::PointInput(PointInput&&) noexcept = default;
PointInput::~PointInput() = default;

PointInput PointInput::ofPoints(std::vector<Point<double, 3>> points) {
    PointInput input;
    input.m_points = std::move(points);
    return input;
}

PointInput PointInput::ofStream(std::istream& in, std::string document, PointKind kind) {
    PointInput input;
    input.m_reader.emplace(in, std::move(document), kind);
    return input;
}

PointInput PointInput::ofFile(const std::string& path, PointKind kind) {
    std::error_code unknown;
    if (std::filesystem::is_directory(path, unknown)) {
        throw std::runtime_error(std::strerror(EISDIR));
    }
    errno = 0;
    auto file = std::make_unique<std::ifstream>(path, std::ios::binary);
    if (!*file) {
        throw std::runtime_error(std::strerror(errno));
    }
    const auto size =
        std::filesystem::is_regular_file(path, unknown) ? std::filesystem::file_size(path, unknown) : std::uintmax_t{0};
    PointInput input = ofStream(*file, path, kind);
    input.m_file = std::move(file);
    input.m_size = unknown ? 0 : static_cast<std::size_t>(size);
    return input;
}

bool PointInput::next(Point<double, 3>& point) {
    if (m_reader) {
        return m_reader->next(point);
    }
    if (m_taken == m_points.size()) {
        return false;
    }
    point = m_points[m_taken++];
    return true;
}

ReportHead PointInput::head() {
    return m_reader ? m_reader->head() : ReportHead{.frame = ""};
}

void PointInput::takeOnly(const std::string& projectorId) {
    if (m_reader) {
        m_reader->takeOnly(projectorId);
    }
}

PointReader::PassedOver PointInput::passedOver() const {
    return m_reader ? m_reader->passedOver() : PointReader::PassedOver{};
}

}  // namespace Veltrani::DisplayReport
