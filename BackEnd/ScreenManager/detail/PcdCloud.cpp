#include "ScreenManager/detail/PcdCloud.h"

#include "ScreenManager/detail/CloudLibrary.h"

#include <pcl/PCLPointCloud2.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::ScreenManagerDetail {

namespace {

/// Headers are a few hundred bytes; a file that has none within this much is none.
constexpr std::size_t LARGEST_HEADER = std::size_t{1} << 20;

/// Reads the file byte by byte.
class ByteCursor {
public:
    ByteCursor(const RegularFile& file, std::size_t offset) : m_file(file), m_offset(offset), m_block(BLOCK) {}

    /// Returns the current byte; -1 at the end of the file.
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

/// After DATA the reader continues to take empty lines, comments and header lines for the header; only the first other
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

PcdHeader readHeader(const RegularFile& file) {
    if (file.size() == 0) {
        PcdText::fail("an empty file", "a point cloud", "export the cloud again");
    }
    std::string beginning(std::min(file.size(), LARGEST_HEADER), '\0');
    beginning.resize(file.readAt(0, beginning.data(), beginning.size()));
    return PcdHeader(beginning);
}

bool isCoordinateName(std::string_view name) {
    return name == "x" || name == "y" || name == "z";
}

void checkCoordinate(const PcdHeader& header, const std::string& name) {
    const auto isNamed = [&name](const PcdHeader::Field& field) { return field.name == name; };
    const auto& fields = header.fields();
    const auto times = std::count_if(fields.begin(), fields.end(), isNamed);
    if (times != 1) {
        PcdText::fail(times == 0 ? "no field " + name : "field " + name + " " + std::to_string(times) + " times",
                      "it once in FIELDS", "export the cloud with one x, y and z per point");
    }
    const PcdHeader::Field& field = *std::find_if(fields.begin(), fields.end(), isNamed);
    if (field.type != 'F' || field.count != 1) {
        PcdText::fail("field " + name + " with TYPE " + field.type + ", SIZE " + std::to_string(field.size) +
                          " and COUNT " + std::to_string(field.count),
                      "TYPE F, SIZE 4 or 8 and COUNT 1", "export the coordinates as floating-point numbers");
    }
}

/// Returns for each element of a point whether it is a coordinate.
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
        PcdText::fail(number, std::to_string(words.size()) + " values", std::to_string(isCoordinate.size()),
                      "give every point one value per field");
    }
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (isCoordinate[i] && !PcdText::isCoordinate(words[i])) {
            PcdText::fail(number, words[i], "a number of single precision with a decimal point, nan or inf",
                          "write it as in -1.25 or 1e-3, in a larger unit where it is too large");
        }
        if (!isCoordinate[i] && !PcdText::isNumber(words[i])) {
            PcdText::fail(number, words[i], "a number with a decimal point", "write it as in -1.25 or 1e-3");
        }
    }
}

void checkAscii(const RegularFile& file, const PcdHeader& header) {
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
        PcdText::fail(std::to_string(points) + " points", std::to_string(header.points()), PcdText::EXPORT_AGAIN);
    }
}

void requireBytes(const RegularFile& file, std::uint64_t needed) {
    if (needed > file.size()) {
        PcdText::fail("a file of " + std::to_string(file.size()) + " bytes", std::to_string(needed),
                      PcdText::EXPORT_AGAIN);
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
            PcdText::fail("padding (\"_\") in compressed data", "fields with names", "export the cloud as DATA binary");
        }
    }
    if (compressed == 0) {
        PcdText::fail("0 bytes of compressed data", "some", PcdText::EXPORT_AGAIN);
    }
    const std::uint64_t needed = header.points() * header.bytesPerPoint();
    if (uncompressed != needed) {
        PcdText::fail("compressed data for " + std::to_string(uncompressed) + " bytes",
                      std::to_string(needed) + " for the points", PcdText::EXPORT_AGAIN);
    }
    requireBytes(file, header.bodyOffset() + sizeof(sizes) + compressed);
    if (uncompressed > compressed * LARGEST_EXPANSION) {
        PcdText::fail(std::to_string(compressed) + " bytes of compressed data",
                      "enough for " + std::to_string(uncompressed) + " bytes of points", PcdText::EXPORT_AGAIN);
    }
}

using Cloud = PcdCloud::Cloud;

/// The library reads most numbers of a text as the locale of the process writes them.
class ClassicNumbers {
public:
    ClassicNumbers() : m_classic(::newlocale(LC_ALL_MASK, "C", nullptr)) {
        if (m_classic == nullptr) {
            throw std::bad_alloc();
        }
        m_previous = ::uselocale(m_classic);
    }
    ~ClassicNumbers() {
        ::uselocale(m_previous);
        ::freelocale(m_classic);
    }
    ClassicNumbers(const ClassicNumbers&) = delete;
    ClassicNumbers& operator=(const ClassicNumbers&) = delete;

private:
    locale_t m_classic;
    locale_t m_previous = nullptr;
};

/// Throws `std::bad_alloc` unless there is as much memory as reading takes at most. A text stream that runs out of
/// memory keeps the reader waiting for ever, and a file that it cannot map counts as a broken one.
void requireMemory(const RegularFile& file, const PcdHeader& header) {
    constexpr std::size_t LITTLE_THINGS = std::size_t{1} << 21;
    const std::size_t data = header.points() * header.bytesPerPoint();
    std::size_t needed = data + header.points() * sizeof(pcl::PointXYZ) + file.size() + LITTLE_THINGS;
    if (header.data() == PcdHeader::Data::BINARY_COMPRESSED) {
        needed += data;
    }
    ::operator delete(::operator new(needed));
}

/// @param read what the library returned, 0 when all is right
void requireRead(int read) {
    if (read != 0 && errno == ENOMEM) {
        throw std::bad_alloc();
    }
    if (read != 0) {
        PcdText::fail("data that the point cloud reader refuses", "data that it can unpack", PcdText::EXPORT_AGAIN);
    }
}

bool hasDoubles(const PcdHeader& header) {
    return std::any_of(header.fields().begin(), header.fields().end(), [](const PcdHeader::Field& field) {
        return isCoordinateName(field.name) && field.size == sizeof(double);
    });
}

/// One of x, y and z in points of any layout.
class Coordinate {
public:
    Coordinate(const pcl::PCLPointCloud2& points, const char* name)
        : m_points(points),
          m_field(*std::find_if(points.fields.begin(), points.fields.end(),
                                [name](const pcl::PCLPointField& field) { return field.name == name; })) {}

    /// Rounded to the nearest number of single precision. Throws for a finite one that has none.
    [[nodiscard]] float of(std::size_t point) const {
        const unsigned char* const place = m_points.data.data() + point * m_points.point_step + m_field.offset;
        if (m_field.datatype != pcl::PCLPointField::FLOAT64) {
            float value = 0;
            std::memcpy(&value, place, sizeof(value));
            return value;
        }
        double value = 0;
        std::memcpy(&value, place, sizeof(value));
        if (!PcdText::fitsSinglePrecision(value)) {
            PcdText::fail(
                "a number beyond single precision as " + m_field.name + " of point " + std::to_string(point + 1),
                "at most 3.4e38", "correct the point, or export the cloud in a larger unit");
        }
        return static_cast<float>(value);
    }

private:
    const pcl::PCLPointCloud2& m_points;
    const pcl::PCLPointField& m_field;
};

/// Reads all fields as they are. A text is taken into memory first, where reading cannot fail half-way; a binary file
/// is mapped by the library, which opens it by itself: it must get the one that was checked.
void readFields(const CloudLibrary& library, const RegularFile& file, const PcdHeader& header,
                pcl::PCLPointCloud2& points, Cloud& sensor) {
    if (header.data() != PcdHeader::Data::ASCII) {
        errno = 0;
        requireRead(library.read(file.nameForReopening(), points, sensor));
        return;
    }
    std::istringstream text(file.readAll());
    errno = 0;
    requireRead(library.readText(text, points, sensor));
}

void round(const pcl::PCLPointCloud2& points, Cloud& cloud) {
    const std::array<Coordinate, 3> xyz{Coordinate(points, "x"), Coordinate(points, "y"), Coordinate(points, "z")};
    cloud.resize(std::size_t{points.width} * points.height);
    cloud.width = points.width;
    cloud.height = points.height;
    cloud.is_dense = points.is_dense != 0;
    for (std::size_t i = 0; i < cloud.size(); ++i) {
        cloud[i] = {xyz[0].of(i), xyz[1].of(i), xyz[2].of(i)};
    }
}

bool isFinite(const pcl::PointXYZ& point) {
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

}  // namespace

PcdHeader PcdCheck::check(const RegularFile& file) {
    PcdHeader header = readHeader(file);
    for (const char* name : {"x", "y", "z"}) {
        checkCoordinate(header, name);
    }
    if (continuesHeader(file, header.bodyOffset())) {
        PcdText::fail("data that begin like a header line", "points",
                      "export the cloud with another of the three kinds of DATA");
    }
    switch (header.data()) {
        case PcdHeader::Data::ASCII:
            checkAscii(file, header);
            break;
        case PcdHeader::Data::BINARY:
            checkBinary(file, header);
            break;
        case PcdHeader::Data::BINARY_COMPRESSED:
            checkCompressed(file, header);
            break;
    }
    return header;
}

std::shared_ptr<Cloud> PcdCloud::read(const RegularFile& file) {
    const PcdHeader header = PcdCheck::check(file);
    const CloudLibrary& library = CloudLibrary::get();
    requireMemory(file, header);
    const ClassicNumbers numbers;
    auto cloud = pcl::make_shared<Cloud>();
    pcl::PCLPointCloud2 points;
    readFields(library, file, header, points, *cloud);
    if (hasDoubles(header)) {
        round(points, *cloud);
    } else {
        library.convert(points, *cloud);
    }
    cloud->is_dense = cloud->is_dense && std::all_of(cloud->begin(), cloud->end(), isFinite);
    return cloud;
}

}  // namespace Veltrani::ScreenManagerDetail
