#include "DisplayBlend/detail/NearestFill.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

namespace {

using Veltrani::DisplayBlend::BlendPicture;
using Veltrani::DisplayBlendDetail::fillFromNearest;

TEST(NearestFillTest, EveryGapTakesAValueThatIsHardlyFartherThanTheNearest) {
    constexpr std::size_t WIDTH = 37;
    constexpr std::size_t HEIGHT = 23;
    BlendPicture picture{WIDTH, HEIGHT, {}};
    std::vector<bool> isMissing;
    std::mt19937 random(7);
    for (std::size_t i = 0; i < WIDTH * HEIGHT; ++i) {
        isMissing.push_back(random() % 50 != 0);
        picture.light.push_back(isMissing.back() ? -1.0F : static_cast<float>(i));
    }
    BlendPicture filled = picture;
    fillFromNearest(filled, isMissing);
    const auto distance = [](std::size_t a, std::size_t b) {
        return std::hypot(static_cast<double>(a % WIDTH) - static_cast<double>(b % WIDTH),
                          static_cast<double>(a / WIDTH) - static_cast<double>(b / WIDTH));
    };
    for (std::size_t i = 0; i < WIDTH * HEIGHT; ++i) {
        double least = 1e9;
        for (std::size_t k = 0; k < WIDTH * HEIGHT; ++k) {
            least = isMissing[k] ? least : std::min(least, distance(i, k));
        }
        ASSERT_GE(filled.light[i], 0.0F);
        EXPECT_LE(distance(i, static_cast<std::size_t>(filled.light[i])), least + 0.5) << i;
    }
}

TEST(NearestFillTest, WhatHasNoValueAtAllStays) {
    BlendPicture picture{2, 1, {0.25F, 0.5F}};
    fillFromNearest(picture, {true, true});
    EXPECT_EQ(picture.light, (std::vector<float>{0.25F, 0.5F}));
    fillFromNearest(picture, {false, false});
    EXPECT_EQ(picture.light, (std::vector<float>{0.25F, 0.5F}));
}

}  // namespace
