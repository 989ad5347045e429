#include "DisplayReport/basics/TextTable.h"

#include "Common/QuotedText.h"

#include <algorithm>
#include <ostream>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

/// True for every byte but those that continue a UTF-8 character.
bool startsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

/// Characters of a UTF-8 text.
std::size_t places(const std::string& utf8) {
    return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), startsCharacter));
}

}  // namespace

std::string shortened(const std::string& utf8, std::size_t longest) {
    std::size_t seen = 0;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        if (startsCharacter(utf8[i]) && seen++ == longest) {
            return utf8.substr(0, i) + "...";
        }
    }
    return utf8;
}

TextTable::TextTable(std::vector<std::string> headings) : m_headings(std::move(headings)) {
    std::transform(m_headings.begin(), m_headings.end(), m_headings.begin(), onOneLine);
}

void TextTable::add(std::vector<std::string> cells) {
    cells.resize(m_headings.size());
    std::transform(cells.begin(), cells.end(), cells.begin(), onOneLine);
    m_rows.push_back(std::move(cells));
}

void TextTable::print(std::ostream& out, int indent) const {
    std::vector<std::size_t> widths;
    widths.reserve(m_headings.size());
    for (const std::string& heading : m_headings) {
        widths.push_back(places(heading));
    }
    for (const auto& row : m_rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], places(row[i]));
        }
    }
    const auto printRow = [&](const std::vector<std::string>& row) {
        std::string line(static_cast<std::size_t>(indent), ' ');
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i] + std::string(widths[i] - places(row[i]) + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    };
    printRow(m_headings);
    for (const auto& row : m_rows) {
        printRow(row);
    }
}

}  // namespace Veltrani::DisplayReport
