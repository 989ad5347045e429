#include "DisplayReport/coverage/PixelPitch.h"

#include "DisplayReport/coverage/ChannelLight.h"
#include "DisplayReport/coverage/PeakSearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <unordered_map>
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
/// The same, across the edge alone. What bends more lies across a fold of the surface, where corners show too little,
/// between pixels on both sides that show more. A pixel of a tenth of a degree on a dome bends by a fiftieth of that.
constexpr double MOST_FOLD = 0.01;

/// Hints that are looked at for the least pixel and for the greatest: until so many have led to nothing more.
constexpr std::size_t MOST_HINTS = 24;
constexpr int MOST_IDLE_HINTS = 4;
/// In logarithms of the size of a pixel: a piece whose pixels are not extreme on average, but for so much, may hold one
/// that is.
constexpr double HINT_MARGIN = 1e-3;

/// Pixels to all sides of a piece that promises more than was found nearby: in the sharp end of a surface, whole pixels
/// are few.
constexpr int NEAR = 10;

/// The pixel at a place from 0 to 1 along a row or a column of so many.
int pixelAt(double place, int pixels) {
    return std::clamp(static_cast<int>(place * pixels), 0, pixels - 1);
}

using Footprint = std::array<ChannelLight::Landing, SIDE * SIDE>;

/// Pixels spread over a row or a column between two normalised coordinates, the first and the last there among them.
std::vector<int> spread(int pixels, int most, double from, double to) {
    return from <= to ? PeakSearch::spread(pixelAt(from, pixels), pixelAt(to, pixels), most) : std::vector<int>();
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

/// What is wrong with pixels.
enum class Shape {
    PLAIN,   ///< nothing
    FOLDED,  ///< it bends
    TORN,    ///< it lies across a step of the surface, or misses in part
};

/// The shape of an edge, from its ends and its middle.
Shape shapeOf(const Footprint& footprint, std::size_t from, std::size_t middle, std::size_t to) {
    const Point<double, 3> edge = footprint[to].on.place - footprint[from].on.place;
    const Point<double, 3> half = footprint[middle].on.place - footprint[from].on.place;
    const double length = norm(edge);
    if (!(norm(half - 0.5 * edge) <= MOST_BEND * length)) {
        return Shape::TORN;
    }
    return norm(cross(half, edge)) > MOST_FOLD * length * length ? Shape::FOLDED : Shape::PLAIN;
}

Shape shapeOf(const Footprint& footprint) {
    if (!std::all_of(footprint.begin(), footprint.end(), [](const auto& landing) { return landing.hits; })) {
        return Shape::TORN;
    }
    return std::max({shapeOf(footprint, 0, 1, 2), shapeOf(footprint, 6, 7, 8), shapeOf(footprint, 0, 3, 6),
                     shapeOf(footprint, 2, 5, 8)});
}

/// NaN for a pixel that is worse than that.
double sideOf(const Footprint& footprint, Shape worst) {
    if (shapeOf(footprint) > worst) {
        return NAN;
    }
    const Point<double, 3> rising = footprint[8].on.place - footprint[0].on.place;
    const Point<double, 3> falling = footprint[2].on.place - footprint[6].on.place;
    const double side = std::sqrt(norm(cross(rising, falling)) / 2);
    return std::isfinite(side) ? side : NAN;
}

/// The pixels of a picture, each measured once.
class Pixels {
public:
    Pixels(const ChannelLight& light, int width, int height, Shape worst)
        : m_light(light), m_width(width), m_height(height), m_worst(worst) {}

    double side(int column, int row) {
        const auto number = static_cast<std::int64_t>(row) * m_width + column;
        const auto [known, isNew] = m_sides.try_emplace(number, NAN);
        if (isNew) {
            known->second = sideOf(footprintOf(m_light, column, row, m_width, m_height), m_worst);
        }
        return known->second;
    }

    /// The part of the picture as pixels, with all those that it touches.
    [[nodiscard]] PixelWindow windowOf(const PictureBox& part) const {
        return {pixelAt(part.minimum[0], m_width), pixelAt(part.maximum[0], m_width),
                pixelAt(part.minimum[1], m_height), pixelAt(part.maximum[1], m_height)};
    }

    /// Every pixel that is not far from the middle of a part.
    [[nodiscard]] PixelWindow aroundMiddleOf(const PictureBox& part) const {
        const Point<double, 2> middle = (part.minimum + part.maximum) * 0.5;
        const int column = pixelAt(middle[0], m_width);
        const int row = pixelAt(middle[1], m_height);
        return {column - NEAR, column + NEAR, row - NEAR, row + NEAR};
    }

    /// The side of a pixel, from the ratio of the whole picture and the part of it that a pixel is.
    [[nodiscard]] double sideOfRatio(double ratio) const {
        return std::sqrt(ratio / (static_cast<double>(m_width) * m_height));
    }

    [[nodiscard]] std::size_t measured() const {
        return static_cast<std::size_t>(
            std::count_if(m_sides.begin(), m_sides.end(), [](const auto& pixel) { return !std::isnan(pixel.second); }));
    }

private:
    const ChannelLight& m_light;
    int m_width;
    int m_height;
    Shape m_worst;
    std::unordered_map<std::int64_t, double> m_sides;
};

/// The greatest pixel, or, with the sign -1, the least one. In logarithms: what is to be right is a part of a pixel.
double extreme(Pixels& pixels, int sign, const std::vector<int>& columns, const std::vector<int>& rows,
               const std::vector<PitchHints::Hint>& hints) {
    PeakSearch search([&](int column, int row) { return sign * std::log(pixels.side(column, row)); }, columns, rows);
    double found = search.greatest();
    int idle = 0;
    for (const PitchHints::Hint& hint : hints) {
        const double promise = sign * std::log(pixels.sideOfRatio(hint.ratio));
        if (idle == MOST_IDLE_HINTS || promise < found - HINT_MARGIN) {
            break;
        }
        const double before = found;
        search.offer(pixels.windowOf(hint.piece));
        found = search.greatest();
        if (promise > found + PeakSearch::TOLERANCE) {
            search.scan(pixels.aroundMiddleOf(hint.piece));
            found = search.greatest();
        }
        idle += found > before + PeakSearch::TOLERANCE ? 0 : 1;
    }
    return std::exp(sign * found);
}

}  // namespace

PixelPitch measuredPitch(const ChannelLight& light, int width, int height, const PictureBox& part,
                         const PitchHints& hints) {
    if (width <= 0 || height <= 0) {
        return {};
    }
    const std::vector<int> columns = spread(width, MOST_COLUMNS, part.minimum[0], part.maximum[0]);
    const std::vector<int> rows = spread(height, MOST_ROWS, part.minimum[1], part.maximum[1]);
    for (const Shape worst : {Shape::PLAIN, Shape::FOLDED}) {
        Pixels pixels(light, width, height, worst);
        const double least = extreme(pixels, -1, columns, rows, hints.least(MOST_HINTS));
        const double most = extreme(pixels, 1, columns, rows, hints.greatest(MOST_HINTS));
        if (const std::size_t measured = pixels.measured(); measured > 0) {
            return {least, most, measured};
        }
    }
    return {};
}

}  // namespace Veltrani::DisplayReport
