#include "DisplayReport/maps/WarpWriter.h"

#include "Common/Utf8.h"
#include "DisplayReport/maps/PictureWarp.h"
#include "KelvoControl/CustomPlanarScreenToChannelMap.h"
#include "support/ForeignLocale.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using P2 = Point<double, 2>;

std::string written(const PictureWarp& warp) {
    std::ostringstream out;
    WarpWriter::ofFormat("mesh")->write(warp, out);
    return out.str();
}

TEST(WarpMeshWriter, WritesNodesRowByRowFromTheBottomLeft) {
    const PictureWarp warp(
        {30, 20}, 3, 2,
        {{{0.1, 0.2}, true}, {{1.0 / 3, 0}, true}, {{0, 0}, false}, {{0, 1}, true}, {{0.5, 1}, true}, {{1, 1}, true}});
    const std::string expected =
        "2\n3 2\n"
        "-1.5 -1 0.1 0.2 1\n0 -1 0.3333333333333333 0 1\n1.5 -1 0 0 -1\n"
        "-1.5 1 0 1 1\n0 1 0.5 1 1\n1.5 1 1 1 1\n"
        "pixels 30 20\n";
    EXPECT_EQ(written(warp), expected);
    const ForeignLocale german;
    EXPECT_EQ(written(warp), expected);
}

/// A bent map of the picture: (x, y) from 0 to 1.
P2 bent(double x, double y) {
    return {0.1 + 0.7 * x + 0.05 * std::sin(3 * y), 0.2 + 0.6 * y - 0.04 * x * x};
}

TEST(WarpMeshWriter, TheMapOfAChannelReadsItBack) {
    constexpr int COLUMNS = 13;
    constexpr int ROWS = 9;
    std::vector<WarpSample> samples;
    for (int row = 0; row < ROWS; ++row) {
        for (int column = 0; column < COLUMNS; ++column) {
            samples.push_back({bent(column / 12.0, row / 8.0), true});
        }
    }
    samples[COLUMNS * ROWS - 1] = {};  // the top right cell is lost with its corner
    const TemporaryFolder folder;
    const std::string file =
        folder.write("channel.map", written(PictureWarp({1200, 800}, COLUMNS, ROWS, std::move(samples))));
    const CustomPlanarScreenToChannelMap map(Veltrani::fromUtf8(file), nullptr);
    P2 screen;
    for (int row = 0; row < ROWS - 1; ++row) {
        for (int column = 0; column < COLUMNS; ++column) {
            ASSERT_TRUE(map.mapChannel2DToScreen2D({column * 100.0, row * 100.0}, screen)) << column << ' ' << row;
            const P2 expected = bent(column / 12.0, row / 8.0);
            EXPECT_NEAR(screen[0], expected[0], 1e-12);
            EXPECT_NEAR(screen[1], expected[1], 1e-12);
            P2 pixel;
            ASSERT_TRUE(map.mapScreen2DToChannel2D(screen, pixel));
            EXPECT_NEAR(pixel[0], column * 100.0, 1e-6);
            EXPECT_NEAR(pixel[1], row * 100.0, 1e-6);
        }
    }
    EXPECT_FALSE(map.mapChannel2DToScreen2D({1150, 750}, screen));
    EXPECT_TRUE(map.mapChannel2DToScreen2D({1050, 750}, screen));
}

}  // namespace
