#include "KelvoControl/Frustum.h"

#include <gtest/gtest.h>

namespace {

TEST(Frustum, StandsRelativeToTheEyePointWithItsRotationAndTheWayBack) {
    Viewport viewport = Viewport::fromFrustumAngles(-0.5, 0.25, -0.125, 0.375);
    viewport.position = {1.0, 2.0, 3.0};
    viewport.orientation = {0.3, -0.2, 0.1};
    viewport.width = 1920;
    viewport.height = 1200;
    const Frustum frustum = Frustum::of(viewport, {0.5, -1.0, 4.0});
    EXPECT_EQ(frustum.origin, (Point<double, 3>{0.5, 3.0, -1.0}));
    EXPECT_EQ(frustum.R, Veltrani::rotationZXY(0.3, -0.2, 0.1));
    EXPECT_EQ(frustum.Rinv, transpose(frustum.R));
    EXPECT_EQ(frustum.ox, viewport.ox);
    EXPECT_EQ(frustum.sy, viewport.sy);
    EXPECT_EQ(frustum.position, viewport.position);
    EXPECT_EQ(frustum.width, 1920);
    EXPECT_EQ(frustum.height, 1200);
}

TEST(Frustum, ByDefaultItIsUnrotated) {
    const Frustum frustum;
    EXPECT_EQ(frustum.R, (Matrix<double, 3>()));
    EXPECT_EQ(frustum.Rinv, (Matrix<double, 3>()));
    EXPECT_EQ(frustum.origin, (Point<double, 3>{}));
}

}  // namespace
