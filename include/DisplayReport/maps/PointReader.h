#pragma once

#include "Common/Point.h"

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::DisplayReport {

/// What the numbers of a point are.
enum class PointKind {
    PICTURE,  ///< u, v: a place in the picture of a channel, (0, 0) bottom left to (1, 1) top right
    LAYOUT,   ///< x, y, z: a point of the layout
};

/// The names of the numbers, as columns have them: "u", "v" or "x", "y", "z".
[[nodiscard]] std::vector<std::string> columnsOf(PointKind kind);

/// Reads points as comma-separated numbers, one point per line, the same in every locale.
///
/// Lines that begin with "#" may come first, as those that say what a table is; the next one may be a header with the
/// names of the columns. Blanks around a number and a byte-order mark do not
/// matter, lines end with a line feed with or without a carriage return. Empty lines may stand at the end only: a point
/// that is missing is a fault. Numbers are finite decimal numbers.
///
///     PointReader reader(in, "points.csv", PointKind::PICTURE);
///     Point<double, 3> point;
///     while (reader.next(point)) { ... }
class PointReader {
public:
    /// Lines are cut off here, so that a file without line ends does not fill the memory: several times what three
    /// numbers with all their digits take.
    static constexpr std::size_t LONGEST_LINE_BYTES = 4096;

    /// @param in not owned, must outlive the reader
    /// @param document named in messages, UTF-8
    PointReader(std::istream& in, std::string document, PointKind kind);

    /// Reads the next point. A picture point leaves the third component at zero.
    ///
    /// Throws `VeltraniParseException`, on one line with file, line, what was found and what is expected; the points
    /// before that line have been returned then, and reading cannot go on. Throws `VeltraniMissingFileException` when
    /// the input cannot be read.
    /// @return false at the end of the input, and `point` is untouched then
    bool next(Point<double, 3>& point);

    /// How much has been read, for the progress of a long file.
    [[nodiscard]] std::size_t bytesRead() const { return m_bytes; }

    /// A point as it stands in a line; none when it is none.
    [[nodiscard]] static std::optional<Point<double, 3>> parse(std::string_view text, PointKind kind);

private:
    [[nodiscard]] bool readLine();
    [[nodiscard]] bool isHeader() const;
    [[noreturn]] void refuse(int line, const std::string& found, const std::string& expected) const;

    std::istream& m_in;
    std::string m_document;
    PointKind m_kind;
    std::string m_text;  ///< of the line, without its end
    int m_line = 0;
    int m_emptyLine = 0;  ///< the first of the empty lines just read; 0 without any
    bool m_mayBeHeader = true;
    std::size_t m_bytes = 0;
};

/// Points from wherever they come, one after the other.
class PointInput {
public:
    /// Points that are known already.
    [[nodiscard]] static PointInput ofPoints(std::vector<Point<double, 3>> points);
    /// Points of a stream.
    /// @param in not owned, must outlive the input
    /// @param document named in messages, UTF-8
    [[nodiscard]] static PointInput ofStream(std::istream& in, std::string document, PointKind kind);
    /// Points of a file. Throws `std::runtime_error` with the reason when it cannot be opened or is a folder.
    [[nodiscard]] static PointInput ofFile(const std::string& path, PointKind kind);

    PointInput(PointInput&&) noexcept;
    ~PointInput();

    /// As `PointReader::next`.
    bool next(Point<double, 3>& point);

    /// Bytes of the whole input; 0 where its length is not known, as of a pipe.
    [[nodiscard]] std::size_t size() const { return m_size; }
    /// How many of them have been read.
    [[nodiscard]] std::size_t bytesRead() const { return m_reader ? m_reader->bytesRead() : 0; }

private:
    PointInput();

    std::vector<Point<double, 3>> m_points;
    std::size_t m_taken = 0;
    std::unique_ptr<std::istream> m_file;
    std::size_t m_size = 0;
    std::optional<PointReader> m_reader;
};

}  // namespace Veltrani::DisplayReport
