#include "DisplayReport/maps/PointReader.h"

#include "Common/DecimalText.h"
#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

constexpr std::string_view BLANKS = " \t";

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
    : m_table(in, std::move(document),
              {"point", std::string("write one point per line, such as ") +
                            (kind == PointKind::PICTURE ? "0.5,0.25" : "1.5,4,-0.25")}),
      m_kind(kind) {}

bool PointReader::next(Point<double, 3>& point) {
    if (!m_isHeadRead) {
        readHead();
    }
    while (std::exchange(m_isPending, false) || m_table.next()) {
        if (m_table.isEmpty()) {
            m_emptyLine = m_emptyLine == 0 ? m_table.line() : m_emptyLine;
            continue;
        }
        if (m_emptyLine != 0) {
            m_table.refuse(m_emptyLine, "an empty line", "a point on every line before the last point");
        }
        if (!m_columns) {
            const auto parsed = parse(m_table.text(), m_kind);
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
    return m_table.head();
}

void PointReader::readHead() {
    m_isHeadRead = true;
    if (!m_table.readHead()) {
        return;
    }
    m_columns = columnsOfHeader();
    m_isPending = !m_columns;
    if (m_columns) {
        m_table.holdsQuotes();
    }
}

bool PointReader::readRow(Point<double, 3>& point) {
    const auto cells = m_table.cells();
    if (!cells || cells->size() != m_columns->count) {
        m_table.refuse(m_table.line(), inQuotes(m_table.text()),
                       std::to_string(m_columns->count) + " columns, as the header names them");
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

std::optional<PointReader::Columns> PointReader::columnsOfHeader() const {
    const auto cells = TableReader::cellsOf(inLowerCase(m_table.text()));
    if (!cells) {
        return std::nullopt;
    }
    const auto ofPoint = placesOf(columnsOf(m_kind), *cells);
    if (!ofPoint) {
        const PointKind other = m_kind == PointKind::PICTURE ? PointKind::LAYOUT : PointKind::PICTURE;
        if (placesOf(columnsOf(other), *cells)) {
            m_table.refuse(
                m_table.line(), inQuotes(m_table.text()),
                "the columns " + joined(columnsOf(m_kind)) + ", each once, or points that are mapped the other way");
        }
        return std::nullopt;
    }
    const auto projector = placesOf({"projector"}, *cells);
    return Columns{cells->size(), *ofPoint, projector ? std::optional(projector->front()) : std::nullopt};
}

void PointReader::refuseLine() const {
    const std::vector<std::string> names = columnsOf(m_kind);
    m_table.refuse(m_table.line(), inQuotes(m_table.text()),
                   joined(names) + ": " + std::to_string(names.size()) +
                       " finite numbers with decimal points, a comma between them");
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
