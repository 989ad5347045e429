#pragma once

#include "DisplayBlend/BlendCurve.h"
#include "DisplayLight/EyeView.h"
#include "DisplayReport/basics/PngPicture.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Veltrani::DisplayLight {

/// What one place shows of the light of all channels.
struct LitPlace {
    std::array<float, 3> light{};  ///< red, green, blue; 1 is the white of one projector
    float weight = 0;              ///< sum of the weights of all channels
    /// How far the content is from what belongs there, in pixels of the coarsest projector; below zero where nothing
    /// was compared.
    float shift = -1;
    std::uint16_t channels = 0;  ///< how many light it
    bool isOnScreen = false;
    bool lacksContent = false;  ///< a channel lights it and its warp shows nothing there
};

/// Numbers of many places.
struct LitFigures {
    std::size_t lit = 0;       ///< places that a channel lights
    std::size_t unlit = 0;     ///< places on the screen that none does
    std::size_t compared = 0;  ///< places whose content was
    double largestShift = 0;   ///< pixels of the coarsest projector
    double meanShift = 0;      ///< pixels of the coarsest projector
    std::size_t shifted = 0;   ///< by more than one pixel
    std::size_t withoutContent = 0;
    double mostLight = 0;       ///< largest sum of weights, minus one; 0 where all are below
    double leastLight = 0;      ///< smallest sum of weights, minus one; 0 where all are above
    double meanUnevenness = 0;  ///< mean of the size of the sum minus one
    std::size_t tooBright = 0;  ///< places that show more than white

    [[nodiscard]] static LitFigures of(std::span<const LitPlace> places);
};

/// The colours that places are drawn in.
namespace LitColours {
using Colour = std::array<unsigned char, 3>;
/// In the tone of the screen; dark grey where none is.
[[nodiscard]] Colour shown(const LitPlace& place, const DisplayBlend::BlendCurve& curve);
/// How far the content is off.
[[nodiscard]] Colour shift(const LitPlace& place);
/// How uneven the light is.
[[nodiscard]] Colour unevenness(const LitPlace& place);
}  // namespace LitColours

/// What is known of a display that shows an export, wherever its light is looked at.
struct LitDisplay {
    DisplayBlend::BlendCurve curve = DisplayBlend::BlendCurve::ofGamma(DisplayBlend::BlendCurve::USUAL_GAMMA);
    std::string coarsest;            ///< the projector with the largest pixels, in words
    double coarsestPixel = 0;        ///< width of its pixel on the screen, native units
    std::vector<std::string> notes;  ///< UTF-8, for people
};

/// What an eye sees of a display that shows an export.
struct LitPicture : LitDisplay {
    EyeView view;
    std::vector<LitPlace> places;  ///< row by row from the bottom

    [[nodiscard]] LitFigures figures() const { return LitFigures::of(places); }
    /// In the tone of the screen; dark grey where none is.
    [[nodiscard]] DisplayReport::PngPicture shown() const;
    /// Two pictures beside each other: how far the content is off, and how uneven the light is.
    [[nodiscard]] DisplayReport::PngPicture errors() const;
};

}  // namespace Veltrani::DisplayLight
