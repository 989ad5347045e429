#include "KelvoControl/Viewport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(Viewport, ByDefaultItIsOneByOnePixelAtTheOrigin) {
    const Viewport viewport;
    EXPECT_EQ(viewport.ox, 0);
    EXPECT_EQ(viewport.oy, 0);
    EXPECT_EQ(viewport.sx, 1);
    EXPECT_EQ(viewport.sy, 1);
    EXPECT_EQ(viewport.position, (Point<double, 3>{}));
    EXPECT_EQ(viewport.orientation, (Point<double, 3>{}));
    EXPECT_EQ(viewport.width, 1);
    EXPECT_EQ(viewport.height, 1);
}

TEST(Viewport, TheExtentsOfAFrustumAreTangents) {
    const Viewport viewport = Viewport::fromFrustumAngles(-0.5, 0.25, -0.125, 0.375);
    EXPECT_EQ(viewport.ox, std::tan(-0.5));
    EXPECT_EQ(viewport.sx, std::tan(0.25) - std::tan(-0.5));
    EXPECT_EQ(viewport.oy, std::tan(-0.125));
    EXPECT_EQ(viewport.sy, std::tan(0.375) - std::tan(-0.125));
    EXPECT_EQ(viewport.width, 1);
}

}  // namespace
