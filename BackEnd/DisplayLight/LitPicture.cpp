#include "DisplayLight/LitPicture.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::DisplayLight {

namespace {

using DisplayReport::PngPicture;
using LitColours::Colour;

constexpr std::size_t PARTS = 3;
constexpr double WHITE = 255;
constexpr Colour NO_SCREEN{26, 27, 30};
constexpr Colour NOT_LIT{10, 48, 22};
/// Sums of codes of 16 bits of the files: light that is white but for rounding.
constexpr float ROUNDING = 1e-3F;
/// What the scale of the light reaches to.
constexpr double UNEVEN = 0.1;

unsigned char codeOf(double part) {
    return static_cast<unsigned char>(std::lround(WHITE * std::clamp(part, 0.0, 1.0)));
}

/// From black through red and yellow to white.
Colour heat(double part) {
    return {codeOf(PARTS * part), codeOf(PARTS * part - 1), codeOf(PARTS * part - 2)};
}

/// Grey at zero, blue below, red above.
Colour balance(double part) {
    constexpr double GREY = 0.5;
    part = std::clamp(part, -1.0, 1.0);
    const double rest = GREY * (1 - std::abs(part));
    return {codeOf(rest + std::max(part, 0.0)), codeOf(rest), codeOf(rest + std::max(-part, 0.0))};
}

void paint(PngPicture& picture, std::size_t column, std::size_t down, const Colour& colour) {
    std::copy(colour.begin(), colour.end(),
              picture.colours.begin() + static_cast<std::ptrdiff_t>(PARTS * (down * picture.width + column)));
}

PngPicture emptyPicture(std::size_t width, std::size_t height) {
    return {width, height, std::vector<unsigned char>(PARTS * width * height)};
}

}  // namespace

Colour LitColours::shown(const LitPlace& place, const DisplayBlend::BlendCurve& curve) {
    Colour colour = NO_SCREEN;
    for (std::size_t part = 0; part < PARTS && place.isOnScreen; ++part) {
        colour[part] = codeOf(curve.codeOf(place.light[part]));
    }
    return colour;
}

Colour LitColours::shift(const LitPlace& place) {
    if (!place.isOnScreen) {
        return NO_SCREEN;
    }
    if (place.channels == 0) {
        return NOT_LIT;
    }
    return place.lacksContent ? heat(1) : heat(std::max(place.shift, 0.0F));
}

Colour LitColours::unevenness(const LitPlace& place) {
    if (!place.isOnScreen) {
        return NO_SCREEN;
    }
    return place.channels == 0 ? NOT_LIT : balance((place.weight - 1) / UNEVEN);
}

LitFigures LitFigures::of(std::span<const LitPlace> places) {
    LitFigures figures;
    for (const LitPlace& place : places) {
        if (place.channels == 0) {
            figures.unlit += place.isOnScreen ? 1 : 0;
            continue;
        }
        ++figures.lit;
        figures.withoutContent += place.lacksContent ? 1 : 0;
        if (place.shift >= 0) {
            ++figures.compared;
            figures.largestShift = std::max<double>(figures.largestShift, place.shift);
            figures.meanShift += place.shift;
            figures.shifted += place.shift > 1 ? 1 : 0;
        }
        const double off = place.weight - 1;
        figures.mostLight = std::max(figures.mostLight, off);
        figures.leastLight = std::min(figures.leastLight, off);
        figures.meanUnevenness += std::abs(off);
        figures.tooBright += *std::max_element(place.light.begin(), place.light.end()) > 1 + ROUNDING ? 1 : 0;
    }
    figures.meanShift /= static_cast<double>(std::max<std::size_t>(figures.compared, 1));
    figures.meanUnevenness /= static_cast<double>(std::max<std::size_t>(figures.lit, 1));
    return figures;
}

PngPicture LitPicture::shown() const {
    PngPicture picture = emptyPicture(view.width(), view.height());
    for (std::size_t row = 0; row < picture.height; ++row) {
        for (std::size_t column = 0; column < picture.width; ++column) {
            const LitPlace& place = places[row * picture.width + column];
            paint(picture, column, picture.height - 1 - row, LitColours::shown(place, curve));
        }
    }
    return picture;
}

PngPicture LitPicture::errors() const {
    const std::size_t width = view.width();
    PngPicture picture = emptyPicture(2 * width, view.height());
    for (std::size_t row = 0; row < picture.height; ++row) {
        for (std::size_t column = 0; column < width; ++column) {
            const LitPlace& place = places[row * width + column];
            paint(picture, column, picture.height - 1 - row, LitColours::shift(place));
            paint(picture, width + column, picture.height - 1 - row, LitColours::unevenness(place));
        }
    }
    return picture;
}

}  // namespace Veltrani::DisplayLight
