#pragma once

#include "DisplayBlend/detail/BlendPoints.h"
#include "DisplayBlend/detail/ChannelFields.h"

#include <array>
#include <cstddef>
#include <span>

namespace Veltrani::DisplayBlendDetail {

/// The edge included.
[[nodiscard]] inline bool isInPicture(const P2& picture) {
    return picture[0] >= 0.0 && picture[0] <= 1.0 && picture[1] >= 0.0 && picture[1] <= 1.0;
}

/// One of many samples.
struct RasterCorner {
    const PlaceSamples* samples = nullptr;
    std::size_t number = 0;

    [[nodiscard]] bool lands() const { return samples->lands(number); }
    [[nodiscard]] const ChannelLight::Reach& reach(std::size_t channel) const {
        return samples->reaches[channel][number];
    }
    [[nodiscard]] const P3& place() const { return samples->landings[number].on.place; }
};

/// A part of a channel's picture with three by three corners: four small squares.
struct RasterSquare {
    static constexpr std::size_t SIDE = 3;

    std::array<RasterCorner, SIDE * SIDE> corners;  ///< row by row from the bottom left one
    std::array<double, SIDE> x{}, y{};              ///< pixels

    /// How far the weight of the channel, 0 to 1, may be off anywhere in the square when all ways of light are taken
    /// for linear between the corners of each small square.
    /// @param channel whose picture it is
    /// @param lighting the other channels that light the square where their pictures reach; each has a picture point at
    /// every corner
    [[nodiscard]] double weightOff(const ChannelFields& fields, std::size_t channel,
                                   std::span<const std::size_t> lighting) const;
};

}  // namespace Veltrani::DisplayBlendDetail
