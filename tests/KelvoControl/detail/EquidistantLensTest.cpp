#include "KelvoControl/detail/EquidistantLens.h"

#include "RoundTrip.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Veltrani::KelvoControlDetail::EquidistantLens;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

TEST(EquidistantLens, StepsInThePictureAreStepsOfAngle) {
    const EquidistantLens lens(Viewport::fromFrustumAngles(-1.2, 0.4, -0.5, 0.9), L"Equidistant");
    P3 direction;
    ASSERT_TRUE(lens.unproject({0.25, 0.5}, direction));
    const double yaw = -1.2 + 1.6 * 0.25;
    const double pitch = -0.5 + 1.4 * 0.5;
    const P3 expected{std::sin(yaw) * std::cos(pitch), std::cos(yaw) * std::cos(pitch), std::sin(pitch)};
    EXPECT_LE(norm(direction - expected), 1e-15);
}

TEST(EquidistantLens, TheWholePictureComesBack) {
    for (const double edge : {0.01, 0.6, 1.2, 1.5}) {
        Viewport viewport = Viewport::fromFrustumAngles(-edge, edge * 0.9, -edge * 0.8, edge);
        viewport.position = {2.0, -1.0, 0.5};
        viewport.orientation = {2.5, 0.4, -0.7};
        const RoundTrip trip(EquidistantLens(viewport, L"Equidistant"));
        EXPECT_EQ(trip.refused, 0) << edge;
        EXPECT_EQ(trip.mapped, 41 * 41) << edge;
        EXPECT_LE(trip.worstPicture, 1e-9) << edge;
        EXPECT_LE(trip.worstDirection, 1e-9) << edge;
    }
}

TEST(EquidistantLens, NothingLiesBehindTheProjector) {
    const EquidistantLens lens(Viewport::fromFrustumAngles(-0.5, 0.5, -0.5, 0.5), L"Equidistant");
    P2 out{-7.0, -7.0};
    EXPECT_FALSE(lens.projectNormalised({0.0, -1.0, 0.0}, out));
    EXPECT_FALSE(lens.projectNormalised({1.0, 0.0, 0.0}, out));
    EXPECT_FALSE(lens.projectNormalised({0.0, 0.0, 0.0}, out));
    EXPECT_EQ(out, P2(-7.0, -7.0));
    P3 direction{-7.0, -7.0, -7.0};
    EXPECT_FALSE(lens.unproject({2.2, 0.5}, direction)) << "more than a right angle to the side";
    EXPECT_FALSE(lens.unproject({0.5, -1.2}, direction));
    EXPECT_EQ(direction, P3(-7.0, -7.0, -7.0));
}

}  // namespace
