#include "DisplayReport/basics/ChannelPalette.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Veltrani::DisplayReport {

namespace {

/// Black, the last of the published eight, cannot be distinguished from lines and text: a grey stands for it.
constexpr std::array<Colour, 8> COLOURS{{{230, 159, 0},
                                         {86, 180, 233},
                                         {0, 158, 115},
                                         {240, 228, 66},
                                         {0, 114, 178},
                                         {213, 94, 0},
                                         {204, 121, 167},
                                         {160, 160, 160}}};
static_assert(2 * COLOURS.size() == DIFFERENT_CHANNEL_COLOURS);
/// From the same eight, but for the dark one.
constexpr std::array<Colour, 4> BY_COUNT{{{84, 90, 97}, {0, 114, 178}, {230, 159, 0}, {240, 228, 66}}};
constexpr Colour WHITE{255, 255, 255};
/// The part of white in the paler eight.
constexpr double PALENESS = 0.5;

unsigned char mixedPart(unsigned char a, unsigned char b, double share) {
    return static_cast<unsigned char>(std::lround(a + (static_cast<double>(b) - a) * share));
}

}  // namespace

Colour channelColour(std::size_t channel) {
    const Colour colour = COLOURS[channel % COLOURS.size()];
    const bool isPale = channel / COLOURS.size() % 2 == 1;
    return isPale ? mixed(colour, WHITE, PALENESS) : colour;
}

Colour countColour(std::size_t channels) {
    return BY_COUNT[std::min(channels, BY_COUNT.size() - 1)];
}

std::string hexText(const Colour& colour) {
    constexpr const char* DIGITS = "0123456789abcdef";
    constexpr unsigned BASE = 16;
    std::string text = "#";
    for (const unsigned part : {colour.red, colour.green, colour.blue}) {
        text += DIGITS[part / BASE];
        text += DIGITS[part % BASE];
    }
    return text;
}

Colour mixed(const Colour& colour, const Colour& other, double share) {
    return {mixedPart(colour.red, other.red, share), mixedPart(colour.green, other.green, share),
            mixedPart(colour.blue, other.blue, share)};
}

}  // namespace Veltrani::DisplayReport
