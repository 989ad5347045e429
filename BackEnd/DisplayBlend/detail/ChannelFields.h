#pragma once

#include "DisplayBlend/detail/BlendPoints.h"
#include "DisplayBlend/detail/EdgeField.h"
#include "DisplayBlend/detail/PlaceSampler.h"

#include <cstddef>
#include <vector>

namespace Veltrani::DisplayBlendDetail {

/// What the light of every channel of a display weighs at a place, before weights are brought to a sum of one.
class ChannelFields {
public:
    /// @param pixels width and height of each picture; 0 where it is not known
    ChannelFields(const DisplayReport::ChannelLights& lights, std::vector<Point<int, 2>> pixels);

    [[nodiscard]] std::size_t size() const { return m_channels.size(); }
    [[nodiscard]] const PlaceSampler& sampler() const { return m_sampler; }
    [[nodiscard]] const Point<int, 2>& pixels(std::size_t channel) const { return m_channels[channel].pixels; }
    [[nodiscard]] bool hasShadows(std::size_t channel) const { return m_channels[channel].edge.hasShadows(); }
    /// Mean width and height of a picture on the screen, native units.
    [[nodiscard]] const Point<double, 2>& pictureSize(std::size_t channel) const {
        return m_channels[channel].edge.size();
    }
    /// Where outlines cross, in the channel's picture. Next to such a place the channel is alone on one side of its
    /// edge's continuation and has no light on the other.
    [[nodiscard]] const std::vector<P2>& crossings(std::size_t channel) const { return m_channels[channel].crossings; }
    /// Mean side of a pixel on the screen, native units.
    [[nodiscard]] double pixelSize(std::size_t channel) const { return m_channels[channel].pixelSize; }

    /// See `EdgeField`.
    [[nodiscard]] double potential(std::size_t channel, const Point<double, 2>& picture,
                                   const Point<double, 3>& place) const {
        return m_channels[channel].edge.potential(picture, place);
    }
    /// The weight that belongs to a potential; 0 or more, bounded.
    [[nodiscard]] double shareOf(std::size_t channel, double potential) const {
        const Channel& own = m_channels[channel];
        return own.gain / (potential + own.floor);
    }

    /// How far a channel of this weight, 0 to 1, counts as one that lights the place: wholly from a 64th on; without a
    /// slope at either end.
    [[nodiscard]] static double presenceOf(double weight);
    /// The most residual light that comes to any place of a lattice over all pictures.
    /// @param residual by channel
    [[nodiscard]] double mostResidual(const std::vector<double>& residual) const;

private:
    struct Channel {
        Point<int, 2> pixels;
        EdgeField edge;
        std::vector<P2> crossings;
        double pixelSize = 0;
        /// What keeps the weight of a picture whose edge lies nowhere inside another one finite.
        double floor = 0;
        /// More than 1 for a picture that lies inside larger ones, which would weigh far more everywhere.
        double gain = 1;
    };

    void addChannel(std::size_t channel, Point<int, 2> pixels);
    [[nodiscard]] double gainOf(std::size_t channel) const;
    /// At landing i of a channel's picture.
    [[nodiscard]] double residualAt(std::size_t channel, const Point<double, 2>& picture, const PlaceSamples& samples,
                                    std::size_t i, const std::vector<double>& residual) const;

    PlaceSampler m_sampler;
    std::vector<Channel> m_channels;
};

}  // namespace Veltrani::DisplayBlendDetail
