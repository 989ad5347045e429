#include "DisplayFit/detail/PointShape.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Vector = Point<double, 3>;

/// Points at (x, y, z) of a box around (10, 20, 30), corners only.
std::vector<Vector> box(double x, double y, double z) {
    std::vector<Vector> corners;
    for (int i = 0; i < 8; ++i) {
        corners.push_back({10 + (i % 2 == 0 ? x : -x), 20 + (i / 2 % 2 == 0 ? y : -y), 30 + (i / 4 == 0 ? z : -z)});
    }
    return corners;
}

TEST(PointShape, ExtentsAreThoseAlongThePrincipalAxes) {
    const PointShape shape = PointShape::of(box(1, 3, 2));
    EXPECT_NEAR(norm(shape.centre - Vector{10, 20, 30}), 0, 1e-14);
    EXPECT_NEAR(shape.extents[0], 3, 1e-12);
    EXPECT_NEAR(shape.extents[1], 2, 1e-12);
    EXPECT_NEAR(shape.extents[2], 1, 1e-12);
    EXPECT_NEAR(std::abs(shape.axes[0][1]), 1, 1e-12);
    EXPECT_NEAR(std::abs(shape.axes[2][0]), 1, 1e-12);
}

TEST(PointShape, FlatAndStraightAreMeasuredByTheDeviation) {
    EXPECT_FALSE(PointShape::of(box(1, 3, 2)).isFlat(0));
    EXPECT_TRUE(PointShape::of(box(0, 3, 2)).isFlat(0));
    EXPECT_FALSE(PointShape::of(box(0, 3, 2)).isStraight(0));
    EXPECT_TRUE(PointShape::of(box(0.002, 3, 2)).isFlat(0)) << "as built";
    EXPECT_FALSE(PointShape::of(box(0.01, 3, 2)).isFlat(0.001));
    EXPECT_TRUE(PointShape::of(box(0.01, 3, 2)).isFlat(0.005));
    EXPECT_TRUE(PointShape::of(box(0, 3, 0)).isStraight(0));
    EXPECT_TRUE(PointShape::of(std::vector<Vector>(5, Vector{1, 2, 3})).isStraight(0)) << "one place";
    EXPECT_TRUE(PointShape::of({}).isStraight(0));
}

}  // namespace
