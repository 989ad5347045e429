#include "DisplayBlend/detail/BlendRaster.h"

#include "DisplayBlend/detail/NearestFill.h"
#include "DisplayBlend/detail/ValuePatch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace Veltrani::DisplayBlendDetail {

namespace {

constexpr int STEP = 8;  // pixels
/// Light: how far a pixel may be off because ways of light are taken for linear around it.
constexpr double MOST_WAY_OFF = 1e-4;
/// Light: how far a value between those that were worked out may be off; less than half a step of 16 bits.
constexpr double MOST_VALUE_OFF = 5e-6;
/// A part of the square's extent in the other picture: what bends out of the box around its corners.
constexpr double BULGE = 0.1;

/// Interpolates corners (0, 0), (1, 0), (0, 1), (1, 1).
template <class Value>
Value bilinear(const std::array<Value, 4>& corners, double u, double v) {
    const Value below = corners[0] + (corners[1] - corners[0]) * u;
    const Value above = corners[2] + (corners[3] - corners[2]) * u;
    return below + (above - below) * v;
}

/// The first pixel, of a row or a column, whose middle lies at a place or beyond it.
std::size_t firstAfter(double place) {
    return static_cast<std::size_t>(std::ceil(place - 0.5));
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
    m_unclear.clear();
    for (std::size_t i = 0; i + 2 < m_across.size(); i += 2) {
        RasterSquare square;
        for (std::size_t k = 0; k < SIDE; ++k) {
            square.x[k] = m_across[i + k];
            square.y[k] = m_rows[k].y;
            for (std::size_t column = 0; column < SIDE; ++column) {
                square.corners[k * SIDE + column] = {&m_rows[k].samples, i + column};
            }
        }
        if (!doSquare(square, alone)) {
            m_unclear.push_back(square);
        }
    }
    refine(alone);
    doPutOff();
}

void BlendRaster::refine(float alone) {
    // Corners of the four squares that a square is cut into.
    constexpr std::size_t FINE = 2 * SIDE - 1;
    const auto fine = [](const std::array<double, SIDE>& coarse, std::size_t i) {
        return i % 2 == 0 ? coarse[i / 2] : (coarse[i / 2] + coarse[i / 2 + 1]) / 2;
    };
    std::vector<P2> picture;
    for (const RasterSquare& square : m_unclear) {
        for (std::size_t i = 0; i < FINE * FINE; ++i) {
            picture.emplace_back(fine(square.x, i % FINE) / m_pixels[0], fine(square.y, i / FINE) / m_pixels[1]);
        }
    }
    m_fields.sampler().sample(m_channel, picture, m_fine);
    for (std::size_t k = 0; k < m_unclear.size(); ++k) {
        for (const std::size_t first : {std::size_t{0}, SIDE - 1, FINE * (SIDE - 1), (FINE + 1) * (SIDE - 1)}) {
            RasterSquare small;
            for (std::size_t i = 0; i < SIDE; ++i) {
                small.x[i] = fine(m_unclear[k].x, first % FINE + i);
                small.y[i] = fine(m_unclear[k].y, first / FINE + i);
            }
            for (std::size_t i = 0; i < SIDE * SIDE; ++i) {
                small.corners[i] = {&m_fine, k * FINE * FINE + first + i / SIDE * FINE + i % SIDE};
            }
            if (!doSquare(small, alone)) {
                putOff(small);
            }
        }
    }
}

template <class Take>
void BlendRaster::forPixels(const RasterSquare& square, const Take& take) const {
    for (std::size_t row = firstAfter(square.y[0]); row < firstAfter(square.y[2]); ++row) {
        for (std::size_t column = firstAfter(square.x[0]); column < firstAfter(square.x[2]); ++column) {
            take(row * m_picture.width + column);
        }
    }
}

bool BlendRaster::doSquare(const RasterSquare& square, float alone) {
    const auto lands = static_cast<std::size_t>(std::count_if(
        square.corners.begin(), square.corners.end(), [](const RasterCorner& corner) { return corner.lands(); }));
    if (lands == 0) {
        forPixels(square, [this](std::size_t pixel) { m_misses[pixel] = true; });
        return true;
    }
    if (lands < square.corners.size()) {
        return false;
    }
    m_lighting.clear();
    for (std::size_t other = 0; other < m_fields.size(); ++other) {
        const Standing standing = other == m_channel ? Standing::AWAY : standingOf(other, square);
        if (standing == Standing::UNCLEAR) {
            return false;
        }
        if (standing == Standing::LIGHTS) {
            m_lighting.push_back(other);
        }
    }
    if (square.weightOff(m_fields, m_channel, m_lighting) > MOST_WAY_OFF) {
        return false;
    }
    if (m_lighting.empty()) {
        forPixels(square, [&](std::size_t pixel) { m_picture.light[pixel] = alone; });
    } else {
        interpolate(square);
    }
    return true;
}

BlendRaster::Standing BlendRaster::standingOf(std::size_t other, const RasterSquare& square) const {
    P2 least{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    P2 most = least * -1.0;
    std::size_t pictures = 0;
    std::size_t near = 0;
    std::size_t seen = 0;
    for (const RasterCorner& corner : square.corners) {
        const ChannelLight::Reach& reach = corner.reach(other);
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
            seen += corner.samples->inSight(other, corner.number) ? 1 : 0;
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
    const bool isClear = pictures == SIDE * SIDE && seen == near && near > 0;
    return isClear ? Standing::LIGHTS : Standing::UNCLEAR;
}

void BlendRaster::interpolate(const RasterSquare& square) {
    for (std::size_t quarter = 0; quarter < m_quarters.size(); ++quarter) {
        Quarter& own = m_quarters[quarter];
        const std::size_t right = quarter % 2;
        const std::size_t upper = quarter / 2;
        own.x = {square.x[right], square.x[right + 1]};
        own.y = {square.y[upper], square.y[upper + 1]};
        own.candidates.clear();
        const std::size_t first = upper * SIDE + right;
        const std::array<std::size_t, 4> corners{first, first + 1, first + SIDE, first + SIDE + 1};
        for (std::size_t i = 0; i < corners.size(); ++i) {
            own.places[i] = square.corners[corners[i]].place();
        }
        own.isWhole = true;
        for (const std::size_t other : m_lighting) {
            CandidateOfQuarter candidate{other, {}};
            std::size_t inside = 0;
            for (std::size_t i = 0; i < corners.size(); ++i) {
                candidate.pictures[i] = square.corners[corners[i]].reach(other).picture;
                inside += isInPicture(candidate.pictures[i]) ? 1 : 0;
            }
            own.isWhole = own.isWhole && inside == corners.size();
            own.candidates.push_back(candidate);
        }
    }
    if (isSmooth({0, 1, 2, 3}) && fillSmoothly(square.x[0], square.x[2], square.y[0], square.y[2])) {
        return;
    }
    for (std::size_t quarter = 0; quarter < m_quarters.size(); ++quarter) {
        const Quarter& own = m_quarters[quarter];
        if (!isSmooth({quarter}) || !fillSmoothly(own.x[0], own.x[1], own.y[0], own.y[1])) {
            fillEach(own);
        }
    }
}

bool BlendRaster::isSmooth(std::initializer_list<std::size_t> quarters) const {
    return std::all_of(quarters.begin(), quarters.end(),
                       [this](std::size_t quarter) { return m_quarters[quarter].isWhole; });
}

bool BlendRaster::fillSmoothly(double x0, double x1, double y0, double y1) {
    // On the border of two quarters, the one that the part lies in; of the whole square, either.
    const auto valueAt = [&](double u, double v) {
        const double x = x0 + (x1 - x0) * u;
        const double y = y0 + (y1 - y0) * v;
        const std::size_t right = (x0 + x1 + x) / 3 > m_quarters[0].x[1] ? 1 : 0;
        const std::size_t upper = (y0 + y1 + y) / 3 > m_quarters[0].y[1] ? 2 : 0;
        return static_cast<double>(valueIn(m_quarters[right + upper], x, y));
    };
    constexpr double HALF = 0.5;
    std::array<double, SIDE * SIDE> values{};
    for (std::size_t i = 0, row = 0; i < values.size(); row = ++i / SIDE) {
        values[i] = valueAt(HALF * static_cast<double>(i % SIDE), HALF * static_cast<double>(row));
    }
    const ValuePatch patch(values);
    // Where a quadratic is furthest from what bends further.
    for (const double u : {0.25, 0.75}) {
        for (const double v : {0.25, 0.75}) {
            if (!(std::abs(patch.at(u, v) - valueAt(u, v)) <= MOST_VALUE_OFF)) {
                return false;
            }
        }
    }
    for (std::size_t row = firstAfter(y0); row < firstAfter(y1); ++row) {
        const double v = (static_cast<double>(row) + HALF - y0) / (y1 - y0);
        for (std::size_t column = firstAfter(x0); column < firstAfter(x1); ++column) {
            const double u = (static_cast<double>(column) + HALF - x0) / (x1 - x0);
            m_picture.light[row * m_picture.width + column] = static_cast<float>(std::clamp(patch.at(u, v), 0.0, 1.0));
        }
    }
    return true;
}

void BlendRaster::fillEach(const Quarter& quarter) {
    for (std::size_t row = firstAfter(quarter.y[0]); row < firstAfter(quarter.y[1]); ++row) {
        for (std::size_t column = firstAfter(quarter.x[0]); column < firstAfter(quarter.x[1]); ++column) {
            m_picture.light[row * m_picture.width + column] =
                valueIn(quarter, static_cast<double>(column) + 0.5, static_cast<double>(row) + 0.5);
        }
    }
}

float BlendRaster::valueIn(const Quarter& quarter, double x, double y) {
    const double u = (x - quarter.x[0]) / (quarter.x[1] - quarter.x[0]);
    const double v = (y - quarter.y[0]) / (quarter.y[1] - quarter.y[0]);
    m_candidates.clear();
    for (const CandidateOfQuarter& candidate : quarter.candidates) {
        m_candidates.push_back({candidate.channel, bilinear(candidate.pictures, u, v)});
    }
    return valueOf({x / m_pixels[0], y / m_pixels[1]}, bilinear(quarter.places, u, v));
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
        if (isInPicture(there)) {
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

void BlendRaster::putOff(const RasterSquare& square) {
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
