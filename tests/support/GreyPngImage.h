#pragma once

#include <png.h>

#include <bit>
#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <vector>

/// The numbers of a grey PNG file, with or without opacities, as they stand in it: libpng is given no gamma to work
/// with.
struct GreyPngImage {
    std::size_t width = 0;
    std::size_t height = 0;
    int bits = 0;                        ///< 8 or 16
    std::vector<std::uint16_t> grey;     ///< of each pixel, row by row from the top
    std::vector<std::uint16_t> opacity;  ///< as many, or none

    /// Throws `std::runtime_error` for everything else.
    static GreyPngImage read(std::string_view file) {
        png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        GreyPngImage image;
        std::vector<png_byte> row;
        const bool isRead = image.decode(png, info, file, row);
        png_destroy_read_struct(&png, &info, nullptr);
        if (!isRead) {
            throw std::runtime_error("not a grey PNG file of 8 or 16 bits");
        }
        return image;
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

    bool decode(png_structp png, png_infop info, std::string_view& rest, std::vector<png_byte>& row) {
        if (setjmp(png_jmpbuf(png)) != 0) {
            return false;
        }
        png_set_read_fn(png, &rest, take);
        png_read_info(png, info);
        bits = png_get_bit_depth(png, info);
        const int type = png_get_color_type(png, info);
        if ((bits != 8 && bits != 16) || (type != PNG_COLOR_TYPE_GRAY && type != PNG_COLOR_TYPE_GRAY_ALPHA)) {
            return false;
        }
        width = png_get_image_width(png, info);
        height = png_get_image_height(png, info);
        row.resize(png_get_rowbytes(png, info));
        for (std::size_t i = 0; i < height; ++i) {
            png_read_row(png, row.data(), nullptr);
            append(row, type == PNG_COLOR_TYPE_GRAY_ALPHA);
        }
        return true;
    }

    void append(const std::vector<png_byte>& row, bool hasOpacity) {
        std::size_t at = 0;
        const auto next = [&] {
            const unsigned first = row[at++];
            return static_cast<std::uint16_t>(bits == 16 ? 256 * first + row[at++] : first);
        };
        while (at < row.size()) {
            grey.push_back(next());
            if (hasOpacity) {
                opacity.push_back(next());
            }
        }
    }
};
