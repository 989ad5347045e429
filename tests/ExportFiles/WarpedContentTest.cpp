#include "ExportFiles/WarpedContent.h"

#include "ExportedDisplays.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace Veltrani::ExportFiles;
using namespace exported_displays;
using Veltrani::DisplayExport::InputKind;
using Veltrani::DisplayReport::PngPicture;

/// Red is u and green is v, in steps of colours.
ContentPicture gradient() {
    constexpr std::size_t SIDE = 256;
    std::vector<unsigned char> colours;
    for (std::size_t down = 0; down < SIDE; ++down) {
        for (std::size_t right = 0; right < SIDE; ++right) {
            colours.push_back(static_cast<unsigned char>(right));
            colours.push_back(static_cast<unsigned char>(SIDE - 1 - down));
            colours.push_back(200);
        }
    }
    return {SIDE, SIDE, std::move(colours)};
}

/// @param row from the bottom
std::array<int, 3> colourOf(const PngPicture& picture, std::size_t column, std::size_t row) {
    const std::size_t i = 3 * ((picture.height - 1 - row) * picture.width + column);
    return {picture.colours[i], picture.colours[i + 1], picture.colours[i + 2]};
}

// The picture is the whole layout: each pixel shows the content at its own place.
TEST(WarpedContent, IsUprightAndInItsPlaceByNodesAndByPixels) {
    const ExportedChannel wall(WALL);
    for (const auto& request : {nodes(5, 4), pixels(false)}) {
        const PngPicture picture = warpedContent(wall.warp(InputKind::LAYOUT, request), {}, gradient());
        ASSERT_EQ(picture.width, 32U);
        ASSERT_EQ(picture.height, 16U);
        for (std::size_t row = 0; row < picture.height; ++row) {
            for (std::size_t column = 0; column < picture.width; ++column) {
                const auto [red, green, blue] = colourOf(picture, column, row);
                EXPECT_NEAR(red, 256 * (static_cast<double>(column) + 0.5) / 32 - 0.5, 1) << column << ' ' << row;
                EXPECT_NEAR(green, 256 * (static_cast<double>(row) + 0.5) / 16 - 0.5, 1) << column << ' ' << row;
                EXPECT_EQ(blue, 200);
            }
        }
    }
}

// Straight back is the seam: to its left the panorama ends, to its right it begins.
TEST(WarpedContent, GoesOnOverTheSeamOfAPanorama) {
    const ExportedChannel behind(BEHIND);
    const ContentStrip strip{1, true};
    const PngPicture byNodes = warpedContent(behind.warp(InputKind::EQUIRECTANGULAR, nodes(41, 21)), strip, gradient());
    const PngPicture byPixels =
        warpedContent(behind.warp(InputKind::EQUIRECTANGULAR, pixels(false)), strip, gradient());
    for (std::size_t column = 0; column < 40; ++column) {
        const auto [red, green, blue] = colourOf(byPixels, column, 10);
        EXPECT_EQ(blue, 200);
        // The picture is flat: equal steps of the tangent.
        const double azimuth =
            std::atan(std::tan(40 * M_PI / 180) * (2 * (static_cast<double>(column) + 0.5) / 40 - 1)) / (2 * M_PI);
        const double u = azimuth < 0 ? 1 + azimuth : azimuth;
        EXPECT_NEAR(red, 256 * u - 0.5, 1.5) << column;
        if (column < 18 || column > 21) {
            EXPECT_NEAR(colourOf(byNodes, column, 10)[0], red, 1) << column;
        }
        EXPECT_NEAR(green, 128, 3);
    }
}

// A channel that looks askance at the corner of a cube: its cells are cut along the edges of three faces into triangles
// of all shapes. None leaves out a pixel, and each shows what the pixel itself does but beside an edge.
TEST(WarpedContent, TrianglesOfEveryShapeLeaveNoPixelOut) {
    const ExportedChannel corner(
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'>"
        "<Centre x='0' y='0' z='0'/><Radius value='4'/></Screen><TargetData type='Spherical'/><Projectors>"
        "<Projector id='P1'><Resolution width='40' height='24'/><Orientation z='41' x='37' y='23'/>"
        "<Frustum left='-40' right='40' bottom='-30' top='30'/></Projector></Projectors></Display>");
    const ContentStrip strip{6, false};
    const PngPicture byNodes = warpedContent(corner.warp(InputKind::CUBE, nodes(6, 5)), strip, gradient());
    const PngPicture byPixels = warpedContent(corner.warp(InputKind::CUBE, pixels(false)), strip, gradient());
    int apart = 0;
    for (std::size_t row = 0; row < byNodes.height; ++row) {
        for (std::size_t column = 0; column < byNodes.width; ++column) {
            const auto [red, green, blue] = colourOf(byNodes, column, row);
            EXPECT_EQ(blue, 200) << column << ' ' << row;
            const auto [redOfPixel, greenOfPixel, blueOfPixel] = colourOf(byPixels, column, row);
            apart += std::abs(red - redOfPixel) > 2 || std::abs(green - greenOfPixel) > 12 ? 1 : 0;
        }
    }
    EXPECT_LT(apart, 40 * 24 / 20);
}

TEST(WarpedContent, IsBlackWhereTheContentEnds) {
    const ExportedChannel wall(WALL);
    // A frustum has a margin of 2 % on each side: the outermost content is not shown, and nothing is black.
    const PngPicture picture = warpedContent(wall.warp(InputKind::FRUSTUM, pixels(false)), {}, gradient());
    EXPECT_NEAR(colourOf(picture, 0, 8)[0], 256 * 0.02 + 256 * 0.96 / 64, 6);
    // A fisheye about +y does not reach what lies behind.
    const ExportedChannel behind(BEHIND);
    const PngPicture none = warpedContent(behind.warp(InputKind::FISHEYE, pixels(false)), {}, gradient());
    EXPECT_EQ(colourOf(none, 20, 10), (std::array<int, 3>{0, 0, 0}));
}

}  // namespace
