#include "DisplayReport/TextTable.h"

#include <algorithm>
#include <ostream>
#include <string_view>

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

/// Control characters, line ends and those that turn the direction of writing.
bool steersTheTerminal(std::string_view character) {
    const auto byte = [character](std::size_t i) { return static_cast<unsigned char>(character[i]); };
    if (character.size() == 1) {
        return byte(0) < 0x20 || byte(0) == 0x7F;
    }
    if (character.size() == 2) {
        return (byte(0) == 0xC2 && byte(1) < 0xA0) || character == "\xD8\x9C";
    }
    // U+200B to U+200F, U+2028 to U+202E, U+2066 to U+2069.
    return character.size() == 3 && byte(0) == 0xE2 &&
           ((byte(1) == 0x80 && ((byte(2) >= 0x8B && byte(2) <= 0x8F) || (byte(2) >= 0xA8 && byte(2) <= 0xAE))) ||
            (byte(1) == 0x81 && byte(2) >= 0xA6 && byte(2) <= 0xA9));
}

}  // namespace

std::string printable(const std::string& utf8) {
    std::string shown;
    for (std::size_t i = 0; i < utf8.size();) {
        std::size_t end = i + 1;
        while (end < utf8.size() && !startsCharacter(utf8[end])) {
            ++end;
        }
        const std::string_view character = std::string_view(utf8).substr(i, end - i);
        if (steersTheTerminal(character)) {
            shown += '?';
        } else {
            shown += character;
        }
        i = end;
    }
    return shown;
}

std::string shortened(const std::string& utf8, std::size_t longest) {
    std::size_t seen = 0;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        if (startsCharacter(utf8[i]) && seen++ == longest) {
            return utf8.substr(0, i) + "...";
        }
    }
    return utf8;
}

TextTable::TextTable(std::vector<std::string> headings) : m_headings(std::move(headings)) {}

void TextTable::add(std::vector<std::string> cells) {
    cells.resize(m_headings.size());
    std::transform(cells.begin(), cells.end(), cells.begin(), printable);
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
