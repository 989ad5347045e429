#include "ExportFiles/PngReader.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>

#include <string>
#include <vector>

namespace {

using namespace Veltrani::ExportFiles;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr std::uint32_t WIDTH = 3;
constexpr std::uint32_t HEIGHT = 2;

/// A file of 3 x 2 pixels that states no gamma.
/// @param numbers row by row from the top left pixel
std::string pngOf(int bits, int colour, const std::vector<std::uint16_t>& numbers) {
    std::vector<unsigned char> bytes;
    for (const std::uint16_t number : numbers) {
        if (bits == 16) {
            bytes.push_back(static_cast<unsigned char>(number / 256));
        }
        bytes.push_back(static_cast<unsigned char>(number % 256));
    }
    std::string file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &file,
        [](png_structp writer, png_bytep from, std::size_t count) {
            static_cast<std::string*>(png_get_io_ptr(writer))->append(reinterpret_cast<const char*>(from), count);
        },
        nullptr);
    png_set_IHDR(png, info, WIDTH, HEIGHT, bits, colour, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (std::size_t row = 0; row < HEIGHT; ++row) {
        png_write_row(png, &bytes[row * bytes.size() / HEIGHT]);
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

/// Numbers of every size, the least and the greatest among them.
std::vector<std::uint16_t> numbers(int bits, std::size_t parts) {
    const unsigned int white = bits == 16 ? 65535 : 255;
    std::vector<std::uint16_t> all;
    for (unsigned int i = 0; i < parts * WIDTH * HEIGHT; ++i) {
        all.push_back(static_cast<std::uint16_t>((i * 77777) % (white + 1)));
    }
    all.back() = static_cast<std::uint16_t>(white);
    return all;
}

struct Kind {
    PngParts parts;
    int bits;
    int colour;
    std::size_t perPixel;
    std::string words;
};

const std::vector<Kind> KINDS{
    {PngParts::GREY_8, 8, PNG_COLOR_TYPE_GRAY, 1, "8 bits of grey"},
    {PngParts::GREY_ALPHA_8, 8, PNG_COLOR_TYPE_GRAY_ALPHA, 2, "8 bits of grey and of alpha"},
    {PngParts::GREY_16, 16, PNG_COLOR_TYPE_GRAY, 1, "16 bits of grey"},
    {PngParts::GREY_ALPHA_16, 16, PNG_COLOR_TYPE_GRAY_ALPHA, 2, "16 bits of grey and of alpha"},
    {PngParts::RGB_16, 16, PNG_COLOR_TYPE_RGB, 3, "16 bits of each colour"},
};

TEST(PngReader, HandsOnTheNumbersOfEveryKindAsTheyStandInTheFile) {
    for (const Kind& kind : KINDS) {
        std::vector<std::uint16_t> expected = numbers(kind.bits, kind.perPixel);
        if (kind.perPixel == 2) {
            // What is grey means nothing where alpha is none, and is scaled by it.
            for (std::size_t i = 0; i < expected.size(); i += 2) {
                expected[i] = 0;
            }
        }
        const PngPixels pixels = pngPixels(pngOf(kind.bits, kind.colour, expected), "a.png", kind.parts, 6);
        EXPECT_EQ(pixels.width, WIDTH);
        EXPECT_EQ(pixels.height, HEIGHT);
        if (kind.bits == 16) {
            EXPECT_THAT(pixels.codes16, ElementsAreArray(expected)) << kind.words;
            EXPECT_THAT(pixels.codes8, IsEmpty());
        } else {
            EXPECT_THAT(pixels.codes8, ElementsAreArray(expected)) << kind.words;
            EXPECT_THAT(pixels.codes16, IsEmpty());
        }
    }
}

TEST(PngReader, RefusesEveryOtherKindThanTheWantedOne) {
    for (const Kind& wanted : KINDS) {
        for (const Kind& kind : KINDS) {
            std::string message;
            try {
                static_cast<void>(pngPixels(pngOf(kind.bits, kind.colour, numbers(kind.bits, kind.perPixel)), "a.png",
                                            wanted.parts, 6));
            } catch (const VeltraniParseException& fault) {
                message = Veltrani::toUtf8(fault.message);
            }
            EXPECT_EQ(message, kind.parts == wanted.parts ? ""
                                                          : "a.png: is no PNG file of " + wanted.words +
                                                                ", which it has to be: export it again");
        }
    }
}

TEST(PngReader, TakesAsManyPixelsAsItMayAndNotOneMore) {
    const std::string file = pngOf(8, PNG_COLOR_TYPE_GRAY, numbers(8, 1));
    EXPECT_EQ(pngPixels(file, "a.png", PngParts::ANY_AS_RGB_8, 6).codes8.size(), 18U);
    EXPECT_THROW(static_cast<void>(pngPixels(file, "a.png", PngParts::ANY_AS_RGB_8, 5)), VeltraniParseException);
}

}  // namespace
