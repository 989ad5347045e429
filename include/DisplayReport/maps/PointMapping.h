#pragma once

#include "DisplayReport/basics/ReportHead.h"
#include "DisplayReport/maps/PointReader.h"

#include <cstddef>
#include <functional>
#include <iosfwd>

class XMLConfigManager;

namespace Veltrani::DisplayReport {

class LayoutMapper;

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
    PointMapping(LayoutMapper& map, PointKind kind, std::function<void()> progress = {},
                 PointFormat format = PointFormat::CSV, ReportHead head = {});

    /// What the layout points of a display are, for the head of the result.
    [[nodiscard]] static ReportHead headOf(const XMLConfigManager& config);

    /// Ends with the source, or once `out` takes no more. What the source throws is thrown on after the points before
    /// it have been written; a JSON object stays open then.
    Count run(const Source& source, std::ostream& out);

private:
    void mapOn(const std::vector<Point<double, 3>>& points, std::ostream& out, Count& count);
    /// @param number of the point, from 0
    void write(const Point<double, 2>& picture, const Point<double, 3>& layout, bool isMapped, std::size_t number,
               std::ostream& out) const;

    LayoutMapper& m_map;
    PointKind m_kind;
    std::function<void()> m_progress;
    PointFormat m_format;
    ReportHead m_head;
};

}  // namespace Veltrani::DisplayReport
