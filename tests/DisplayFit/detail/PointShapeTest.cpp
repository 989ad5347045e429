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

/// A grid on a plane that leans, of 9 x 7 points.
std::vector<Vector> leaningGrid(double noise = 0) {
    std::vector<Vector> points;
    for (int i = 0; i < 63; ++i) {
        const double across = 0.5 * (i % 9);
        const double up = 0.4 * (i / 9);
        points.push_back({across, 2 + 0.3 * across + noise * std::sin(12.3 * i), up});
    }
    return points;
}

TEST(PointShape, AFewPointsBesideAPlaneAreNoDepth) {
    std::vector<Vector> points = leaningGrid();
    points[5] += Vector{0.1, 0.5, 0};
    points[50] += Vector{0, -0.7, 0.2};
    const PointShape shape = PointShape::of(points);
    EXPECT_TRUE(shape.isFlat(0));
    EXPECT_FALSE(shape.isStraight(0));
    const std::vector<bool> beside = shape.besidePlane(0);
    for (std::size_t i = 0; i < points.size(); ++i) {
        EXPECT_EQ(beside[i], i == 5 || i == 50) << i;
    }
    for (std::size_t i = 0; i < points.size(); i += 4) {
        points[i] += Vector{0, 0.5, 0};
    }
    EXPECT_FALSE(PointShape::of(points).isFlat(0)) << "a quarter of them is depth";
    EXPECT_EQ(PointShape::few(6), 0U) << "of six each one counts";
    EXPECT_EQ(PointShape::few(63), 3U);
    EXPECT_EQ(PointShape::few(400), 20U);
}

TEST(PointShape, OfAThirdThatLiesElsewhereEachIsFoundBesideThePlane) {
    std::vector<Vector> points = leaningGrid();
    for (std::size_t i = 0; i < points.size(); i += 3) {
        // More to one side the further right: the principal plane leans towards them.
        points[i] += Vector{0, 0.4 + 1.5 * points[i][0] * points[i][2], 0};
    }
    const std::vector<bool> beside = PointShape::of(points).besidePlane(0);
    for (std::size_t i = 0; i < points.size(); ++i) {
        EXPECT_EQ(beside[i], i % 3 == 0) << i;
    }
}

TEST(PointShape, NoiseOfAPlaneIsNearlyFlat) {
    const PointShape noisy = PointShape::of(leaningGrid(0.02));
    EXPECT_FALSE(noisy.isFlat(0));
    EXPECT_TRUE(noisy.isFlat(0.01));
    EXPECT_TRUE(noisy.isNearlyFlat());
    EXPECT_FALSE(PointShape::of(box(1, 3, 2)).isNearlyFlat());
}

TEST(PointShape, OneAbsurdPointChangesNothing) {
    std::vector<Vector> points = leaningGrid();
    const PointShape before = PointShape::of(points);
    points.push_back({-9999, -9999, -9999});
    const PointShape shape = PointShape::of(points);
    EXPECT_EQ(shape.absurd, std::vector<std::size_t>{63});
    EXPECT_NEAR(shape.extents[0], before.extents[0], 1e-12);
    EXPECT_TRUE(shape.isFlat(0));
    EXPECT_FALSE(shape.isStraight(0));
}

TEST(PointShape, ALineWithAnotherPointIsStraight) {
    std::vector<Vector> points;
    for (int i = 0; i < 20; ++i) {
        points.push_back({0.1 * i, 1, 0.2 * i});
    }
    EXPECT_TRUE(PointShape::of(points).isStraight(0));
    points[7] = {3, 3, 3};
    EXPECT_TRUE(PointShape::of(points).isStraight(0));
    points[11] = {3, 0, 3};
    points[13] = {1, 0, 1};
    points[17] = {0, 0, 1};
    EXPECT_FALSE(PointShape::of(points).isStraight(0));
    const std::vector<Vector> triangle{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    EXPECT_FALSE(PointShape::of(triangle).isStraight(0)) << "of three each one counts";
}

}  // namespace
