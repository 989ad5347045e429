#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::ExportFiles {

/// What the pixels of a PNG file are wanted as.
enum class PngParts {
    ANY_AS_RGB_8,  ///< whatever the file has, as red, green and blue of 8 bits; what is transparent stands on black
    GREY_8,        ///< of these and the following, a file that has just these
    GREY_ALPHA_8,  ///< grey, then opacity
    GREY_16,
    GREY_ALPHA_16,
    RGB_16,
};

/// The pixels of a PNG file, numbers as they stand in it, row by row from the top left one.
struct PngPixels {
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<std::uint8_t> codes8;    ///< of the kinds of 8 bits; else empty
    std::vector<std::uint16_t> codes16;  ///< of those of 16
};

/// Reads a PNG file. Throws `VeltraniParseException`, naming the file, for what is no whole one, for one of other
/// parts, and for more pixels than that; `std::bad_alloc` when memory runs out.
/// @param bytes of the file
/// @param name of the file, for messages
[[nodiscard]] PngPixels pngPixels(std::string_view bytes, const std::string& name, PngParts parts,
                                  std::size_t mostPixels);

}  // namespace Veltrani::ExportFiles
