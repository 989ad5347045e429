#include "ScreenManager/detail/PcdCloud.h"

#include "ScreenManager/detail/CloudLibrary.h"
#include "ScreenManager/detail/PcdCheck.h"
#include "ScreenManager/detail/PcdFormat.h"

#include <pcl/PCLPointCloud2.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <clocale>
#include <cmath>
#include <cstring>
#include <new>
#include <sstream>
#include <string>

namespace Veltrani {

namespace {

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

/// @param read what the library answered, 0 when all is right
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
        return (field.name == "x" || field.name == "y" || field.name == "z") && field.size == sizeof(double);
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

}  // namespace Veltrani
