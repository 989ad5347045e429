#pragma once

#include "Common/Point.h"
#include "DisplayBlend/BlendCurve.h"
#include "ExportFiles/ExportedDisplay.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Veltrani::DisplayLight {

/// What a player gives to the projector of one channel, as it stands in files: code values, row by row from the top.
struct PlayedPictures {
    std::size_t width = 0;              ///< of each of them
    std::size_t height = 0;             ///< of each of them
    std::vector<std::uint8_t> content;  ///< red, green and blue of each pixel
    std::vector<std::uint16_t> factor;  ///< 65535 is full; empty without a blend
    std::vector<std::uint16_t> lift;    ///< its light is added; empty without one

    /// Reads what a folder has of a view. Throws `VeltraniException`, naming file and channel, without a content, for a
    /// picture of another size than the channel's, and what `ExportedDisplay::bytesOf` throws.
    [[nodiscard]] static PlayedPictures read(const ExportFiles::ExportedDisplay& display,
                                             const ExportFiles::ExportedChannelView& view);
};

/// The light of each pixel of a projector, as a part of its white.
///
/// Pixels are kept as code values, and made light when they are looked at: as light a picture would take four times the
/// memory, which costs more time than the few looks at a pixel. Only the means of many of them are kept as light.
class ProjectedLight {
public:
    /// Red, green, blue, and the weight of the channel: the light that white would have.
    using Light = std::array<float, 4>;

    /// @param residual light that it shows for black
    ProjectedLight(PlayedPictures pictures, const DisplayBlend::BlendCurve& curve, double residual);

    [[nodiscard]] std::size_t width() const { return m_pictures.width; }
    [[nodiscard]] std::size_t height() const { return m_pictures.height; }

    /// Between the middles of the four nearest pixels, linearly both ways; beyond the outermost middles as there.
    /// @param picture (0, 0) the bottom left corner and (1, 1) the top right one
    /// @param footprint how many pixels across are seen as one: their mean; up to one the pixels themselves
    [[nodiscard]] Light at(const Point<double, 2>& picture, double footprint = 0) const;

private:
    /// Means of pixels, row by row from the top.
    struct Level {
        std::size_t width = 0;
        std::size_t height = 0;
        std::vector<Light> pixels;
    };

    /// Of a pixel, row by row from the top.
    [[nodiscard]] Light lightOf(std::size_t pixel) const;
    /// @param level 0 for the pixels, else one of the means of twice as many each way
    [[nodiscard]] Light atLevel(std::size_t level, const Point<double, 2>& picture) const;

    PlayedPictures m_pictures;
    float m_residual;
    std::vector<float> m_lightOf;  ///< of each code value of 16 bits, without the residual light
    std::vector<Level> m_levels;   ///< each of half the size of the one before; the first one of half the picture
};

}  // namespace Veltrani::DisplayLight
