#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/ReportHead.h"
#include "DisplayReport/basics/TableReader.h"

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Veltrani::DisplayReport {

/// What the numbers of a point are.
enum class PointKind {
    PICTURE,  ///< u, v: a place in the picture of a channel, (0, 0) bottom left to (1, 1) top right
    LAYOUT,   ///< x, y, z: a point of the layout, or of the screen
};

/// The names of the numbers, as columns have them: "u", "v" or "x", "y", "z".
[[nodiscard]] std::vector<std::string> columnsOf(PointKind kind);

/// Reads points as comma-separated numbers, one point per line, the same in every locale.
///
/// Lines that begin with "#" may come first, as those that say what a table is; the next one may be a header with the
/// names of the columns, in any order and among others. Names that hold commas stand in quotes, as `targets` writes
/// them. Blanks around a number and a byte-order mark do not matter, lines end with a line feed with or without a
/// carriage return. Empty lines may stand at the end only: a point that is missing is a fault. Numbers are finite
/// decimal numbers.
///
/// Rows of a table may be passed over, and are counted: those that another channel has, by the column `projector`, once
/// `takeOnly` names one, and those where all numbers of the point are left empty, as samples of outlines have no u, v.
///
///     PointReader reader(in, "points.csv", PointKind::PICTURE);
///     Point<double, 3> point;
///     while (reader.next(point)) { ... }
class PointReader {
public:
    /// Lines are cut off here: several times what three numbers with all their digits take.
    static constexpr std::size_t LONGEST_LINE_BYTES = TableReader::LONGEST_LINE_BYTES;

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

    /// What the lines before the header state; without such lines the report, the frame and the unit are empty. Reads
    /// no further than to the first point, and throws what `next` throws.
    const ReportHead& head();

    /// To be called before the first `next`: passes over the rows of other channels where the table names them.
    void takeOnly(std::string projectorId) { m_projector = std::move(projectorId); }

    /// Rows that were passed over.
    struct PassedOver {
        std::size_t ofOthers = 0;      ///< channels
        std::size_t withoutPlace = 0;  ///< of this channel, or of a table that names none
    };
    [[nodiscard]] const PassedOver& passedOver() const { return m_passedOver; }

    /// How much has been read, for the progress of a long file.
    [[nodiscard]] std::size_t bytesRead() const { return m_table.bytesRead(); }

    /// A point as it stands in a line; none when it is none.
    [[nodiscard]] static std::optional<Point<double, 3>> parse(std::string_view text, PointKind kind);

private:
    /// The columns that a header names.
    struct Columns {
        std::size_t count = 0;
        std::vector<std::size_t> ofPoint;      ///< in the order of `columnsOf`
        std::optional<std::size_t> projector;  ///< whose row it is
    };

    void readHead();
    /// None where the line is no header.
    [[nodiscard]] std::optional<Columns> columnsOfHeader() const;
    /// A row of a table; false for one that is passed over.
    bool readRow(Point<double, 3>& point);
    [[noreturn]] void refuseLine() const;

    TableReader m_table;
    PointKind m_kind;
    int m_emptyLine = 0;  ///< the first of the empty lines just read; 0 without any
    bool m_isHeadRead = false;
    bool m_isPending = false;          ///< the line has been read, but was none of the head
    std::optional<Columns> m_columns;  ///< none without a header, when lines hold the numbers of a point alone
    std::string m_projector;           ///< empty: of every channel
    PassedOver m_passedOver;
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

    /// As those of `PointReader`; a list states nothing, and nothing of it is passed over.
    bool next(Point<double, 3>& point);
    [[nodiscard]] ReportHead head();
    void takeOnly(const std::string& projectorId);
    [[nodiscard]] PointReader::PassedOver passedOver() const;

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
