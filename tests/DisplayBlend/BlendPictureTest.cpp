#include "DisplayBlend/BlendPicture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace Veltrani::DisplayBlend;
using testing::ElementsAre;

/// Three wide and two high; the lower row first.
BlendPicture small() {
    return {3, 2, {0.0F, 0.5F, 1.0F, 0.25F, 0.5F, 0.75F}};
}

TEST(BlendPictureTest, FilesBeginAtTheTop) {
    EXPECT_THAT(small().codes8(BlendCurve::ofGamma(1)), ElementsAre(64, 128, 191, 0, 128, 255));
    EXPECT_THAT(small().codes16(BlendCurve::ofGamma(1)), ElementsAre(16384, 32768, 49151, 0, 32768, 65535));
}

TEST(BlendPictureTest, CodesFollowTheCurve) {
    // 255 * 0.5 ^ (1 / 2.2) = 186.08, and that of 0.25 and 0.75: 135.79, 223.74.
    EXPECT_THAT(small().codes8(BlendCurve::ofGamma(2.2)), ElementsAre(136, 186, 224, 0, 186, 255));
}

TEST(BlendPictureTest, AlphaIsWhatIsMissing) {
    EXPECT_THAT(small().codes8(BlendCurve::ofGamma(2.2), BlendUse::ALPHA), ElementsAre(119, 69, 31, 255, 69, 0));
}

TEST(BlendPictureTest, LightIsLinearBetweenTheMiddlesOfPixels) {
    const BlendPicture picture = small();
    EXPECT_EQ(picture.between({0.5 / 3, 0.25}), 0.0);
    EXPECT_EQ(picture.between({2.5 / 3, 0.75}), 0.75);
    EXPECT_NEAR(picture.between({1.0 / 3, 0.25}), 0.25, 1e-15);
    EXPECT_NEAR(picture.between({1.0 / 3, 0.5}), (0 + 0.5 + 0.25 + 0.5) / 4, 1e-15);
    EXPECT_EQ(picture.between({0, 0}), 0.0) << "beyond the outermost middles as there";
    EXPECT_EQ(picture.between({1, 1}), 0.75);
    EXPECT_EQ(picture.between({7, -7}), 1.0);
    EXPECT_TRUE(std::isnan(picture.between({std::numeric_limits<double>::quiet_NaN(), 0.5})));
    EXPECT_TRUE(std::isnan(BlendPicture().between({0.5, 0.5})));
}

TEST(BlendPictureTest, APictureOfOnePixelIsThatPixelEverywhere) {
    const BlendPicture picture{1, 1, {0.5F}};
    EXPECT_EQ(picture.between({0.9, 0.1}), 0.5);
}

}  // namespace
