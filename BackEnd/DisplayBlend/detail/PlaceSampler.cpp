#include "DisplayBlend/detail/PlaceSampler.h"

#include "DisplayBlend/detail/BlendPoints.h"

#include <algorithm>

namespace Veltrani::DisplayBlendDetail {

namespace {

using DisplayReport::SurfacePoint;

/// A part of the picture: edges that differ by less are the same.
constexpr double SAME_EDGE = 1e-6;

double insideBy(const Point<double, 2>& picture) {
    return std::min({picture[0], 1 - picture[0], picture[1], 1 - picture[1]});
}

}  // namespace

bool PlaceSamples::inSight(std::size_t channel, std::size_t i) const {
    const ChannelLight::Reach& reach = reaches[channel][i];
    const int side = landings[i].side;
    return reach.inSight && (reach.side == side || reach.side == 0 || side == 0);
}

bool PlaceSamples::isLit(std::size_t channel, std::size_t i) const {
    return inSight(channel, i) && insideBy(reaches[channel][i].picture) >= 0.0;
}

bool PlaceSamples::isInside(std::size_t channel, std::size_t i) const {
    return inSight(channel, i) && insideBy(reaches[channel][i].picture) > SAME_EDGE;
}

std::vector<ChannelLight::Landing> PlaceSampler::land(std::size_t channel,
                                                      std::span<const Point<double, 2>> picture) const {
    std::vector<ChannelLight::Landing> landings(picture.size());
    m_lights[channel]->land(picture, landings);
    return landings;
}

void PlaceSampler::sample(std::size_t channel, std::span<const Point<double, 2>> picture, PlaceSamples& samples) const {
    samples.landings = land(channel, picture);
    std::vector<SurfacePoint> points;
    std::vector<std::size_t> numbers;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        if (samples.lands(i)) {
            points.push_back(samples.landings[i].on);
            numbers.push_back(i);
        }
    }
    std::vector<ChannelLight::Reach> reached(points.size());
    samples.reaches.resize(m_lights.size());
    for (std::size_t other = 0; other < m_lights.size(); ++other) {
        std::vector<ChannelLight::Reach>& all = samples.reaches[other];
        all.clear();
        if (other == channel) {
            continue;
        }
        m_lights[other]->reach(points, reached);
        all.resize(picture.size());
        for (std::size_t k = 0; k < numbers.size(); ++k) {
            all[numbers[k]] = reached[k];
        }
    }
}

}  // namespace Veltrani::DisplayBlendDetail
