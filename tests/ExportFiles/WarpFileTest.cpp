#include "ExportFiles/WarpFile.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/basics/NumberText.h"
#include "ExportedDisplays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <sstream>

namespace {

using namespace Veltrani::ExportFiles;
using namespace exported_displays;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Veltrani::DisplayExport::InputKind;

TEST(WarpFile, KnowsItsFormats) {
    EXPECT_THAT(warpFormatNames(), ElementsAre("mesh", "obj", "pfm", "pfm3d", "png16"));
    std::vector<std::string> endings;
    for (const std::string& name : warpFormatNames()) {
        ASSERT_TRUE(warpFormatOf(name));
        EXPECT_EQ(nameOf(*warpFormatOf(name)), name);
        EXPECT_EQ(isOfNodes(*warpFormatOf(name)), name == "mesh" || name == "obj");
        endings.push_back(endingOf(*warpFormatOf(name)));
    }
    EXPECT_THAT(endings, ElementsAre("mesh", "obj", "pfm", "points.pfm", "warp.png"));
    EXPECT_FALSE(warpFormatOf("png"));
}

TEST(WarpFile, AMeshHasItsNodesFromEdgeToEdge) {
    const ExportedChannel wall(WALL);
    std::ostringstream out;
    EXPECT_EQ(writeWarp(WarpFormat::MESH, wall.warp(InputKind::LAYOUT, nodes(3, 2)), {}, out), 0U);
    EXPECT_EQ(out.str(),
              "2\n3 2\n-2 -1 0 0 1\n0 -1 0.5 0 1\n2 -1 1 0 1\n-2 1 0 1 1\n0 1 0.5 1 1\n2 1 1 1 1\npixels 32 16\n");
}

/// The three numbers of a pixel; rows from the bottom.
std::array<double, 3> pixelOf(const std::string& pfm, std::size_t column, std::size_t row) {
    const std::string head = "PF\n32 16\n-1.0\n";
    EXPECT_THAT(pfm, StartsWith(head));
    std::array<float, 3> numbers{};
    std::memcpy(numbers.data(), pfm.data() + head.size() + sizeof(numbers) * (row * 32 + column), sizeof(numbers));
    return {numbers[0], numbers[1], numbers[2]};
}

// The channel has three metres of the wall, from x = -2 on; the wall stands on the floor.
TEST(WarpFile, AMapOfPointsHasThePlaceOnTheScreenOfEachPixel) {
    const ExportedChannel wall(WALL);
    std::ostringstream out;
    writeWarp(WarpFormat::PFM_3D, wall.warp(InputKind::LAYOUT, pixels(true)), {}, out);
    for (const auto& [column, row] : {std::pair<std::size_t, std::size_t>{0, 0}, {31, 0}, {5, 15}}) {
        const auto [x, y, z] = pixelOf(out.str(), column, row);
        EXPECT_NEAR(x, -2 + 3 * (static_cast<double>(column) + 0.5) / 32, 1e-6);
        EXPECT_NEAR(y, 5, 1e-6);
        EXPECT_NEAR(z, 2 * (static_cast<double>(row) + 0.5) / 16, 1e-6);
    }
}

TEST(WarpFile, AMapOfPixelsStaysBetweenTheEdgesOfAPanorama) {
    const ExportedChannel behind(BEHIND);
    std::ostringstream out;
    writeWarp(WarpFormat::PFM, behind.warp(InputKind::EQUIRECTANGULAR, pixels(false)), {1, true}, out);
    const std::string pfm = out.str();
    std::size_t left = 0;
    std::size_t right = 0;
    for (std::size_t i = 0; i < 40U * 20; ++i) {
        float u = 0;
        std::memcpy(&u, pfm.data() + std::strlen("PF\n40 20\n-1.0\n") + 12 * i, sizeof(u));
        ASSERT_GE(u, 0);
        ASSERT_LE(u, 1);
        left += u > 0.8F ? 1 : 0;
        right += u < 0.2F ? 1 : 0;
    }
    EXPECT_EQ(left, 400U) << "left of straight back is the right end of the panorama";
    EXPECT_EQ(right, 400U);
}

/// A wall of 4 by 2 m at y = 5 and a picture of 32 x 16 pixels that reaches beyond it on all sides, seen from its eye.
const std::string BESIDE =
    "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Flat'>"
    "<EyePoint x='0' y='0' z='0'/><Centre x='0.1' y='5' z='0.05'/><Size width='4' height='2'/></Screen>"
    "<TargetData type='Spherical'/><Projectors><Projector id='P1'><Resolution width='32' height='16'/>"
    "<Frustum left='-40' right='40' bottom='-20' top='20'/></Projector></Projectors></Display>";

// What is lit in part has a value: the plane of the wall goes on by a pixel.
TEST(WarpFile, AMapOfPixelsHoldsEveryPixelThatIsLitInPart) {
    const ExportedChannel wide(BESIDE);
    const auto warp = wide.warp(InputKind::FISHEYE, pixels(true));
    std::ostringstream places;
    std::ostringstream points;
    writeWarp(WarpFormat::PFM, warp, {}, places);
    writeWarp(WarpFormat::PFM_3D, warp, {}, points);
    const double right = 5 * std::tan(40 * M_PI / 180);
    const double top = 5 * std::tan(20 * M_PI / 180);
    int litInPart = 0;
    int dark = 0;
    for (std::size_t row = 0; row < 16; ++row) {
        for (std::size_t column = 0; column < 32; ++column) {
            const double x = right * (2 * (static_cast<double>(column) + 0.5) / 32 - 1);
            const double z = top * (2 * (static_cast<double>(row) + 0.5) / 16 - 1);
            const auto reaches = [&](double part) {
                return std::abs(x - 0.1) < 2 + part * right / 16 && std::abs(z - 0.05) < 1 + part * top / 8;
            };
            const auto [u, v, mapped] = pixelOf(places.str(), column, row);
            const auto [px, py, pz] = pixelOf(points.str(), column, row);
            EXPECT_EQ(std::isnan(px), mapped == 0);
            if (reaches(0.5)) {
                EXPECT_EQ(mapped, 1) << column << ' ' << row;
                litInPart += reaches(0) ? 0 : 1;
            }
            if (!reaches(1.01)) {
                EXPECT_EQ(mapped, 0) << column << ' ' << row;
                ++dark;
            }
            if (mapped == 1) {
                EXPECT_LT(std::hypot(px - x, py - 5, pz - z), 1e-5) << column << ' ' << row;
                const double part = std::atan2(std::hypot(x, z), 5) / M_PI / std::hypot(x, z);
                EXPECT_NEAR(u, 0.5 + part * x, 1e-6);
                EXPECT_NEAR(v, 0.5 + part * z, 1e-6);
            }
        }
    }
    EXPECT_GT(litInPart, 10);
    EXPECT_GT(dark, 100);
}

TEST(WarpFile, ItsSummaryCountsWhatIsLeftOut) {
    const ExportedChannel wall(WALL);
    EXPECT_EQ(summaryOf(wall.warp(InputKind::LAYOUT, pixels(false)), 0, false), "32 x 16 pixels");
    EXPECT_EQ(summaryOf(wall.warp(InputKind::LAYOUT, nodes(3, 2)), 4, false),
              "3 x 2 nodes, 4 cells left out of the mesh, within 0 pixels of the input");
    EXPECT_THAT(summaryOf(wall.warp(InputKind::LAYOUT, nodes(3, 2)), 1, false),
                HasSubstr(", 1 cell left out of the mesh"));
    const ExportedChannel behind(BEHIND);
    EXPECT_EQ(summaryOf(behind.warp(InputKind::FISHEYE, pixels(false)), 0, false), "40 x 20 pixels, 800 not mapped");
}

/// A sphere whose channel looks straight up: its picture shows a pole, and a reader of grids has no cell around it.
const std::string ABOVE =
    "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'>"
    "<Centre x='0' y='0' z='0'/><Radius value='4'/></Screen><TargetData type='Spherical'/><Projectors>"
    "<Projector id='P1'><Name>Top</Name><Resolution width='40' height='20'/><Orientation z='7' x='85' y='0'/>"
    "<Frustum left='-50' right='50' bottom='-40' top='40'/></Projector></Projectors></Display>";

TEST(WarpFile, ItsSummaryStatesTheLargestErrorOfAnyReader) {
    const ExportedChannel above(ABOVE);
    const auto warp = above.warp(InputKind::EQUIRECTANGULAR, nodes(3, 3));
    ASSERT_LT(warp.error().largestOfGrid, warp.error().largest);
    const std::string within =
        ", within " + Veltrani::DisplayReport::significantText(warp.error().largest) + " pixels of the input";
    EXPECT_THAT(summaryOf(warp, 0, true), HasSubstr(within));
    EXPECT_THAT(summaryOf(warp, 0, false), HasSubstr(within));
    ASSERT_EQ(warp.leftOutAtPoles(), 1U);
    EXPECT_THAT(summaryOf(warp, 0, false), HasSubstr(", 1 left out at a pole"));
}

TEST(WarpFile, WhatAFormatCannotTakeIsRefused) {
    const ExportedChannel wall(WALL);
    const auto ofNodes = wall.warp(InputKind::LAYOUT, nodes(2, 2));
    const auto ofPixels = wall.warp(InputKind::LAYOUT, pixels(false));
    std::ostringstream out;
    EXPECT_THROW(writeWarp(WarpFormat::PFM, ofNodes, {}, out), VeltraniException);
    EXPECT_THROW(writeWarp(WarpFormat::PNG_16, ofNodes, {}, out), VeltraniException);
    EXPECT_THROW(writeWarp(WarpFormat::OBJ, ofPixels, {}, out), VeltraniException);
    EXPECT_THROW(writeWarp(WarpFormat::MESH, ofPixels, {}, out), VeltraniException);
    EXPECT_THROW(writeWarp(WarpFormat::PFM_3D, ofPixels, {}, out), VeltraniException);
    EXPECT_EQ(out.str(), "");
}

}  // namespace
