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
    while (readLine()) {
        if (trimmed(m_text).empty()) {
            m_emptyLine = m_emptyLine == 0 ? m_line : m_emptyLine;
            continue;
        }
        if (m_emptyLine != 0) {
            refuse(m_emptyLine, "an empty line", "a point on every line before the last point");
        }
        if (m_mayBeHeader && trimmed(m_text).starts_with('#')) {
            continue;
        }
        if (std::exchange(m_mayBeHeader, false) && isHeader()) {
            continue;
        }
        const auto parsed = parse(m_text, m_kind);
        if (!parsed) {
            const std::vector<std::string> names = columnsOf(m_kind);
            refuse(m_line, inQuotes(m_text),
                   joined(names) + ": " + std::to_string(names.size()) +
                       " finite numbers with decimal points, a comma between them");
        }
        point = *parsed;
        return true;
    }
    return false;
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
    for (auto next = buffer.sbumpc(); !Traits::eq_int_type(next, Traits::eof()); next = buffer.sbumpc()) {
        ++m_bytes;
        if (!isAny) {
            isAny = true;
            m_line += m_line < std::numeric_limits<int>::max() ? 1 : 0;
        }
        if (Traits::to_char_type(next) == '\n') {
            break;
        }
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

bool PointReader::isHeader() const {
    const std::vector<std::string_view> cells = cellsOf(m_text);
    const std::vector<std::string> names = columnsOf(m_kind);
    return std::equal(cells.begin(), cells.end(), names.begin(), names.end(),
                      [](std::string_view cell, const std::string& name) { return lowerCase(cell) == name; });
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

}  // namespace Veltrani::DisplayReport
