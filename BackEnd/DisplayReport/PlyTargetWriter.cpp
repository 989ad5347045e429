#include "DisplayReport/PlyTargetWriter.h"

#include "DisplayReport/NumberText.h"
#include "DisplayReport/TargetSurvey.h"
#include "DisplayReport/TextTable.h"

#include <array>
#include <ostream>
#include <string>

namespace Veltrani::DisplayReport {

namespace {

using Colour = std::array<int, 3>;

/// Eight colours that stay apart for colour-blind eyes too (Okabe and Ito, 2008), used in turn.
constexpr std::array<Colour, 8> CHANNEL_COLOURS{{{230, 159, 0},
                                                 {86, 180, 233},
                                                 {0, 158, 115},
                                                 {240, 228, 66},
                                                 {0, 114, 178},
                                                 {213, 94, 0},
                                                 {204, 121, 167},
                                                 {160, 160, 160}}};

enum class Kind : int { GRID = 0, BOUNDARY = 1 };

std::string line(const Point<double, 3>& point, std::size_t channel, Kind kind, int column, int row) {
    std::string text;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        text += exactText(point[axis]) + ' ';
    }
    const int divisor = kind == Kind::BOUNDARY ? 2 : 1;
    for (const int part : CHANNEL_COLOURS[channel % CHANNEL_COLOURS.size()]) {
        text += std::to_string(part / divisor) + ' ';
    }
    return text + std::to_string(channel) + ' ' + std::to_string(static_cast<int>(kind)) + ' ' +
           std::to_string(column) + ' ' + std::to_string(row) + '\n';
}

}  // namespace

void PlyTargetWriter::write(const TargetSurvey& survey, std::ostream& out) const {
    out << "ply\nformat ascii 1.0\ncomment lengths in " << printable(survey.unit) << '\n';
    for (std::size_t i = 0; i < survey.channels.size(); ++i) {
        out << "comment channel " << i << ": " << printable(survey.channels[i].name) << '\n';
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
