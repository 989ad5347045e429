#include "ScreenManager/detail/PcdHeader.h"

#include "Common/VeltraniException.h"
#include "ScreenManager/detail/PcdText.h"

#include <algorithm>
#include <limits>

namespace Veltrani {

namespace {

/// Bytes of a point. Descriptors in use have a few thousand; more would overflow the offsets of the readers.
constexpr std::uint64_t LARGEST_POINT = std::uint64_t{1} << 20;
/// Points are indexed by 32-bit signed integers.
constexpr std::uint64_t MOST_POINTS = std::numeric_limits<std::int32_t>::max();

constexpr std::array<std::string_view, 10> NAMES{"VERSION", "FIELDS", "SIZE",      "TYPE",   "COUNT",
                                                 "WIDTH",   "HEIGHT", "VIEWPOINT", "POINTS", "DATA"};
/// What FIELDS was called in the first versions of the format.
constexpr std::string_view OLD_NAME_OF_FIELDS = "COLUMNS";

/// Which sizes a type has: the letter, then its sizes in bytes.
struct TypeSizes {
    char type;
    std::string_view sizes;
};
constexpr std::array<TypeSizes, 4> TYPES{{{'F', "48"}, {'I', "1248"}, {'U', "1248"}, {'B', "1"}}};

bool typeHasSize(char type, std::uint64_t size) {
    return std::any_of(TYPES.begin(), TYPES.end(), [=](const TypeSizes& known) {
        return known.type == type && known.sizes.find(static_cast<char>('0' + size)) != std::string_view::npos;
    });
}

}  // namespace

PcdHeader::PcdHeader(std::string_view text) {
    while (!m_seen[DATA]) {
        const std::size_t end = text.find('\n', m_bodyOffset);
        if (end == std::string_view::npos) {
            throw VeltraniParseException(L"the header has no complete DATA line");
        }
        ++m_line;
        readLine(text.substr(m_bodyOffset, end - m_bodyOffset));
        m_bodyOffset = end + 1;
    }
    checkWhole();
}

std::uint64_t PcdHeader::bytesPerPoint() const {
    std::uint64_t bytes = 0;
    for (const Field& field : m_fields) {
        bytes += field.size * field.count;
    }
    return bytes;
}

std::uint64_t PcdHeader::elementsPerPoint() const {
    std::uint64_t elements = 0;
    for (const Field& field : m_fields) {
        elements += field.count;
    }
    return elements;
}

bool PcdHeader::startsLikeKeyword(std::string_view word) {
    return word.starts_with(OLD_NAME_OF_FIELDS) ||
           std::any_of(NAMES.begin(), NAMES.end(), [=](std::string_view name) { return word.starts_with(name); });
}

void PcdHeader::readLine(std::string_view line) {
    const Words words = PcdText::split(line);
    if (words.empty() && !line.empty()) {
        // The reader skips a line without any character but takes one of blanks for the end of the header.
        fail("a line of blanks", "a line of a PCD header");
    }
    if (words.empty() || words[0].starts_with('#')) {
        return;
    }
    const std::string_view name = words[0] == OLD_NAME_OF_FIELDS ? NAMES[FIELDS] : words[0];
    const auto known = std::find(NAMES.begin(), NAMES.end(), name);
    if (known == NAMES.end()) {
        fail(words[0], "a keyword of a PCD header");
    }
    const auto keyword = static_cast<Keyword>(known - NAMES.begin());
    checkPlace(keyword, words[0]);
    m_seen.set(keyword);
    switch (keyword) {
        case VERSION:
        case KEYWORDS:
            break;
        case FIELDS:
            return readFields(words);
        case SIZE:
            return readSizes(words);
        case TYPE:
            return readTypes(words);
        case COUNT:
            return readCounts(words);
        case WIDTH:
            m_width = readSingleNumber(words);
            break;
        case HEIGHT:
            m_height = readSingleNumber(words);
            break;
        case VIEWPOINT:
            return readViewpoint(words);
        case POINTS:
            m_points = readSingleNumber(words);
            break;
        case DATA:
            return readData(words);
    }
}

// A reader lays out a point as the lines come and reserves the cloud at POINTS: another order breaks it.
void PcdHeader::checkPlace(Keyword keyword, std::string_view word) {
    if (m_seen[keyword]) {
        fail(word, "one such line only");
    }
    if (keyword >= FIELDS && keyword <= COUNT) {
        if (m_seen[POINTS]) {
            fail(word, "this line before POINTS");
        }
        if (keyword != FIELDS && !m_seen[keyword - 1]) {
            fail(word, std::string(NAMES[keyword - 1]) + " before this line");
        }
    }
    if (keyword == POINTS && !m_seen[FIELDS]) {
        fail(word, "FIELDS before this line");
    }
}

void PcdHeader::readFields(const Words& words) {
    for (std::size_t i = 1; i < words.size(); ++i) {
        Field field;
        field.name = words[i];
        m_fields.push_back(std::move(field));
    }
    if (m_fields.empty()) {
        fail(words[0], "the names of the fields");
    }
}

void PcdHeader::readSizes(const Words& words) {
    constexpr std::uint64_t LARGEST_ELEMENT = 8;
    requireOnePerField(words);
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        m_fields[i].size = readNumber(words[i + 1], 1, LARGEST_ELEMENT);
    }
}

void PcdHeader::readTypes(const Words& words) {
    requireOnePerField(words);
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        const std::string_view type = words[i + 1];
        if (type.size() != 1 || !typeHasSize(type[0], m_fields[i].size)) {
            fail(type, "a type of " + std::to_string(m_fields[i].size) + " bytes: F, I, U or B");
        }
        m_fields[i].type = type[0];
    }
}

void PcdHeader::readCounts(const Words& words) {
    requireOnePerField(words);
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        m_fields[i].count = readNumber(words[i + 1], 1, LARGEST_POINT);
    }
}

void PcdHeader::readViewpoint(const Words& words) const {
    constexpr std::size_t NUMBERS = 7;
    if (words.size() != NUMBERS + 1) {
        fail(std::to_string(words.size() - 1) + " values", "7: tx ty tz qw qx qy qz");
    }
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (!PcdText::isNumber(words[i])) {
            fail(words[i], "a number with a decimal point");
        }
    }
}

void PcdHeader::readData(const Words& words) {
    constexpr std::array<std::string_view, 3> KINDS{"ascii", "binary", "binary_compressed"};
    const auto kind = words.size() == 2 ? std::find(KINDS.begin(), KINDS.end(), words[1]) : KINDS.end();
    if (kind == KINDS.end()) {
        fail(words.size() > 1 ? words[1] : words[0], "DATA ascii, binary or binary_compressed");
    }
    m_data = static_cast<Data>(kind - KINDS.begin());
}

std::uint64_t PcdHeader::readNumber(std::string_view word, std::uint64_t least, std::uint64_t most) const {
    std::uint64_t number = 0;
    if (!PcdText::readWhole(word, number) || number < least || number > most) {
        fail(word, "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return number;
}

std::uint64_t PcdHeader::readSingleNumber(const Words& words) const {
    if (words.size() != 2) {
        fail(std::to_string(words.size() - 1) + " values", "1");
    }
    return readNumber(words[1], 0, MOST_POINTS);
}

void PcdHeader::requireOnePerField(const Words& words) const {
    if (words.size() - 1 != m_fields.size()) {
        fail(std::to_string(words.size() - 1) + " values", std::to_string(m_fields.size()) + ", one per field");
    }
}

void PcdHeader::checkWhole() const {
    if (!m_seen[FIELDS]) {
        throw VeltraniParseException(L"the header has no FIELDS line");
    }
    if (!m_seen[POINTS]) {
        throw VeltraniParseException(L"the header has no POINTS line");
    }
    if (m_seen[SIZE] != m_seen[TYPE]) {
        throw VeltraniParseException(L"the header has a SIZE line but no TYPE line");
    }
    if (m_seen[HEIGHT] && !m_seen[WIDTH]) {
        throw VeltraniParseException(L"the header has a HEIGHT line but no WIDTH line");
    }
    // Both factors are below 2^31, so the product fits.
    if (m_seen[WIDTH] && m_width * m_height != m_points) {
        throw VeltraniParseException(L"WIDTH " + std::to_wstring(m_width) + L" x HEIGHT " + std::to_wstring(m_height) +
                                     L" is not POINTS " + std::to_wstring(m_points));
    }
    if (m_fields.size() > LARGEST_POINT || bytesPerPoint() > LARGEST_POINT) {
        throw VeltraniParseException(L"a point has more than " + std::to_wstring(LARGEST_POINT) + L" bytes");
    }
}

void PcdHeader::fail(std::string_view found, const std::string& expected) const {
    PcdText::fail(m_line, found, expected);
}

}  // namespace Veltrani
