#include "DisplayReport/JsonTargetWriter.h"

#include "DisplayReport/TargetSurvey.h"

#include <nlohmann/json.hpp>

#include <ostream>
#include <string>

namespace Veltrani::DisplayReport {

namespace {

/// As JSON has it. Values alone: a tree of many needs memory when it goes, and has none where memory ran out.
template <class Value>
std::string text(const Value& value) {
    return nlohmann::json(value).dump();
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

}  // namespace

void JsonTargetWriter::write(const TargetSurvey& survey, std::ostream& out) const {
    out << R"({"unit":)" << text(survey.unit) << R"(,"columns":)" << text(survey.plan.columns) << R"(,"rows":)"
        << text(survey.plan.rows) << R"(,"boundarySamples":)" << text(survey.plan.boundarySamples)
        << R"(,"channels":[)";
    const char* separator = "";
    for (const ChannelTargets& channel : survey.channels) {
        out << separator;
        DisplayReport::write(channel, out);
        separator = ",";
    }
    out << "]}\n";
}

}  // namespace Veltrani::DisplayReport
