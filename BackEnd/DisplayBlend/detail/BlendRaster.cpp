#include "DisplayBlend/detail/BlendRaster.h"

#include "DisplayBlend/detail/NearestFill.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace Veltrani::DisplayBlendDetail {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;
using DisplayReport::ChannelLight;

constexpr int STEP = 8;  // pixels
/// Pixels of the other channel: how far the middle between two corners of a small square may be off. That of a large
/// one, between corners twice as far apart, is off four times as far.
constexpr double MOST_OFF = 0.01;
constexpr double LARGER = 4.0;
/// The same of the places themselves, which only the edges of shadows are measured from.
constexpr double MOST_PLACE_OFF = 0.01;
/// A part of the square's extent in the other picture: what bends out of the box around its corners.
constexpr double BULGE = 0.1;

/// Interpolates corners (0, 0), (1, 0), (0, 1), (1, 1).
template <class Value>
Value bilinear(const std::array<Value, 4>& corners, double u, double v) {
    const Value below = corners[0] + (corners[1] - corners[0]) * u;
    const Value above = corners[2] + (corners[3] - corners[2]) * u;
    return below + (above - below) * v;
}

/// How far, at most, the corners between those at the ends of their rows and columns are from the middles of these.
template <class At>
auto offMiddles(const At& at) {
    using Value = decltype(at(0, 0));
    std::array<Value, 5> off;
    off[0] = at(1, 0) - (at(0, 0) + at(2, 0)) * 0.5;
    off[1] = at(1, 2) - (at(0, 2) + at(2, 2)) * 0.5;
    off[2] = at(0, 1) - (at(0, 0) + at(0, 2)) * 0.5;
    off[3] = at(2, 1) - (at(2, 0) + at(2, 2)) * 0.5;
    off[4] = at(1, 1) - (at(0, 1) + at(2, 1)) * 0.5;
    return off;
}

}  // namespace

BlendRaster::BlendRaster(const ChannelFields& fields, std::size_t channel)
    : m_fields(fields), m_channel(channel), m_pixels(fields.pixels(channel)) {
    for (int x = 0; x < m_pixels[0]; x += STEP) {
        m_across.push_back(x);
    }
    m_across.push_back(m_pixels[0]);
    // Squares are two steps wide.
    if (m_across.size() % 2 == 0) {
        m_across.insert(m_across.end() - 1, (m_across.back() + m_across[m_across.size() - 2]) / 2);
    }
}

void BlendRaster::sampleRow(double y, Corners& row) const {
    std::vector<P2> picture;
    for (const double x : m_across) {
        picture.emplace_back(x / m_pixels[0], y / m_pixels[1]);
    }
    row.y = y;
    m_fields.sampler().sample(m_channel, picture, row.samples);
}

DisplayBlend::BlendPicture BlendRaster::picture(const Shade& shade, float alone,
                                                const DisplayReport::Progress& progress) {
    m_shade = shade;
    m_picture.width = static_cast<std::size_t>(m_pixels[0]);
    m_picture.height = static_cast<std::size_t>(m_pixels[1]);
    m_picture.light.assign(m_picture.width * m_picture.height, 0.0F);
    m_misses.assign(m_picture.light.size(), false);
    sampleRow(0, m_rows[0]);
    for (int y = 0; y < m_pixels[1]; y += 2 * STEP) {
        if (progress) {
            progress(static_cast<std::size_t>(y), m_picture.height);
        }
        const double end = std::min(y + 2 * STEP, m_pixels[1]);
        sampleRow((y + end) / 2, m_rows[1]);
        sampleRow(end, m_rows[2]);
        doBand(alone);
        std::swap(m_rows[0], m_rows[2]);
    }
    fillFromNearest(m_picture, m_misses);
    if (progress) {
        progress(m_picture.height, m_picture.height);
    }
    return std::move(m_picture);
}

void BlendRaster::doBand(float alone) {
    m_numbers.clear();
    for (std::size_t i = 0; i + 2 < m_across.size(); i += 2) {
        Square square{{i, i + 1, i + 2}, {}, {}};
        for (std::size_t k = 0; k < SIDE; ++k) {
            square.x[k] = m_across[i + k];
            square.y[k] = m_rows[k].y;
        }
        doSquare(square, alone);
    }
    doPutOff();
}

template <class Take>
void BlendRaster::forPixels(const Square& square, const Take& take) const {
    for (auto row = static_cast<std::size_t>(square.y[0]); row < static_cast<std::size_t>(square.y[2]); ++row) {
        for (auto column = static_cast<std::size_t>(square.x[0]); column < static_cast<std::size_t>(square.x[2]);
             ++column) {
            take(row * m_picture.width + column);
        }
    }
}

void BlendRaster::doSquare(const Square& square, float alone) {
    std::size_t lands = 0;
    for (const Corners& row : m_rows) {
        for (const std::size_t column : square.columns) {
            lands += row.samples.lands(column) ? 1 : 0;
        }
    }
    if (lands == 0) {
        forPixels(square, [this](std::size_t pixel) { m_misses[pixel] = true; });
        return;
    }
    if (lands < SIDE * SIDE) {
        putOff(square);
        return;
    }
    m_lighting.clear();
    for (std::size_t other = 0; other < m_fields.size(); ++other) {
        const Standing standing = other == m_channel ? Standing::AWAY : standingOf(other, square);
        if (standing == Standing::UNCLEAR) {
            putOff(square);
            return;
        }
        if (standing == Standing::LIGHTS) {
            m_lighting.push_back(other);
        }
    }
    if (m_lighting.empty()) {
        forPixels(square, [&](std::size_t pixel) { m_picture.light[pixel] = alone; });
    } else {
        interpolate(square);
    }
}

BlendRaster::Standing BlendRaster::standingOf(std::size_t other, const Square& square) const {
    P2 least{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    P2 most = least * -1.0;
    std::size_t pictures = 0;
    std::size_t near = 0;
    std::size_t seen = 0;
    for (const Corners& row : m_rows) {
        for (const std::size_t column : square.columns) {
            const ChannelLight::Reach& reach = row.samples.reaches[other][column];
            if (!reach.hasPicture) {
                continue;
            }
            ++pictures;
            for (std::size_t axis = 0; axis < 2; ++axis) {
                least[axis] = std::min(least[axis], reach.picture[axis]);
                most[axis] = std::max(most[axis], reach.picture[axis]);
            }
            if (ChannelLight::isNearPicture(reach.picture)) {
                ++near;
                seen += row.samples.inSight(other, column) ? 1 : 0;
            }
        }
    }
    if (pictures == 0) {
        return Standing::AWAY;
    }
    for (std::size_t axis = 0; axis < 2; ++axis) {
        const double bulge = BULGE * (most[axis] - least[axis]);
        if (least[axis] - bulge > 1.0 || most[axis] + bulge < 0.0) {
            return Standing::AWAY;
        }
    }
    if (near > 0 && seen == 0 && pictures == SIDE * SIDE) {
        return Standing::AWAY;
    }
    const bool isClear = pictures == SIDE * SIDE && seen == near && near > 0 && isLinear(other, square);
    return isClear ? Standing::LIGHTS : Standing::UNCLEAR;
}

bool BlendRaster::isLinear(std::size_t other, const Square& square) const {
    const auto off = offMiddles([&](std::size_t column, std::size_t row) {
        return m_rows[row].samples.reaches[other][square.columns[column]].picture;
    });
    const Point<int, 2>& pixels = m_fields.pixels(other);
    for (const P2& way : off) {
        if (!(std::hypot(way[0] * pixels[0], way[1] * pixels[1]) <= LARGER * MOST_OFF)) {
            return false;
        }
    }
    if (!m_fields.hasShadows(other) && !m_fields.hasShadows(m_channel)) {
        return true;
    }
    const auto placesOff = offMiddles([&](std::size_t column, std::size_t row) {
        return m_rows[row].samples.landings[square.columns[column]].on.place;
    });
    return std::all_of(placesOff.begin(), placesOff.end(), [&](const P3& way) {
        return norm(way) <= LARGER * MOST_PLACE_OFF * m_fields.pixelSize(m_channel);
    });
}

void BlendRaster::interpolate(const Square& square) {
    for (const std::size_t right : {0U, 1U}) {
        for (const std::size_t upper : {0U, 1U}) {
            interpolateQuarter(square, right, upper);
        }
    }
}

void BlendRaster::interpolateQuarter(const Square& square, std::size_t right, std::size_t upper) {
    const double x0 = square.x[right];
    const double x1 = square.x[right + 1];
    const double y0 = square.y[upper];
    const double y1 = square.y[upper + 1];
    // Middles of pixels belong to the square that they lie in; those on its border to the next one.
    const auto after = [](double corner) { return static_cast<std::size_t>(std::ceil(corner - 0.5)); };
    const std::array<std::size_t, 4> columns{square.columns[right], square.columns[right + 1], square.columns[right],
                                             square.columns[right + 1]};
    const std::array<const PlaceSamples*, 4> rows{&m_rows[upper].samples, &m_rows[upper].samples,
                                                  &m_rows[upper + 1].samples, &m_rows[upper + 1].samples};
    std::array<P3, 4> places;
    for (std::size_t corner = 0; corner < 4; ++corner) {
        places[corner] = rows[corner]->landings[columns[corner]].on.place;
    }
    std::vector<std::array<P2, 4>>& pictures = m_cornerPictures;
    pictures.resize(m_lighting.size());
    for (std::size_t k = 0; k < m_lighting.size(); ++k) {
        for (std::size_t corner = 0; corner < 4; ++corner) {
            pictures[k][corner] = rows[corner]->reaches[m_lighting[k]][columns[corner]].picture;
        }
    }
    for (std::size_t row = after(y0); row < after(y1); ++row) {
        const double v = (static_cast<double>(row) + 0.5 - y0) / (y1 - y0);
        for (std::size_t column = after(x0); column < after(x1); ++column) {
            const double u = (static_cast<double>(column) + 0.5 - x0) / (x1 - x0);
            m_candidates.clear();
            for (std::size_t k = 0; k < m_lighting.size(); ++k) {
                m_candidates.push_back({m_lighting[k], bilinear(pictures[k], u, v)});
            }
            m_picture.light[row * m_picture.width + column] =
                valueOf(middleOf(row * m_picture.width + column), bilinear(places, u, v));
        }
    }
}

P2 BlendRaster::middleOf(std::size_t pixel) const {
    const std::size_t column = pixel % m_picture.width;
    const std::size_t row = pixel / m_picture.width;
    return {(static_cast<double>(column) + 0.5) / m_pixels[0], (static_cast<double>(row) + 0.5) / m_pixels[1]};
}

float BlendRaster::valueOf(const P2& picture, const P3& place) {
    m_parts.clear();
    m_parts.push_back({m_channel, m_fields.shareOf(m_channel, m_fields.potential(m_channel, picture, place))});
    double sum = m_parts.front().weight;
    for (const Candidate& candidate : m_candidates) {
        const P2& there = candidate.picture;
        if (there[0] >= 0.0 && there[0] <= 1.0 && there[1] >= 0.0 && there[1] <= 1.0) {
            const double share =
                m_fields.shareOf(candidate.channel, m_fields.potential(candidate.channel, there, place));
            m_parts.push_back({candidate.channel, share});
            sum += share;
        }
    }
    for (PixelLight::Part& part : m_parts) {
        // Where outlines cross, none has a share.
        part.weight = sum > 0.0 ? part.weight / sum : 1.0 / static_cast<double>(m_parts.size());
    }
    return m_shade({m_parts});
}

void BlendRaster::putOff(const Square& square) {
    forPixels(square, [this](std::size_t pixel) { m_numbers.push_back(pixel); });
}

void BlendRaster::doPutOff() {
    std::vector<P2> picture;
    for (const std::size_t pixel : m_numbers) {
        picture.push_back(middleOf(pixel));
    }
    PlaceSamples samples;
    m_fields.sampler().sample(m_channel, picture, samples);
    for (std::size_t i = 0; i < picture.size(); ++i) {
        if (!samples.lands(i)) {
            m_misses[m_numbers[i]] = true;
            continue;
        }
        m_candidates.clear();
        for (std::size_t other = 0; other < m_fields.size(); ++other) {
            if (other != m_channel && samples.isLit(other, i)) {
                m_candidates.push_back({other, samples.reaches[other][i].picture});
            }
        }
        m_picture.light[m_numbers[i]] = valueOf(picture[i], samples.landings[i].on.place);
    }
}

}  // namespace Veltrani::DisplayBlendDetail
