#include "DisplayExport/PoleZone.h"

#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayExport/WarpCell.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Veltrani::DisplayExport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Chords: further off, contents hardly turn.
constexpr double WIDEST = 0.6;
/// Of the lit places of a picture, in the zone.
constexpr double LARGEST_SHARE = 0.2;
/// Radians: a turn of less moves no content of 8192 pixels across by a tenth of a pixel from where it belongs.
constexpr double LEAST_TURN = 0.01;
/// Parts of a pixel of the channel's picture along a side.
constexpr double PARTS_OF_PIXEL = 16;

double distanceToNearest(const std::vector<P3>& poles, const P3& direction) {
    double nearest = std::numeric_limits<double>::max();
    for (const P3& pole : poles) {
        nearest = std::min(nearest, norm(direction - pole));
    }
    return nearest;
}

/// How far from the poles the given share of all lit places lies.
double radiusOf(const ChannelSight& sight, const ContentInput& input, const std::vector<P3>& poles) {
    constexpr int PER_SIDE = 65;
    std::vector<P2> picture;
    for (int row = 0; row < PER_SIDE; ++row) {
        for (int column = 0; column < PER_SIDE; ++column) {
            picture.emplace_back((column + 0.5) / PER_SIDE, (row + 0.5) / PER_SIDE);
        }
    }
    std::vector<SeenPlace> seen(picture.size());
    sight.see(picture, seen);
    std::vector<double> distances;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const double length = norm(seen[i].direction);
        if (length > 0 && input.place(picture[i], seen[i])) {
            distances.push_back(distanceToNearest(poles, seen[i].direction * (1 / length)));
        }
    }
    if (distances.empty()) {
        return 0;
    }
    const auto count = static_cast<std::ptrdiff_t>(LARGEST_SHARE * static_cast<double>(distances.size()));
    std::nth_element(distances.begin(), distances.begin() + count, distances.end());
    return std::min(WIDEST, distances[static_cast<std::size_t>(count)]);
}

/// Whether two directions lie apart around a pole, by so much of a turn.
bool areTurned(const P3& pole, const P3& a, const P3& b) {
    const P3 fromA = a - dot(a, pole) * pole;
    const P3 fromB = b - dot(b, pole) * pole;
    const double across = std::abs(dot(pole, cross(fromA, fromB)));
    const double along = dot(fromA, fromB);
    return along <= 0 || across > LEAST_TURN * along;
}

}  // namespace

PoleZone::PoleZone(const ChannelSight& sight, const ContentInput& input) : m_poles(input.poles()) {
    if (!m_poles.empty()) {
        const Point<int, 2> pixels = sight.channel().pictureSize();
        m_radius = radiusOf(sight, input, m_poles);
        m_least = {1 / (PARTS_OF_PIXEL * pixels[0]), 1 / (PARTS_OF_PIXEL * pixels[1])};
    }
}

bool PoleZone::holds(const WarpCell& cell) const {
    return std::any_of(m_poles.begin(), m_poles.end(), [&](const P3& pole) {
        return std::all_of(cell.directions.begin(), cell.directions.end(),
                           [&](const P3& direction) { return norm(direction - pole) <= m_radius; });
    });
}

bool PoleZone::turnsIn(const WarpCell& cell) const {
    const auto& corners = cell.directions;
    return std::any_of(m_poles.begin(), m_poles.end(), [&corners](const P3& pole) {
        const bool isNear = std::any_of(corners.begin(), corners.end(),
                                        [&pole](const P3& direction) { return norm(direction - pole) < WIDEST; });
        for (std::size_t i = 0; isNear && i < corners.size(); ++i) {
            for (std::size_t other = 0; other < i; ++other) {
                if (areTurned(pole, corners[i], corners[other])) {
                    return true;
                }
            }
        }
        return false;
    });
}

}  // namespace Veltrani::DisplayExport
