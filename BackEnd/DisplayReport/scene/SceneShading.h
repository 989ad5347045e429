#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/ChannelPalette.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// A part of a surface that the same channels light.
struct ShadedRegion {
    using Triangle = std::array<std::uint32_t, 3>;

    std::vector<std::size_t> channels;  ///< that light it: places in `DisplayScene::channels`, ascending; empty: dark
    double area = 0;                    ///< square native units along the surface, as the coverage reports it
    std::vector<Triangle> triangles;    ///< indices into `SceneShading::vertices`; none where it is not seen
};

/// Which channels light which part of a surface, as the measurement of the coverage found it. World frame, native
/// units.
///
/// The regions together are the surface, cut along the borders of the light: they are drawn in its place.
///
///     for (const ShadedRegion& region : shading.regions) {
///         const std::vector<Colour> colours = coloursOf(region, ShadeBy::COUNT);
///         for (const auto& [a, b, c] : region.triangles) { ... shading.vertices[a] ... }
///     }
struct SceneShading {
    std::vector<Point<double, 3>> vertices;  ///< each of one region alone; finite
    std::vector<ShadedRegion> regions;       ///< by number of channels, the dark one first; then by channel
    double area = 0;                         ///< of the surface: the sum of the areas of the regions

    /// The part of the surface, 0 to 1, that is lit by so many channels; by so many and more where `orMore`.
    [[nodiscard]] double partLitBy(std::size_t count, bool orMore) const;
    /// The part of the surface, 0 to 1, that a channel lights.
    [[nodiscard]] double partLitByChannel(std::size_t channel) const;
};

/// What the colours of a shading stand for.
enum class ShadeBy {
    COUNT,    ///< how many channels light a place: none, 1, 2, 3 and more
    CHANNEL,  ///< which ones: the colour of the channel, several in turn where several do
};

/// From this number of channels on the colour of a count stays the same.
constexpr std::size_t MOST_COUNTED = 3;

/// What a region is drawn with, never empty: one colour, or stripes of several, in equal parts.
[[nodiscard]] std::vector<Colour> coloursOf(const ShadedRegion& region, ShadeBy by);

/// A line of the legend of a shading.
struct ShadeEntry {
    std::vector<Colour> colours;              ///< as `coloursOf`
    std::string text;                         ///< "2 projectors, 12.5 % of the screen"; UTF-8
    std::optional<std::size_t> channel = {};  ///< that it is about: its place among all
};

/// What the colours of a shading mean, those alone that occur.
/// @param names of the channels of the scene, UTF-8
[[nodiscard]] std::vector<ShadeEntry> legendOf(const SceneShading& shading, ShadeBy by,
                                               const std::vector<std::string>& names);

}  // namespace Veltrani::DisplayReport
