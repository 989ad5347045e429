#pragma once

#include "DisplayReport/basics/ReportHead.h"
#include "DisplayReport/maps/PointReader.h"

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>

class XMLConfigManager;

namespace Veltrani::DisplayReport {

class PointMap;

/// What x, y, z are.
enum class PointSpace {
    LAYOUT,  ///< a point of the layout, by the layout map of the kind of display
    SCREEN,  ///< a place on the screen, world frame, as targets have it (`ScreenMapper`)
};

/// How mapped points are written.
enum class PointFormat { CSV, JSON };

/// Maps a stream of points and writes them as comma-separated values: a header line, then one line per point in the
/// order of the input, with the point as it was read, its image and whether there is one.
///
///     u,v,x,y,z,mapped          x,y,z,u,v,mapped
///     0.5,0.25,1.5,4,0,1        1.5,4,0,0.5,0.25,1
///     2,0.5,,,,0                9,9,9,,,0
///
/// As JSON it is one object whose list `points` has for each of them its numbers by their names, null without an
/// image, and `mapped`. Numbers read back as exactly those that were computed.
class PointMapping {
public:
    /// Gives the next point and returns true, or returns false when there is none.
    using Source = std::function<bool(Point<double, 3>&)>;

    struct Count {
        std::size_t points = 0;
        std::size_t mapped = 0;
    };

    /// @param kind of the points that come in
    /// @param progress called after every few thousand points
    /// @param head written before the header line
    PointMapping(PointMap& map, PointKind kind, std::function<void()> progress = {},
                 PointFormat format = PointFormat::CSV, ReportHead head = {});

    /// What x, y, z are on a display, for the head of the result.
    [[nodiscard]] static ReportHead headOf(const XMLConfigManager& config, PointSpace space = PointSpace::LAYOUT);

    /// What x, y, z of a table are by what it states of itself: layout points where it states nothing, and where both
    /// are points of one frame, unless it holds targets.
    ///
    /// Throws `VeltraniException` for a table of another kind of display, of another unit, and of another space than
    /// `stated`, with what it is, what is expected and what to do.
    /// @param table as `PointReader::head` returns it
    /// @param stated by the caller, if so
    [[nodiscard]] static PointSpace spaceOf(const ReportHead& table, const XMLConfigManager& config,
                                            std::optional<PointSpace> stated = std::nullopt);

    /// Ends with the source, or once `out` takes no more. What the source throws is thrown on after the points before
    /// it have been written; a JSON object stays open then.
    Count run(const Source& source, std::ostream& out);

private:
    void mapOn(const std::vector<Point<double, 3>>& points, std::ostream& out, Count& count);
    /// @param number of the point, from 0
    void write(const Point<double, 2>& picture, const Point<double, 3>& layout, bool isMapped, std::size_t number,
               std::ostream& out) const;

    PointMap& m_map;
    PointKind m_kind;
    std::function<void()> m_progress;
    PointFormat m_format;
    ReportHead m_head;
};

}  // namespace Veltrani::DisplayReport
