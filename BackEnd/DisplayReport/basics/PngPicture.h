#pragma once

#include <cstddef>
#include <iosfwd>
#include <vector>

namespace Veltrani::DisplayReport {

/// A picture of 8 bits per colour that can be written as PNG.
struct PngPicture {
    std::size_t width = 0;   ///< pixels
    std::size_t height = 0;  ///< pixels
    /// Red, green and blue of each pixel, row by row from the top left one: 3 x width x height.
    std::vector<unsigned char> colours;

    /// Throws `VeltraniException` when the picture cannot be encoded, as without a pixel.
    void write(std::ostream& out) const;
};

}  // namespace Veltrani::DisplayReport
