#include "KelvoScreen/detail/BorderSheets.h"

#include "KelvoScreen/Meshes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

/// Two stretches along z = 0, at x = -1 and x = 1: triangles below whose edges end there, continued by the given
/// planes.
BorderStretches twoStretches(const Vector& leftSlope, const Vector& rightSlope) {
    BorderStretches border;
    for (const double x : {-1.0, 1.0}) {
        const Corners corners{Vector{x - 1, 0.0, 0.0}, {x + 1, 0.0, 0.0}, {x, 0.0, -1.0}};
        BorderTriangle triangle{static_cast<std::uint32_t>(border.triangles.size()), corners, {{x, 0.0, -0.5}, 1.5}};
        BorderStretch stretch;
        stretch.sheet.origin = {x, 0.0, 0.0};
        stretch.sheet.slope = x < 0 ? leftSlope : rightSlope;
        stretch.first = triangle.triangle;
        stretch.last = stretch.first + 1;
        stretch.bounds = triangle.bounds;
        stretch.reach = 1;
        stretch.spacing = 0.1;
        border.triangles.push_back(triangle);
        border.stretches.push_back(stretch);
    }
    return border;
}

/// y where the surface is met straight ahead.
double depthAt(const BorderStretches& border, double x, double z) {
    const BorderBlend blend(border, 0, 2, {0.0, 1.0, 0.0});
    const std::optional<BlendedHit> hit = blend.meet({x, 0.3, z}, {0.0, 2.0, 0.0});
    EXPECT_TRUE(hit);
    return hit ? 0.3 + 2 * hit->tau : 1e9;
}

TEST(BorderBlend, OfEqualSheetsIsThatSheet) {
    const BorderStretches border = twoStretches({0.0, 1.0, -0.5}, {0.0, 1.0, -0.5});
    for (const double x : {-3.0, 0.0, 0.4}) {
        EXPECT_NEAR(depthAt(border, x, 2), 1, 1e-12) << "y = z / 2";
    }
}

TEST(BorderBlend, PassesSmoothlyFromOneSheetToTheOther) {
    const BorderStretches border = twoStretches({0.0, 1.0, -0.1}, {0.0, 1.0, 0.1});
    EXPECT_NEAR(depthAt(border, 0, 1), 0, 1e-12) << "the mean in the middle";
    EXPECT_NEAR(depthAt(border, -9, 1), 0.1, 0.05);
    EXPECT_NEAR(depthAt(border, 9, 1), -0.1, 0.05);
    double before = depthAt(border, -2, 1);
    for (double x = -1.99; x < 2; x += 0.01) {
        const double depth = depthAt(border, x, 1);
        EXPECT_LE(depth, before + 1e-12);
        EXPECT_LE(before - depth, 0.004) << x;
        before = depth;
    }
}

TEST(BorderBlend, BeginsAtTheBorderWhereTheSheetsDoNot) {
    BorderStretches border = twoStretches({0.0, 1.0, 0.0}, {0.0, 1.0, 0.0});
    for (BorderStretch& stretch : border.stretches) {
        stretch.sheet.offset = -0.01;  // behind the border
    }
    EXPECT_NEAR(depthAt(border, 0.3, 0), 0, 1e-9);
    EXPECT_NEAR(depthAt(border, 0.3, 0.1), 0.005, 1e-3) << "half way at the distance of the vertices";
    EXPECT_NEAR(depthAt(border, 0.3, 5), 0.01, 1e-4);
}

TEST(BorderBlend, LeavesOutSheetsThatFaceTheOtherWay) {
    const BorderStretches border = twoStretches({0.0, 1.0, -0.5}, {0.0, -1.0, 3.0});
    EXPECT_NEAR(depthAt(border, 0.9, 2), 1, 1e-12);
}

TEST(BorderBlend, IsNotMetByARayThatPassesIt) {
    BorderStretches border = twoStretches({0.0, 1.0, 0.0}, {0.0, 1.0, 0.0});
    for (BorderStretch& stretch : border.stretches) {
        stretch.sheet.bend = {0, 0, 0, 0, 0, 1};  // y = -z^2
    }
    const BorderBlend blend(border, 0, 2, {0.0, 1.0, 0.0});
    EXPECT_TRUE(blend.meet({0.0, -1.0, 0.5}, {0.0, 0.0, 1.0}));
    EXPECT_FALSE(blend.meet({0.0, 1.0, 0.5}, {0.0, 0.0, 1.0}));
}

}  // namespace
