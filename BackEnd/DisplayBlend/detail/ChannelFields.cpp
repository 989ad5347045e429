#include "DisplayBlend/detail/ChannelFields.h"

#include "DisplayBlend/detail/BlendPoints.h"
#include "DisplayBlend/detail/InnerEdges.h"
#include "DisplayBlend/detail/ShadowEdges.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Veltrani::DisplayBlendDetail {

namespace {

/// For a channel whose resolution is not known.
const Point<int, 2> USUAL_PIXELS{1920, 1200};
/// Cells of a lattice over a picture.
constexpr std::size_t COLUMNS = 64;
constexpr std::size_t ROWS = 40;
/// Diagonals of a picture: what is further away from its edge weighs no more.
constexpr double FARTHEST = 4.0;
/// A picture that lies inside larger ones has nine tenths of the light somewhere, at least.
constexpr double LEAST_RATIO = 9.0;
/// One by the weight from which on a channel counts wholly: an eighth of the way across an overlap of two.
constexpr double WHOLLY_PRESENT = 64.0;

/// In the middle of its cells.
std::vector<P2> lattice() {
    std::vector<P2> picture;
    for (std::size_t row = 0; row < ROWS; ++row) {
        for (std::size_t column = 0; column < COLUMNS; ++column) {
            picture.emplace_back((static_cast<double>(column) + 0.5) / COLUMNS,
                                 (static_cast<double>(row) + 0.5) / ROWS);
        }
    }
    return picture;
}

double middleOf(std::vector<double> values) {
    if (values.empty()) {
        return 0;
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Width and height of a picture on the screen as the usual distance of neighbours in the lattice states them.
P2 sizeOf(const PlaceSamples& samples) {
    std::vector<double> across;
    std::vector<double> upwards;
    for (std::size_t i = 0; i < samples.landings.size(); ++i) {
        if (!samples.lands(i)) {
            continue;
        }
        const P3& here = samples.landings[i].on.place;
        if (i % COLUMNS + 1 < COLUMNS && samples.lands(i + 1)) {
            across.push_back(norm(samples.landings[i + 1].on.place - here));
        }
        if (i / COLUMNS + 1 < ROWS && samples.lands(i + COLUMNS)) {
            upwards.push_back(norm(samples.landings[i + COLUMNS].on.place - here));
        }
    }
    const P2 size{COLUMNS * middleOf(across), ROWS * middleOf(upwards)};
    return size[0] > 0.0 && size[1] > 0.0 ? size : P2{1.0, 1.0};
}

}  // namespace

ChannelFields::ChannelFields(const DisplayReport::ChannelLights& lights, std::vector<Point<int, 2>> pixels)
    : m_sampler(lights), m_channels(lights.size()) {
    for (std::size_t i = 0; i < lights.size(); ++i) {
        addChannel(i, pixels[i][0] > 0 && pixels[i][1] > 0 ? pixels[i] : USUAL_PIXELS);
    }
    std::vector<double> gains;
    for (std::size_t i = 0; i < lights.size(); ++i) {
        gains.push_back(gainOf(i));
    }
    for (std::size_t i = 0; i < lights.size(); ++i) {
        m_channels[i].gain = gains[i];
    }
}

void ChannelFields::addChannel(std::size_t channel, Point<int, 2> pixels) {
    PlaceSamples samples;
    m_sampler.sample(channel, lattice(), samples);
    Channel& own = m_channels[channel];
    const P2 size = sizeOf(samples);
    own.pixels = pixels;
    own.edge = EdgeField(size);
    own.pixelSize = std::sqrt(size[0] / pixels[0] * size[1] / pixels[1]);
    own.floor = 1 / (FARTHEST * FARTHEST * dot(size, size));
    own.crossings = addInnerSides(m_sampler, channel, pixels, own.edge);
    addShadows(m_sampler, channel, pixels, own.edge);
}

double ChannelFields::gainOf(std::size_t channel) const {
    const std::vector<P2> picture = lattice();
    PlaceSamples samples;
    m_sampler.sample(channel, picture, samples);
    double most = 0;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        if (!samples.lands(i)) {
            continue;
        }
        const P3& place = samples.landings[i].on.place;
        double others = 0;
        for (std::size_t other = 0; other < size(); ++other) {
            if (other != channel && samples.isLit(other, i)) {
                others += shareOf(other, potential(other, samples.reaches[other][i].picture, place));
            }
        }
        const double own = shareOf(channel, potential(channel, picture[i], place));
        if (!(own < LEAST_RATIO * others)) {
            return 1;
        }
        most = std::max(most, own / others);
    }
    return most > 0.0 ? LEAST_RATIO / most : 1.0;
}

double ChannelFields::presenceOf(double weight) {
    const double part = std::min(WHOLLY_PRESENT * weight, 1.0);
    return part * (2 - part);
}

double ChannelFields::mostResidual(const std::vector<double>& residual) const {
    const std::vector<P2> picture = lattice();
    double most = 0;
    for (std::size_t channel = 0; channel < size(); ++channel) {
        PlaceSamples samples;
        m_sampler.sample(channel, picture, samples);
        for (std::size_t i = 0; i < picture.size(); ++i) {
            if (samples.lands(i)) {
                most = std::max(most, residualAt(channel, picture[i], samples, i, residual));
            }
        }
    }
    return most;
}

double ChannelFields::residualAt(std::size_t channel, const P2& picture, const PlaceSamples& samples, std::size_t i,
                                 const std::vector<double>& residual) const {
    const P3& place = samples.landings[i].on.place;
    std::vector<double> shares(size());
    double sum = 0;
    for (std::size_t other = 0; other < size(); ++other) {
        if (other == channel || samples.isLit(other, i)) {
            const P2& there = other == channel ? picture : samples.reaches[other][i].picture;
            shares[other] = shareOf(other, potential(other, there, place));
            sum += shares[other];
        }
    }
    double light = 0;
    for (std::size_t other = 0; other < size() && sum > 0.0; ++other) {
        light += residual[other] * presenceOf(shares[other] / sum);
    }
    return light;
}

}  // namespace Veltrani::DisplayBlendDetail
