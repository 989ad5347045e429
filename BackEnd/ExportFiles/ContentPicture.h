#pragma once

#include "Common/Point.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::ExportFiles {

/// A picture that is shown on a display: its colours as they stand in a PNG file, without regard to a gamma, in 8 bits
/// each. What is transparent stands on black.
class ContentPicture {
public:
    using Colour = std::array<unsigned char, 3>;  ///< red, green, blue

    /// Keeps a picture within 400 megabytes.
    static constexpr std::size_t MOST_PIXELS = 134'217'728;

    /// Throws `VeltraniMissingFileException` when there is no such file, and what `parse` throws.
    [[nodiscard]] static ContentPicture read(const std::string& utf8Path);
    /// Throws `VeltraniParseException`, naming the file, for what is no whole PNG file and for more pixels than that.
    /// @param bytes of a file
    /// @param name of the file, for messages
    [[nodiscard]] static ContentPicture parse(std::string_view bytes, const std::string& name,
                                              std::size_t mostPixels = MOST_PIXELS);

    /// From colours, row by row from the top left one; `width` x `height` of them.
    ContentPicture(std::size_t width, std::size_t height, std::vector<unsigned char> colours);

    [[nodiscard]] std::size_t width() const { return m_width; }
    [[nodiscard]] std::size_t height() const { return m_height; }
    /// Three parts of each pixel, row by row from the top left one.
    [[nodiscard]] const std::vector<unsigned char>& colours() const { return m_colours; }

    /// What a player shows of the place (u, v), (0, 0) bottom left: between the four nearest pixels, whose middles
    /// stand at .5, each as much as the place is near. Black beyond the edges.
    /// @param wrapsAround whether the left edge goes on at the right one
    [[nodiscard]] Colour at(const Point<double, 2>& place, bool wrapsAround) const;

private:
    std::size_t m_width;
    std::size_t m_height;
    std::vector<unsigned char> m_colours;
};

}  // namespace Veltrani::ExportFiles
