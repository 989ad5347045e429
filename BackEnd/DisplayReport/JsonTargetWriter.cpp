#include "DisplayReport/JsonTargetWriter.h"

#include "DisplayReport/TargetSurvey.h"

#include <nlohmann/json.hpp>

#include <ostream>

namespace Veltrani::DisplayReport {

namespace {

using Json = nlohmann::ordered_json;

Json coordinates(const Point<double, 3>& point) {
    return {point[0], point[1], point[2]};
}

Json jsonOf(const ChannelTargets& channel) {
    Json grid = Json::array();
    for (const GridTarget& target : channel.grid) {
        grid.push_back({{"column", target.column},
                        {"row", target.row},
                        {"u", target.picture[0]},
                        {"v", target.picture[1]},
                        {"point", coordinates(target.point)}});
    }
    Json boundary = Json::array();
    for (const Point<double, 3>& point : channel.boundary) {
        boundary.push_back(coordinates(point));
    }
    return {{"name", channel.name},
            {"projector", channel.projectorId},
            {"fault", channel.fault},
            {"remark", channel.remark},
            {"missed", {{"grid", channel.gridMissed}, {"boundary", channel.boundaryMissed}}},
            {"grid", std::move(grid)},
            {"boundary", std::move(boundary)}};
}

}  // namespace

void JsonTargetWriter::write(const TargetSurvey& survey, std::ostream& out) const {
    Json channels = Json::array();
    for (const ChannelTargets& channel : survey.channels) {
        channels.push_back(jsonOf(channel));
    }
    const Json document = {{"unit", survey.unit},
                           {"columns", survey.plan.columns},
                           {"rows", survey.plan.rows},
                           {"boundarySamples", survey.plan.boundarySamples},
                           {"channels", std::move(channels)}};
    out << document.dump() << '\n';
}

}  // namespace Veltrani::DisplayReport
