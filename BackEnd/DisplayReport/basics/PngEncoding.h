#pragma once

#include <cstddef>
#include <iosfwd>

namespace Veltrani::DisplayReport {

/// What a PNG file has of each pixel.
struct PngForm {
    enum class Parts {
        GREY = 1,
        GREY_ALPHA = 2,  ///< and its opacity, straight
        COLOUR = 3,      ///< red, green, blue
    };

    std::size_t width = 0;   ///< pixels
    std::size_t height = 0;  ///< pixels
    Parts parts = Parts::GREY;
    int bits = 8;  ///< of each part: 8 or 16
    /// Colours for people, which the file states to be sRGB; otherwise numbers.
    bool isSrgb = false;

    /// Of one pixel in memory.
    [[nodiscard]] std::size_t bytes() const {
        return static_cast<std::size_t>(parts) * static_cast<std::size_t>(bits) / 8;
    }
};

/// Writes a PNG file. One of numbers states no gamma and no colour space, so that no reader has a reason to bend them.
///
/// Throws `VeltraniException` when the picture cannot be encoded, as without a pixel, `std::bad_alloc` when memory runs
/// out. A stream that takes no more goes bad.
/// @param pixels row by row from the top left one, `form.bytes()` each; 16 bits in the order of the machine
void encodePng(const PngForm& form, const void* pixels, std::ostream& out);

}  // namespace Veltrani::DisplayReport
