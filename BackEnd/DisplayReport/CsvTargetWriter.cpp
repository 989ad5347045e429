#include "DisplayReport/CsvTargetWriter.h"

#include "DisplayReport/NumberText.h"
#include "DisplayReport/TargetSurvey.h"

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

}  // namespace

void CsvTargetWriter::write(const TargetSurvey& survey, std::ostream& out) const {
    out << "channel,projector,kind,column,row,u,v,x,y,z\n";
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

}  // namespace Veltrani::DisplayReport
