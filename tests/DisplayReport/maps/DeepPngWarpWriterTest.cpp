#include "DisplayReport/maps/PictureWarp.h"
#include "DisplayReport/maps/WarpWriter.h"
#include "support/DeepPngImage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;

DeepPngImage deepImageOf(const PictureWarp& warp) {
    std::ostringstream out;
    WarpWriter::ofFormat("png16")->write(warp, out);
    return DeepPngImage::read(out.str());
}

TEST(DeepPngWarpWriter, RedIsUGreenIsVAndBlueIsMapped) {
    const DeepPngImage image =
        deepImageOf({{2, 2}, 2, 2, {{{0, 1}, true}, {{0.25, 0.75}, true}, {{0.5, 1.0 / 3}, true}, {}}});
    ASSERT_EQ(image.width, 2U);
    ASSERT_EQ(image.height, 2U);
    EXPECT_THAT(image.at(0, 1), ElementsAre(0, 65535, 65535)) << "the bottom row stands last";
    EXPECT_THAT(image.at(1, 1), ElementsAre(16384, 49151, 65535));
    EXPECT_THAT(image.at(0, 0), ElementsAre(32768, 21845, 65535));
    EXPECT_THAT(image.at(1, 0), ElementsAre(0, 0, 0)) << "not mapped";
}

TEST(DeepPngWarpWriter, BeyondTheEdgesOfTheInputStandsTheEdge) {
    const DeepPngImage image = deepImageOf({{2, 1}, 2, 1, {{{-0.1, 1.5}, true}, {{1.0000001, -1e-9}, true}}});
    EXPECT_THAT(image.at(0, 0), ElementsAre(0, 65535, 65535));
    EXPECT_THAT(image.at(1, 0), ElementsAre(65535, 0, 65535));
}

}  // namespace
