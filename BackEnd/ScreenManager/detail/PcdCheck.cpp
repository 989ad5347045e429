#include "ScreenManager/detail/PcdCheck.h"

#include "Common/VeltraniException.h"
#include "ScreenManager/detail/PcdHeader.h"
#include "ScreenManager/detail/PcdText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace Veltrani {

namespace {

/// Headers are a few hundred bytes; a file that has none within this much is none.
constexpr std::size_t LARGEST_HEADER = std::size_t{1} << 20;

/// Reads the file byte by byte.
class ByteCursor {
public:
    ByteCursor(const RegularFile& file, std::size_t offset) : m_file(file), m_offset(offset), m_block(BLOCK) {}

    /// The current byte; -1 at the end of the file.
    int peek() {
        if (m_next == m_filled) {
            m_filled = m_file.readAt(m_offset, m_block.data(), m_block.size());
            m_offset += m_filled;
            m_next = 0;
        }
        return m_filled == 0 ? -1 : static_cast<unsigned char>(m_block[m_next]);
    }

    void skip() { ++m_next; }

    void skipPast(char last) {
        while (peek() >= 0 && peek() != last) {
            skip();
        }
        if (peek() >= 0) {
            skip();
        }
    }

private:
    static constexpr std::size_t BLOCK = std::size_t{1} << 16;

    const RegularFile& m_file;
    std::size_t m_offset;
    std::vector<char> m_block;
    std::size_t m_next = 0;
    std::size_t m_filled = 0;
};

std::string wordAt(ByteCursor& bytes) {
    constexpr std::size_t LONGEST_KEYWORD = 9;
    std::string word;
    while (bytes.peek() > ' ' && word.size() < LONGEST_KEYWORD) {
        word.push_back(static_cast<char>(bytes.peek()));
        bytes.skip();
    }
    return word;
}

/// After DATA the reader goes on taking empty lines, comments and header lines for the header; only the first other
/// line stops it. Data that look like that would change the header behind the check.
bool continuesHeader(const RegularFile& file, std::size_t offset) {
    ByteCursor bytes(file, offset);
    while (bytes.peek() >= 0) {
        if (bytes.peek() == '\n') {
            bytes.skip();
            continue;
        }
        constexpr std::string_view BLANKS = " \t\r\v\f";
        while (bytes.peek() >= 0 && BLANKS.find(static_cast<char>(bytes.peek())) != std::string_view::npos) {
            bytes.skip();
        }
        const std::string word = wordAt(bytes);
        if (!word.starts_with('#') && !word.starts_with("VERSION")) {
            return PcdHeader::startsLikeKeyword(word);
        }
        bytes.skipPast('\n');
    }
    return false;
}

[[noreturn]] void fail(const std::wstring& reason) {
    throw VeltraniParseException(reason);
}

std::wstring wide(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

PcdHeader readHeader(const RegularFile& file) {
    if (file.size() == 0) {
        fail(L"the file is empty");
    }
    std::string beginning(std::min(file.size(), LARGEST_HEADER), '\0');
    beginning.resize(file.readAt(0, beginning.data(), beginning.size()));
    return PcdHeader(beginning);
}

bool isCoordinateName(std::string_view name) {
    return name == "x" || name == "y" || name == "z";
}

void checkCoordinates(const PcdHeader& header) {
    for (const std::string_view name : {"x", "y", "z"}) {
        const auto isNamed = [=](const PcdHeader::Field& field) { return field.name == name; };
        const auto& fields = header.fields();
        if (std::count_if(fields.begin(), fields.end(), isNamed) != 1) {
            fail(L"FIELDS must name " + wide(name) + L" once");
        }
        const PcdHeader::Field& field = *std::find_if(fields.begin(), fields.end(), isNamed);
        if (field.type != 'F' || field.size != 4 || field.count != 1) {
            fail(L"field " + wide(name) + L" must have TYPE F, SIZE 4 and COUNT 1, but has TYPE " +
                 std::wstring(1, static_cast<wchar_t>(field.type)) + L", SIZE " + std::to_wstring(field.size) +
                 L" and COUNT " + std::to_wstring(field.count));
        }
    }
}

/// For each element of a point, whether it is a coordinate.
std::vector<bool> coordinateElements(const PcdHeader& header) {
    std::vector<bool> elements;
    for (const PcdHeader::Field& field : header.fields()) {
        elements.insert(elements.end(), field.count, isCoordinateName(field.name));
    }
    return elements;
}

void checkAsciiLine(std::string_view line, std::size_t number, const std::vector<bool>& isCoordinate) {
    const std::vector<std::string_view> words = PcdText::split(line);
    if (words.size() != isCoordinate.size()) {
        PcdText::fail(number, std::to_string(words.size()) + " values", std::to_string(isCoordinate.size()));
    }
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (isCoordinate[i] && !PcdText::isCoordinate(words[i])) {
            PcdText::fail(number, words[i], "a finite number with a decimal point, or nan");
        }
        if (!isCoordinate[i] && !PcdText::isNumber(words[i])) {
            PcdText::fail(number, words[i], "a number with a decimal point");
        }
    }
}

void checkAscii(const RegularFile& file, const PcdHeader& header) {
    // A digit and a separator per value, but for the very last separator.
    if (header.points() * header.elementsPerPoint() * 2 > file.size() - header.bodyOffset() + 1) {
        fail(L"the file is too short for " + std::to_wstring(header.points()) + L" points");
    }
    const std::string text = file.readAll();
    const std::vector<bool> isCoordinate = coordinateElements(header);
    std::size_t line = header.bodyLine();
    std::size_t start = header.bodyOffset();
    std::uint64_t points = 0;
    for (; points < header.points() && start < text.size(); ++line) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        // Only a line without any character is skipped by the reader; blanks count as a point.
        if (end > start) {
            checkAsciiLine(std::string_view(text).substr(start, end - start), line, isCoordinate);
            ++points;
        }
        start = end + 1;
    }
    if (points < header.points()) {
        fail(L"the file ends after " + std::to_wstring(points) + L" of " + std::to_wstring(header.points()) +
             L" points");
    }
}

void requireBytes(const RegularFile& file, std::uint64_t needed) {
    if (needed > file.size()) {
        fail(L"the file has " + std::to_wstring(file.size()) + L" bytes but needs " + std::to_wstring(needed));
    }
}

void checkBinary(const RegularFile& file, const PcdHeader& header) {
    requireBytes(file, header.bodyOffset() + header.points() * header.bytesPerPoint());
}

void checkCompressed(const RegularFile& file, const PcdHeader& header) {
    // Three bytes of the compressed data can stand for 264 at most.
    constexpr std::uint64_t LARGEST_EXPANSION = 88;
    std::array<std::uint32_t, 2> sizes{};
    requireBytes(file, header.bodyOffset() + sizeof(sizes));
    file.readAt(header.bodyOffset(), reinterpret_cast<char*>(sizes.data()), sizeof(sizes));
    const std::uint64_t compressed = sizes[0];
    const std::uint64_t uncompressed = sizes[1];

    for (const PcdHeader::Field& field : header.fields()) {
        if (field.name == "_") {
            fail(L"compressed data must not have padding fields (\"_\")");
        }
    }
    if (compressed == 0) {
        fail(L"the compressed data are empty");
    }
    const std::uint64_t needed = header.points() * header.bytesPerPoint();
    if (uncompressed != needed) {
        fail(L"the compressed data hold " + std::to_wstring(uncompressed) + L" bytes but the points need " +
             std::to_wstring(needed));
    }
    requireBytes(file, header.bodyOffset() + sizeof(sizes) + compressed);
    if (uncompressed > compressed * LARGEST_EXPANSION) {
        fail(L"the compressed data are too short for " + std::to_wstring(uncompressed) + L" bytes");
    }
}

void check(const RegularFile& file) {
    const PcdHeader header = readHeader(file);
    checkCoordinates(header);
    if (continuesHeader(file, header.bodyOffset())) {
        fail(L"the data begin like a header line");
    }
    switch (header.data()) {
        case PcdHeader::Data::ASCII:
            return checkAscii(file, header);
        case PcdHeader::Data::BINARY:
            return checkBinary(file, header);
        case PcdHeader::Data::BINARY_COMPRESSED:
            return checkCompressed(file, header);
    }
}

}  // namespace

std::wstring PcdCheck::findFault(const RegularFile& file) {
    try {
        check(file);
    } catch (const VeltraniParseException& fault) {
        return fault.message;
    }
    return {};
}

}  // namespace Veltrani
