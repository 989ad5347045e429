#pragma once

#include <png.h>

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string_view>
#include <vector>

/// The pixels of a PNG file, for tests of what writes or shows pictures.
struct PngImage {
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<unsigned char> bytes;  ///< red, green and blue of each pixel, row by row from the top

    using Colour = std::array<int, 3>;

    /// Throws `std::runtime_error` for what is no PNG file.
    static PngImage read(std::string_view file) {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        if (png_image_begin_read_from_memory(&image, file.data(), file.size()) == 0) {
            throw std::runtime_error("not a PNG file");
        }
        image.format = PNG_FORMAT_RGB;
        PngImage read{image.width, image.height, std::vector<unsigned char>(PNG_IMAGE_SIZE(image))};
        if (png_image_finish_read(&image, nullptr, read.bytes.data(), 0, nullptr) == 0) {
            throw std::runtime_error("a damaged PNG file");
        }
        return read;
    }

    [[nodiscard]] Colour at(std::size_t right, std::size_t down) const {
        const std::size_t i = 3 * (down * width + right);
        return {bytes[i], bytes[i + 1], bytes[i + 2]};
    }

    /// What lies right of a column, that one included.
    [[nodiscard]] PngImage rightOf(std::size_t left) const {
        PngImage part{width - left, height, {}};
        for (std::size_t down = 0; down < height; ++down) {
            const auto row = bytes.begin() + static_cast<std::ptrdiff_t>(3 * down * width);
            part.bytes.insert(part.bytes.end(), row + static_cast<std::ptrdiff_t>(3 * left),
                              row + static_cast<std::ptrdiff_t>(3 * width));
        }
        return part;
    }

    /// Pixels that are like that colour in each part to within `tolerance`.
    [[nodiscard]] std::size_t count(const Colour& colour, int tolerance) const {
        std::size_t found = 0;
        for (std::size_t i = 0; i < width * height; ++i) {
            bool isAlike = true;
            for (std::size_t part = 0; part < colour.size(); ++part) {
                const int difference = bytes[3 * i + part] - colour[part];
                isAlike = isAlike && difference <= tolerance && difference >= -tolerance;
            }
            found += isAlike ? 1 : 0;
        }
        return found;
    }
};
