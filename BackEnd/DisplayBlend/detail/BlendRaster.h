#pragma once

#include "DisplayBlend/BlendPicture.h"
#include "DisplayBlend/detail/ChannelFields.h"
#include "DisplayReport/basics/Progress.h"

#include <array>
#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace Veltrani::DisplayBlendDetail {

/// What one pixel is made of: the channels that light its place.
struct PixelLight {
    struct Part {
        std::size_t channel;
        double weight;  ///< 0 to 1; all of a pixel sum to one
    };

    std::span<const Part> parts;  ///< the channel of the picture first
};

/// Goes over all pixels of a channel's picture.
///
/// How other channels stand to it is looked up at the corners of squares of eight pixels, and taken for linear between
/// them, wherever that is right to a hundredth of a pixel; elsewhere, as at kinks of the screen, shadows and rims, it
/// is looked up for every pixel. The weights are those of every pixel.
class BlendRaster {
public:
    /// Makes the value of a pixel.
    using Shade = std::function<float(const PixelLight& light)>;

    BlendRaster(const ChannelFields& fields, std::size_t channel);

    /// @param alone the value where no other channel is, for whole squares at once
    [[nodiscard]] DisplayBlend::BlendPicture picture(const Shade& shade, float alone,
                                                     const DisplayReport::Progress& progress);

private:
    /// A row of corners, sampled.
    struct Corners {
        double y = 0;  ///< pixels
        PlaceSamples samples;
    };

    /// Another channel that lights a place if its picture reaches there.
    struct Candidate {
        std::size_t channel = 0;
        Point<double, 2> picture;
    };

    /// How another channel stands to a square.
    enum class Standing { AWAY, LIGHTS, UNCLEAR };

    /// Three by three corners: four small squares.
    static constexpr std::size_t SIDE = 3;
    struct Square {
        std::array<std::size_t, SIDE> columns;
        std::array<double, SIDE> x, y;  ///< pixels
    };

    void sampleRow(double y, Corners& row) const;
    void doBand(float alone);
    void doSquare(const Square& square, float alone);
    [[nodiscard]] Standing standingOf(std::size_t other, const Square& square) const;
    [[nodiscard]] bool isLinear(std::size_t other, const Square& square) const;
    void interpolate(const Square& square);
    void interpolateQuarter(const Square& square, std::size_t right, std::size_t upper);
    /// Calls `take` with the number of each pixel.
    template <class Take>
    void forPixels(const Square& square, const Take& take) const;
    void putOff(const Square& square);
    void doPutOff();
    [[nodiscard]] Point<double, 2> middleOf(std::size_t pixel) const;
    [[nodiscard]] float valueOf(const Point<double, 2>& picture, const Point<double, 3>& place);

    const ChannelFields& m_fields;
    std::size_t m_channel;
    Point<int, 2> m_pixels;
    std::vector<double> m_across;  ///< the corners' places, pixels
    Shade m_shade;
    std::array<Corners, SIDE> m_rows;
    std::vector<std::size_t> m_lighting;                            ///< in the square
    std::vector<PixelLight::Part> m_parts;                          ///< of the pixel
    std::vector<Candidate> m_candidates;                            ///< of the pixel
    std::vector<std::array<Point<double, 2>, 4>> m_cornerPictures;  ///< of `m_lighting`
    std::vector<std::size_t> m_numbers;                             ///< pixels to be sampled one by one
    DisplayBlend::BlendPicture m_picture;
    std::vector<bool> m_misses;  ///< pixels beside the screen
};

}  // namespace Veltrani::DisplayBlendDetail
