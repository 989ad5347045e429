#pragma once

#include "Common/Point.h"
#include "DisplayBlend/BlendCurve.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Veltrani::DisplayBlend {

/// What a player does with the code values of a picture.
enum class BlendUse {
    MULTIPLY,  ///< content times blend: white is full
    ALPHA,     ///< black of this opacity over the content, 1 - the above: straight alpha, 0 is full
};

/// A grey picture of light, 0 (none) to 1 (all that the projector has).
struct BlendPicture {
    std::size_t width = 0;   ///< pixels
    std::size_t height = 0;  ///< pixels
    /// Of the middle of each pixel, row by row from the bottom left one: width x height.
    std::vector<float> light;

    [[nodiscard]] float at(std::size_t column, std::size_t row) const { return light[row * width + column]; }
    /// Between the middles of the four nearest pixels, linearly both ways; beyond the outermost middles as there.
    /// @param picture (0, 0) the bottom left corner and (1, 1) the top right one
    [[nodiscard]] double between(const Point<double, 2>& picture) const;

    /// Code values, 0 to 65535 and 0 to 255, row by row from the top left pixel, as image files have them.
    [[nodiscard]] std::vector<std::uint16_t> codes16(const BlendCurve& curve, BlendUse use = BlendUse::MULTIPLY) const;
    [[nodiscard]] std::vector<std::uint8_t> codes8(const BlendCurve& curve, BlendUse use = BlendUse::MULTIPLY) const;
};

}  // namespace Veltrani::DisplayBlend
