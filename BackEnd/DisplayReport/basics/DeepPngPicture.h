#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

namespace Veltrani::DisplayReport {

/// A picture of 16 bits per colour that can be written as PNG: numbers for programs rather than colours for people.
///
/// The file states no gamma and no colour space, so that no reader has a reason to bend the numbers.
struct DeepPngPicture {
    std::size_t width = 0;   ///< pixels
    std::size_t height = 0;  ///< pixels
    /// Red, green and blue of each pixel, row by row from the top left one: 3 x width x height.
    std::vector<std::uint16_t> colours;

    /// Throws `VeltraniException` when the picture cannot be encoded, as without a pixel, `std::bad_alloc` when memory
    /// runs out. A stream that takes no more goes bad.
    void write(std::ostream& out) const;
};

}  // namespace Veltrani::DisplayReport
