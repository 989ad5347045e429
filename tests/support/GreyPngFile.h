#pragma once

#include <png.h>

#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

/// Writes PNG files of grey values that state no gamma, as exports do, by another way than these.
struct GreyPngFile {
    std::size_t width = 0;
    std::size_t height = 0;
    int bits = 16;
    bool hasAlpha = false;  ///< then a pixel has two values, grey and opacity

    /// @param codes row by row from the top, 0 to the largest of the bits
    void write(const std::string& path, const std::vector<std::uint16_t>& codes) const {
        std::FILE* const file = std::fopen(path.c_str(), "wb");
        png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        const std::vector<png_byte> bytes = bytesOf(codes);
        const bool isWritten = file != nullptr && encode(png, info, file, bytes);
        png_destroy_write_struct(&png, &info);
        if (file == nullptr || std::fclose(file) != 0 || !isWritten) {
            throw std::runtime_error("cannot write " + path);
        }
    }

private:
    [[nodiscard]] std::size_t bytesOfRow() const {
        return width * (hasAlpha ? 2U : 1U) * (static_cast<std::size_t>(bits) / 8);
    }

    [[nodiscard]] std::vector<png_byte> bytesOf(const std::vector<std::uint16_t>& codes) const {
        std::vector<png_byte> bytes;
        bytes.reserve(codes.size() * static_cast<std::size_t>(bits) / 8);
        for (const std::uint16_t code : codes) {
            if (bits == 16) {
                bytes.push_back(static_cast<png_byte>(code >> 8U));
            }
            bytes.push_back(static_cast<png_byte>(code & 0xFFU));
        }
        return bytes;
    }

    bool encode(png_structp png, png_infop info, std::FILE* file, const std::vector<png_byte>& bytes) const {
        if (setjmp(png_jmpbuf(png)) != 0) {
            return false;
        }
        png_init_io(png, file);
        png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), bits,
                     hasAlpha ? PNG_COLOR_TYPE_GRAY_ALPHA : PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        // What is written for a test is read once.
        png_set_compression_level(png, 1);
        png_write_info(png, info);
        for (std::size_t row = 0; row < height; ++row) {
            png_write_row(png, bytes.data() + row * bytesOfRow());
        }
        png_write_end(png, info);
        return true;
    }
};
