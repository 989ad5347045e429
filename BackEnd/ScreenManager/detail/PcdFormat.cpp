#include "ScreenManager/detail/PcdFormat.h"

#include "Common/DecimalText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <system_error>

namespace Veltrani::ScreenManagerDetail {

namespace {

constexpr std::string_view SEPARATORS = " \t\r";

/// Compares without regard to case; `lower` is in small letters of ASCII.
bool startsWith(std::string_view word, std::string_view lower) {
    return word.size() >= lower.size() && std::equal(lower.begin(), lower.end(), word.begin(), [](char a, char b) {
               return a == (b >= 'A' && b <= 'Z' ? b - 'A' + 'a' : b);
           });
}

/// True for a text that is allowed between the brackets of "nan(...)".
bool isPayload(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    });
}

/// Shortened, and without bytes that would break a line of a log.
std::string printable(std::string_view text) {
    constexpr std::size_t LONGEST = 60;
    std::string shown(text.substr(0, LONGEST));
    std::replace_if(
        shown.begin(), shown.end(), [](unsigned char c) { return c < 0x20 || c > 0x7e; }, '?');
    return text.size() > LONGEST ? shown + "..." : shown;
}

/// Bytes of a point. Descriptors in use have a few thousand; more would overflow the offsets of the readers.
constexpr std::uint64_t LARGEST_POINT = std::uint64_t{1} << 20;
/// Points are indexed by 32-bit signed integers.
constexpr std::uint64_t MOST_POINTS = std::numeric_limits<std::int32_t>::max();

constexpr std::array<std::string_view, 10> NAMES{"VERSION", "FIELDS", "SIZE",      "TYPE",   "COUNT",
                                                 "WIDTH",   "HEIGHT", "VIEWPOINT", "POINTS", "DATA"};
/// The name of FIELDS in the first versions of the format.
constexpr std::string_view OLD_NAME_OF_FIELDS = "COLUMNS";

constexpr const char* NAME_A_CLOUD = "name a point cloud in the format PCD, or export it again";
constexpr const char* ADD_LINE = "add the line, or export the cloud again";
constexpr const char* PUT_IN_ORDER =
    "put the lines in the order FIELDS, SIZE, TYPE, COUNT, WIDTH, HEIGHT, VIEWPOINT, POINTS, DATA";
constexpr const char* CORRECT_VIEWPOINT = "write VIEWPOINT 0 0 0 1 0 0 0, or remove the line";

/// Which sizes a type has: the letter, then its sizes in bytes.
struct TypeSizes {
    char type;
    std::string_view sizes;
};
constexpr std::array<TypeSizes, 4> TYPES{{{'F', "48"}, {'I', "1248"}, {'U', "1248"}, {'B', "1"}}};

char capital(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

bool typeHasSize(char type, std::uint64_t size) {
    return std::any_of(TYPES.begin(), TYPES.end(), [=](const TypeSizes& known) {
        return known.type == type && known.sizes.find(static_cast<char>('0' + size)) != std::string_view::npos;
    });
}

}  // namespace

std::vector<std::string_view> PcdText::split(std::string_view line) {
    std::vector<std::string_view> words;
    std::size_t start = line.find_first_not_of(SEPARATORS);
    while (start != std::string_view::npos) {
        const std::size_t end = std::min(line.find_first_of(SEPARATORS, start), line.size());
        words.push_back(line.substr(start, end - start));
        start = line.find_first_not_of(SEPARATORS, end);
    }
    return words;
}

bool PcdText::isNumber(std::string_view word) {
    return isNotFinite(word) || parseFinite(word).has_value();
}

bool PcdText::isCoordinate(std::string_view word) {
    const std::optional<double> number = parseFinite(word);
    return number ? fitsSinglePrecision(*number) : isNotFinite(word);
}

bool PcdText::fitsSinglePrecision(double number) {
    // Half-way between FLT_MAX and the power of two above it; from there on, rounding to the even one of two, up.
    constexpr double LEAST_INFINITE = 0x1.ffffffp127;
    return !(std::isfinite(number) && std::abs(number) >= LEAST_INFINITE);
}

bool PcdText::isNotFinite(std::string_view word) {
    if (word.starts_with('+') || word.starts_with('-')) {
        word.remove_prefix(1);
    }
    if (isSame(word, "nan") || isSame(word, "inf") || isSame(word, "infinity")) {
        return true;
    }
    constexpr std::string_view OPENING = "nan(";
    return startsWith(word, OPENING) && word.ends_with(')') &&
           isPayload(word.substr(OPENING.size(), word.size() - OPENING.size() - 1));
}

bool PcdText::isSame(std::string_view word, std::string_view lower) {
    return word.size() == lower.size() && startsWith(word, lower);
}

bool PcdText::readWhole(std::string_view word, std::uint64_t& number) {
    if (word.starts_with('+')) {
        word.remove_prefix(1);
    }
    const auto [end, fault] = std::from_chars(word.data(), word.data() + word.size(), number);
    return fault == std::errc() && end == word.data() + word.size();
}

void PcdText::fail(std::size_t line, std::string_view found, const std::string& expected, const std::string& remedy) {
    throw VeltraniParseException(fromUtf8("line " + std::to_string(line) + ": found \"" + printable(found) +
                                          "\", expected " + expected + "; " + remedy));
}

void PcdText::fail(const std::string& found, const std::string& expected, const std::string& remedy) {
    throw VeltraniParseException(fromUtf8("found " + found + ", expected " + expected + "; " + remedy));
}

PcdHeader::PcdHeader(std::string_view text) {
    while (!m_seen[DATA]) {
        const std::size_t end = text.find('\n', m_bodyOffset);
        if (end == std::string_view::npos) {
            PcdText::fail("no complete DATA line", "a header that ends in one", NAME_A_CLOUD);
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

bool PcdHeader::startsLikeKeyword(std::string_view word) {
    return word.starts_with(OLD_NAME_OF_FIELDS) ||
           std::any_of(NAMES.begin(), NAMES.end(), [=](std::string_view name) { return word.starts_with(name); });
}

void PcdHeader::readLine(std::string_view line) {
    const Words words = PcdText::split(line);
    if (words.empty() && !line.empty()) {
        // The reader skips a line without any character but takes one of blanks for the end of the header.
        fail("a line of blanks", "a line of a PCD header", "remove the line");
    }
    if (words.empty() || words[0].starts_with('#')) {
        return;
    }
    const std::string_view name = words[0] == OLD_NAME_OF_FIELDS ? NAMES[FIELDS] : words[0];
    const auto known = std::find(NAMES.begin(), NAMES.end(), name);
    if (known == NAMES.end()) {
        fail(words[0], "a keyword of a PCD header", NAME_A_CLOUD);
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
        fail(word, "one such line only", "remove one of the two");
    }
    if (keyword >= FIELDS && keyword <= COUNT) {
        if (m_seen[POINTS]) {
            fail(word, "this line before POINTS", PUT_IN_ORDER);
        }
        if (keyword != FIELDS && !m_seen[keyword - 1]) {
            fail(word, std::string(NAMES[keyword - 1]) + " before this line", PUT_IN_ORDER);
        }
    }
    if (keyword == POINTS && !m_seen[FIELDS]) {
        fail(word, "FIELDS before this line", PUT_IN_ORDER);
    }
}

void PcdHeader::readFields(const Words& words) {
    for (std::size_t i = 1; i < words.size(); ++i) {
        Field field;
        field.name = words[i];
        m_fields.push_back(std::move(field));
    }
    if (m_fields.empty()) {
        fail(words[0], "the names of the fields", "name x, y, z and what else a point has");
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
        if (type.size() != 1 || !typeHasSize(capital(type[0]), m_fields[i].size)) {
            fail(type, "a type of " + std::to_string(m_fields[i].size) + " bytes: F, I, U or B",
                 "correct SIZE or TYPE: F has 4 or 8 bytes, I and U 1, 2, 4 or 8, B 1");
        }
        m_fields[i].type = capital(type[0]);
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
        fail(std::to_string(words.size() - 1) + " values", "7: tx ty tz qw qx qy qz", CORRECT_VIEWPOINT);
    }
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (!PcdText::isNumber(words[i])) {
            fail(words[i], "a number with a decimal point", CORRECT_VIEWPOINT);
        }
    }
}

void PcdHeader::readData(const Words& words) {
    // The usual reader takes for a text what does not begin with "binary" in small letters.
    constexpr std::array<std::string_view, 3> KINDS{"ascii", "binary", "binary_compressed"};
    const std::string_view word = words.size() > 1 ? words[1] : words[0];
    const auto kind = std::find(KINDS.begin(), KINDS.end(), PcdText::isSame(word, KINDS[0]) ? KINDS[0] : word);
    if (kind == KINDS.end()) {
        fail(word, "DATA ascii, binary or binary_compressed", "name the kind that the data are of");
    }
    m_data = static_cast<Data>(kind - KINDS.begin());
}

std::uint64_t PcdHeader::readNumber(std::string_view word, std::uint64_t least, std::uint64_t most) const {
    std::uint64_t number = 0;
    if (!PcdText::readWhole(word, number) || number < least || number > most) {
        fail(word, "a whole number from " + std::to_string(least) + " to " + std::to_string(most),
             "correct the number, or export the cloud again");
    }
    return number;
}

std::uint64_t PcdHeader::readSingleNumber(const Words& words) const {
    if (words.size() != 2) {
        fail(std::to_string(words.size() - 1) + " values", "1", "give one number");
    }
    return readNumber(words[1], 0, MOST_POINTS);
}

void PcdHeader::requireOnePerField(const Words& words) const {
    if (words.size() - 1 != m_fields.size()) {
        fail(std::to_string(words.size() - 1) + " values", std::to_string(m_fields.size()) + ", one per field",
             "give as many as FIELDS has names");
    }
}

void PcdHeader::checkWhole() const {
    if (!m_seen[FIELDS]) {
        PcdText::fail("no FIELDS line", "FIELDS with x, y and z", ADD_LINE);
    }
    if (!m_seen[POINTS]) {
        PcdText::fail("no POINTS line", "POINTS with their number", ADD_LINE);
    }
    if (m_seen[SIZE] != m_seen[TYPE]) {
        PcdText::fail("a SIZE line but no TYPE line", "both or neither", ADD_LINE);
    }
    if (m_seen[HEIGHT] && !m_seen[WIDTH]) {
        PcdText::fail("a HEIGHT line but no WIDTH line", "both", ADD_LINE);
    }
    // Both factors are below 2^31, so the product fits.
    if (m_seen[WIDTH] && m_width * m_height != m_points) {
        PcdText::fail("WIDTH " + std::to_string(m_width) + " x HEIGHT " + std::to_string(m_height) + " and POINTS " +
                          std::to_string(m_points),
                      "as many points", "correct the header, or export the cloud again");
    }
    if (m_fields.size() > LARGEST_POINT || bytesPerPoint() > LARGEST_POINT) {
        PcdText::fail("points of more than " + std::to_string(LARGEST_POINT) + " bytes", "at most that many",
                      "leave out the fields that are not needed");
    }
}

void PcdHeader::fail(std::string_view found, const std::string& expected, const std::string& remedy) const {
    PcdText::fail(m_line, found, expected, remedy);
}

}  // namespace Veltrani::ScreenManagerDetail
