#pragma once

#include "DisplayReport/coverage/ChannelLight.h"

#include <cstddef>
#include <span>
#include <vector>

namespace Veltrani::DisplayBlendDetail {

/// Where points of one channel's picture land, and how all other channels stand to these places.
struct PlaceSamples {
    std::vector<DisplayReport::ChannelLight::Landing> landings;
    /// By channel, as many as `landings`; empty for the channel itself. As on a miss where nothing lands.
    std::vector<std::vector<DisplayReport::ChannelLight::Reach>> reaches;

    [[nodiscard]] bool lands(std::size_t i) const { return landings[i].hits; }
    /// Whether nothing stands between a channel and landing i, on the side of the screen that is lit there.
    [[nodiscard]] bool inSight(std::size_t channel, std::size_t i) const;
    /// Whether the channel lights landing i, the edge of its picture included.
    [[nodiscard]] bool isLit(std::size_t channel, std::size_t i) const;
    /// The same further inside than rounding reaches.
    [[nodiscard]] bool isInside(std::size_t channel, std::size_t i) const;
};

class PlaceSampler {
public:
    /// @param lights must outlive the sampler
    explicit PlaceSampler(const DisplayReport::ChannelLights& lights) : m_lights(lights) {}

    [[nodiscard]] std::vector<DisplayReport::ChannelLight::Landing> land(
        std::size_t channel, std::span<const Point<double, 2>> picture) const;
    /// @param channel whose picture it is
    void sample(std::size_t channel, std::span<const Point<double, 2>> picture, PlaceSamples& samples) const;

private:
    const DisplayReport::ChannelLights& m_lights;
};

}  // namespace Veltrani::DisplayBlendDetail
