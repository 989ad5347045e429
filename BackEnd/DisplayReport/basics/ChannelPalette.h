#pragma once

#include <cstddef>
#include <string>

namespace Veltrani::DisplayReport {

/// A colour as files and pages have it: 0 to 255 each.
struct Colour {
    unsigned char red = 0;
    unsigned char green = 0;
    unsigned char blue = 0;

    [[nodiscard]] bool operator==(const Colour&) const = default;
};

/// Further channels have the same colours again, and are drawn with numbers or patterns that keep them apart.
constexpr std::size_t DIFFERENT_CHANNEL_COLOURS = 16;

/// The colour of a channel by its place in the configuration: eight that stay apart for colour-blind eyes too (Okabe
/// and Ito, 2008), then paler ones of the same eight, then these sixteen again.
[[nodiscard]] Colour channelColour(std::size_t channel);

/// The colour of a place by the number of channels that light it: dark grey for none, blue for one, orange for two,
/// yellow for three and more. They grow brighter in this order, for colour-blind eyes too.
[[nodiscard]] Colour countColour(std::size_t channels);

/// "#e69f00".
[[nodiscard]] std::string hexText(const Colour& colour);

/// `colour` with a share of `other` in it, 0 to 1.
[[nodiscard]] Colour mixed(const Colour& colour, const Colour& other, double share);

}  // namespace Veltrani::DisplayReport
