#include "DisplayExport/WarpCell.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::DisplayExport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// The two triangles of a cell, by its corners.
constexpr std::array<std::array<std::size_t, 3>, 2> HALVES{{{0, 1, 2}, {0, 2, 3}}};

/// Whether a direction lies between three others, which span less than half of all directions.
bool isBetween(const P3& direction, const P3& a, const P3& b, const P3& c) {
    const double ab = dot(direction, cross(a, b));
    const double bc = dot(direction, cross(b, c));
    const double ca = dot(direction, cross(c, a));
    const bool isInside = (ab >= 0 && bc >= 0 && ca >= 0) || (ab <= 0 && bc <= 0 && ca <= 0);
    return isInside && dot(direction, a + b + c) > 0;
}

}  // namespace

WarpCell WarpCell::of(const WarpGrid& grid, std::size_t cell) {
    WarpCell result;
    const auto corners = grid.cornersOf(cell);
    for (std::size_t i = 0; i < corners.size(); ++i) {
        result.picture[i] = grid.pictureOf(corners[i]);
        result.nodes[i] = grid.nodes[corners[i]];
        result.directions[i] = grid.directions.empty() ? P3() : grid.directions[corners[i]];
    }
    return result;
}

bool WarpCell::holds(const P3& direction) const {
    return std::any_of(HALVES.begin(), HALVES.end(), [&](const auto& corners) {
        return isBetween(direction, directions[corners[0]], directions[corners[1]], directions[corners[2]]);
    });
}

WarpCell::Kind WarpCell::kind(const std::vector<P3>& poles, bool wrapsAround) const {
    if (!std::all_of(nodes.begin(), nodes.end(), [](const WarpNode& node) { return node.isUsable(); })) {
        return Kind::UNUSABLE;
    }
    if (std::any_of(poles.begin(), poles.end(), [this](const P3& pole) { return holds(pole); })) {
        return Kind::OVER_POLE;
    }
    if (std::any_of(nodes.begin(), nodes.end(), [this](const WarpNode& node) { return node.face != nodes[0].face; })) {
        return Kind::OVER_FACES;
    }
    const std::array<P2, 4> beside = contents(wrapsAround);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (!(beside[i] == nodes[i].content)) {
            return Kind::OVER_SEAM;
        }
    }
    return Kind::WHOLE;
}

std::array<P2, 4> WarpCell::contents(bool wrapsAround) const {
    std::array<P2, 4> beside;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        beside[i] = nodes[i].content;
        if (wrapsAround && i > 0) {
            // Beside its neighbour: around a pole, the first and the last may lie far apart.
            const double widths = std::round(beside[i][0] - beside[i - 1][0]);
            beside[i][0] -= widths;
        }
    }
    return beside;
}

}  // namespace Veltrani::DisplayExport
