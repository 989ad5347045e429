#include "DisplayReport/maps/PointMapping.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/UnitConversionTable.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/JsonText.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/maps/PointMap.h"
#include "ScreenManager/DisplayKinds.h"

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

template <class Place>
void addNumbers(JsonObject& object, PointKind kind, const Place& place, bool isKnown) {
    const std::vector<std::string> names = columnsOf(kind);
    for (std::size_t i = 0; i < names.size(); ++i) {
        object.addJson(names[i].c_str(), isKnown ? jsonOf(place[i]) : "null");
    }
}

[[noreturn]] void refuse(const std::string& what) {
    throw VeltraniException(__FILE__, __LINE__, fromUtf8OrBytes(what));
}

/// Two names of one unit are as good as one; what is not known is believed.
void requireUnit(const std::string& found, const std::string& expected) {
    const auto metresPer = [](const std::string& unit) {
        return UnitConversionTable::metresPer(UnitConversionTable::getUnitSubTypeFromName(fromUtf8(unit)));
    };
    const bool isSame = found == expected || found.empty() || expected.empty() ||
                        (metresPer(found) > 0 && metresPer(found) == metresPer(expected));
    if (!isSame) {
        refuse("lengths of this table are in " + found + ", those of the display in " + expected +
               ": convert them, and name the new unit in the line that begins with \"# x, y, z:\"");
    }
}

}  // namespace

PointMapping::PointMapping(PointMap& map, PointKind kind, std::function<void()> progress, PointFormat format,
                           ReportHead head)
    : m_map(map), m_kind(kind), m_progress(std::move(progress)), m_format(format), m_head(std::move(head)) {}

ReportHead PointMapping::headOf(const XMLConfigManager& config, PointSpace space) {
    const DisplayKind* const kind = DisplayKind::of(config);
    const IUnitsConfig* const units = config.getNativeUnitsConfig();
    ReportHead head{"map", units == nullptr ? std::string() : toUtf8(units->getUnitName())};
    if (space == PointSpace::SCREEN) {
        head.frame = ReportHead::ON_SCREEN;
    } else if (kind != nullptr && kind->layout == DisplayKind::Layout::PLANE) {
        head.frame = "layout plane, +x right, +y up, z = 0";
    } else if (kind != nullptr && kind->layout == DisplayKind::Layout::SCREEN) {
        head.frame = "screen, x = s from left to right, y = 0, z = t from bottom to top";
        head.unit = "the screen from edge to edge";
    }
    return head;
}

PointSpace PointMapping::spaceOf(const ReportHead& table, const XMLConfigManager& config,
                                 std::optional<PointSpace> stated) {
    if (table.frame.empty()) {
        return stated.value_or(PointSpace::LAYOUT);
    }
    const ReportHead layout = headOf(config);
    const bool isScreen = table.frame == ReportHead::WORLD || table.frame == ReportHead::ON_SCREEN;
    const bool isLayout = table.frame == layout.frame || (isScreen && layout.frame == ReportHead::WORLD);
    if (!isLayout && !isScreen) {
        refuse("x, y, z of this table are \"" + table.frame + "\", expected \"" + layout.frame + "\" or \"" +
               ReportHead::WORLD + "\": it was made with a display of another kind, make it with this one");
    }
    const bool isOfTargets = table.report == "targets" || table.frame == ReportHead::ON_SCREEN;
    PointSpace space = stated.value_or(isOfTargets ? PointSpace::SCREEN : PointSpace::LAYOUT);
    if (isLayout != isScreen) {
        space = isLayout ? PointSpace::LAYOUT : PointSpace::SCREEN;
    }
    if (stated && *stated != space) {
        refuse("x, y, z of this table are \"" + table.frame + "\", which are no " +
               (*stated == PointSpace::LAYOUT ? "layout points" : "places on the screen") +
               " of this display: leave out what they are, the table states it");
    }
    requireUnit(table.unit, headOf(config, space).unit);
    return space;
}

PointMapping::Count PointMapping::run(const Source& source, std::ostream& out) {
    Count count;
    const bool isJson = m_format == PointFormat::JSON;
    const std::string members = m_head.members();
    out << (isJson ? '{' + members + (members.empty() ? "" : ",") + "\"points\":["
                   : m_head.comment() + headerOf(m_kind));
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
    out << (isJson ? "]}\n" : "");
    return count;
}

void PointMapping::write(const P2& picture, const P3& layout, bool isMapped, std::size_t number,
                         std::ostream& out) const {
    const bool isFromPicture = m_kind == PointKind::PICTURE;
    if (m_format == PointFormat::JSON) {
        JsonObject object;
        addNumbers(object, PointKind::PICTURE, picture, isFromPicture || isMapped);
        addNumbers(object, PointKind::LAYOUT, layout, !isFromPicture || isMapped);
        out << (number == 0 ? "" : ",") + object.add("mapped", isMapped).text();
    } else if (isFromPicture) {
        out << textOf(picture) + (isMapped ? ',' + textOf(layout) + ",1\n" : ",,,,0\n");
    } else {
        out << textOf(layout) + (isMapped ? ',' + textOf(picture) + ",1\n" : ",,,0\n");
    }
}

void PointMapping::mapOn(const std::vector<P3>& points, std::ostream& out, Count& count) {
    std::size_t number = count.points;
    count.points += points.size();
    if (m_kind == PointKind::LAYOUT) {
        for (const P3& point : points) {
            P2 picture;
            const bool isMapped = m_map.toPicture(point, picture);
            count.mapped += isMapped ? 1U : 0U;
            write(picture, point, isMapped, number++, out);
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
        write(picture[i], layout[i].point, layout[i].isMapped, number++, out);
    }
}

}  // namespace Veltrani::DisplayReport
