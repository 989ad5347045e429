#include "ScreenManager/FrustumRays.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

const double DEGREE = std::numbers::pi / 180;

FrustumRays rays(double left, double right, double bottom, double top, double heading = 0, double pitch = 0,
                 double roll = 0) {
    return FrustumRays(SphereTargetLocatorParams({7, 8, 9}, left * DEGREE, right * DEGREE, bottom * DEGREE,
                                                 top * DEGREE, heading * DEGREE, pitch * DEGREE, roll * DEGREE, {},
                                                 {}));
}

TEST(FrustumRays, CornersAreTheTangentsOfTheFrustum) {
    const FrustumRays frustum = rays(-45, 30, -20, 10);
    EXPECT_LE(norm(frustum.directionOf({0, 0}) - P3{-1, 1, -std::tan(20 * DEGREE)}), 1e-15);
    EXPECT_LE(norm(frustum.directionOf({1, 1}) - P3{std::tan(30 * DEGREE), 1, std::tan(10 * DEGREE)}), 1e-15);
}

TEST(FrustumRays, AHeadingTurnsToTheRightAndAPitchUpwards) {
    EXPECT_LE(norm(rays(-10, 10, -10, 10, 90).directionOf({0.5, 0.5}) - P3{1, 0, 0}), 1e-15);
    EXPECT_LE(norm(rays(-10, 10, -10, 10, 0, 90).directionOf({0.5, 0.5}) - P3{0, 0, 1}), 1e-15);
}

TEST(FrustumRays, DirectionsComeBackOutsideOfThePictureToo) {
    const FrustumRays frustum = rays(-35, 20, -15, 25, 40, -12, 7);
    for (const P2& picture : {P2{0, 0}, P2{0.3, 0.9}, P2{1.4, -0.6}}) {
        P2 found;
        ASSERT_TRUE(frustum.pictureOf(frustum.directionOf(picture) * 3.7, found));
        EXPECT_LE(norm(found - picture), 1e-14);
    }
}

TEST(FrustumRays, NothingIsSeenBehindOrWithoutWidthOrHeight) {
    P2 untouched{5, 6};
    EXPECT_FALSE(rays(-35, 20, -15, 25).pictureOf({0, -1, 0}, untouched));
    EXPECT_FALSE(rays(-35, 20, -15, 25).pictureOf({1, 0, 0}, untouched));
    EXPECT_FALSE(rays(10, 10, -15, 25).pictureOf({0, 1, 0}, untouched));
    EXPECT_FALSE(rays(-35, 20, 5, 5).pictureOf({0, 1, 0}, untouched));
    EXPECT_EQ(untouched, (P2{5, 6}));
}

}  // namespace
