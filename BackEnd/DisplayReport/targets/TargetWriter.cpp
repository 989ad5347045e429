#include "DisplayReport/targets/TargetWriter.h"

#include "Common/QuotedText.h"
#include "DisplayReport/basics/ChannelPalette.h"
#include "DisplayReport/basics/FormatList.h"
#include "DisplayReport/basics/JsonText.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/basics/ReportHead.h"
#include "DisplayReport/targets/TargetSurvey.h"

#include <nlohmann/json.hpp>

#include <ostream>
#include <string>

namespace Veltrani::DisplayReport {

namespace {

/// Quoted exactly when the field holds a comma, a quote or a line break.
std::string field(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char character : text) {
        quoted += character;
        if (character == '"') {
            quoted += '"';
        }
    }
    return quoted + '"';
}

std::string coordinates(const Point<double, 3>& point) {
    return exactText(point[0]) + ',' + exactText(point[1]) + ',' + exactText(point[2]) + '\n';
}

/// Targets as comma-separated values (RFC 4180 quoting, line feeds, UTF-8): lines that begin with "#" and say what the
/// table is, one header line, then one line per target.
///
/// Columns: channel, projector, kind ("grid" or "boundary"), column, row (of the grid; a boundary sample has its number
/// in `column` and no row), u, v (place in the picture; grid only), x, y, z (world frame, native units).
class CsvTargetWriter : public TargetWriter {
public:
    void write(const TargetSurvey& survey, std::ostream& out) const override;
};

void CsvTargetWriter::write(const TargetSurvey& survey, std::ostream& out) const {
    out << ReportHead{"targets", survey.unit}.comment() << "channel,projector,kind,column,row,u,v,x,y,z\n";
    for (const ChannelTargets& channel : survey.channels) {
        const std::string names = field(channel.name) + ',' + field(channel.projectorId);
        for (const GridTarget& target : channel.grid) {
            out << names + ",grid," + std::to_string(target.column) + ',' + std::to_string(target.row) + ',' +
                       exactText(target.picture[0]) + ',' + exactText(target.picture[1]) + ',' +
                       coordinates(target.point);
        }
        for (std::size_t i = 0; i < channel.boundary.size(); ++i) {
            out << names + ",boundary," + std::to_string(i) + ",,,," + coordinates(channel.boundary[i]);
        }
    }
}

/// As JSON has it. Values alone: a tree of many needs memory when it goes, and has none where memory ran out.
template <class Value>
std::string text(const Value& value) {
    return nlohmann::json(value).dump();
}

std::string text(const std::string& value) {
    return safeForTerminals(nlohmann::json(value).dump());
}

std::string text(const Point<double, 3>& point) {
    return '[' + text(point[0]) + ',' + text(point[1]) + ',' + text(point[2]) + ']';
}

std::string text(const GridTarget& target) {
    return R"({"column":)" + text(target.column) + R"(,"row":)" + text(target.row) + R"(,"u":)" +
           text(target.picture[0]) + R"(,"v":)" + text(target.picture[1]) + R"(,"point":)" + text(target.point) + '}';
}

template <class Items>
void writeList(const char* name, const Items& items, std::ostream& out) {
    out << ",\"" << name << "\":[";
    const char* separator = "";
    for (const auto& item : items) {
        out << separator << text(item);
        separator = ",";
    }
    out << ']';
}

void write(const ChannelTargets& channel, std::ostream& out) {
    out << R"({"name":)" << text(channel.name) << R"(,"projector":)" << text(channel.projectorId) << R"(,"fault":)"
        << text(channel.fault) << R"(,"remark":)" << text(channel.remark) << R"(,"missed":{"grid":)"
        << text(channel.gridMissed) << R"(,"boundary":)" << text(channel.boundaryMissed) << '}';
    writeList("grid", channel.grid, out);
    writeList("boundary", channel.boundary, out);
    out << '}';
}

/// Targets as one JSON object:
///
///     {"schema": "screenmanager/targets", ..., "unit": "m", "columns": 16, "rows": 10, "boundarySamples": 16,
///     "channels": [
///       {"name": "Left", "projector": "020000000001", "fault": "", "missed": {"grid": 0, "boundary": 0},
///        "grid": [{"column": 0, "row": 0, "u": 0.0, "v": 0.0, "point": [x, y, z]}, ...],
///        "boundary": [[x, y, z], ...]}, ...]}
class JsonTargetWriter : public TargetWriter {
public:
    void write(const TargetSurvey& survey, std::ostream& out) const override;
};

void JsonTargetWriter::write(const TargetSurvey& survey, std::ostream& out) const {
    ReportHead head{"targets", survey.unit};
    head.files = sources();
    out << '{' << head.members() << R"(,"unit":)" << text(survey.unit) << R"(,"columns":)" << text(survey.plan.columns)
        << R"(,"rows":)" << text(survey.plan.rows) << R"(,"boundarySamples":)" << text(survey.plan.boundarySamples)
        << R"(,"channels":[)";
    const char* separator = "";
    for (const ChannelTargets& channel : survey.channels) {
        out << separator;
        DisplayReport::write(channel, out);
        separator = ",";
    }
    out << "]}\n";
}

enum class Kind : int { GRID = 0, BOUNDARY = 1 };

std::string line(const Point<double, 3>& point, std::size_t channel, Kind kind, int column, int row) {
    std::string text;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        text += exactText(point[axis]) + ' ';
    }
    const int divisor = kind == Kind::BOUNDARY ? 2 : 1;
    const Colour colour = channelColour(channel);
    for (const int part : {colour.red, colour.green, colour.blue}) {
        text += std::to_string(part / divisor) + ' ';
    }
    return text + std::to_string(channel) + ' ' + std::to_string(static_cast<int>(kind)) + ' ' +
           std::to_string(column) + ' ' + std::to_string(row) + '\n';
}

/// Targets as a PLY point cloud (ascii 1.0) for any viewer of point clouds: one colour per channel, outlines darker
/// than grids. Besides x, y, z (double, native units) and the colour, each point has `channel` (its place in the
/// configuration), `kind` (0 grid, 1 boundary), `column` and `row` (a boundary sample has its number in `column` and
/// row 0).
class PlyTargetWriter : public TargetWriter {
public:
    void write(const TargetSurvey& survey, std::ostream& out) const override;
};

void PlyTargetWriter::write(const TargetSurvey& survey, std::ostream& out) const {
    out << "ply\nformat ascii 1.0\ncomment lengths in " << onOneLine(survey.unit) << '\n';
    for (std::size_t i = 0; i < survey.channels.size(); ++i) {
        out << "comment channel " << i << ": " << onOneLine(survey.channels[i].name) << '\n';
    }
    out << "element vertex " << survey.placed() << '\n'
        << "property double x\nproperty double y\nproperty double z\n"
           "property uchar red\nproperty uchar green\nproperty uchar blue\n"
           "property int channel\nproperty uchar kind\nproperty int column\nproperty int row\nend_header\n";
    for (std::size_t i = 0; i < survey.channels.size(); ++i) {
        const ChannelTargets& channel = survey.channels[i];
        for (const GridTarget& target : channel.grid) {
            out << line(target.point, i, Kind::GRID, target.column, target.row);
        }
        for (std::size_t sample = 0; sample < channel.boundary.size(); ++sample) {
            out << line(channel.boundary[sample], i, Kind::BOUNDARY, static_cast<int>(sample), 0);
        }
    }
}

constexpr FormatList<TargetWriter, 3> FORMATS{{{{"csv", makeWriter<TargetWriter, CsvTargetWriter>},
                                                {"json", makeWriter<TargetWriter, JsonTargetWriter>},
                                                {"ply", makeWriter<TargetWriter, PlyTargetWriter>}}}};

}  // namespace

std::vector<std::string> TargetWriter::formats() {
    return FORMATS.names();
}

std::unique_ptr<TargetWriter> TargetWriter::ofFormat(const std::string& format) {
    return FORMATS.writerOf(format);
}

}  // namespace Veltrani::DisplayReport
