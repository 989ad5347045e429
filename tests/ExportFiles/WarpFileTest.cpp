#include "ExportFiles/WarpFile.h"

#include "Common/VeltraniException.h"
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
