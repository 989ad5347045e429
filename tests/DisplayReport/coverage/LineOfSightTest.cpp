#include "DisplayReport/coverage/RayLight.h"

#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/SphericalScreen.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace {

using Veltrani::DisplayReport::isInSight;
using P3 = Point<double, 3>;

const double PI = std::numbers::pi;

TEST(LineOfSight, ASphereIsSeenAllOverFromInside) {
    const SphericalScreen sphere({0, 0, 0}, 5, -PI, PI, -PI / 2, PI / 2);
    for (const P3& place : {P3{5, 0, 0}, P3{0, -5, 0}, P3{0, 0, 5}, P3{3, 4, 0}}) {
        EXPECT_TRUE(isInSight(sphere, {1, 2, -1}, place));
    }
}

TEST(LineOfSight, FromOutsideTheFarSideOfASphereIsHidden) {
    const SphericalScreen sphere({0, 0, 0}, 5, -PI, PI, -PI / 2, PI / 2);
    EXPECT_TRUE(isInSight(sphere, {0, -20, 0}, {0, -5, 0}));
    EXPECT_FALSE(isInSight(sphere, {0, -20, 0}, {0, 5, 0}));
    EXPECT_FALSE(isInSight(sphere, {0, -20, 0}, {5, 0.1, 0}));
}

TEST(LineOfSight, OneTriangleHidesAnother) {
    TriangleMesh mesh;
    mesh.vertices = {{-4, 5, -4}, {4, 5, -4}, {0, 5, 4}, {-1, 2, -1}, {1, 2, -1}, {0, 2, 1}};
    mesh.triangles = {{0, 1, 2}, {3, 4, 5}};
    const MeshScreen screen(mesh);
    EXPECT_FALSE(isInSight(screen, {0, 0, 0}, {0, 5, 0}));
    EXPECT_TRUE(isInSight(screen, {0, 0, 0}, {0, 2, 0}));
    EXPECT_TRUE(isInSight(screen, {0, 0, 0}, {-3, 5, -3.5}));
    EXPECT_TRUE(isInSight(screen, {0, 3, 0}, {0, 5, 0})) << "from between the two";
}

TEST(LineOfSight, APartCloseBehindAnotherIsHidden) {
    // 2 mm behind a triangle at 5 m, and 20 micrometres behind it.
    for (const double gap : {2e-3, 2e-5}) {
        TriangleMesh mesh;
        mesh.vertices = {{-1, 5, -1}, {1, 5, -1}, {0, 5, 1}, {-1, 5 + gap, -1}, {1, 5 + gap, -1}, {0, 5 + gap, 1}};
        mesh.triangles = {{0, 1, 2}, {3, 4, 5}};
        const MeshScreen screen(mesh);
        EXPECT_FALSE(isInSight(screen, {0, 0, 0}, {0, 5 + gap, 0})) << gap;
        EXPECT_TRUE(isInSight(screen, {0, 0, 0}, {0, 5, 0})) << gap;
    }
}

// A ray to a point of the very edge may pass beside it by rounding.
TEST(LineOfSight, APointBesideTheSurfaceIsHiddenByNothing) {
    TriangleMesh mesh;
    mesh.vertices = {{-1, 5, -1}, {1, 5, -1}, {0, 5, 1}};
    mesh.triangles = {{0, 1, 2}};
    EXPECT_TRUE(isInSight(MeshScreen(mesh), {0, 0, 0}, {1.001, 5, -1}));
}

TEST(LineOfSight, APointThatIsNoneIsNotInSight) {
    const SphericalScreen sphere({0, 0, 0}, 5, -PI, PI, -PI / 2, PI / 2);
    EXPECT_FALSE(isInSight(sphere, {0, 0, 0}, {std::numeric_limits<double>::quiet_NaN(), 0, 0}));
    EXPECT_FALSE(isInSight(sphere, {0, 0, 0}, {std::numeric_limits<double>::infinity(), 0, 0}));
}

}  // namespace
