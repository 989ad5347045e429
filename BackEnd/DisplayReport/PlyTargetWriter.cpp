#include "DisplayReport/PlyTargetWriter.h"

#include "Common/QuotedText.h"
#include "DisplayReport/ChannelPalette.h"
#include "DisplayReport/NumberText.h"
#include "DisplayReport/TargetSurvey.h"

#include <ostream>
#include <string>

namespace Veltrani::DisplayReport {

namespace {

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

}  // namespace

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

}  // namespace Veltrani::DisplayReport
