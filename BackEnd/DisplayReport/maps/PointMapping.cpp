#include "DisplayReport/maps/PointMapping.h"

#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/maps/LayoutMapper.h"

#include <exception>
#include <ostream>
#include <span>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Enough for the maps to make use of many at once, few enough that a long search still reports how far it is.
constexpr std::size_t POINTS_AT_ONCE = 2048;

std::string textOf(const P2& point) {
    return exactText(point[0]) + ',' + exactText(point[1]);
}

std::string textOf(const P3& point) {
    return exactText(point[0]) + ',' + exactText(point[1]) + ',' + exactText(point[2]);
}

std::string headerOf(PointKind kind) {
    return kind == PointKind::PICTURE ? "u,v,x,y,z,mapped\n" : "x,y,z,u,v,mapped\n";
}

}  // namespace

PointMapping::PointMapping(LayoutMapper& map, PointKind kind, std::function<void()> progress)
    : m_map(map), m_kind(kind), m_progress(std::move(progress)) {}

PointMapping::Count PointMapping::run(const Source& source, std::ostream& out) {
    Count count;
    out << headerOf(m_kind);
    std::exception_ptr fault;
    bool hasMore = true;
    while (hasMore && out) {
        std::vector<P3> points;
        try {
            P3 point;
            while (points.size() < POINTS_AT_ONCE && (hasMore = source(point))) {
                points.push_back(point);
            }
        } catch (...) {
            fault = std::current_exception();
            hasMore = false;
        }
        mapOn(points, out, count);
        if (m_progress) {
            m_progress();
        }
    }
    if (fault) {
        std::rethrow_exception(fault);
    }
    return count;
}

void PointMapping::mapOn(const std::vector<P3>& points, std::ostream& out, Count& count) {
    count.points += points.size();
    if (m_kind == PointKind::LAYOUT) {
        for (const P3& point : points) {
            P2 picture;
            const bool isMapped = m_map.toPicture(point, picture);
            count.mapped += isMapped ? 1U : 0U;
            out << textOf(point) + (isMapped ? ',' + textOf(picture) + ",1\n" : ",,,0\n");
        }
        return;
    }
    std::vector<P2> picture;
    picture.reserve(points.size());
    for (const P3& point : points) {
        picture.emplace_back(point[0], point[1]);
    }
    std::vector<LayoutPoint> layout(picture.size());
    m_map.toLayout(picture, layout);
    for (std::size_t i = 0; i < picture.size(); ++i) {
        count.mapped += layout[i].isMapped ? 1U : 0U;
        out << textOf(picture[i]) + (layout[i].isMapped ? ',' + textOf(layout[i].point) + ",1\n" : ",,,,0\n");
    }
}

}  // namespace Veltrani::DisplayReport
