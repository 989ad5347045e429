#pragma once

#include "DisplayBlend/BlendPicture.h"
#include "DisplayBlend/detail/RasterSquare.h"
#include "DisplayReport/basics/Progress.h"

#include <array>
#include <cstddef>
#include <functional>
#include <initializer_list>
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
/// them, wherever the light is right then to a ten-thousandth; elsewhere, as at kinks of the screen, shadows and rims,
/// it is looked up in squares of four pixels, and then for every pixel. Weights, too, are worked out for a few places
/// of a square wherever what lies between them follows from these to less than a step of 16 bits.
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
        P2 picture;
    };

    /// How another channel stands to a square.
    enum class Standing { AWAY, LIGHTS, UNCLEAR };

    static constexpr std::size_t SIDE = RasterSquare::SIDE;

    /// Another channel in a small square: its picture at the bottom left corner, the bottom right, top left and top
    /// right one.
    struct CandidateOfQuarter {
        std::size_t channel = 0;
        std::array<P2, 4> pictures;
    };

    /// A small square in which all ways of light are linear.
    struct Quarter {
        std::array<double, 2> x{}, y{};  ///< pixels
        std::array<P3, 4> places;
        std::vector<CandidateOfQuarter> candidates;
        bool isWhole = false;  ///< whether no picture ends in it
    };

    void sampleRow(double y, Corners& row) const;
    void doBand(float alone);
    /// False where it has to be looked at more closely.
    bool doSquare(const RasterSquare& square, float alone);
    /// Cuts what is unclear into four each; what is still unclear is put off.
    void refine(float alone);
    [[nodiscard]] Standing standingOf(std::size_t other, const RasterSquare& square) const;
    void interpolate(const RasterSquare& square);
    [[nodiscard]] bool isSmooth(std::initializer_list<std::size_t> quarters) const;
    /// Fills all pixels of a part of the quarters between a few values; false, and nothing is filled, where these are
    /// not enough.
    bool fillSmoothly(double x0, double x1, double y0, double y1);
    /// Pixel by pixel.
    void fillEach(const Quarter& quarter);
    /// The value at a place of a quarter, pixels.
    float valueIn(const Quarter& quarter, double x, double y);
    /// Calls `take` with the number of each pixel.
    template <class Take>
    void forPixels(const RasterSquare& square, const Take& take) const;
    void putOff(const RasterSquare& square);
    void doPutOff();
    [[nodiscard]] P2 middleOf(std::size_t pixel) const;
    [[nodiscard]] float valueOf(const P2& picture, const P3& place);

    const ChannelFields& m_fields;
    std::size_t m_channel;
    Point<int, 2> m_pixels;
    std::vector<double> m_across;  ///< the corners' places, pixels
    Shade m_shade;
    std::array<Corners, SIDE> m_rows;
    PlaceSamples m_fine;                    ///< of the corners between those of `m_unclear`
    std::vector<RasterSquare> m_unclear;    ///< of the band
    std::vector<std::size_t> m_lighting;    ///< in the square
    std::array<Quarter, 4> m_quarters;      ///< of the square, row by row from the bottom left one
    std::vector<PixelLight::Part> m_parts;  ///< of the pixel
    std::vector<Candidate> m_candidates;    ///< of the pixel
    std::vector<std::size_t> m_numbers;     ///< pixels to be sampled one by one
    DisplayBlend::BlendPicture m_picture;
    std::vector<bool> m_misses;  ///< pixels beside the screen
};

}  // namespace Veltrani::DisplayBlendDetail
