#include "KelvoControl/detail/RectilinearLens.h"

#include "RoundTrip.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::KelvoControlDetail::RectilinearLens;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

Viewport skewed() {
    Viewport viewport = Viewport::fromFrustumAngles(-1.2, 0.4, -0.1, 0.9);
    viewport.position = {2.0, -1.0, 0.5};
    viewport.orientation = {2.5, 0.4, -0.7};
    return viewport;
}

TEST(RectilinearLens, ThePictureLiesOnAPlane) {
    const RectilinearLens lens(skewed(), L"Rectilinear");
    const Viewport viewport = skewed();
    P3 bottomLeft;
    P3 topRight;
    ASSERT_TRUE(lens.unproject({0.0, 0.0}, bottomLeft));
    ASSERT_TRUE(lens.unproject({1.0, 1.0}, topRight));
    const auto turn = Veltrani::rotationZXY(2.5, 0.4, -0.7);
    EXPECT_LE(norm(bottomLeft - turn * P3{viewport.ox, 1.0, viewport.oy}), 1e-15);
    EXPECT_LE(norm(topRight - turn * P3{viewport.ox + viewport.sx, 1.0, viewport.oy + viewport.sy}), 1e-14);
}

TEST(RectilinearLens, TheWholePictureComesBack) {
    const RectilinearLens lens(skewed(), L"Rectilinear");
    const RoundTrip trip(lens);
    EXPECT_EQ(trip.refused, 0);
    EXPECT_EQ(trip.mapped, 41 * 41);
    EXPECT_LE(trip.worstPicture, 1e-9);
    EXPECT_LE(trip.worstDirection, 1e-9);
}

TEST(RectilinearLens, AMirroredPictureComesBack) {
    Viewport viewport = skewed();
    viewport.ox += viewport.sx;
    viewport.sx = -viewport.sx;
    const RoundTrip trip(RectilinearLens(viewport, L"Rectilinear"));
    EXPECT_EQ(trip.refused, 0);
    EXPECT_LE(trip.worstPicture, 1e-9);
}

TEST(RectilinearLens, NothingIsSeenBehindTheProjector) {
    Viewport viewport;
    viewport.ox = -0.5;
    viewport.oy = -0.5;
    const RectilinearLens lens(viewport, L"Rectilinear");
    P2 out{-7.0, -7.0};
    for (const P3& point : {P3{0.0, -1.0, 0.0}, P3{1.0, 0.0, 0.0}, P3{0.0, 0.0, 0.0}, P3{0.0, -0.0, 1.0}}) {
        EXPECT_FALSE(lens.projectNormalised(point, out));
    }
    EXPECT_EQ(out, P2(-7.0, -7.0));
}

}  // namespace
