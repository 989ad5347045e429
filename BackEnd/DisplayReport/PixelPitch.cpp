#include "DisplayReport/PixelPitch.h"

#include "DisplayReport/ChannelLight.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

constexpr int MOST_COLUMNS = 33;
constexpr int MOST_ROWS = 21;
/// Points per side of a pixel: corners and middles.
constexpr std::size_t SIDE = 3;
/// The middle of an edge stands this close to the middle of its ends, in lengths of the edge. Half a length is where a
/// step of the surface tears an edge apart.
constexpr double MOST_BEND = 0.25;

using Footprint = std::array<ChannelLight::Landing, SIDE * SIDE>;

/// Pixels spread over a row or a column between two normalised coordinates, the first and the last there among them.
std::vector<int> spread(int pixels, int most, double from, double to) {
    std::vector<int> chosen;
    if (pixels <= 0 || from > to) {
        return chosen;
    }
    const auto pixelAt = [pixels](double place) { return std::clamp(static_cast<int>(place * pixels), 0, pixels - 1); };
    const int first = pixelAt(from);
    const int last = pixelAt(to);
    const int count = std::min(last - first + 1, most);
    for (int i = 0; i < count; ++i) {
        const int step = count == 1 ? 0 : static_cast<int>(static_cast<std::int64_t>(last - first) * i / (count - 1));
        chosen.push_back(first + step);
    }
    return chosen;
}

Footprint footprintOf(const ChannelLight& light, int column, int row, int width, int height) {
    std::array<Point<double, 2>, SIDE * SIDE> picture;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const std::size_t across = i % SIDE;
        const std::size_t upwards = i / SIDE;
        picture[i] = {(column + static_cast<double>(across) / (SIDE - 1)) / width,
                      (row + static_cast<double>(upwards) / (SIDE - 1)) / height};
    }
    Footprint footprint;
    light.land(picture, footprint);
    return footprint;
}

/// True when the second of three points is about in the middle of the others.
bool isStraight(const Footprint& footprint, std::size_t from, std::size_t middle, std::size_t to) {
    const Point<double, 3> edge = footprint[to].on.place - footprint[from].on.place;
    const Point<double, 3> half = footprint[middle].on.place - footprint[from].on.place;
    return norm(half - 0.5 * edge) <= MOST_BEND * norm(edge);
}

/// None for a pixel that does not lie on the surface as a whole.
std::optional<double> sideOf(const Footprint& footprint) {
    const bool isWhole =
        std::all_of(footprint.begin(), footprint.end(), [](const auto& landing) { return landing.hits; });
    if (!isWhole || !isStraight(footprint, 0, 1, 2) || !isStraight(footprint, 6, 7, 8) ||
        !isStraight(footprint, 0, 3, 6) || !isStraight(footprint, 2, 5, 8)) {
        return std::nullopt;
    }
    const Point<double, 3> rising = footprint[8].on.place - footprint[0].on.place;
    const Point<double, 3> falling = footprint[2].on.place - footprint[6].on.place;
    const double side = std::sqrt(norm(cross(rising, falling)) / 2);
    return std::isfinite(side) ? std::optional(side) : std::nullopt;
}

}  // namespace

PixelPitch PixelPitch::of(const ChannelLight& light, int width, int height, const PictureBox& part) {
    PixelPitch pitch;
    for (const int row : spread(height, MOST_ROWS, part.minimum[1], part.maximum[1])) {
        for (const int column : spread(width, MOST_COLUMNS, part.minimum[0], part.maximum[0])) {
            const std::optional<double> side = sideOf(footprintOf(light, column, row, width, height));
            if (side) {
                pitch.least = pitch.measured == 0 ? *side : std::min(pitch.least, *side);
                pitch.most = std::max(pitch.most, *side);
                ++pitch.measured;
            }
        }
    }
    return pitch;
}

}  // namespace Veltrani::DisplayReport
