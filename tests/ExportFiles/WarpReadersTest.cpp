// The pictures of an export as a program of somebody else reads them.
#include "ExportFiles/WarpFile.h"
#include "ExportedDisplays.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <cmath>
#include <sstream>

namespace {

using namespace Veltrani::ExportFiles;
using namespace exported_displays;
using Veltrani::DisplayExport::ChannelWarp;
using Veltrani::DisplayExport::InputKind;
using Veltrani::DisplayExport::WarpNode;

/// OpenCV has its rows from the top, and blue first.
cv::Mat readByOpenCv(WarpFormat format, const ChannelWarp& warp, const ContentStrip& strip) {
    std::ostringstream out;
    writeWarp(format, warp, strip, out);
    const TemporaryFolder folder;
    cv::Mat picture = cv::imread(folder.write(format == WarpFormat::PNG_16 ? "warp.png" : "warp.pfm", out.str()),
                                 cv::IMREAD_UNCHANGED);
    EXPECT_EQ(picture.cols, static_cast<int>(warp.columns()));
    EXPECT_EQ(picture.rows, static_cast<int>(warp.rows()));
    return picture;
}

// The front half of a dome of which the channel sees both sides of the edge: some of its pixels miss the screen.
const std::string EDGE =
    "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'>"
    "<Centre x='0' y='0' z='0'/><Radius value='4'/><Azimuth min='-90' max='10'/><Elevation min='-90' "
    "max='90'/></Screen>"
    "<TargetData type='Spherical'/><Projectors><Projector id='P1'><Name>Edge</Name><Resolution width='40' height='20'/>"
    "<Orientation z='0' x='0' y='0'/><Frustum left='-40' right='40' bottom='-20' top='20'/></Projector></Projectors>"
    "</Display>";

TEST(WarpReaders, OpenCvReadsThePointsOfAPfm) {
    const ExportedChannel display(EDGE);
    const ChannelWarp warp = display.warp(InputKind::EQUIRECTANGULAR, pixels(true));
    const cv::Mat picture = readByOpenCv(WarpFormat::PFM_3D, warp, {1, true});
    ASSERT_EQ(picture.type(), CV_32FC3);
    ASSERT_GT(warp.count(WarpNode::State::UNMAPPED), 0U);
    ASSERT_GT(warp.count(WarpNode::State::MAPPED), 0U);
    for (std::size_t i = 0; i < warp.nodes().size(); ++i) {
        const auto column = static_cast<int>(i % warp.columns());
        const auto row = static_cast<int>(i / warp.columns());
        const auto& found = picture.at<cv::Vec3f>(picture.rows - 1 - row, column);
        for (int axis = 0; axis < 3; ++axis) {
            if (warp.nodes()[i].isUsable()) {
                EXPECT_EQ(found[2 - axis], static_cast<float>(warp.points()[i][static_cast<std::size_t>(axis)]));
            } else {
                EXPECT_TRUE(std::isnan(found[2 - axis]));
            }
        }
    }
}

TEST(WarpReaders, OpenCvReadsThePlacesOfAPfmAndOfAPng) {
    const ExportedChannel display(EDGE);
    const ChannelWarp warp = display.warp(InputKind::EQUIRECTANGULAR, pixels(false));
    const cv::Mat numbers = readByOpenCv(WarpFormat::PFM, warp, {1, true});
    const cv::Mat steps = readByOpenCv(WarpFormat::PNG_16, warp, {1, true});
    ASSERT_EQ(numbers.type(), CV_32FC3);
    ASSERT_EQ(steps.type(), CV_16UC3);
    for (std::size_t i = 0; i < warp.nodes().size(); ++i) {
        const WarpNode& node = warp.nodes()[i];
        const auto column = static_cast<int>(i % warp.columns());
        const auto row = static_cast<int>(i / warp.columns());
        const auto& number = numbers.at<cv::Vec3f>(numbers.rows - 1 - row, column);
        const auto& step = steps.at<cv::Vec3w>(steps.rows - 1 - row, column);
        EXPECT_EQ(number[0], node.isUsable() ? 1.0F : 0.0F);
        EXPECT_EQ(step[0], node.isUsable() ? 65535 : 0);
        for (int part = 0; node.isUsable() && part < 2; ++part) {
            const double content = node.content[static_cast<std::size_t>(part)];
            EXPECT_EQ(number[2 - part], static_cast<float>(content));
            EXPECT_NEAR(step[2 - part], 65535 * content, 0.5 + 1e-9);
        }
    }
}

}  // namespace
