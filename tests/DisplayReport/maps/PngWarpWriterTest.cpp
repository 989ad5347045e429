#include "DisplayReport/maps/WarpWriter.h"

#include "DisplayReport/maps/PictureWarp.h"

#include <gtest/gtest.h>
#include <png.h>

#include <array>
#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;

using Colour = std::array<int, 3>;

/// A picture as any program reads it: rows from the top.
struct Picture {
    unsigned width = 0;
    unsigned height = 0;
    std::vector<unsigned char> bytes;

    [[nodiscard]] Colour at(unsigned column, unsigned rowFromTop) const {
        const std::size_t i = 3 * (std::size_t{rowFromTop} * width + column);
        return {bytes[i], bytes[i + 1], bytes[i + 2]};
    }
};

Picture pictureOf(const PictureWarp& warp) {
    std::ostringstream out;
    WarpWriter::ofFormat("png")->write(warp, out);
    const std::string text = out.str();
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&image, text.data(), text.size()), 0);
    image.format = PNG_FORMAT_RGB;
    Picture picture{image.width, image.height, std::vector<unsigned char>(PNG_IMAGE_SIZE(image))};
    EXPECT_NE(png_image_finish_read(&image, nullptr, picture.bytes.data(), 0, nullptr), 0);
    return picture;
}

/// The input as it is, over a picture of so many pixels.
PictureWarp straight(int width, int height) {
    std::vector<WarpSample> samples;
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            samples.push_back({{(column + 0.5) / width, (row + 0.5) / height}, true});
        }
    }
    return {{width, height}, static_cast<std::size_t>(width), static_cast<std::size_t>(height), std::move(samples)};
}

TEST(PngWarpWriter, RedGrowsToTheRightAndGreenUpwards) {
    const Picture picture = pictureOf(straight(200, 100));
    ASSERT_EQ(picture.width, 200U);
    ASSERT_EQ(picture.height, 100U);
    EXPECT_EQ(picture.at(5, 97), (Colour{7, 6, 0})) << "bottom left: nearly black";
    EXPECT_EQ(picture.at(195, 97), (Colour{249, 6, 0})) << "bottom right: red";
    EXPECT_EQ(picture.at(5, 2), (Colour{7, 249, 0})) << "top left: green";
}

TEST(PngWarpWriter, LinesStandAtRoundPlaces) {
    const Picture picture = pictureOf(straight(200, 100));
    // Between pixels 49 and 50 u passes a quarter; between 9 and 10 it passes 0.05.
    EXPECT_EQ(picture.at(49, 97), (Colour{255, 255, 255}));
    EXPECT_EQ(picture.at(9, 97), (Colour{150, 150, 150}));
    EXPECT_EQ(picture.at(10, 97), (Colour{13, 6, 0}));
    // v passes a half between rows 49 and 50 from the bottom.
    EXPECT_EQ(picture.at(3, 50), (Colour{255, 255, 255}));
    int lines = 0;
    for (unsigned column = 0; column < 200; ++column) {
        lines += picture.at(column, 97)[2] > 0 ? 1 : 0;
    }
    EXPECT_EQ(lines, 19);
}

TEST(PngWarpWriter, WhatIsNotMappedIsABlueChequerboard) {
    const Picture picture = pictureOf(PictureWarp({32, 32}, 32, 32, std::vector<WarpSample>(32 * 32)));
    EXPECT_EQ(picture.at(0, 31), (Colour{20, 20, 90}));
    EXPECT_EQ(picture.at(8, 31), (Colour{60, 60, 190}));
    EXPECT_EQ(picture.at(8, 23), (Colour{20, 20, 90}));
}

TEST(PngWarpWriter, APictureOfOnePixelIsAPicture) {
    EXPECT_EQ(pictureOf(straight(1, 1)).at(0, 0), (Colour{128, 128, 0}));
}

}  // namespace
