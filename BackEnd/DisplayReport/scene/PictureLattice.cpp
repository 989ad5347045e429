#include "DisplayReport/scene/PictureLattice.h"

#include "Common/Finite.h"
#include "DisplayReport/coverage/ChannelLight.h"

#include <optional>

namespace Veltrani::DisplayReport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;
using Line = std::vector<P3>;

/// Parts of the height of a picture: the arrow, and its head. Its tip stays off the edge, which is drawn, too.
constexpr double LENGTH = 0.2;
constexpr double HEAD = 0.06;
constexpr double OFF_THE_EDGE = 0.05;
/// Points of the shaft: on a curved screen it bends.
constexpr int SHAFT_POINTS = 9;

/// Where a line between two picture points lands; none where any of it misses.
std::optional<Line> landed(const ChannelLight& light, const P2& from, const P2& to, int points) {
    std::vector<P2> picture;
    for (int i = 0; i < points; ++i) {
        picture.push_back(from + (to - from) * (static_cast<double>(i) / (points - 1)));
    }
    std::vector<ChannelLight::Landing> landings(picture.size());
    light.land(picture, landings);
    Line line;
    for (const ChannelLight::Landing& landing : landings) {
        if (!landing.hits || !isFinite(landing.on.place)) {
            return std::nullopt;
        }
        line.push_back(landing.on.place);
    }
    return line;
}

std::vector<Line> arrowTo(const ChannelLight& light, const P2& tip, double aspect) {
    const auto shaft = landed(light, {tip[0], tip[1] - LENGTH}, tip, SHAFT_POINTS);
    const double aside = HEAD / aspect;
    const auto left = landed(light, {tip[0] - aside, tip[1] - HEAD}, tip, 2);
    const auto right = landed(light, {tip[0] + aside, tip[1] - HEAD}, tip, 2);
    if (!shaft || !left || !right) {
        return {};
    }
    return {*shaft, {left->front(), left->back(), right->front()}};
}

}  // namespace

PictureLattice PictureLattice::of(const ChannelLight& light, std::size_t columns, std::size_t rows) {
    PictureLattice lattice;
    lattice.columns = columns;
    lattice.rows = rows;
    std::vector<P2> picture(columns);
    std::vector<ChannelLight::Landing> landings(columns);
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t column = 0; column < columns; ++column) {
            picture[column] = {static_cast<double>(column) / static_cast<double>(columns - 1),
                               static_cast<double>(row) / static_cast<double>(rows - 1)};
            landings[column] = {};
        }
        light.land(picture, landings);
        for (const ChannelLight::Landing& landing : landings) {
            lattice.lands.push_back(landing.hits && isFinite(landing.on.place));
            lattice.places.push_back(lattice.lands.back() ? landing.on.place : P3());
        }
    }
    return lattice;
}

std::vector<Line> upMarkOf(const ChannelLight& light, double aspect) {
    double top = 1 - OFF_THE_EDGE;
    while (top > LENGTH) {
        for (const double across : {0.5, 0.3, 0.7, 0.1, 0.9}) {
            auto arrow = arrowTo(light, {across, top}, aspect);
            if (!arrow.empty()) {
                return arrow;
            }
        }
        top -= LENGTH / 2;
    }
    return {};
}

}  // namespace Veltrani::DisplayReport
