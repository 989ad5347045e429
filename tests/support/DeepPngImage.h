#pragma once

#include <png.h>

#include <array>
#include <bit>
#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <vector>

/// The numbers of a PNG file of 16 bits per colour, as they stand in it: libpng is given no gamma to work with.
struct DeepPngImage {
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<std::uint16_t> colours;  ///< red, green and blue of each pixel, row by row from the top

    /// Throws `std::runtime_error` for what is no PNG file of three parts and 16 bits each.
    static DeepPngImage read(std::string_view file) {
        png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        DeepPngImage image;
        const bool isRead = image.decode(png, info, file);
        png_destroy_read_struct(&png, &info, nullptr);
        if (!isRead) {
            throw std::runtime_error("not a PNG file of 16 bits per colour");
        }
        return image;
    }

    [[nodiscard]] std::array<int, 3> at(std::size_t right, std::size_t down) const {
        const std::size_t i = 3 * (down * width + right);
        return {colours[i], colours[i + 1], colours[i + 2]};
    }

private:
    static void take(png_structp png, png_bytep bytes, std::size_t count) {
        auto& rest = *static_cast<std::string_view*>(png_get_io_ptr(png));
        if (rest.size() < count) {
            png_error(png, "the file ends early");
        }
        std::memcpy(bytes, rest.data(), count);
        rest.remove_prefix(count);
    }

    bool decode(png_structp png, png_infop info, std::string_view& rest) {
        if (setjmp(png_jmpbuf(png)) != 0) {
            return false;
        }
        png_set_read_fn(png, &rest, take);
        png_read_info(png, info);
        constexpr int BITS = 16;
        if (png_get_bit_depth(png, info) != BITS || png_get_color_type(png, info) != PNG_COLOR_TYPE_RGB) {
            return false;
        }
        if constexpr (std::endian::native == std::endian::little) {
            png_set_swap(png);
        }
        width = png_get_image_width(png, info);
        height = png_get_image_height(png, info);
        colours.resize(3 * width * height);
        for (std::size_t row = 0; row < height; ++row) {
            png_read_row(png, reinterpret_cast<png_bytep>(colours.data() + 3 * width * row), nullptr);
        }
        return true;
    }
};
