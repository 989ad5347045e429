#include "DisplayReport/maps/WarpWriter.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
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

// The longest numbers there are: places that need all digits and an exponent of three.
TEST(WarpMeshWriter, IsNeverLargerThanItsSizeSays) {
    for (const Point<int, 2> nodes : {Point<int, 2>{2, 2}, Point<int, 2>{41, 29}, Point<int, 2>{97, 61}}) {
        const Point<int, 2> pixels{1921, 1083};
        const WarpMeshSize size{pixels, nodes};
        const std::vector<WarpSample> samples(size.count(),
                                              {{4.9406564584124654e-321 / 3, 1.2345678901234567e-300}, true});
        const std::string text = written(
            PictureWarp(pixels, static_cast<std::size_t>(nodes[0]), static_cast<std::size_t>(nodes[1]), samples));
        EXPECT_LE(text.size(), size.mostBytes());
        EXPECT_GE(text.size(), size.mostBytes() / 2) << "the limit means something";
    }
}

TEST(WarpMeshWriter, WhatIsReadableIsWithinTheLimitsOfTheReader) {
    EXPECT_TRUE((WarpMeshSize{{1920, 1200}, {1921, 1201}}.isReadable()));
    EXPECT_FALSE((WarpMeshSize{{3840, 2160}, {3841, 2161}}.isReadable())) << "eight million nodes";
    EXPECT_TRUE((WarpMeshSize{{3840, 2160}, {1921, 1081}}.isReadable()));
    EXPECT_FALSE((WarpMeshSize{{1, 2000}, {2, 2}}.isReadable())) << "too narrow";
    EXPECT_FALSE((WarpMeshSize{{100000, 1}, {2, 2}}.isReadable())) << "too wide";

    EXPECT_EQ(WarpMeshSize::mostNodes({1920, 1200}), (Point<int, 2>{1921, 1201}));
    EXPECT_EQ(WarpMeshSize::mostNodes({3840, 2160}), (Point<int, 2>{1921, 1081}));
    EXPECT_EQ(WarpMeshSize::mostNodes({100000, 100000}).has_value(), true);
    EXPECT_EQ(WarpMeshSize::mostNodes({1, 2000}), std::nullopt);
}

// The reader itself, not the limits that it states: what is just too narrow for it is not readable, what it takes is.
TEST(WarpMeshWriter, TheReaderRefusesWhatIsNotReadable) {
    const TemporaryFolder folder;
    for (const int height : {900, 1000, 1001, 2000}) {
        const WarpMeshSize size{{1, height}, {2, 2}};
        const std::vector<WarpSample> samples{{{0, 0}, true}, {{1, 0}, true}, {{0, 1}, true}, {{1, 1}, true}};
        const std::string file = folder.write("narrow.map", written(PictureWarp(size.pixels, 2, 2, samples)));
        const auto read = [&] { CustomPlanarScreenToChannelMap(Veltrani::fromUtf8(file), nullptr); };
        if (size.isReadable()) {
            EXPECT_NO_THROW(read()) << height;
        } else {
            EXPECT_THROW(read(), VeltraniParseException) << height;
        }
    }
}

}  // namespace
